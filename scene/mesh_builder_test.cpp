#include "scene/mesh_builder.h"

#include <gtest/gtest.h>

#include <bit>
#include <cstring>
#include <initializer_list>

#include "fbx/model/fbx_manager.h"
#include "fbx/model/fbx_mesh.h"
#include "tarn/kiva_builder.h"
#include "tarn/material_cache.h"

namespace {

class MeshBuilderTest : public ::testing::Test {
protected:
    void SetUp() override {
        manager = FbxManager::Create();
        mesh = FbxMesh::Create(manager, "mesh");
    }
    void TearDown() override { manager->Destroy(); }

    void Points(std::initializer_list<FbxVector4> points) {
        mesh->InitControlPoints(static_cast<int>(points.size()));
        int i = 0;
        for (const FbxVector4& p : points) mesh->SetControlPointAt(p, i++);
    }
    void Polygon(std::initializer_list<int> corners) {
        mesh->BeginPolygon();
        for (int c : corners) mesh->AddPolygon(c);
        mesh->EndPolygon();
    }
    // A UV set on its own layer, by polygon vertex through the index array.
    void Uvs(const char* name, std::initializer_list<FbxVector2> values, std::initializer_list<int> indices) {
        const int layer = mesh->CreateLayer();
        FbxLayerElementUV* uv = FbxLayerElementUV::Create(mesh, name);
        uv->SetMappingMode(FbxLayerElement::eByPolygonVertex);
        uv->SetReferenceMode(FbxLayerElement::eIndexToDirect);
        for (const FbxVector2& v : values) uv->GetDirectArray().Add(v);
        for (int i : indices) uv->GetIndexArray().Add(i);
        mesh->GetLayer(layer)->SetUVs(uv);
    }
    // Builds every polygon of the mesh in one material and returns the
    // meshes made.
    std::vector<qe::Ref<tarn::Mesh>> Build(tarn::VertexFormat format, std::span<const SkinInfluences> skin = {},
                                           qe::Ref<tarn::MaterialData> material = {}) {
        mesh->GetUVSetNames(uvSetNames);
        PolygonSource source = polygonSourceOf(*mesh);
        source.uvSetNames = uvSetNames;
        source.skinInfluences = skin;
        source.tangents = mesh->GetElementTangent(0);
        source.binormals = mesh->GetElementBinormal(0);
        std::unique_ptr<GenericMeshBuilder> meshBuilder = createMeshBuilder(format, builder);
        meshBuilder->setMaterial(material);
        for (int p = 0; p < mesh->GetPolygonCount(); ++p) meshBuilder->addPolygon(source, p);
        std::vector<qe::Ref<tarn::Mesh>> out;
        meshBuilder->finish(out);
        return out;
    }
    template <class Vertex>
    std::vector<Vertex> VerticesOf(const qe::Ref<tarn::Mesh>& made) {
        const tarn::BufferRecord* record = builder.vertexBufferRecordOf(made->vertexBuffer());
        EXPECT_EQ(record->format, static_cast<uint32_t>(Vertex::kFormat));
        std::vector<Vertex> vertices(record->count);
        EXPECT_EQ(record->data.size(), vertices.size() * sizeof(Vertex));
        std::memcpy(vertices.data(), record->data.data(), record->data.size());
        return vertices;
    }
    std::vector<uint16_t> IndicesOf(const qe::Ref<tarn::Mesh>& made) {
        const tarn::BufferRecord* record = builder.indexBufferRecordOf(made->indexBuffer());
        std::vector<uint16_t> indices(record->count);
        EXPECT_EQ(record->data.size(), indices.size() * 2);
        std::memcpy(indices.data(), record->data.data(), record->data.size());
        return indices;
    }
    qe::Ref<tarn::MaterialData> Solid(float red) {
        qe::Ref<tarn::MaterialData> material = tarn::createMaterial(&cache, "solid");
        tarn::setVectorParameter(material, "DiffuseColor", {red, 0.0f, 0.0f, 0.0f});
        return material;
    }

