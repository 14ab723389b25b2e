// Imports a generated scene of N nodes, N node attributes and N / 10
// materials with all their connections: each node has its attribute and one
// material, and hangs under the root or under an earlier node. Reports the
// file size and the peak memory of the import beside the time. Running it
// at several sizes shows the cost per object staying flat. Then files of
// hostile shapes at N and 4N.
#include <benchmark/benchmark.h>
#include <unistd.h>

#include <cstdio>
#include <fstream>
#include <string>
#include <vector>

#include "fbx/io/fbx_binary_builder_testing.h"
#include "fbx/io/fbx_importer.h"
#include "fbx/io/fbx_io_settings.h"
#include "fbx/io/fbx_test_scenes_testing.h"
#include "fbx/model/fbx_manager.h"
#include "fbx/model/fbx_node.h"
#include "fbx/model/fbx_scene.h"

namespace {

constexpr int64_t kNodeBase = 1000000;
constexpr int64_t kAttributeBase = 2000000;
constexpr int64_t kMaterialBase = 3000000;

std::vector<uint8_t> buildScene(int nodes) {
    int materials = nodes / 10;
    FbxBinaryBuilder b(7400);
    b.Begin("Creator").String("kiva bench").End();
    b.Begin("Documents");
    b.Begin("Count").Int(1).End();
    b.Begin("Document").Long(1).String("Bench").String("Scene");
    b.Begin("RootNode").Long(0).End();
    b.End();
    b.End();
    b.Begin("Definitions");
    for (const char* word : {"Model", "NodeAttribute", "Material"}) {
        b.Begin("ObjectType").String(word);
        b.Begin("Count").Int(nodes).End();
        b.End();
    }
    b.End();
    b.Begin("Objects");
    for (int i = 0; i < nodes; ++i) {
        std::string name = "Node" + std::to_string(i);
        b.Begin("Model").Long(kNodeBase + i).ObjectName(name, "Model").String("Null");
        b.Begin("Version").Int(232).End();
        b.Begin("Properties70");
        b.Begin("P").String("Lcl Translation").String("Lcl Translation").String("").String("A");
        b.Double(i).Double(1.0).Double(2.0).End();
        b.Begin("P").String("DefaultAttributeIndex").String("int").String("Integer").String("").Int(0).End();
        b.End();
        b.End();
        b.Begin("NodeAttribute").Long(kAttributeBase + i).ObjectName(name, "NodeAttribute").String("Null");
        b.Begin("TypeFlags").String("Null").End();
        b.End();
    }
    for (int i = 0; i < materials; ++i) {
        b.Begin("Material").Long(kMaterialBase + i).ObjectName("Material" + std::to_string(i), "Material").String("");
        b.Begin("ShadingModel").String("lambert").End();
        b.Begin("Properties70");
        b.Begin("P").String("DiffuseColor").String("Color").String("").String("A");
        b.Double(0.5).Double(0.5).Double(i % 7 / 7.0).End();
        b.End();
        b.End();
    }
    b.End();
    b.Begin("Connections");
    for (int i = 0; i < nodes; ++i) {
        // A tenth of the nodes under the root, the others under an earlier
        // node: the root node holds many children.
        int64_t parent = i % 10 == 0 ? 0 : kNodeBase + i / 2;
        b.Begin("C").String("OO").Long(kNodeBase + i).Long(parent).End();
        b.Begin("C").String("OO").Long(kAttributeBase + i).Long(kNodeBase + i).End();
        b.Begin("C").String("OO").Long(kMaterialBase + i % materials).Long(kNodeBase + i).End();
    }
    b.End();
    return b.Finish();
}

// Peak resident memory since the last reset, in bytes (Linux).
void resetPeakMemory() { std::ofstream("/proc/self/clear_refs") << "5"; }

double peakMemory() {
    std::ifstream status("/proc/self/status");
    std::string line;
    while (std::getline(status, line))
        if (line.rfind("VmHWM:", 0) == 0) return std::stod(line.substr(6)) * 1024.0;
    return 0.0;
}

void BM_ImportScene(benchmark::State& state) {
    int nodes = static_cast<int>(state.range(0));
    std::string path = "/tmp/kiva_docreader_bench_" + std::to_string(getpid()) + ".fbx";
    std::vector<uint8_t> bytes = buildScene(nodes);
    std::ofstream(path, std::ios::binary).write(reinterpret_cast<const char*>(bytes.data()), bytes.size());
    size_t fileSize = bytes.size();
    bytes = {};
    double peak = 0.0;
    int children = 0;
    for (auto _ : state) {
        resetPeakMemory();
        FbxManager* manager = FbxManager::Create();
        FbxIOSettings* settings = FbxIOSettings::Create(manager, "IOSRoot");
        manager->SetIOSettings(settings);
        FbxImporter* importer = FbxImporter::Create(manager, "");
        FbxScene* scene = FbxScene::Create(manager, "bench");
        if (!importer->Initialize(path.c_str(), -1, settings) || !importer->Import(scene)) {
            state.SkipWithError(importer->GetStatus().GetErrorString());
            manager->Destroy();
            break;
        }
        children = scene->GetRootNode()->GetChildCount();
        peak = std::max(peak, peakMemory());
        manager->Destroy();
    }
    std::remove(path.c_str());
    if (children != nodes / 10) state.SkipWithError("the tree is not complete");
    state.counters["file_MB"] = static_cast<double>(fileSize) / 1e6;
    state.counters["peak_MB"] = peak / 1e6;
    state.counters["objects"] = nodes * 2 + nodes / 10;
    state.SetItemsProcessed(state.iterations() * (nodes * 2 + nodes / 10));
}

BENCHMARK(BM_ImportScene)->Arg(12500)->Arg(25000)->Arg(50000)->Unit(benchmark::kMillisecond);

// Files of one hostile shape at N and 4N: the time of 4N stays within 5
// times that of N when the import is linear or n log n.
void importShape(benchmark::State& state, const std::vector<uint8_t>& bytes) {
    std::string path = "/tmp/kiva_docreader_bench_" + std::to_string(getpid()) + ".fbx";
    std::ofstream(path, std::ios::binary).write(reinterpret_cast<const char*>(bytes.data()), bytes.size());
    for (auto _ : state) {
        FbxManager* manager = FbxManager::Create();
        FbxIOSettings* settings = FbxIOSettings::Create(manager, "IOSRoot");
        manager->SetIOSettings(settings);
        FbxImporter* importer = FbxImporter::Create(manager, "");
        FbxScene* scene = FbxScene::Create(manager, "bench");
        if (!importer->Initialize(path.c_str(), -1, settings) || !importer->Import(scene))
            state.SkipWithError(importer->GetStatus().GetErrorString());
        manager->Destroy();
    }
    std::remove(path.c_str());
    state.counters["file_MB"] = static_cast<double>(bytes.size()) / 1e6;
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

// A chain of N nested nodes, connected from the top down: each parent
// connection is checked against a cycle.
void BM_ImportNodeChain(benchmark::State& state) {
    importShape(state, nodeChainFile(static_cast<int>(state.range(0))));
}
BENCHMARK(BM_ImportNodeChain)->Arg(50000)->Arg(200000)->Unit(benchmark::kMillisecond);

// N nodes that all use one material: each connection is checked against
// those made before.
void BM_ImportSharedMaterial(benchmark::State& state) {
    importShape(state, sharedMaterialFile(static_cast<int>(state.range(0))));
}
BENCHMARK(BM_ImportSharedMaterial)->Arg(50000)->Arg(200000)->Unit(benchmark::kMillisecond);

// One node with N distinct "Properties70" records.
void BM_ImportManyProperties(benchmark::State& state) {
    importShape(state, manyPropertiesFile(static_cast<int>(state.range(0))));
}
BENCHMARK(BM_ImportManyProperties)->Arg(50000)->Arg(200000)->Unit(benchmark::kMillisecond);

// "Definitions" with N distinct type words.
void BM_ImportManyTypeWords(benchmark::State& state) {
    importShape(state, manyTypeWordsFile(static_cast<int>(state.range(0))));
}
BENCHMARK(BM_ImportManyTypeWords)->Arg(50000)->Arg(200000)->Unit(benchmark::kMillisecond);

}  // namespace
