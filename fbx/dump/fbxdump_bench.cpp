// fbxdump on files of hostile shapes at N and 4N: time, output bytes and
// peak memory beside the file size. The time of 4N stays within 5 times
// that of N, the output grows with N, and the peak memory of the field dump
// stays within 64 times the file size plus a few MB.
#include <benchmark/benchmark.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <ostream>
#include <streambuf>
#include <string>
#include <vector>

#include "fbx/dump/fbxdump.h"
#include "fbx/io/fbx_test_scenes_testing.h"

namespace {

// Counts what is written and keeps nothing.
class CountingBuffer : public std::streambuf {
public:
    size_t count = 0;

protected:
    int_type overflow(int_type c) override {
        if (c != traits_type::eof()) ++count;
        return c;
    }
    std::streamsize xsputn(const char*, std::streamsize n) override {
        count += static_cast<size_t>(n);
        return n;
    }
};

void resetPeakMemory() { std::ofstream("/proc/self/clear_refs") << "5"; }

double peakMemory() {
    std::ifstream status("/proc/self/status");
    std::string line;
    while (std::getline(status, line))
        if (line.rfind("VmHWM:", 0) == 0) return std::stod(line.substr(6)) * 1024.0;
    return 0.0;
}

void dumpFile(benchmark::State& state, const std::vector<uint8_t>& bytes, std::vector<std::string> options) {
    std::string path = "/tmp/kiva_fbxdump_bench_" + std::to_string(getpid()) + ".fbx";
    std::ofstream(path, std::ios::binary).write(reinterpret_cast<const char*>(bytes.data()), bytes.size());
    options.push_back(path);
    size_t written = 0;
    double peak = 0.0;
    for (auto _ : state) {
        resetPeakMemory();
        CountingBuffer counter;
        std::ostream out(&counter), err(nullptr);
        if (runFbxDump(options, out, err) != 0) state.SkipWithError("the dump failed");
        written = counter.count;
        peak = std::max(peak, peakMemory());
    }
    std::remove(path.c_str());
    state.counters["file_MB"] = static_cast<double>(bytes.size()) / 1e6;
    state.counters["output_MB"] = static_cast<double>(written) / 1e6;
    state.counters["peak_MB"] = peak / 1e6;
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

// A chain of N nested nodes, dumped as text.
void BM_DumpNodeChain(benchmark::State& state) { dumpFile(state, nodeChainFile(static_cast<int>(state.range(0))), {}); }
BENCHMARK(BM_DumpNodeChain)->Arg(5000)->Arg(20000)->Unit(benchmark::kMillisecond);

// One node with N properties of its own, dumped as text.
void BM_DumpManyProperties(benchmark::State& state) {
    dumpFile(state, manyPropertiesFile(static_cast<int>(state.range(0))), {});
}
BENCHMARK(BM_DumpManyProperties)->Arg(25000)->Arg(100000)->Unit(benchmark::kMillisecond);

// Fields nested N deep.
void BM_DumpFieldsNested(benchmark::State& state) {
    dumpFile(state, nestedBlocksFile(static_cast<int>(state.range(0))), {"--fields"});
}
BENCHMARK(BM_DumpFieldsNested)->Arg(20000)->Arg(80000)->Unit(benchmark::kMillisecond);

// One record with N one-byte values: two bytes each in the file.
void BM_DumpFieldsManyValues(benchmark::State& state) {
    FbxBinaryBuilder b(7400);
    b.Begin("Values");
    for (int64_t i = 0; i < state.range(0); ++i) b.Byte(static_cast<int8_t>(i));
    b.End();
    dumpFile(state, b.Finish(), {"--fields"});
}
BENCHMARK(BM_DumpFieldsManyValues)->Arg(1000000)->Arg(4000000)->Unit(benchmark::kMillisecond);

// N records with a compressed array of 16,384 doubles each, about 60 bytes
// in the file: arrays are checked, never kept.
void BM_DumpFieldsCompressedArrays(benchmark::State& state) {
    FbxBinaryBuilder b(7400);
    std::vector<double> zeros(16384, 0.0);
    for (int64_t i = 0; i < state.range(0); ++i) b.Begin("A").DoubleArray(zeros, FbxArrayEncoding::eZlib).End();
    dumpFile(state, b.Finish(), {"--fields"});
}
BENCHMARK(BM_DumpFieldsCompressedArrays)->Arg(1000)->Arg(4000)->Unit(benchmark::kMillisecond);

}  // namespace
