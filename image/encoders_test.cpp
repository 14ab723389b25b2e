#include <gtest/gtest.h>
#include <squish.h>

#include <array>
#include <vector>

#include "image/block_encoders.h"
#include "image/encoder.h"
#include "image/format_words.h"
#include "image/raw_encoders.h"
#include "image/test_images_testing.h"

namespace {

using tarn::TextureFormat;

TEST(RawEncoders, CopyKeepsByteOrderAndPitchAndRedTakesByteZero) {
    std::vector<uint8_t> px = patternPixels(3, 2, 4);
    std::vector<uint8_t> dst(2 * 16, 0xEE);
    encodeRawCopy(px.data(), 3, 2, dst.data(), 16);
    EXPECT_TRUE(std::equal(px.begin(), px.begin() + 12, dst.begin()));
    EXPECT_TRUE(std::equal(px.begin() + 12, px.end(), dst.begin() + 16));
    EXPECT_EQ(dst[12], 0xEE);  // the gap keeps what it held
    std::vector<uint8_t> red(6);
    encodeRedChannel(px.data(), 3, 2, red.data(), 3);
    for (size_t i = 0; i < 6; ++i) EXPECT_EQ(red[i], px[i * 4]) << i;
}

TEST(BlockEncoders, BlocksEqualWhatTheLibraryGives) {
    struct Case {
        Encoder encoder;
        int flag;
        size_t blockBytes;
    };
    for (Case c : {Case{encodeDxt1, squish::kDxt1, 8}, Case{encodeDxt3, squish::kDxt3, 16},
                   Case{encodeDxt5, squish::kDxt5, 16}}) {
        for (auto [w, h] : {std::pair{16, 8}, std::pair{7, 5}, std::pair{1, 1}, std::pair{2, 9}}) {
            std::vector<uint8_t> px = patternPixels(w, h, 4, uint32_t(w * 31 + h));
            const size_t pitch = size_t((w + 3) / 4) * c.blockBytes;
            const size_t size = pitch * size_t((h + 3) / 4);
            std::vector<uint8_t> ours(size), theirs(size);
            c.encoder(px.data(), w, h, ours.data(), pitch);
            squish::CompressImage(px.data(), w, h, theirs.data(), c.flag);
            EXPECT_EQ(ours, theirs) << w << "x" << h << " flag " << c.flag;
        }
    }
}

TEST(BlockEncoders, NormalSwizzleMovesRedToAlphaAndSurvivesCompression) {
    std::vector<uint8_t> px = {10, 20, 30, 40, 200, 100, 0, 0};
    std::vector<uint8_t> sw(8);
    swizzleNormal(px.data(), 2, 1, sw.data());
    EXPECT_EQ(sw, (std::vector<uint8_t>{255, 20, 255, 10, 255, 100, 255, 200}));

    // A flat 4 by 4 normal map decoded back: red and blue 255, green near the
    // source's green, alpha near the source's red; the source stays as it was.
    std::vector<uint8_t> flat(16 * 4);
    for (size_t i = 0; i < flat.size(); ++i) flat[i] = std::array<uint8_t, 4>{180, 90, 250, 7}[i % 4];
    const std::vector<uint8_t> before = flat;
    uint8_t block[16];
    encodeNormalDxt5(flat.data(), 4, 4, block, 16);
    EXPECT_EQ(flat, before);
    std::vector<uint8_t> decoded(16 * 4);
    squish::DecompressImage(decoded.data(), 4, 4, block, squish::kDxt5);
    for (size_t i = 0; i < 16; ++i) {
        EXPECT_EQ(decoded[i * 4 + 0] & decoded[i * 4 + 2], 255);
        EXPECT_NEAR(decoded[i * 4 + 1], 90, 3);
        EXPECT_NEAR(decoded[i * 4 + 3], 180, 1);
    }
}

TEST(FormatWords, WholeWordWithoutRegardToCase) {
    TextureFormat f = TextureFormat::Invalid;
    const std::pair<const char*, TextureFormat> good[] = {
        {"argb", TextureFormat::A8R8G8B8}, {"RGBA", TextureFormat::A8R8G8B8}, {"Rgb", TextureFormat::X8R8G8B8},
        {"DXT1", TextureFormat::DXT1},     {"Dxt1", TextureFormat::DXT1},     {"dxt3", TextureFormat::DXT3},
        {"dXt5", TextureFormat::DXT5},     {"R8", TextureFormat::R8}};
    for (auto [word, format] : good) {
        EXPECT_TRUE(textureFormatFromWord(word, f)) << word;
        EXPECT_EQ(f, format) << word;
    }
    f = TextureFormat::DXT3;
    for (const char* bad : {"dxt 1", "dxt", "dxt1 ", "", "rgbx", "bgra", "a8r8g8b8", "r"}) {
        EXPECT_FALSE(textureFormatFromWord(bad, f)) << bad;
        EXPECT_EQ(f, TextureFormat::DXT3);
    }
}

}  // namespace
