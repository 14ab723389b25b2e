#include "fbx/model/fbx_amatrix.h"
#include "fbx/model/fbx_rotation.h"

#include <benchmark/benchmark.h>

// A million calls each: the conversions and products that evaluation and
// baking run per node and per frame.

static void BM_RotationFromAngles(benchmark::State& state) {
    const int order = static_cast<int>(state.range(0));
    FbxVector4 e(10.0, 20.0, 30.0);
    for (auto _ : state) {
        FbxAMatrix m = RotationFromAngles(e, order);
        benchmark::DoNotOptimize(m);
        e[0] += 0.001;
    }
}
BENCHMARK(BM_RotationFromAngles)->Arg(eEulerXYZ)->Arg(eEulerZYX)->Arg(eSphericXYZ)->Iterations(1000000);

static void BM_AnglesFromRotation(benchmark::State& state) {
    const int order = static_cast<int>(state.range(0));
    FbxAMatrix m = RotationFromAngles(FbxVector4(10.0, 20.0, 30.0), order);
    for (auto _ : state) {
        FbxVector4 e = AnglesFromRotation(m, order);
        benchmark::DoNotOptimize(e);
        benchmark::ClobberMemory();
    }
}
BENCHMARK(BM_AnglesFromRotation)->Arg(eEulerXYZ)->Arg(eEulerZYX)->Arg(eSphericXYZ)->Iterations(1000000);

static void BM_MatrixProduct(benchmark::State& state) {
    const FbxAMatrix a(FbxVector4(1, 2, 3), FbxVector4(10, 20, 30), FbxVector4(1, 2, 3));
    FbxAMatrix b(FbxVector4(-1, 0, 4), FbxVector4(-40, 5, 60), FbxVector4(1, 1, 1));
    for (auto _ : state) {
        FbxAMatrix p = a * b;
        benchmark::DoNotOptimize(p);
        benchmark::ClobberMemory();
    }
}
BENCHMARK(BM_MatrixProduct)->Iterations(1000000);

static void BM_Inverse(benchmark::State& state) {
    const FbxAMatrix a(FbxVector4(1, 2, 3), FbxVector4(10, 20, 30), FbxVector4(1, 2, 3));
    for (auto _ : state) {
        FbxAMatrix p = a.Inverse();
        benchmark::DoNotOptimize(p);
        benchmark::ClobberMemory();
    }
}
BENCHMARK(BM_Inverse)->Iterations(1000000);
