#include "scene/mesh_builder.h"

#include <gtest/gtest.h>

#include <cstring>

#include "fbx/model/fbx_manager.h"
#include "fbx/model/fbx_mesh.h"
#include "tarn/kiva_builder.h"
#include "tarn/material_cache.h"

namespace {

using Floats3 = std::array<float, 3>;
using Indices = std::vector<uint16_t>;
constexpr auto kPlain = tarn::VertexFormat::Position3Normal3Color4TexCoord4;

class MeshBuilderTest : public ::testing::Test {
protected:
    void SetUp() override { mesh = FbxMesh::Create(manager, "mesh"); }
    void TearDown() override { manager->Destroy(); }

    void Polygon(std::initializer_list<int> corners) {
        mesh->BeginPolygon();
        for (int c : corners) mesh->AddPolygon(c);
    }
    PolygonSource Source() {
        mesh->GetUVSetNames(uvSetNames);
        PolygonSource source = polygonSourceOf(*mesh);
        source.uvSetNames = uvSetNames;
        source.tangents = mesh->GetElementTangent(0);
        source.binormals = mesh->GetElementBinormal(0);
        return source;
    }
    // Every polygon of the mesh in one material.
    std::vector<qe::Ref<tarn::Mesh>> Build(tarn::VertexFormat format, qe::Ref<tarn::MaterialData> material = {}) {
        const PolygonSource source = Source();
        auto meshBuilder = createMeshBuilder(format, builder);
        meshBuilder->setMaterial(material);
        for (int p = 0; p < mesh->GetPolygonCount(); ++p) meshBuilder->addPolygon(source, p);
        std::vector<qe::Ref<tarn::Mesh>> out;
        meshBuilder->finish(out);
        return out;
    }
    template <class T>
    static std::vector<T> Read(const tarn::BufferRecord* record) {
        std::vector<T> values(record->count);
        EXPECT_EQ(record->data.size(), values.size() * sizeof(T));
        std::memcpy(values.data(), record->data.data(), std::min(record->data.size(), values.size() * sizeof(T)));
        return values;
    }
    template <class Vertex>
    std::vector<Vertex> Vertices(const qe::Ref<tarn::Mesh>& made) {
        EXPECT_EQ(builder.vertexBufferRecordOf(made->vertexBuffer())->format, uint32_t(Vertex::kFormat));
        return Read<Vertex>(builder.vertexBufferRecordOf(made->vertexBuffer()));
    }
    Indices IndicesOf(const qe::Ref<tarn::Mesh>& made) {
        return Read<uint16_t>(builder.indexBufferRecordOf(made->indexBuffer()));
    }
    qe::Ref<tarn::MaterialData> Solid(float red) {
        qe::Ref<tarn::MaterialData> material = tarn::createMaterial(&cache, "solid");
        tarn::setVectorParameter(material, "DiffuseColor", {red, 0.0f, 0.0f, 0.0f});
        return material;
    }

