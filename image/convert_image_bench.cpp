// A 4096x4096 image to DXT1 with all its mip levels, beside the compression
// library alone on exactly the same levels: the difference is what halving,
// buffers and copies into the container cost on top of the compression.
#include <benchmark/benchmark.h>
#include <squish.h>

#include <vector>

#include "image/block_encoders.h"
#include "image/halve.h"
#include "image/mip_chain.h"
#include "image/test_images_testing.h"
#include "tarn/kiva_builder.h"

namespace {

constexpr int32_t kSide = 4096;

const std::vector<uint8_t>& sourcePixels() {
    static const std::vector<uint8_t> pixels = patternPixels(kSide, kSide, 4, 42);
    return pixels;
}

void BM_MipChainDxt1(benchmark::State& state) {
    const int32_t mips = fullMipCount(kSide, kSide);
    std::vector<uint8_t> pixels;
    for (auto _ : state) {
        state.PauseTiming();
        pixels = sourcePixels();
        state.ResumeTiming();
        tarn::KivaContainer container;
        tarn::KivaBuilder builder(&container);
        qe::Ref<tarn::Texture> texture = builder.createTexture(tarn::TextureFormat::DXT1, kSide, kSide, mips, 7, 0);
        int32_t w = kSide, h = kSide;
        writeLevels(pixels.data(), w, h, mips, tarn::TextureFormat::DXT1, encodeDxt1, *texture);
        benchmark::DoNotOptimize(builder.textureRecordOf(texture)->data.data());
    }
    state.SetItemsProcessed(state.iterations() * int64_t(kSide) * kSide);
}

void BM_SquishAloneDxt1(benchmark::State& state) {
    // The same levels as the chain makes, prepared outside the timing.
    struct Level {
        std::vector<uint8_t> pixels;
        int32_t w, h;
    };
    std::vector<Level> levels;
    std::vector<uint8_t> pixels = sourcePixels();
    int32_t w = kSide, h = kSide;
    const int32_t mips = fullMipCount(kSide, kSide);
    for (int32_t i = 0; i < mips; ++i) {
        if (i > 0) {
            if (w > 1) halveWidth(pixels.data(), w, h);
            if (h > 1) halveHeight(pixels.data(), w, h);
        }
        levels.push_back({std::vector<uint8_t>(pixels.begin(), pixels.begin() + size_t(w) * size_t(h) * 4), w, h});
    }
    std::vector<uint8_t> blocks(size_t(squish::GetStorageRequirements(kSide, kSide, squish::kDxt1)));
    for (auto _ : state) {
        for (const Level& l : levels) squish::CompressImage(l.pixels.data(), l.w, l.h, blocks.data(), squish::kDxt1);
        benchmark::DoNotOptimize(blocks.data());
    }
    state.SetItemsProcessed(state.iterations() * int64_t(kSide) * kSide);
}

BENCHMARK(BM_MipChainDxt1)->Unit(benchmark::kMillisecond)->Iterations(2);
BENCHMARK(BM_SquishAloneDxt1)->Unit(benchmark::kMillisecond)->Iterations(2);

}  // namespace
