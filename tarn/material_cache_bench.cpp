#include <benchmark/benchmark.h>

#include <string>
#include <vector>

#include "tarn/material_cache.h"

namespace tarn {
namespace {

// 100,000 raw materials over 1,000 distinct values, each built and interned
// as scene extraction does; the canonical handles are kept.
void BM_Intern100kMaterialsOf1kValues(benchmark::State& state) {
    constexpr int kMaterials = 100'000, kDistinct = 1'000;
    for (auto _ : state) {
        MaterialCache cache;
        std::vector<qe::Ref<MaterialData>> kept;
        kept.reserve(kMaterials);
        for (int i = 0; i < kMaterials; ++i) {
            const int value = i % kDistinct;
            auto m = createMaterial(&cache, value % 2 ? "lit" : "lit_skinned");
            setVectorParameter(m, "DiffuseColor", {float(value), 0.5f, 0.25f, 1});
            setVectorParameter(m, "SpecularColor", {1, 1, 1, float(value % 7)});
            internMaterial(m);
            kept.push_back(std::move(m));
        }
        if (cache.canonicalCount() != kDistinct) state.SkipWithError("wrong number of canonical materials");
    }
    state.SetItemsProcessed(state.iterations() * kMaterials);
}
BENCHMARK(BM_Intern100kMaterialsOf1kValues)->Unit(benchmark::kMillisecond);

// The same raw object interned again and again: served by the recent list.
void BM_InternSameRawObjectAgain(benchmark::State& state) {
    MaterialCache cache;
    auto raw = createMaterial(&cache, "lit");
    setVectorParameter(raw, "DiffuseColor", {1, 0, 0, 1});
    auto keep = raw;
    for (auto _ : state) {
        auto handle = raw;
        internMaterial(handle);
        benchmark::DoNotOptimize(handle.get());
    }
}
BENCHMARK(BM_InternSameRawObjectAgain);

}  // namespace
}  // namespace tarn
