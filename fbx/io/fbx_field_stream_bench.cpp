// Speed and memory of the binary field stream over a large generated file:
// a full walk that decodes every array, the same arrays inflated by plain
// zlib, and a walk of the top level only.
#include "fbx/io/fbx_binary_builder_testing.h"
#include "fbx/io/fbx_field_stream.h"
#include "fbx/io/fbx_field_walk_testing.h"

#include <benchmark/benchmark.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>
#include <zlib.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>
#include <vector>

namespace {

// Geometry objects with vertex, index, normal and UV arrays, zlib-encoded:
// about 110 MB of compressed array data.
constexpr int kGeometryCount = 12;
constexpr int kVertexCount = 400000;

std::vector<uint8_t> BuildFile() {
    FbxBinaryBuilder b(7400);
    b.SetCompressionLevel(1);  // fast to build; inflating costs about the same
    b.Begin("FBXHeaderExtension").Begin("FBXHeaderVersion").Int(1003).End().Begin("FBXVersion").Int(7400).End().End();
    b.SectionIdentity();
    b.Begin("GlobalSettings").Begin("Version").Int(1000).End().End();
    b.Begin("Objects");
    uint32_t seed = 12345;
    auto noise = [&seed] {
        seed = seed * 1664525u + 1013904223u;
        return static_cast<double>(seed >> 8) / 16777216.0;
    };
    for (int g = 0; g < kGeometryCount; ++g) {
        std::vector<double> vertices(kVertexCount * 3);
        std::vector<double> normals(kVertexCount * 3);
        std::vector<float> uvs(kVertexCount * 2);
        std::vector<int32_t> indices(kVertexCount * 3);
        for (size_t i = 0; i < vertices.size(); ++i) {
            vertices[i] = std::round((std::sin(static_cast<double>(i) * 0.001) * 100.0 + noise()) * 4096.0) / 4096.0;
            normals[i] = std::round((noise() * 2.0 - 1.0) * 1024.0) / 1024.0;
        }
        for (size_t i = 0; i < uvs.size(); ++i) uvs[i] = static_cast<float>(std::round(noise() * 4096.0) / 4096.0);
        for (size_t i = 0; i < indices.size(); ++i) {
            int32_t index = static_cast<int32_t>((i / 3 + i % 3 + static_cast<size_t>(noise() * 8)) % kVertexCount);
            indices[i] = i % 3 == 2 ? -index - 1 : index;
        }
        b.Begin("Geometry").Long(1000 + g).ObjectName("Mesh" + std::to_string(g), "Geometry").String("Mesh");
        b.Begin("Vertices").DoubleArray(vertices, FbxArrayEncoding::eZlib).End();
        b.Begin("PolygonVertexIndex").IntArray(indices, FbxArrayEncoding::eZlib).End();
        b.Begin("LayerElementNormal").Int(0);
        b.Begin("Normals").DoubleArray(normals, FbxArrayEncoding::eZlib).End();
        b.End();
        b.Begin("LayerElementUV").Int(0);
        b.Begin("UV").FloatArray(uvs, FbxArrayEncoding::eZlib).End();
        b.End();
        b.End();
    }
    b.End();
    b.Begin("Connections").Begin("C").String("OO").Long(1000).Long(0).End().End();
    return b.Finish(FbxSectionTail::Full());
}

// The file is built in a child process, so that building it does not count
// in this process's peak memory.
class BenchFile {
public:
    BenchFile() {
        dir_ = std::filesystem::temp_directory_path() / ("kiva_fbxio_bench_" + std::to_string(getpid()));
        std::filesystem::create_directories(dir_);
        path_ = (dir_ / "large.fbx").string();
        pid_t child = fork();
        if (child == 0) {
            std::vector<uint8_t> bytes = BuildFile();
            std::ofstream(path_, std::ios::binary)
                .write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
            _exit(0);
        }
        int status = 0;
        waitpid(child, &status, 0);
    }
    ~BenchFile() { std::filesystem::remove_all(dir_); }
    const std::string& Path() const { return path_; }

private:
    std::filesystem::path dir_;
    std::string path_;
};

const BenchFile& File() {
    static BenchFile file;
    return file;
}

double PeakRssMiB() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return static_cast<double>(usage.ru_maxrss) / 1024.0;
}