    tarn::MaterialCache cache;
    tarn::KivaContainer container;
    tarn::KivaBuilder builder{&container};
    FbxManager* manager = FbxManager::Create();
    FbxMesh* mesh = nullptr;
    std::vector<FbxString> uvSetNames;
};

TEST_F(MeshBuilderTest, BadPolygonsAreSkippedWhole) {
    mesh->InitControlPoints(3);
    mesh->SetControlPointAt(FbxVector4(1, 0, 0), 1);
    mesh->SetControlPointAt(FbxVector4(1, 1, 0), 2);
    Polygon({0, 1});        // too few corners
    Polygon({0, 1, 2, 9});  // last corner names no control point: its first triangle goes too
    Polygon({0, -1, 2});
    Polygon({2, 1, 0});  // the only good one
    Polygon({0, 1, 2});  // runs past the polygon vertices the source admits
    PolygonSource source = Source();
    source.polygonVertexCount -= 1;

    auto meshBuilder = createMeshBuilder(kPlain, builder);
    for (int p : {-1, 0, 1, 2, 4, 5, 1000}) meshBuilder->addPolygon(source, p);
    std::vector<qe::Ref<tarn::Mesh>> out;
    meshBuilder->finish(out);
    EXPECT_TRUE(out.empty()) << "a builder without triangles makes no mesh";

    meshBuilder = createMeshBuilder(kPlain, builder);
    for (int p = 0; p < 5; ++p) meshBuilder->addPolygon(source, p);
    meshBuilder->finish(out);
    ASSERT_EQ(out.size(), 1u);
    EXPECT_EQ(IndicesOf(out[0]), (Indices{0, 1, 2}));
    // Without normals and UV sets everything but the position is zero.
    const auto vertices = Vertices<VertexP3N3C4T4>(out[0]);
    ASSERT_EQ(vertices.size(), 3u);
    EXPECT_EQ(vertices[0].position, (Floats3{1, 1, 0}));
    VertexP3N3C4T4 zero{};
    EXPECT_EQ(std::memcmp(&vertices[2], &zero, sizeof zero), 0);
}

TEST_F(MeshBuilderTest, AMeshFullOfSixteenBitIndicesContinuesInTheNextWithTheSameMaterial) {
    // One fan of 21848 corners: 21846 triangles, one more than a mesh holds.
    constexpr int kCorners = 21848;
    mesh->InitControlPoints(kCorners);
    mesh->BeginPolygon();
    for (int i = 0; i < kCorners; ++i) {
        mesh->SetControlPointAt(FbxVector4(i, i % 2, 0), i);
        mesh->AddPolygon(i);
    }
    const auto meshes = Build(kPlain, Solid(1.0f));
    ASSERT_EQ(meshes.size(), 2u);
    EXPECT_EQ(IndicesOf(meshes[0]).size(), 65535u);
    EXPECT_EQ(Vertices<VertexP3N3C4T4>(meshes[0]).size(), size_t(kCorners - 1));
    ASSERT_EQ(meshes[0]->materialGroups().size(), 1u);
    EXPECT_EQ(meshes[0]->materialGroups()[0].primitiveCount, 21845u);

    // The last triangle starts afresh: its corner 0 is a vertex again.
    EXPECT_EQ(IndicesOf(meshes[1]), (Indices{0, 1, 2}));
    const auto vertices = Vertices<VertexP3N3C4T4>(meshes[1]);
    ASSERT_EQ(vertices.size(), 3u);
    EXPECT_EQ(vertices[0].position, (Floats3{0, 0, 0}));
    EXPECT_EQ(vertices[2].position, (Floats3{kCorners - 1, 1, 0}));
    const auto& groups = meshes[1]->materialGroups();
    ASSERT_EQ(groups.size(), 1u);
    EXPECT_EQ(groups[0].firstIndex, 0u);
    EXPECT_EQ(groups[0].primitiveCount, 1u);
    EXPECT_EQ(groups[0].material.get(), meshes[0]->materialGroups()[0].material.get());
}

TEST(VertexFormats, ShadersChooseFormatsAndSkinningOverridesThem) {
    using tarn::VertexFormat;
    EXPECT_EQ(vertexFormatForShader("solid", false), kPlain);
    EXPECT_EQ(vertexFormatForShader("textured", false), kPlain);
    for (const char* shader : {"textured_normal", "textured_normal_material", "asteroid"}) {
        EXPECT_EQ(vertexFormatForShader(shader, false), VertexFormat::Position3Normal3Tan3Bin3TexCoord4) << shader;
        EXPECT_EQ(vertexFormatForShader(shader, true), VertexFormat::Position3Weights4bBones4bNormal3TexCoord2);
    }
    // An empty material (materials switched off) still takes a format.
    EXPECT_EQ(vertexFormatFor({}, false), kPlain);
    EXPECT_EQ(vertexFormatFor({}, true), VertexFormat::Position3Weights4bBones4bNormal3TexCoord2);
    EXPECT_DEATH(vertexFormatForShader("Solid", false), "no vertex format for shader");
    tarn::KivaContainer container;
    tarn::KivaBuilder builder(&container);
    EXPECT_DEATH(createMeshBuilder(VertexFormat::Position3Normal3, builder), "Incompletely implemented vertex format.");
}

}  // namespace
