#include "image/mip_chain.h"

#include <gtest/gtest.h>
#include <squish.h>

#include <cstring>
#include <utility>
#include <vector>

#include "image/block_encoders.h"
#include "image/halve.h"
#include "image/raw_encoders.h"
#include "image/test_images_testing.h"
#include "tarn/kiva_builder.h"

namespace {

using tarn::TextureFormat;

TEST(MipChain, FullCountEndsAtTwoByTwoForPowersOfTwo) {
    const int cases[][3] = {{256, 256, 8}, {100, 100, 7}, {1, 1, 1},     {2, 2, 1},
                            {3, 3, 2},     {8, 2, 3},     {1, 4096, 12}, {65535, 1, 16}};
    for (const auto& [w, h, count] : cases) EXPECT_EQ(fullMipCount(w, h), count) << w << "x" << h;
}

struct Chain {
    tarn::KivaContainer container;
    tarn::KivaBuilder builder{&container};
    tarn::TextureRecord* record = nullptr;
    int32_t width, height;

    Chain(std::vector<uint8_t> pixels, int32_t w, int32_t h, int32_t mips, TextureFormat format, Encoder encoder)
        : width(w), height(h) {
        qe::Ref<tarn::Texture> t = builder.createTexture(format, w, h, mips, 7, 0);
        record = builder.textureRecordOf(t);
        writeLevels(pixels.data(), width, height, mips, format, encoder, *t);
    }
};

TEST(MipChain, NonSquareLevelsStopEachSideAtOne) {
    // 8 by 2 with 3 levels: 8x2, 4x1, 2x1, raw: 64 + 16 + 8 bytes.
    std::vector<uint8_t> px = patternPixels(8, 2, 4);
    Chain c(px, 8, 2, 3, TextureFormat::A8R8G8B8, encodeRawCopy);
    EXPECT_EQ(c.width, 2);
    EXPECT_EQ(c.height, 1);
    ASSERT_EQ(c.record->data.size(), 88u);
    EXPECT_TRUE(std::equal(px.begin(), px.end(), c.record->data.begin()));
    // Level 1 is the width halving followed by the height halving of level 0.
    std::vector<uint8_t> ref = px;
    int32_t w = 8, h = 2;
    halveWidth(ref.data(), w, h);
    halveHeight(ref.data(), w, h);
    EXPECT_TRUE(std::equal(ref.begin(), ref.begin() + 16, c.record->data.begin() + 64));
    halveWidth(ref.data(), w, h);
    EXPECT_TRUE(std::equal(ref.begin(), ref.begin() + 8, c.record->data.begin() + 80));
}

TEST(MipChain, DxtLevelsMatchTheLibraryOnTheSameHalvedPixels) {
    // 5 by 3 with 3 levels: 5x3 (2x1 blocks), 2x1, 1x1: 16 + 8 + 8 bytes.
    std::vector<uint8_t> px = patternPixels(5, 3, 4, 7);
    Chain c(px, 5, 3, 3, TextureFormat::DXT1, encodeDxt1);
    ASSERT_EQ(c.record->data.size(), 32u);
    std::vector<uint8_t> ref = px;
    int32_t w = 5, h = 3;
    const std::pair<size_t, size_t> levels[] = {{0, 16}, {16, 8}, {24, 8}};  // offset, bytes
    for (const auto& [offset, bytes] : levels) {
        SCOPED_TRACE(offset);
        uint8_t blocks[16];
        squish::CompressImage(ref.data(), w, h, blocks, squish::kDxt1);
        EXPECT_EQ(0, memcmp(blocks, c.record->data.data() + offset, bytes));
        if (w > 1) halveWidth(ref.data(), w, h);  // each side stops at one
        if (h > 1) halveHeight(ref.data(), w, h);
    }
}

}  // namespace