bool OpenStream(FbxFieldStream& stream, benchmark::State& state) {
    stream.SetFbx7Mode(true);
    stream.SetCacheSize(8);
    if (!stream.OpenFile(File().Path().c_str())) {
        state.SkipWithError(stream.GetStatus().GetErrorString());
        return false;
    }
    return true;
}

void BM_TopLevelWalk(benchmark::State& state) {
    File();
    uint64_t fields = 0;
    for (auto _ : state) {
        FbxFieldStream stream;
        if (!OpenStream(stream, state)) return;
        FbxWalkStats stats = FbxWalkFields(stream, false, 0);
        fields = stats.fields;
        benchmark::DoNotOptimize(stats.checksum);
    }
    state.counters["fields"] = static_cast<double>(fields);
    state.counters["peak_rss_MiB"] = PeakRssMiB();
}
BENCHMARK(BM_TopLevelWalk)->Unit(benchmark::kMillisecond);

void BM_FullWalkDecode(benchmark::State& state) {
    uint64_t decoded = 0;
    uint64_t fileSize = std::filesystem::file_size(File().Path());
    for (auto _ : state) {
        FbxFieldStream stream;
        if (!OpenStream(stream, state)) return;
        FbxWalkStats stats = FbxWalkFields(stream, true);
        decoded = stats.arrayBytes;
        benchmark::DoNotOptimize(stats.checksum);
    }
    state.SetBytesProcessed(static_cast<int64_t>(decoded * state.iterations()));
    state.counters["decoded_MiB"] = static_cast<double>(decoded) / 1048576.0;
    state.counters["file_MiB"] = static_cast<double>(fileSize) / 1048576.0;
    state.counters["peak_rss_MiB"] = PeakRssMiB();
}
BENCHMARK(BM_FullWalkDecode)->Unit(benchmark::kMillisecond);

struct PackedArray {
    std::vector<uint8_t> data;
    size_t decodedSize;
};

void BM_PlainZlibInflate(benchmark::State& state) {
    // Re-read the arrays' compressed bytes straight from the file, by
    // searching the known layout: every array value here is zlib-encoded and
    // begins with its code, count, encoding 1 and byte length.
    std::vector<PackedArray> arrays;
    {
        std::ifstream in(File().Path(), std::ios::binary);
        std::vector<uint8_t> bytes((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
        static const char* names[] = {"Vertices", "PolygonVertexIndex", "Normals", "UV"};
        for (size_t pos = 0; pos + 32 < bytes.size(); ++pos) {
            uint8_t nameLength = bytes[pos];
            for (const char* name : names) {
                size_t n = std::strlen(name);
                if (nameLength != n || pos + 1 + n + 13 > bytes.size()) continue;
                if (std::memcmp(&bytes[pos + 1], name, n) != 0) continue;
                const uint8_t* value = &bytes[pos + 1 + n];
                char code = static_cast<char>(value[0]);
                uint32_t count, encoding, length;
                std::memcpy(&count, value + 1, 4);
                std::memcpy(&encoding, value + 5, 4);
                std::memcpy(&length, value + 9, 4);
                if (encoding != 1 || pos + 1 + n + 13 + length > bytes.size()) continue;
                size_t element = code == 'd' ? 8 : 4;
                arrays.push_back({std::vector<uint8_t>(value + 13, value + 13 + length), count * element});
                pos += n + 13 + length;
                break;
            }
        }
    }
    size_t largest = 0;
    uint64_t total = 0;
    for (const PackedArray& a : arrays) {
        largest = std::max(largest, a.decodedSize);
        total += a.decodedSize;
    }
    std::vector<uint8_t> out(largest);
    for (auto _ : state) {
        for (const PackedArray& a : arrays) {
            uLongf size = static_cast<uLongf>(a.decodedSize);
            if (uncompress(out.data(), &size, a.data.data(), static_cast<uLong>(a.data.size())) != Z_OK) {
                state.SkipWithError("inflate failed");
                return;
            }
            benchmark::DoNotOptimize(out.data());
        }
    }
    state.SetBytesProcessed(static_cast<int64_t>(total * state.iterations()));
    state.counters["arrays"] = static_cast<double>(arrays.size());
    state.counters["decoded_MiB"] = static_cast<double>(total) / 1048576.0;
}
BENCHMARK(BM_PlainZlibInflate)->Unit(benchmark::kMillisecond);

}  // namespace
