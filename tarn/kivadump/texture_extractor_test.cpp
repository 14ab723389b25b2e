#include "tarn/kivadump/texture_extractor.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <filesystem>

#define STB_IMAGE_STATIC
#define STB_IMAGE_IMPLEMENTATION
#include <stb/stb_image.h>

#include "qe/scratch_dir_testing.h"
#include "tarn/kivadump/kiva_sample_testing.h"

namespace tarn::kivaread {
namespace {

using namespace testing;

using Pixels = std::vector<std::uint8_t>;

// Decodes level 0 of a one-row texture of the given format and data.
Pixels decodeOne(std::uint8_t format, std::vector<std::uint8_t> data, std::uint16_t width = 1) {
    const ReadKiva read = readKiva(oneTextureKiva(format, width, 1, 1, data));
    EXPECT_EQ(read.fault, "");
    Pixels rgba;
    EXPECT_TRUE(decodeTextureLevel(read.file, read.file.textures[0], 0, rgba));
    return rgba;
}

std::vector<std::uint8_t> floatBytes(std::initializer_list<float> values) {
    std::vector<std::uint8_t> bytes(values.size() * 4);
    std::memcpy(bytes.data(), values.begin(), bytes.size());
    return bytes;
}

TEST(TextureExtractorTest, RawFormatsBecomeRgba) {
    EXPECT_EQ(decodeOne(1, {10, 20, 30, 40}), (Pixels{10, 20, 30, 40}));   // A8R8G8B8 as stored
    EXPECT_EQ(decodeOne(2, {10, 20, 30, 40}), (Pixels{10, 20, 30, 255}));  // X8R8G8B8: no alpha
    EXPECT_EQ(decodeOne(3, {10, 20, 30, 40}), (Pixels{30, 20, 10, 40}));   // A8B8G8R8: swapped
    EXPECT_EQ(decodeOne(13, {77}), (Pixels{77, 77, 77, 255}));             // R8 as grey
    EXPECT_EQ(decodeOne(14, {5, 6}), (Pixels{5, 6, 0, 255}));              // R8G8
    EXPECT_EQ(decodeOne(7, floatBytes({0.5f})), (Pixels{128, 128, 128, 255}));
    EXPECT_EQ(decodeOne(9, floatBytes({2.0f, -1.0f, NAN, 1.0f})), (Pixels{255, 0, 0, 255}));  // clamped
    EXPECT_EQ(decodeOne(12, {0x00, 0x3C, 0x00, 0x38, 0x00, 0x00, 0x00, 0x3C}),
              (Pixels{255, 128, 0, 255}));                                                  // RGBA16F 1, 0.5, 0, 1
    EXPECT_EQ(decodeOne(16, {0xFF, 0x80}), (Pixels{128, 128, 128, 255}));                   // D16
    EXPECT_EQ(decodeOne(18, {0x11, 0x22, 0x33, 0xC0}), (Pixels{192, 192, 192, 255}));       // D24S8
    EXPECT_EQ(decodeOne(20, {0x80}), (Pixels{0, 0, 0, 255}));                               // R8I -128 is the bottom
    EXPECT_EQ(decodeOne(26, {0xFF, 0x7F, 0x00, 0x80}), (Pixels{255, 0, 0, 255}));           // RG16I
    EXPECT_EQ(decodeOne(31, {1, 2, 3, 4, 5, 6}, 2), (Pixels{3, 3, 3, 255, 6, 6, 6, 255}));  // Shadow24
}

TEST(TextureExtractorTest, DxtBlocksAreDecodedPerLevel) {
    // A DXT1 block of pure red (colour 0 = 0xF800) with every texel on colour 0.
    const std::vector<std::uint8_t> red = {0x00, 0xF8, 0x1F, 0x00, 0, 0, 0, 0};
    // ... and one of pure blue, every texel on colour 1 (index bits 01).
    const std::vector<std::uint8_t> blue = {0x00, 0xF8, 0x1F, 0x00, 0x55, 0x55, 0x55, 0x55};
    std::vector<std::uint8_t> data;
    for (const auto* block : {&red, &red, &blue, &blue}) data.insert(data.end(), block->begin(), block->end());
    const ReadKiva read = readKiva(oneTextureKiva(4, 5, 3, 3, data));  // levels 5x3, 2x1, 1x1
    Pixels rgba;
    ASSERT_TRUE(decodeTextureLevel(read.file, read.file.textures[0], 0, rgba));
    ASSERT_EQ(rgba.size(), 5u * 3 * 4);
    EXPECT_EQ(Pixels(rgba.begin() + 4 * 4, rgba.begin() + 5 * 4), (Pixels{255, 0, 0, 255}));  // block 2
    ASSERT_TRUE(decodeTextureLevel(read.file, read.file.textures[0], 2, rgba));
    EXPECT_EQ(rgba, (Pixels{0, 0, 255, 255}));
    EXPECT_FALSE(decodeTextureLevel(read.file, read.file.textures[0], 3, rgba));
}

TEST(TextureExtractorTest, WritesEveryLevelOfEveryTextureAsPngOrReportsWhyNot) {
    ScratchDir dir;
    const ReadKiva read = readKiva(sampleKiva());
    std::string error;
    ASSERT_TRUE(extractTextures(read.file, dir.file("sub"), error)) << error;
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(dir.file("sub")))
        names.push_back(entry.path().filename().string());
    std::sort(names.begin(), names.end());
    // The placeholder has no texels and no picture.
    EXPECT_EQ(names, (std::vector<std::string>{"0_tex_wood.png_mip0.png", "0_tex_wood.png_mip1.png",
                                               "1_tex_stone.png_mip0.png", "1_tex_stone.png_mip1.png",
                                               "1_tex_stone.png_mip2.png"}));
    int width = 0, height = 0, channels = 0;
    stbi_uc* pixels = stbi_load(dir.file("sub/0_tex_wood.png_mip1.png").c_str(), &width, &height, &channels, 4);
    ASSERT_NE(pixels, nullptr);
    EXPECT_EQ(width * height, 1);
    EXPECT_EQ(Pixels(pixels, pixels + 4), (Pixels{17, 18, 19, 20}));  // level 1 follows level 0's 16 bytes
    stbi_image_free(pixels);

    EXPECT_FALSE(extractTextures(read.file, "/proc/kivadump/x", error));
    EXPECT_NE(error.find("cannot create directory /proc/kivadump/x"), std::string::npos) << error;
}

}  // namespace
}  // namespace tarn::kivaread
