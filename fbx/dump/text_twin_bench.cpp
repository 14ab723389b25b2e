// Reading a text FBX file against reading its binary twin: a generated scene
// of meshes and objects, written once as binary (arrays zlib-encoded, as
// exporters write them) and once as text by writeFbxText, then walked whole
// through the field stream, every value converted and every array decoded.
// Reported: MB/s of file and values per second.
#include <benchmark/benchmark.h>
#include <unistd.h>

#include <cmath>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "fbx/dump/fbx_text_writer.h"
#include "fbx/io/fbx_binary_builder_testing.h"
#include "fbx/io/fbx_field_stream.h"

namespace {

constexpr int kGeometries = 16;
constexpr int kVertices = 12000;
constexpr int kModels = 4000;

std::vector<uint8_t> buildScene() {
    FbxBinaryBuilder b(7400);
    b.SetCompressionLevel(1);
    b.Begin("FBXHeaderExtension").Begin("FBXHeaderVersion").Int(1003).End().Begin("FBXVersion").Int(7400).End().End();
    b.Begin("Objects");
    uint32_t seed = 99;
    // Values as an exporter of float data writes them: doubles widened from
    // floats, so that their decimal forms are long.
    auto noise = [&seed] {
        seed = seed * 1664525u + 1013904223u;
        return static_cast<double>(static_cast<float>(static_cast<double>(seed >> 8) / 16777216.0 * 20.0 - 10.0));
    };
    for (int g = 0; g < kGeometries; ++g) {
        std::vector<double> vertices(kVertices * 3), normals(kVertices * 9), uvs(kVertices * 2);
        std::vector<int32_t> indices(kVertices * 3), uvIndices(kVertices * 3);
        for (double& v : vertices) v = noise();
        for (double& v : normals) v = noise() / 10.0;
        for (double& v : uvs) v = noise() / 20.0 + 0.5;
        for (size_t i = 0; i < indices.size(); ++i) {
            int32_t index = static_cast<int32_t>((i * 7 + i / 3) % kVertices);
            indices[i] = i % 3 == 2 ? -index - 1 : index;
            uvIndices[i] = static_cast<int32_t>(i % (kVertices * 2 / 3));
        }
        b.Begin("Geometry").Long(1000 + g).ObjectName("Mesh" + std::to_string(g), "Geometry").String("Mesh");
        b.Begin("Vertices").DoubleArray(vertices, FbxArrayEncoding::eZlib).End();
        b.Begin("PolygonVertexIndex").IntArray(indices, FbxArrayEncoding::eZlib).End();
        b.Begin("LayerElementNormal").Int(0).Begin("Version").Int(101).End();
        b.Begin("Normals").DoubleArray(normals, FbxArrayEncoding::eZlib).End().End();
        b.Begin("LayerElementUV").Int(0).Begin("UV").DoubleArray(uvs, FbxArrayEncoding::eZlib).End();
        b.Begin("UVIndex").IntArray(uvIndices, FbxArrayEncoding::eZlib).End().End();
        b.End();
    }
    for (int m = 0; m < kModels; ++m) {
        b.Begin("Model").Long(100000 + m).ObjectName("Node" + std::to_string(m), "Model").String("Null");
        b.Begin("Version").Int(232).End();
        b.Begin("Properties70");
        for (const char* name : {"Lcl Translation", "Lcl Rotation", "Lcl Scaling"}) {
            b.Begin("P").String(name).String(name).String("").String("A");
            b.Double(noise()).Double(noise()).Double(noise()).End();
        }
        for (int p = 0; p < 12; ++p) {
            b.Begin("P").String("kiva_" + std::to_string(p)).String("double").String("Number").String("A+U");
            b.Double(noise()).End();
        }
        b.End().End();
    }
    b.End();
    b.Begin("Connections");
    for (int m = 0; m < kModels; ++m) b.Begin("C").String("OO").Long(100000 + m).Long(0).End();
    b.End();
    return b.Finish();
}

// The two files, made once and removed at exit.
class Twins {
public:
    Twins() {
        dir_ = std::filesystem::temp_directory_path() / ("kiva_text_twin_bench_" + std::to_string(getpid()));
        std::filesystem::create_directories(dir_);
        binary_ = (dir_ / "scene_binary.fbx").string();
        text_ = (dir_ / "scene_text.fbx").string();
        std::vector<uint8_t> bytes = buildScene();
        std::ofstream(binary_, std::ios::binary)
            .write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
        FbxFieldStream stream;
        stream.SetFbx7Mode(true);
        std::ofstream out(text_, std::ios::binary);
        std::string error;
        ok_ = stream.OpenFile(binary_.c_str()) && writeFbxText(stream, out, error);
    }
    ~Twins() { std::filesystem::remove_all(dir_); }
    const std::string& path(bool text) const { return text ? text_ : binary_; }
    bool ok() const { return ok_; }

private:
    std::filesystem::path dir_;
    std::string binary_, text_;
    bool ok_ = false;
};

const Twins& twins() {
    static Twins files;
    return files;
}

// Reads every value the way a reader would: numbers converted, arrays
// decoded. Gives the number of scalar values and array elements.
uint64_t walk(FbxFieldStream& s) {
    uint64_t values = 0;
    for (int f = 0; f < s.FieldCount(); ++f) {
        for (int i = 0; s.BeginFieldAt(f, i); ++i) {
            bool textArray = false;  // whose block holds its elements
            while (s.ValuesLeft() > 0) {
                char code = s.NextValueType();
                int count = 0;
                textArray = textArray || code == 'a';
                if (code == 'a' || code == 'd') {
                    benchmark::DoNotOptimize(s.NextDoubleArray(count));
                } else if (code == 'i') {
                    benchmark::DoNotOptimize(s.NextIntArray(count));
                } else if (code == 'S' && s.IsBinary()) {
                    benchmark::DoNotOptimize(s.NextString());
                    count = 1;
                } else {
                    benchmark::DoNotOptimize(s.NextDouble());
                    count = 1;
                }
                values += static_cast<uint64_t>(count);
            }
            if (s.HasBlock() && !textArray) {
                if (s.EnterBlock()) values += walk(s);
                s.LeaveBlock();
            }
            s.EndField();
        }
    }
    s.RewindFields();
    return values;
}

void readFile(benchmark::State& state, bool text) {
    if (!twins().ok()) {
        state.SkipWithError("the files could not be made");
        return;
    }
    const std::string& path = twins().path(text);
    uint64_t values = 0;
    for (auto _ : state) {
        FbxFieldStream stream;
        stream.SetFbx7Mode(true);
        if (!stream.OpenFile(path.c_str())) {
            state.SkipWithError(stream.GetStatus().GetErrorString());
            return;
        }
        values = walk(stream);
    }
    double bytes = static_cast<double>(std::filesystem::file_size(path));
    state.SetBytesProcessed(static_cast<int64_t>(bytes * static_cast<double>(state.iterations())));
    state.counters["file_MB"] = bytes / 1e6;
    state.counters["values"] = static_cast<double>(values);
    state.counters["values_per_s"] =
        benchmark::Counter(static_cast<double>(values) * state.iterations(), benchmark::Counter::kIsRate);
}

void BM_ReadBinary(benchmark::State& state) { readFile(state, false); }
void BM_ReadText(benchmark::State& state) { readFile(state, true); }
BENCHMARK(BM_ReadBinary)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_ReadText)->Unit(benchmark::kMillisecond);

}  // namespace
