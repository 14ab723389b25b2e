// Imports a generated mesh of 1,000,000 quads (a 1000 by 1000 grid over a
// gentle wave) with normals by polygon vertex, UVs through an index and
// materials by polygon, all arrays zlib-compressed as exporters write them,
// with values of float precision as most tools store them. Beside the time
// it reports the decoded array bytes per second, and the peak memory of the
// import against the decoded arrays' bytes. BM_InflateArrays inflates the
// same compressed arrays with plain zlib into fresh buffers: the bound that
// the import's array throughput is measured against.
#include <benchmark/benchmark.h>
#include <malloc.h>
#include <unistd.h>
#include <zlib.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>
#include <vector>

#include "fbx/io/fbx_binary_builder_testing.h"
#include "fbx/io/fbx_importer.h"
#include "fbx/io/fbx_io_settings.h"
#include "fbx/model/fbx_manager.h"
#include "fbx/model/fbx_mesh.h"
#include "fbx/model/fbx_scene.h"

namespace {

constexpr int kGrid = 1000;  // quads per side
constexpr int kPoints = (kGrid + 1) * (kGrid + 1);
constexpr int kPolygons = kGrid * kGrid;
constexpr int kCorners = 4 * kPolygons;

struct CompressedArray {
    const char* name;
    char code;
    uint32_t count;
    size_t bytes;  // decoded
    std::vector<uint8_t> data;
};

struct MeshFile {
    std::string path;
    std::vector<CompressedArray> arrays;
    size_t decodedBytes = 0;
    size_t fileBytes = 0;
};

double f32(double v) { return static_cast<double>(static_cast<float>(v)); }

template <class T>
CompressedArray compress(const char* name, char code, const std::vector<T>& values) {
    CompressedArray a{name, code, static_cast<uint32_t>(values.size()), values.size() * sizeof(T), {}};
    a.data = FbxBinaryBuilder::Deflate(values.data(), a.bytes);
    return a;
}

void array(FbxBinaryBuilder& b, const CompressedArray& a) {
    b.Begin(a.name).ArrayWithHeader(a.code, a.count, 1, a.data).End();
}

void element(FbxBinaryBuilder& b, const char* word, const char* mapping, const char* reference,
             std::initializer_list<const CompressedArray*> arrays) {
    b.Begin(word).Int(0);
    b.Begin("Version").Int(101).End();
    b.Begin("Name").String(std::string(word) == "LayerElementUV" ? "map" : "").End();
    b.Begin("MappingInformationType").String(mapping).End();
    b.Begin("ReferenceInformationType").String(reference).End();
    for (const CompressedArray* a : arrays) array(b, *a);
    b.End();
}

MeshFile buildFile() {
    MeshFile file;
    std::vector<double> points, normals, uvs;
    std::vector<double> pointNormals;
    points.reserve(static_cast<size_t>(kPoints) * 3);
    for (int i = 0; i <= kGrid; ++i)
        for (int j = 0; j <= kGrid; ++j) {
            double x = j * 0.01, y = i * 0.01;
            double z = 0.1 * std::sin(x * 5.0) * std::cos(y * 5.0);
            double dx = 0.5 * std::cos(x * 5.0) * std::cos(y * 5.0);
            double dy = -0.5 * std::sin(x * 5.0) * std::sin(y * 5.0);
            double length = std::sqrt(dx * dx + dy * dy + 1.0);
            points.insert(points.end(), {f32(x), f32(y), f32(z)});
            pointNormals.insert(pointNormals.end(), {f32(-dx / length), f32(-dy / length), f32(1.0 / length)});
            uvs.insert(uvs.end(), {f32(j / double(kGrid)), f32(i / double(kGrid))});
        }
    std::vector<int32_t> corners, uvIndex, materials;
    corners.reserve(kCorners);
    normals.reserve(static_cast<size_t>(kCorners) * 3);
    for (int i = 0; i < kGrid; ++i)
        for (int j = 0; j < kGrid; ++j) {
            int a = i * (kGrid + 1) + j;
            int quad[4] = {a, a + 1, a + kGrid + 2, a + kGrid + 1};
            for (int k = 0; k < 4; ++k) {
                corners.push_back(k == 3 ? -quad[k] - 1 : quad[k]);
                uvIndex.push_back(quad[k]);
                const double* n = &pointNormals[static_cast<size_t>(quad[k]) * 3];
                normals.insert(normals.end(), {n[0], n[1], n[2]});
            }
            materials.push_back((i / 100 + j / 100) % 4);
        }
    pointNormals = {};
    file.arrays.push_back(compress("Vertices", 'd', points));
    file.arrays.push_back(compress("PolygonVertexIndex", 'i', corners));
    file.arrays.push_back(compress("Normals", 'd', normals));
    file.arrays.push_back(compress("UV", 'd', uvs));
    file.arrays.push_back(compress("UVIndex", 'i', uvIndex));
    file.arrays.push_back(compress("Materials", 'i', materials));
    for (const CompressedArray& a : file.arrays) file.decodedBytes += a.bytes;

    FbxBinaryBuilder b(7400);
    b.Begin("Creator").String("kiva bench").End();
    b.Begin("Documents");
    b.Begin("Count").Int(1).End();
    b.Begin("Document").Long(1).String("Bench").String("Scene");
    b.Begin("RootNode").Long(0).End();
    b.End();
    b.End();
    b.Begin("Definitions");
    for (const char* word : {"Model", "Geometry", "Material"}) {
        b.Begin("ObjectType").String(word);
        b.Begin("Count").Int(1).End();
        b.End();
    }
    b.End();
    b.Begin("Objects");
    b.Begin("Geometry").Long(10).ObjectName("Wave", "Geometry").String("Mesh");
    array(b, file.arrays[0]);
    array(b, file.arrays[1]);
    element(b, "LayerElementNormal", "ByPolygonVertex", "Direct", {&file.arrays[2]});
    element(b, "LayerElementUV", "ByPolygonVertex", "IndexToDirect", {&file.arrays[3], &file.arrays[4]});
    element(b, "LayerElementMaterial", "ByPolygon", "IndexToDirect", {&file.arrays[5]});
    b.Begin("Layer").Int(0);
    for (const char* type : {"LayerElementNormal", "LayerElementUV", "LayerElementMaterial"}) {
        b.Begin("LayerElement");
        b.Begin("Type").String(type).End();
        b.Begin("TypedIndex").Int(0).End();
        b.End();
    }
    b.End();
    b.End();
    b.Begin("Model").Long(20).ObjectName("Wave", "Model").String("Mesh").EmptyBlock().End();
    for (int m = 0; m < 4; ++m)
        b.Begin("Material")
            .Long(30 + m)
            .ObjectName("Paint" + std::to_string(m), "Material")
            .String("")
            .EmptyBlock()
            .End();
    b.End();
    b.Begin("Connections");
    b.Begin("C").String("OO").Long(20).Long(0).End();
    b.Begin("C").String("OO").Long(10).Long(20).End();
    for (int m = 0; m < 4; ++m) b.Begin("C").String("OO").Long(30 + m).Long(20).End();
    b.End();
    std::vector<uint8_t> bytes = b.Finish();
    file.fileBytes = bytes.size();
    static char path[64];
    std::snprintf(path, sizeof path, "/tmp/kiva_geometry_bench_%d.fbx", static_cast<int>(getpid()));
    file.path = path;
    std::ofstream(file.path, std::ios::binary).write(reinterpret_cast<const char*>(bytes.data()), bytes.size());
    std::atexit([] { std::remove(path); });
    return file;
}

MeshFile& meshFile() {
    static MeshFile file = buildFile();
    return file;
}

// Resident memory now and at its peak since the last reset, in bytes (Linux).
// Free heap memory goes back to the system first, so that what earlier work
// left behind is not counted as the import's baseline.
void resetPeakMemory() {
    malloc_trim(0);
    std::ofstream("/proc/self/clear_refs") << "5";
}

double statusValue(const char* key) {
    std::ifstream status("/proc/self/status");
    std::string line;
    while (std::getline(status, line))
        if (line.rfind(key, 0) == 0) return std::stod(line.substr(std::string(key).size())) * 1024.0;
    return 0.0;
}

void BM_ImportMillionPolygonMesh(benchmark::State& state) {
    MeshFile& file = meshFile();
    double peak = 0.0;
    size_t documentBytes = 0;
    for (auto _ : state) {
        resetPeakMemory();
        double before = statusValue("VmRSS:");
        FbxManager* manager = FbxManager::Create();
        FbxIOSettings* settings = FbxIOSettings::Create(manager, "IOSRoot");
        manager->SetIOSettings(settings);
        FbxImporter* importer = FbxImporter::Create(manager, "");
        FbxScene* scene = FbxScene::Create(manager, "bench");
        if (!importer->Initialize(file.path.c_str(), -1, settings) || !importer->Import(scene)) {
            state.SkipWithError(importer->GetStatus().GetErrorString());
            manager->Destroy();
            break;
        }
        peak = std::max(peak, statusValue("VmHWM:") - before);
        FbxMesh* mesh = scene->GetSrcObject<FbxMesh>(0);
        if (!mesh || mesh->GetPolygonCount() != kPolygons || !mesh->GetElementNormal(0) ||
            mesh->GetElementNormal(0)->GetDirectArray().GetCount() != kCorners) {
            state.SkipWithError("the mesh is not complete");
            manager->Destroy();
            break;
        }
        documentBytes = mesh->GetControlPointArray().Size() * sizeof(FbxVector4) +
                        mesh->GetPolygonArray().Size() * sizeof(FbxMesh::Polygon) +
                        mesh->GetPolygonVertexArray().Size() * sizeof(int) + kCorners * sizeof(FbxVector4) +
                        kPoints * sizeof(FbxVector2) + kCorners * sizeof(int) + kPolygons * sizeof(int);
        manager->Destroy();
    }
    state.counters["file_MB"] = static_cast<double>(file.fileBytes) / 1e6;
    state.counters["decoded_MB"] = static_cast<double>(file.decodedBytes) / 1e6;
    state.counters["document_MB"] = static_cast<double>(documentBytes) / 1e6;
    state.counters["peak_MB"] = peak / 1e6;
    state.counters["peak_per_decoded"] = peak / static_cast<double>(file.decodedBytes);
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * file.decodedBytes));
}

void BM_InflateArrays(benchmark::State& state) {
    MeshFile& file = meshFile();
    for (auto _ : state) {
        for (const CompressedArray& a : file.arrays) {
            auto* out = static_cast<Bytef*>(std::malloc(a.bytes));
            uLongf length = a.bytes;
            if (uncompress(out, &length, a.data.data(), a.data.size()) != Z_OK || length != a.bytes)
                state.SkipWithError("inflate failed");
            benchmark::DoNotOptimize(out);
            std::free(out);
        }
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * file.decodedBytes));
}

BENCHMARK(BM_InflateArrays)->Unit(benchmark::kMillisecond)->MinTime(2.0);
BENCHMARK(BM_ImportMillionPolygonMesh)->Unit(benchmark::kMillisecond)->MinTime(2.0);

}  // namespace
