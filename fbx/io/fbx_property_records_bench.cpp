#include <benchmark/benchmark.h>

#include <string>
#include <vector>

#include "fbx/io/fbx_binary_builder_testing.h"
#include "fbx/io/fbx_field_stream.h"
#include "fbx/io/fbx_memory_file_testing.h"
#include "fbx/io/fbx_property_records.h"
#include "fbx/model/fbx_manager.h"
#include "fbx/model/fbx_model_testing.h"

namespace {

constexpr int kObjects = 10000;
constexpr int kBlocks = 1000;  // distinct blocks in the file, read in turn
constexpr int kRecords = FbxWideObject::kPropertyCount;

// A file of kBlocks "Obj" records, each with a "Properties70" block of one
// record per property of FbxWideObject. With `defaults`, every value equals
// the class default; otherwise every value differs from it.
std::vector<uint8_t> buildFile(bool defaults) {
    FbxBinaryBuilder b;
    for (int block = 0; block < kBlocks; ++block) {
        b.Begin("Obj").Long(block);
        b.Begin("Properties70");
        for (int i = 0; i < kRecords; ++i) {
            std::string name = "P" + std::to_string(i);
            double v = defaults ? i : i + 0.5 + block;
            b.Begin("P").String(name);
            switch (i % 4) {
            case 0:
                b.String("double").String("Number").String("").Double(v);
                break;
            case 1:
                b.String("Vector3D").String("Vector").String("A").Double(v).Double(v).Double(v);
                break;
            case 2:
                b.String("bool").String("").String("").Int(defaults ? 1 : 0);
                break;
            default:
                b.String("int").String("Integer").String("").Int(static_cast<int>(v) + (defaults ? 0 : 1));
                break;
            }
            b.End();
        }
        b.End();
        b.End();
    }
    return b.Finish();
}

void readBlocks(benchmark::State& state, bool defaults) {
    FbxManager* manager = FbxManager::Create();
    RegisterTestClasses(manager);
    std::vector<FbxObject*> objects;
    for (int i = 0; i < kObjects; ++i) objects.push_back(FbxWideObject::Create(manager, "wide"));
    FbxMemoryFile file(buildFile(defaults));
    FbxFieldStream stream;
    stream.SetFbx7Mode(true);
    if (!stream.OpenStream(&file, nullptr, true)) {
        state.SkipWithError("the file does not open");
        manager->Destroy();
        return;
    }
    FbxStatus status;
    for (auto _ : state) {
        for (FbxObject* object : objects) {
            if (!stream.BeginField("Obj")) {
                stream.RewindFields();
                stream.BeginField("Obj");
            }
            stream.EnterBlock();
            FbxReadProperties70(stream, *object, status);
            stream.LeaveBlock();
            stream.EndField();
        }
    }
    state.SetItemsProcessed(state.iterations() * static_cast<int64_t>(kObjects) * kRecords);
    manager->Destroy();
}

// Every value equals the class default: no entry, no allocation per object.
void BM_Properties70_DefaultValues(benchmark::State& state) { readBlocks(state, true); }
// Every value differs: each object gets its own values.
void BM_Properties70_OwnValues(benchmark::State& state) { readBlocks(state, false); }

BENCHMARK(BM_Properties70_DefaultValues)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Properties70_OwnValues)->Unit(benchmark::kMillisecond);

}  // namespace
