#include <benchmark/benchmark.h>
#include <malloc.h>

#include <atomic>
#include <cstdlib>
#include <ctime>
#include <new>
#include <string>
#include <vector>

#include "fbx/model/fbx_manager.h"
#include "fbx/model/fbx_model_testing.h"

// Counts every allocation of the process, so that the benchmarks can show
// that reads allocate nothing. The replaced operators pair malloc with free,
// which the compiler cannot see through where they are inlined.
#pragma GCC diagnostic ignored "-Wmismatched-new-delete"
namespace {
std::atomic<long long> gAllocations{0};
}

void* operator new(std::size_t size) {
    gAllocations.fetch_add(1, std::memory_order_relaxed);
    if (void* p = std::malloc(size ? size : 1)) return p;
    throw std::bad_alloc();
}
void operator delete(void* p) noexcept { std::free(p); }
void operator delete(void* p, std::size_t) noexcept { std::free(p); }

namespace {

size_t heapInUse() { return mallinfo2().uordblks; }

// CPU time of the process in nanoseconds: the machine may be shared.
double cpuNanoseconds() {
    timespec t;
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &t);
    return static_cast<double>(t.tv_sec) * 1e9 + static_cast<double>(t.tv_nsec);
}

constexpr int kObjects = 100000;

// 100,000 objects of a class with 80 properties; three properties set on
// each; then all 80 read from each.
void BM_WideObjects(benchmark::State& state) {
    for (auto _ : state) {
        FbxManager* manager = FbxManager::Create();
        RegisterTestClasses(manager);
        std::vector<FbxWideObject*> objects;
        objects.reserve(kObjects);
        // The class page is made by the first instance; leave it out.
        objects.push_back(FbxWideObject::Create(manager, "first"));

        size_t before = heapInUse();
        for (int i = 1; i < kObjects; ++i) objects.push_back(FbxWideObject::Create(manager, "object"));
        size_t created = heapInUse();
        for (FbxWideObject* o : objects) {
            o->Property(0).Set(2.5);
            o->Property(1).Set(FbxDouble3(1, 2, 3));
            o->Property(2).Set(false);
        }
        size_t changed = heapInUse();

        long long allocationsBefore = gAllocations.load();
        double start = cpuNanoseconds();
        double sum = 0;
        for (FbxWideObject* o : objects) {
            for (int p = 0; p < FbxWideObject::kPropertyCount; p += 4) {
                sum += o->Property(p).Get<double>();
                sum += o->Property(p + 1).Get<FbxDouble3>()[1];
                sum += o->Property(p + 2).Get<bool>() ? 1 : 0;
                sum += o->Property(p + 3).Get<int>();
            }
        }
        double stop = cpuNanoseconds();
        benchmark::DoNotOptimize(sum);
        long long readAllocations = gAllocations.load() - allocationsBefore;

        double reads = static_cast<double>(objects.size()) * FbxWideObject::kPropertyCount;
        state.counters["bytes_per_new_object"] = static_cast<double>(created - before) / (kObjects - 1);
        state.counters["bytes_per_object_3_set"] = static_cast<double>(changed - before) / (kObjects - 1);
        state.counters["ns_per_read"] = (stop - start) / reads;
        state.counters["allocations_per_read"] = static_cast<double>(readAllocations) / reads;
        manager->Destroy();
    }
}
BENCHMARK(BM_WideObjects)->Iterations(1)->Unit(benchmark::kMillisecond);

// FindProperty by name on an object of the 80-property class, without and
// with the name cache.
void BM_FindProperty(benchmark::State& state) {
    bool cached = state.range(0) != 0;
    FbxManager* manager = FbxManager::Create();
    RegisterTestClasses(manager);
    FbxWideObject* object = FbxWideObject::Create(manager, "o");
    std::vector<std::string> names;
    for (int i = 0; i < FbxWideObject::kPropertyCount; ++i) names.push_back("P" + std::to_string(i));
    if (cached) object->BeginCreateOrFind();
    size_t i = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(object->FindProperty(names[i].c_str()));
        if (++i == names.size()) i = 0;
    }
    if (cached) object->EndCreateOrFind();
    manager->Destroy();
}
BENCHMARK(BM_FindProperty)->Arg(0)->Arg(1)->ArgName("cached");

// A whole bracket: BeginCreateOrFind, 80 finds, EndCreateOrFind.
void BM_FindAllInOneBracket(benchmark::State& state) {
    FbxManager* manager = FbxManager::Create();
    RegisterTestClasses(manager);
    FbxWideObject* object = FbxWideObject::Create(manager, "o");
    std::vector<std::string> names;
    for (int i = 0; i < FbxWideObject::kPropertyCount; ++i) names.push_back("P" + std::to_string(i));
    for (auto _ : state) {
        object->BeginCreateOrFind();
        for (const std::string& name : names) benchmark::DoNotOptimize(object->FindProperty(name.c_str()));
        object->EndCreateOrFind();
    }
    state.SetItemsProcessed(state.iterations() * FbxWideObject::kPropertyCount);
    manager->Destroy();
}
BENCHMARK(BM_FindAllInOneBracket);

// Tearing down a manager whose 100,000 objects are all sources of one
// object made after them, and of a scene-like collection made before them:
// the teardown must not search long connection lists once per object.
void BM_ManagerTeardown(benchmark::State& state) {
    for (auto _ : state) {
        state.PauseTiming();
        FbxManager* manager = FbxManager::Create();
        FbxObject* first = FbxObject::Create(manager, "first");
        std::vector<FbxObject*> objects;
        for (int i = 0; i < kObjects; ++i) objects.push_back(FbxObject::Create(first, "object"));
        FbxObject* last = FbxObject::Create(manager, "last");
        for (FbxObject* o : objects) last->ConnectSrcObject(o);
        // Views on both, as a reader's lookups would leave them.
        benchmark::DoNotOptimize(first->GetSrcObjectCount(FbxCriteria::ObjectType(FbxObject::ClassId)));
        benchmark::DoNotOptimize(last->GetSrcObjectCount(FbxCriteria::IsProperty()));
        state.ResumeTiming();
        manager->Destroy();
    }
}
BENCHMARK(BM_ManagerTeardown)->Iterations(3)->Unit(benchmark::kMillisecond);

}  // namespace
