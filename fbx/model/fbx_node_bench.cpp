#include <benchmark/benchmark.h>
#include <malloc.h>

#include <vector>

#include "fbx/model/fbx_manager.h"
#include "fbx/model/fbx_mesh.h"
#include "fbx/model/fbx_node.h"
#include "fbx/model/fbx_null.h"
#include "fbx/model/fbx_scene.h"

namespace {

constexpr int kNodes = 20000;

size_t heapInUse() { return mallinfo2().uordblks; }

// Nodes as a file brings them: made in a scene, two transform values set,
// then the update from properties. Plain nodes (only "Lcl" values set) keep
// sharing the empty pivot set; pivoted nodes (a rotation pivot too) get
// their own.
void BM_NodesAsRead(benchmark::State& state) {
    bool pivoted = state.range(0) != 0;
    for (auto _ : state) {
        FbxManager* manager = FbxManager::Create();
        FbxScene* scene = FbxScene::Create(manager, "scene");
        FbxNode* root = scene->GetRootNode();
        std::vector<FbxNode*> nodes;
        nodes.reserve(kNodes);
        size_t before = heapInUse();
        for (int i = 0; i < kNodes; ++i) {
            FbxNode* node = FbxNode::Create(scene, "node");
            node->LclTranslation().Set(FbxDouble3(i, 0, 0));
            node->LclRotation().Set(FbxDouble3(0, 90, 0));
            if (pivoted) node->RotationPivot().Set(FbxDouble3(1, 2, 3));
            root->AddChild(node);
            nodes.push_back(node);
        }
        size_t made = heapInUse();
        for (FbxNode* node : nodes) node->UpdatePivotsAndLimitsFromProperties();
        size_t updated = heapInUse();
        state.counters["bytes_per_node"] = static_cast<double>(made - before) / kNodes;
        state.counters["bytes_per_update"] = static_cast<double>(updated - made) / kNodes;
        manager->Destroy();
    }
    state.SetItemsProcessed(state.iterations() * kNodes);
}
BENCHMARK(BM_NodesAsRead)->Arg(0)->Arg(1)->ArgName("pivoted")->Unit(benchmark::kMillisecond);

// The update alone on a node with a few values set.
void BM_UpdatePivotsAndLimits(benchmark::State& state) {
    FbxManager* manager = FbxManager::Create();
    FbxNode* node = FbxNode::Create(manager, "node");
    node->RotationPivot().Set(FbxDouble3(1, 2, 3));
    node->PreRotation().Set(FbxDouble3(0, 0, 90));
    node->RotationActive().Set(true);
    for (auto _ : state) node->UpdatePivotsAndLimitsFromProperties();
    manager->Destroy();
}
BENCHMARK(BM_UpdatePivotsAndLimits);

// What extraction asks of each node: its mesh (not the default attribute
// here), its children and its geometric transform.
void BM_NodeQueries(benchmark::State& state) {
    FbxManager* manager = FbxManager::Create();
    FbxScene* scene = FbxScene::Create(manager, "scene");
    FbxNode* node = FbxNode::Create(scene, "node");
    node->AddNodeAttribute(FbxNull::Create(scene, "null"));
    node->AddNodeAttribute(FbxMesh::Create(scene, "mesh"));
    for (int i = 0; i < 4; ++i) node->AddChild(FbxNode::Create(scene, "child"));
    for (auto _ : state) {
        benchmark::DoNotOptimize(node->GetMesh());
        benchmark::DoNotOptimize(node->GetChild(node->GetChildCount() - 1));
        benchmark::DoNotOptimize(node->GetGeometricScaling(FbxNode::eSourcePivot));
    }
    manager->Destroy();
}
BENCHMARK(BM_NodeQueries);

}  // namespace
