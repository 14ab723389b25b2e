#include <benchmark/benchmark.h>

#include "fbx/model/fbx_geometry_converter.h"
#include "fbx/model/fbx_layer.h"
#include "fbx/model/fbx_manager.h"
#include "fbx/model/fbx_mesh.h"
#include "fbx/model/fbx_scene.h"

namespace {

// A grid of `side` by `side` quads with a normal per corner, UVs through
// an index and a material per quad; each iteration makes its triangle mesh.
void BM_TriangulateMesh(benchmark::State& state) {
    const int side = static_cast<int>(state.range(0));
    FbxManager* manager = FbxManager::Create();
    FbxScene* scene = FbxScene::Create(manager, "Scene");
    FbxMesh* mesh = FbxMesh::Create(scene, "grid");
    mesh->InitControlPoints((side + 1) * (side + 1));
    for (int y = 0; y <= side; ++y)
        for (int x = 0; x <= side; ++x) mesh->SetControlPointAt(FbxVector4(x, y, 0.01 * x * y), y * (side + 1) + x);
    FbxLayer* layer = mesh->GetLayer(mesh->CreateLayer());
    auto* normals = FbxLayerElementNormal::Create(mesh, "");
    normals->SetMappingMode(FbxLayerElement::eByPolygonVertex);
    layer->SetNormals(normals);
    auto* uvs = FbxLayerElementUV::Create(mesh, "uv");
    uvs->SetMappingMode(FbxLayerElement::eByPolygonVertex);
    uvs->SetReferenceMode(FbxLayerElement::eIndexToDirect);
    layer->SetUVs(uvs);
    auto* materials = FbxLayerElementMaterial::Create(mesh, "");
    materials->SetMappingMode(FbxLayerElement::eByPolygon);
    materials->SetReferenceMode(FbxLayerElement::eIndexToDirect);
    layer->SetMaterials(materials);
    for (int y = 0; y < side; ++y)
        for (int x = 0; x < side; ++x) {
            mesh->BeginPolygon((x + y) % 4);
            for (int v :
                 {y * (side + 1) + x, y * (side + 1) + x + 1, (y + 1) * (side + 1) + x + 1, (y + 1) * (side + 1) + x}) {
                mesh->AddPolygon(v);
                normals->GetDirectArray().Add(FbxVector4(0, 0, 1));
                uvs->GetIndexArray().Add(uvs->GetDirectArray().Add(FbxVector2(x, y)));
            }
            mesh->EndPolygon();
        }
    FbxGeometryConverter converter(manager);
    for (auto _ : state) {
        FbxMesh* triangles = converter.TriangulateMesh(mesh);
        if (!triangles || triangles->GetPolygonCount() != 2 * side * side) state.SkipWithError("wrong triangles");
        state.PauseTiming();
        if (triangles) triangles->Destroy();
        state.ResumeTiming();
    }
    state.SetItemsProcessed(state.iterations() * side * side);
    manager->Destroy();
}
BENCHMARK(BM_TriangulateMesh)->Arg(300)->Unit(benchmark::kMillisecond);

}  // namespace
