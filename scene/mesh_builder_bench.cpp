#include <benchmark/benchmark.h>

#include <cmath>
#include <vector>

#include "fbx/model/fbx_manager.h"
#include "fbx/model/fbx_mesh.h"
#include "scene/mesh_builder.h"
#include "tarn/kiva_builder.h"

namespace {

// A curved grid of 224 x 224 quads (100,352 triangles once fanned) with a
// normal per control point, a UV set by polygon vertex through an index
// array, tangents and binormals by polygon vertex, and skin bytes per
// control point: every attribute the three formats read. Neighbouring quads
// share their corners, so most corners weld.
struct GridScene {
    static constexpr int kQuads = 224;
    static constexpr int kSide = kQuads + 1;

    GridScene() {
        manager = FbxManager::Create();
        mesh = FbxMesh::Create(manager, "grid");
        mesh->InitControlPoints(kSide * kSide);
        for (int y = 0; y < kSide; ++y)
            for (int x = 0; x < kSide; ++x) {
                const int i = y * kSide + x;
                mesh->SetControlPointAt(FbxVector4(x, y, std::sin(x * 0.1) * std::cos(y * 0.1)), i);
                mesh->SetControlPointNormalAt(FbxVector4(std::sin(x * 0.1), std::cos(y * 0.1), 1), i);
            }
        mesh->CreateLayer();
        FbxLayerElementUV* uv = FbxLayerElementUV::Create(mesh, "map");
        uv->SetMappingMode(FbxLayerElement::eByPolygonVertex);
        uv->SetReferenceMode(FbxLayerElement::eIndexToDirect);
        for (int i = 0; i < kSide * kSide; ++i)
            uv->GetDirectArray().Add(FbxVector2(double(i % kSide) / kQuads, double(i / kSide) / kQuads));
        mesh->GetLayer(0)->SetUVs(uv);
        for (int y = 0; y < kQuads; ++y)
            for (int x = 0; x < kQuads; ++x) {
                mesh->BeginPolygon();
                for (int corner : {y * kSide + x, y * kSide + x + 1, (y + 1) * kSide + x + 1, (y + 1) * kSide + x}) {
                    mesh->AddPolygon(corner);
                    uv->GetIndexArray().Add(corner);
                }
                mesh->EndPolygon();
            }
        mesh->GenerateTangentsData("map");
        mesh->GetUVSetNames(uvSetNames);
        skin.resize(static_cast<size_t>(kSide * kSide));
        for (size_t i = 0; i < skin.size(); ++i) {
            skin[i].bones = {uint8_t(i % 7), uint8_t(i % 5), 0, 0};
            skin[i].weights = {uint8_t(128 + i % 100), uint8_t(127 - i % 100), 0, 0};
        }
    }
    ~GridScene() { manager->Destroy(); }

    PolygonSource source() const {
        PolygonSource source = polygonSourceOf(*mesh);
        source.uvSetNames = uvSetNames;
        source.tangents = mesh->GetElementTangent(0);
        source.binormals = mesh->GetElementBinormal(0);
        source.skinInfluences = skin;
        return source;
    }

    FbxManager* manager;
    FbxMesh* mesh;
    std::vector<FbxString> uvSetNames;
    std::vector<SkinInfluences> skin;
};

// Builds the whole grid into container meshes of one format.
void BM_BuildGridMesh(benchmark::State& state) {
    static const GridScene scene;
    const auto format = static_cast<tarn::VertexFormat>(state.range(0));
    const PolygonSource source = scene.source();
    const int polygons = scene.mesh->GetPolygonCount();
    for (auto _ : state) {
        tarn::KivaContainer container;
        tarn::KivaBuilder builder(&container);
        std::unique_ptr<GenericMeshBuilder> meshBuilder = createMeshBuilder(format, builder);
        meshBuilder->setMaterial({});
        for (int p = 0; p < polygons; ++p) meshBuilder->addPolygon(source, p);
        std::vector<qe::Ref<tarn::Mesh>> meshes;
        meshBuilder->finish(meshes);
        if (meshes.size() < 5) state.SkipWithError("the grid should split into several meshes");
        benchmark::DoNotOptimize(meshes.data());
    }
    state.SetItemsProcessed(state.iterations() * polygons * 2);
    state.SetLabel("triangles");
}
BENCHMARK(BM_BuildGridMesh)
    ->Arg(static_cast<int>(tarn::VertexFormat::Position3Normal3Color4TexCoord4))
    ->Arg(static_cast<int>(tarn::VertexFormat::Position3Weights4bBones4bNormal3TexCoord2))
    ->Arg(static_cast<int>(tarn::VertexFormat::Position3Normal3Tan3Bin3TexCoord4))
    ->Unit(benchmark::kMillisecond);

}  // namespace
