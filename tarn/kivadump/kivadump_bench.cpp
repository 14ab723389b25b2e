// kivadump --json on a container of about 200 MB, generated once per run:
// textures with full mip chains, 300 meshes with their buffers and materials,
// models binding them to a skeleton, and a long animation. Reported bytes are
// the file's size, so the rate reads as MB of container checked per second.

#include <benchmark/benchmark.h>

#include <ostream>
#include <streambuf>

#include "qe/scratch_dir_testing.h"
#include "tarn/kivadump/kiva_json_printer.h"
#include "tarn/kivadump/kiva_reader.h"
#include "tarn/kivadump/kiva_sample_testing.h"
#include "tarn/kivadump/kivadump.h"

namespace {

using namespace tarn::kivaread;
using namespace tarn::kivaread::testing;

class NullBuffer : public std::streambuf {
protected:
    int overflow(int c) override { return traits_type::not_eof(c); }
    std::streamsize xsputn(const char*, std::streamsize count) override { return count; }
};

std::vector<std::uint8_t> buildLargeContainer() {
    tarn::KivaContainer kiva;
    for (int i = 0; i < 12; ++i)
        kiva.addTexture("rgba" + std::to_string(i), 1, 1024, 1024, 11, true, textureDataSize(1, 1024, 1024, 11));
    std::vector<const tarn::TextureRecord*> textures;
    for (int i = 0; i < 16; ++i)
        kiva.addTexture("dxt" + std::to_string(i), 6, 1024, 1024, 11, false, textureDataSize(6, 1024, 1024, 11));
    for (const auto& texture : kiva.textures()) textures.push_back(texture.get());
    auto skeleton = qe::Ref<tarn::AnimSkeleton>(new tarn::AnimSkeleton);
    for (int b = 0; b < 100; ++b)
        skeleton->bones.push_back({"bone" + std::to_string(b), b == 0 ? -1 : b / 2, {}, {}, {}, {}});
    const tarn::SkeletonRecord* skeletonRecord = kiva.addSkeleton(skeleton);
    std::vector<std::uint32_t> boneMap(100);
    for (std::uint32_t b = 0; b < 100; ++b) boneMap[b] = b;

    constexpr std::uint32_t kVertices = 5000, kTriangles = 10000;
    for (int m = 0; m < 300; ++m) {
        tarn::BufferRecord* vertices = kiva.addVertexBuffer(7, kVertices, kVertices * 44);
        std::fill(vertices->data.begin(), vertices->data.end(), std::uint8_t(m));
        tarn::BufferRecord* indices = kiva.addIndexBuffer(0, kTriangles * 3, kTriangles * 3 * 2);
        for (std::uint32_t i = 0; i < kTriangles * 3; ++i)
            poke16(indices->data, 2 * i, std::uint16_t((i * 7919) % kVertices));
        tarn::MaterialRecord* material = kiva.addMaterial("Lambert" + std::to_string(m % 50));
        material->vectorParameters = {{"AmbientColor", {0.1f, 0.2f, 0.3f, 1}},
                                      {"DiffuseColor", {float(m), 0.5f, 0.25f, 1}}};
        material->textureParameters = {{"DiffuseTexture", textures[m % 28]}};
        tarn::MeshRecord* mesh = kiva.addMesh(vertices, indices, 2);
        mesh->materialGroups[0] = {"", material, 0, kTriangles / 2, 2};
        mesh->materialGroups[1] = {"", material, kTriangles * 3 / 2, kTriangles / 2, 2};
        kiva.addModel("model" + std::to_string(m), {}, skeletonRecord)
            ->meshBindings.push_back({"shape" + std::to_string(m), mesh, {}, boneMap});
    }
    std::vector<std::string> boneNames;
    for (int b = 0; b < 100; ++b) boneNames.push_back("bone" + std::to_string(b));
    auto animation = qe::Ref<tarn::Animation>(new tarn::Animation("take", boneNames, 9500, 60, 1));
    for (auto& transform : animation->transforms) transform = {{0.5f, 0.5f, 0.5f}, {0.5f, 0.5f, 0.5f, 0.5f}};
    kiva.addAnimation(animation);
    return writeKiva(kiva);
}

struct LargeFile {
    std::vector<std::uint8_t> bytes = buildLargeContainer();
    ScratchDir dir;
    std::string path = dir.write("large.kiva", std::string(bytes.begin(), bytes.end()));
};

const LargeFile& largeFile() {
    static LargeFile file;
    return file;
}

// The whole program: read the file from disk, check it, print JSON.
void BM_KivadumpJson(benchmark::State& state) {
    const LargeFile& file = largeFile();
    NullBuffer buffer;
    std::ostream out(&buffer), err(&buffer);
    const std::string& path = file.path;
    const char* args[] = {"--json", path.c_str()};
    for (auto _ : state) {
        if (runKivadump(args, out, err) != 0) state.SkipWithError("kivadump found a fault");
    }
    state.SetBytesProcessed(std::int64_t(state.iterations()) * std::int64_t(file.bytes.size()));
    state.counters["file_MB"] = double(file.bytes.size()) / 1e6;
}
BENCHMARK(BM_KivadumpJson)->Unit(benchmark::kMillisecond);

// Checking and printing alone, from bytes in memory.
void BM_ReadAndPrintJsonInMemory(benchmark::State& state) {
    const LargeFile& file = largeFile();
    NullBuffer buffer;
    std::ostream out(&buffer);
    for (auto _ : state) {
        KivaReader reader(file.bytes);
        KivaFile kiva;
        if (!reader.read(kiva)) state.SkipWithError(reader.fault().c_str());
        printKivaJson(kiva, out);
    }
    state.SetBytesProcessed(std::int64_t(state.iterations()) * std::int64_t(file.bytes.size()));
}
BENCHMARK(BM_ReadAndPrintJsonInMemory)->Unit(benchmark::kMillisecond);

}  // namespace
