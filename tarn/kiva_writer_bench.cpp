#include <benchmark/benchmark.h>

#include <cstring>
#include <vector>

#include "tarn/kiva_builder.h"
#include "tarn/kiva_writer.h"
#include "tarn/material_cache.h"

namespace tarn {
namespace {

constexpr int kVertices = 1'000'000;

// One model over `meshCount` meshes that share the vertices between them,
// in the format and index width that the scene's mesh builders use.
void fill(KivaContainer& container, KivaBuilder& builder, MaterialCache& cache, int meshCount) {
    const auto format = VertexFormat::Position3Normal3Color4TexCoord4;
    const size_t stride = static_cast<size_t>(vertexFormatInfo(format).stride);
    const int perMesh = kVertices / meshCount;
    std::vector<uint8_t> vertices(stride * perMesh, 0x3F);
    std::vector<uint16_t> indices(static_cast<size_t>(perMesh / 3) * 3);
    for (size_t i = 0; i < indices.size(); ++i) indices[i] = static_cast<uint16_t>(i);
    Matrix16 identity{};
    identity[0] = identity[5] = identity[10] = identity[15] = 1;
    ModelRecord* model = container.addModel("model", identity, nullptr);
    for (int m = 0; m < meshCount; ++m) {
        auto vb = builder.createVertexBuffer(format, static_cast<uint32_t>(perMesh), 0, 0);
        vb->writeData(vertices.data(), vertices.size());
        auto ib = builder.createIndexBuffer(IF_UInt16, static_cast<uint32_t>(indices.size()), 0, 0);
        ib->writeData(indices.data(), indices.size() * 2);
        auto material = createMaterial(&cache, "lit");
        setVectorParameter(material, "DiffuseColor", {float(m % 4), 0, 0, 1});
        internMaterial(material);
        MaterialGroup group(material, 0, static_cast<uint32_t>(indices.size() / 3), kPrimitiveTriangleList);
        auto mesh = builder.createMesh(vb, ib, &group, 1);
        model->meshBindings.push_back({"mesh" + std::to_string(m), builder.meshRecordOf(mesh), identity, {}});
    }
}

void BM_BuildAndSerializeMillionVertices(benchmark::State& state) {
    const int meshCount = static_cast<int>(state.range(0));
    size_t bytes = 0;
    for (auto _ : state) {
        MaterialCache cache;
        KivaContainer container;
        KivaBuilder builder(&container);
        fill(container, builder, cache, meshCount);
        auto file = serializeKiva(container).bytes;
        bytes = file.size();
        benchmark::DoNotOptimize(file.data());
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * bytes));
    state.counters["file_MB"] = static_cast<double>(bytes) / 1e6;
}
BENCHMARK(BM_BuildAndSerializeMillionVertices)->Arg(16)->Arg(64)->Unit(benchmark::kMillisecond);

void BM_SerializeMillionVertices(benchmark::State& state) {
    MaterialCache cache;
    KivaContainer container;
    KivaBuilder builder(&container);
    fill(container, builder, cache, static_cast<int>(state.range(0)));
    size_t bytes = 0;
    for (auto _ : state) {
        auto file = serializeKiva(container).bytes;
        bytes = file.size();
        benchmark::DoNotOptimize(file.data());
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * bytes));
}
BENCHMARK(BM_SerializeMillionVertices)->Arg(16)->Unit(benchmark::kMillisecond);

// What serialization cannot beat: copying the payload twice (into the
// arena, then into the result), with zeroed storage as the arena has.
void BM_TwoCopiesOfTheSameBytes(benchmark::State& state) {
    const size_t size = size_t{kVertices} * 44 + size_t{kVertices / 3} * 3 * 2;
    std::vector<uint8_t> source(size, 0x3F);
    for (auto _ : state) {
        std::unique_ptr<uint8_t[]> arena(new uint8_t[size]());
        std::memcpy(arena.get(), source.data(), size);
        std::vector<uint8_t> result(size);
        std::memcpy(result.data(), arena.get(), size);
        benchmark::DoNotOptimize(result.data());
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * size));
}
BENCHMARK(BM_TwoCopiesOfTheSameBytes)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace tarn
