// Whole scene conversions: the bundled demo scene, and a large scene when
// KIVA_BENCH_SCENE names one (made by ../shared/bench/big_scene.py: a
// 512x512 grid with 64 materials, 2,000 boxes, a 100-bone skinned tube and
// 600 frames of keys). Reports the input's bytes per second.
#include <benchmark/benchmark.h>
#include <sys/stat.h>

#include <cstdlib>
#include <sstream>
#include <string>

#include "convert/dependency_set.h"
#include "convert/error_reporter.h"
#include "convert/settings_store.h"
#include "scene/convert_scene.h"
#include "tarn/kiva_builder.h"
#include "tarn/kiva_container.h"
#include "tarn/kiva_writer.h"
#include "tarn/material_cache.h"

namespace {

void convertOnce(benchmark::State& state, const std::string& path) {
    struct stat info {};
    if (stat(path.c_str(), &info) != 0) {
        state.SkipWithError(("no scene at " + path).c_str());
        return;
    }
    for (auto _ : state) {
        std::ostringstream err;
        ErrorReporter errors(err);
        DependencySet dependencies;
        SettingsStore settings(dependencies, errors);
        tarn::MaterialCache materialCache;
        tarn::KivaContainer container;
        tarn::KivaBuilder builder(&container);
        convertScene(path, SceneOptions{}, builder, materialCache, settings, dependencies, errors);
        benchmark::DoNotOptimize(tarn::serializeKiva(container).bytes.size());
    }
    state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(info.st_size));
}

void BM_ConvertDemoScene(benchmark::State& state) {
    convertOnce(state, std::string(KIVA_SOURCE_DIR) + "/examples/scene/demo.fbx");
}
BENCHMARK(BM_ConvertDemoScene)->Unit(benchmark::kMillisecond);

void BM_ConvertLargeScene(benchmark::State& state) {
    const char* path = std::getenv("KIVA_BENCH_SCENE");
    if (!path) {
        state.SkipWithError("KIVA_BENCH_SCENE names no scene");
        return;
    }
    convertOnce(state, path);
}
BENCHMARK(BM_ConvertLargeScene)->Unit(benchmark::kMillisecond)->Iterations(1);

}  // namespace