    tarn::MaterialCache cache;
    tarn::KivaContainer container;
    tarn::KivaBuilder builder{&container};
    FbxManager* manager = nullptr;
    FbxMesh* mesh = nullptr;
    std::vector<FbxString> uvSetNames;
};

using Floats2 = std::array<float, 2>;
using Floats3 = std::array<float, 3>;

TEST_F(MeshBuilderTest, PolygonsAreFannedAndVerticesWeldedByTheirBytes) {
    Points({FbxVector4(0, 0, 0), FbxVector4(1, 0, 0), FbxVector4(1, 1, 0), FbxVector4(0, 1, 0), FbxVector4(-0.0, 0, 0),
            FbxVector4(0.1, 0, 0)});
    for (int i = 0; i < 6; ++i) mesh->SetControlPointNormalAt(FbxVector4(0, 0, 1), i);
    Polygon({0, 1, 2, 3});     // two triangles
    Polygon({0, 2, 3});        // all three corners weld with the quad's
    Polygon({4, 1, 2});        // -0 is not +0: one new vertex
    Polygon({0, 1, 2, 3, 5});  // a pentagon: three triangles around corner 0
    Uvs("map", {FbxVector2(0, 0), FbxVector2(0.5, 0), FbxVector2(0.5, 0.3), FbxVector2(0, 0.25)},
        {0, 1, 2, 3, 0, 2, 3, 0, 1, 2, 0, 1, 2, 3, 3});
    Uvs("second", {FbxVector2(0.125, 0.5)}, {0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0});

    const auto meshes = Build(tarn::VertexFormat::Position3Normal3Color4TexCoord4);
    ASSERT_EQ(meshes.size(), 1u);
    EXPECT_EQ(IndicesOf(meshes[0]),
              (std::vector<uint16_t>{0, 1, 2, 0, 2, 3, 0, 2, 3, 4, 1, 2, 0, 1, 2, 0, 2, 3, 0, 3, 5}));
    const auto vertices = VerticesOf<VertexP3N3C4T4>(meshes[0]);
    ASSERT_EQ(vertices.size(), 6u);
    EXPECT_EQ(vertices[1].position, (Floats3{1, 0, 0}));
    EXPECT_EQ(std::bit_cast<uint32_t>(vertices[4].position[0]), 0x80000000u);
    EXPECT_EQ(vertices[5].position, (Floats3{0.1f, 0, 0}));  // narrowed from double
    for (const VertexP3N3C4T4& v : vertices) {
        EXPECT_EQ(v.normal, (Floats3{0, 0, 1}));
        EXPECT_EQ(v.color, (std::array<uint8_t, 4>{}));
        EXPECT_EQ(v.texCoord1, (Floats2{0.125f, 0.5f}));
    }
    // V runs the other way, worked out before narrowing.
    EXPECT_EQ(vertices[0].texCoord0, (Floats2{0, 1}));
    EXPECT_EQ(vertices[2].texCoord0, (Floats2{0.5f, static_cast<float>(1.0 - 0.3)}));
    EXPECT_EQ(vertices[5].texCoord0, (Floats2{0, 0.75f}));

    const auto& groups = meshes[0]->materialGroups();
    ASSERT_EQ(groups.size(), 1u);
    EXPECT_EQ(groups[0].primitiveCount, 7u);
    EXPECT_EQ(groups[0].primitive, tarn::kPrimitiveTriangleList);
}

TEST_F(MeshBuilderTest, BadPolygonsAreSkippedWhole) {
    Points({FbxVector4(0, 0, 0), FbxVector4(1, 0, 0), FbxVector4(1, 1, 0)});
    Polygon({0, 1});        // too few corners
    Polygon({0, 1, 2, 9});  // last corner names no control point: its first triangle goes too
    Polygon({0, -1, 2});    // negative control point
    Polygon({2, 1, 0});     // the only good one
    Polygon({0, 1, 2});     // runs past the polygon vertices the source admits
    mesh->GetUVSetNames(uvSetNames);
    PolygonSource source = polygonSourceOf(*mesh);
    source.polygonVertexCount -= 1;

    auto meshBuilder = createMeshBuilder(tarn::VertexFormat::Position3Normal3Color4TexCoord4, builder);
    meshBuilder->setMaterial({});
    for (int p : {-1, 0, 1, 2, 4, 5, 1000}) meshBuilder->addPolygon(source, p);
    std::vector<qe::Ref<tarn::Mesh>> out;
    meshBuilder->finish(out);
    EXPECT_TRUE(out.empty()) << "a builder without triangles makes no mesh";

    meshBuilder = createMeshBuilder(tarn::VertexFormat::Position3Normal3Color4TexCoord4, builder);
    for (int p = 0; p < 5; ++p) meshBuilder->addPolygon(source, p);
    meshBuilder->finish(out);
    ASSERT_EQ(out.size(), 1u);
    EXPECT_EQ(IndicesOf(out[0]), (std::vector<uint16_t>{0, 1, 2}));
    // Without normals and UV sets everything but the position is zero.
    const auto vertices = VerticesOf<VertexP3N3C4T4>(out[0]);
    ASSERT_EQ(vertices.size(), 3u);
    EXPECT_EQ(vertices[0].position, (Floats3{1, 1, 0}));
    for (const VertexP3N3C4T4& v : vertices) {
        EXPECT_EQ(v.normal, (Floats3{}));
        EXPECT_EQ(v.texCoord0, (Floats2{}));
        EXPECT_EQ(v.texCoord1, (Floats2{}));
    }
}

TEST_F(MeshBuilderTest, MaterialsBecomeGroupsOfOneIndexBuffer) {
    Points({FbxVector4(0, 0, 0), FbxVector4(1, 0, 0), FbxVector4(1, 1, 0), FbxVector4(0, 1, 0)});
    Polygon({0, 1, 2, 3});
    Polygon({0, 1, 2});
    PolygonSource source = polygonSourceOf(*mesh);
    auto meshBuilder = createMeshBuilder(tarn::VertexFormat::Position3Normal3Color4TexCoord4, builder);

    qe::Ref<tarn::MaterialData> unused = Solid(0.25f);
    meshBuilder->setMaterial(unused);  // replaced before any triangle
    meshBuilder->setMaterial(Solid(1.0f));
    meshBuilder->addPolygon(source, 0);
    meshBuilder->setMaterial(Solid(1.0f));  // an equal material goes on in the same group
    meshBuilder->addPolygon(source, 1);
    meshBuilder->setMaterial(Solid(0.5f));
    meshBuilder->addPolygon(source, 1);
    meshBuilder->setMaterial({});  // materials switched off
    meshBuilder->addPolygon(source, 0);
    meshBuilder->setMaterial(Solid(0.75f));  // no polygon: an empty group at the end
    std::vector<qe::Ref<tarn::Mesh>> out;
    meshBuilder->finish(out);

    ASSERT_EQ(out.size(), 1u);
    const auto& groups = out[0]->materialGroups();
    ASSERT_EQ(groups.size(), 4u);
    struct Expected {
        float red;
        uint32_t firstIndex, count;
    };
    const Expected expected[] = {{1.0f, 0, 3}, {0.5f, 9, 1}, {-1, 12, 2}, {0.75f, 18, 0}};
    for (size_t g = 0; g < groups.size(); ++g) {
        EXPECT_EQ(groups[g].firstIndex, expected[g].firstIndex) << g;
        EXPECT_EQ(groups[g].primitiveCount, expected[g].count) << g;
        if (expected[g].red < 0) {
            EXPECT_FALSE(groups[g].material) << g;
        } else {
            ASSERT_TRUE(groups[g].material) << g;
            EXPECT_TRUE(groups[g].material->canonical()) << g;
            EXPECT_EQ(groups[g].material->parameters().vectors.at("DiffuseColor")[0], expected[g].red) << g;
        }
    }
    EXPECT_EQ(IndicesOf(out[0]).size(), 18u);
    EXPECT_EQ(VerticesOf<VertexP3N3C4T4>(out[0]).size(), 4u);
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
    const qe::Ref<tarn::MaterialData> material = Solid(1.0f);
    const auto meshes = Build(tarn::VertexFormat::Position3Normal3Color4TexCoord4, {}, material);
    ASSERT_EQ(meshes.size(), 2u);

    EXPECT_EQ(IndicesOf(meshes[0]).size(), 65535u);
    EXPECT_EQ(VerticesOf<VertexP3N3C4T4>(meshes[0]).size(), size_t(kCorners - 1));
    ASSERT_EQ(meshes[0]->materialGroups().size(), 1u);
    EXPECT_EQ(meshes[0]->materialGroups()[0].primitiveCount, 21845u);

    // The last triangle starts afresh: its corner 0 is a vertex again.
    EXPECT_EQ(IndicesOf(meshes[1]), (std::vector<uint16_t>{0, 1, 2}));
    const auto vertices = VerticesOf<VertexP3N3C4T4>(meshes[1]);
    ASSERT_EQ(vertices.size(), 3u);
    EXPECT_EQ(vertices[0].position, (Floats3{0, 0, 0}));
    EXPECT_EQ(vertices[2].position, (Floats3{kCorners - 1, 1, 0}));
    const auto& groups = meshes[1]->materialGroups();
    ASSERT_EQ(groups.size(), 1u);
    EXPECT_EQ(groups[0].firstIndex, 0u);
    EXPECT_EQ(groups[0].primitiveCount, 1u);
    EXPECT_EQ(groups[0].material.get(), meshes[0]->materialGroups()[0].material.get());
}

TEST_F(MeshBuilderTest, SkinnedVerticesCarryTheirControlPointsInfluenceBytes) {
    Points({FbxVector4(0, 0, 0), FbxVector4(1, 0, 0), FbxVector4(1, 1, 0), FbxVector4(0, 1, 0)});
    for (int i = 0; i < 4; ++i) mesh->SetControlPointNormalAt(FbxVector4(0, 0, 1), i);
    Polygon({0, 1, 2});
    Polygon({0, 2, 3});
    Uvs("map", {FbxVector2(0.25, 0.25)}, {0, 0, 0, 0, 0, 0});
    Uvs("ignored", {FbxVector2(0.5, 0.5)}, {0, 0, 0, 0, 0, 0});
    std::vector<SkinInfluences> skin(4);
    skin[0].weights = {255, 0, 0, 0};
    skin[2].weights = {128, 100, 27, 0};
    skin[2].bones = {3, 0, 7, 0};

    const auto meshes = Build(tarn::VertexFormat::Position3Weights4bBones4bNormal3TexCoord2, skin);
    ASSERT_EQ(meshes.size(), 1u);
    // Corners of one control point weld across polygons.
    EXPECT_EQ(IndicesOf(meshes[0]), (std::vector<uint16_t>{0, 1, 2, 0, 2, 3}));
    const auto vertices = VerticesOf<VertexP3W4B4N3T2>(meshes[0]);
    ASSERT_EQ(vertices.size(), 4u);
    EXPECT_EQ(vertices[0].weights, (std::array<uint8_t, 4>{255, 0, 0, 0}));
    EXPECT_EQ(vertices[2].weights, (std::array<uint8_t, 4>{128, 100, 27, 0}));
    EXPECT_EQ(vertices[2].bones, (std::array<uint8_t, 4>{3, 0, 7, 0}));
    EXPECT_EQ(vertices[1].weights, (std::array<uint8_t, 4>{}));
    EXPECT_EQ(vertices[2].normal, (Floats3{0, 0, 1}));
    EXPECT_EQ(vertices[2].texCoord, (Floats2{0.25f, 0.75f}));
}

TEST_F(MeshBuilderTest, TangentVerticesTakeTangentsAndBinormalsByPolygonVertex) {
    Points({FbxVector4(0, 0, 0), FbxVector4(1, 0, 0), FbxVector4(1, 1, 0), FbxVector4(0, 1, 0)});
    Polygon({0, 1, 2, 3});
    Uvs("map", {FbxVector2(0, 0), FbxVector2(1, 1)}, {0, 1, 1, 0});
    mesh->InitTangents(4);
    FbxLayerElementTangent* tangents = mesh->GetElementTangent(0);
    ASSERT_NE(tangents, nullptr);
    for (int i = 0; i < 4; ++i) tangents->GetDirectArray().SetAt(i, FbxVector4(i, 0.5, 0.25, 1));
    mesh->InitBinormals(4);
    FbxLayerElementBinormal* binormals = mesh->GetElementBinormal(0);
    ASSERT_NE(binormals, nullptr);
    binormals->SetReferenceMode(FbxLayerElement::eIndexToDirect);
    binormals->GetDirectArray().SetAt(0, FbxVector4(0, 0, 1, 0));
    binormals->GetDirectArray().SetAt(1, FbxVector4(0, 1, 0, 0));
    for (int i : {1, 1, 0, 0}) binormals->GetIndexArray().Add(i);

    auto meshes = Build(tarn::VertexFormat::Position3Normal3Tan3Bin3TexCoord4);
    ASSERT_EQ(meshes.size(), 1u);
    auto vertices = VerticesOf<VertexP3N3G3B3T4>(meshes[0]);
    ASSERT_EQ(vertices.size(), 4u);
    for (int i = 0; i < 4; ++i) EXPECT_EQ(vertices[i].tangent, (Floats3{float(i), 0.5f, 0.25f})) << i;
    EXPECT_EQ(vertices[0].binormal, (Floats3{0, 1, 0}));
    EXPECT_EQ(vertices[3].binormal, (Floats3{0, 0, 1}));
    EXPECT_EQ(vertices[2].texCoord0, (Floats2{1, 0}));
    EXPECT_EQ(vertices[2].texCoord1, (Floats2{}));  // no second set

    // Without elements the tangent frame is zero.
    mesh->GetLayer(0)->SetTangents(nullptr);
    mesh->GetLayer(0)->SetBinormals(nullptr);
    meshes = Build(tarn::VertexFormat::Position3Normal3Tan3Bin3TexCoord4);
    vertices = VerticesOf<VertexP3N3G3B3T4>(meshes[0]);
    ASSERT_EQ(vertices.size(), 4u);
    EXPECT_EQ(vertices[1].tangent, (Floats3{}));
    EXPECT_EQ(vertices[1].binormal, (Floats3{}));
}

TEST_F(MeshBuilderTest, UvsOfMissingSetsAreZeroAndUnreadableOnesFlipToOne) {
    Points({FbxVector4(0, 0, 0), FbxVector4(1, 0, 0), FbxVector4(1, 1, 0)});
    Polygon({0, 1, 2});
    Uvs("map", {FbxVector2(0.5, 0.25)}, {0, 5, -1});
    mesh->GetUVSetNames(uvSetNames);
    EXPECT_EQ(readPolygonUv(*mesh, 0, 0, uvSetNames, 0), (Floats2{0.5f, 0.75f}));
    EXPECT_EQ(readPolygonUv(*mesh, 0, 1, uvSetNames, 0), (Floats2{0, 1}));  // index past the values
    EXPECT_EQ(readPolygonUv(*mesh, 0, 2, uvSetNames, 0), (Floats2{0, 1}));  // unmapped corner
    EXPECT_EQ(readPolygonUv(*mesh, 0, 0, uvSetNames, 1), (Floats2{0, 0}));  // no such set
}

TEST(VertexFormats, ShadersChooseFormatsAndSkinningOverridesThem) {
    using tarn::VertexFormat;
    EXPECT_EQ(vertexFormatForShader("solid", false), VertexFormat::Position3Normal3Color4TexCoord4);
    EXPECT_EQ(vertexFormatForShader("textured", false), VertexFormat::Position3Normal3Color4TexCoord4);
    for (const char* shader : {"textured_normal", "textured_normal_material", "asteroid"}) {
        EXPECT_EQ(vertexFormatForShader(shader, false), VertexFormat::Position3Normal3Tan3Bin3TexCoord4) << shader;
        EXPECT_EQ(vertexFormatForShader(shader, true), VertexFormat::Position3Weights4bBones4bNormal3TexCoord2)
            << shader;
    }
    // An empty material (materials switched off) still takes a format.
    EXPECT_EQ(vertexFormatFor({}, false), VertexFormat::Position3Normal3Color4TexCoord4);
    EXPECT_EQ(vertexFormatFor({}, true), VertexFormat::Position3Weights4bBones4bNormal3TexCoord2);
    EXPECT_DEATH(vertexFormatForShader("Solid", false), "no vertex format for shader");
    tarn::KivaContainer container;
    tarn::KivaBuilder builder(&container);
    EXPECT_DEATH(createMeshBuilder(VertexFormat::Position3Normal3, builder), "Incompletely implemented vertex format.");
}

}  // namespace
