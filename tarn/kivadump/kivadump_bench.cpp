// kivadump --json on a container of about 200 MB, generated once per run:
// textures with full mip chains, 300 meshes with their buffers and materials,
// models binding them to a skeleton, and a long animation. Reported bytes are
// the file's size, so the rate reads as MB of container checked per second.

#include <benchmark/benchmark.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <ostream>
#include <streambuf>

#include "tarn/kivadump/kiva_file_builder_testing.h"
#include "tarn/kivadump/kiva_json_printer.h"
#include "tarn/kivadump/kiva_reader.h"
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
    KivaFileBuilder kiva;
    for (int i = 0; i < 12; ++i)
        kiva.textures.push_back({"rgba" + std::to_string(i), 1, 11, true, 1024, 1024,
                                 std::vector<std::uint8_t>(textureDataSize(1, 1024, 1024, 11), std::uint8_t(i))});
    for (int i = 0; i < 16; ++i)
        kiva.textures.push_back({"dxt" + std::to_string(i), 6, 11, false, 1024, 1024,
                                 std::vector<std::uint8_t>(textureDataSize(6, 1024, 1024, 11), std::uint8_t(i))});
    TestSkeleton skeleton;
    for (int b = 0; b < 100; ++b)
        skeleton.bones.push_back({"bone" + std::to_string(b), b == 0 ? kNone : std::uint16_t(b / 2), {}});
    kiva.skeletons.push_back(skeleton);
    std::vector<std::uint16_t> boneMap(100);
    for (int b = 0; b < 100; ++b) boneMap[b] = std::uint16_t(b);

    constexpr std::uint32_t kVertices = 5000, kTriangles = 10000;
    std::vector<std::uint8_t> indices(kTriangles * 3 * 2);
    for (std::uint32_t i = 0; i < kTriangles * 3; ++i) poke16(indices, 2 * i, std::uint16_t((i * 7919) % kVertices));
    for (int m = 0; m < 300; ++m) {
        kiva.vertexBuffers.push_back({7, kVertices, std::vector<std::uint8_t>(kVertices * 44, std::uint8_t(m))});
        kiva.indexBuffers.push_back({0, kTriangles * 3, indices});
        kiva.materials.push_back(
            {"Lambert" + std::to_string(m % 50),
             {{"AmbientColor", {0.1f, 0.2f, 0.3f, 1}}, {"DiffuseColor", {float(m), 0.5f, 0.25f, 1}}},
             {{"DiffuseTexture", std::uint16_t(m % 28)}},
             {}});
        kiva.meshes.push_back({std::uint16_t(m),
                               std::uint16_t(m),
                               {{"", std::uint16_t(m), 0, kTriangles / 2, 2},
                                {"", std::uint16_t(m), kTriangles * 3 / 2, kTriangles / 2, 2}}});
        kiva.models.push_back(
            {"model" + std::to_string(m), 0, {}, {{"shape" + std::to_string(m), std::uint16_t(m), {}, boneMap}}});
    }
    TestAnimation animation;
    animation.name = "take";
    for (int b = 0; b < 100; ++b) animation.boneNames.push_back("bone" + std::to_string(b));
    animation.frameCount = 9500;
    animation.transforms.assign(std::size_t(animation.frameCount) * 100 * 7, 0.5f);
    kiva.animations.push_back(animation);
    return kiva.build();
}

struct LargeFile {
    std::vector<std::uint8_t> bytes = buildLargeContainer();
    std::filesystem::path path =
        std::filesystem::temp_directory_path() / ("kivadump_bench_" + std::to_string(::getpid()) + ".kiva");
    LargeFile() {
        std::ofstream(path, std::ios::binary)
            .write(reinterpret_cast<const char*>(bytes.data()), std::streamsize(bytes.size()));
    }
    ~LargeFile() { std::filesystem::remove(path); }
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
    const std::string path = file.path.string();
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
