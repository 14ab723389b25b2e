#include "tarn/texture_format.h"

namespace tarn {

namespace {

// clang-format off
// name, bytes per block, block width, block height; indexed by format value
constexpr TextureFormatInfo kFormats[kTextureFormatCount] = {
    {"Invalid", 0, 0, 0},  // 0
    {"A8R8G8B8", 4, 1, 1},  // 1
    {"X8R8G8B8", 4, 1, 1},  // 2
    {"A8B8G8R8", 4, 1, 1},  // 3
    {"DXT1", 8, 4, 4},  // 4
    {"DXT3", 16, 4, 4},  // 5
    {"DXT5", 16, 4, 4},  // 6
    {"R32F", 4, 1, 1},  // 7
    {"RG32F", 8, 1, 1},  // 8
    {"RGBA32F", 16, 1, 1},  // 9
    {"R16F", 2, 1, 1},  // 10
    {"RG16F", 4, 1, 1},  // 11
    {"RGBA16F", 8, 1, 1},  // 12
    {"R8", 1, 1, 1},  // 13
    {"R8G8", 2, 1, 1},  // 14
    {"D0", 0, 1, 1},  // 15
    {"D16", 2, 1, 1},  // 16
    {"D24", 3, 1, 1},  // 17
    {"D24S8", 4, 1, 1},  // 18
    {"D32", 4, 1, 1},  // 19
    {"R8I", 1, 1, 1},  // 20
    {"R8UI", 1, 1, 1},  // 21
    {"R16I", 2, 1, 1},  // 22
    {"R16UI", 2, 1, 1},  // 23
    {"RG8I", 2, 1, 1},  // 24
    {"RG8UI", 2, 1, 1},  // 25
    {"RG16I", 4, 1, 1},  // 26
    {"RG16UI", 4, 1, 1},  // 27
    {"R32I", 4, 1, 1},  // 28
    {"R32UI", 4, 1, 1},  // 29
    {"Shadow16", 2, 1, 1},  // 30
    {"Shadow24", 3, 1, 1},  // 31
    {"Shadow32", 4, 1, 1},  // 32
};
// clang-format on

}  // namespace

const TextureFormatInfo& textureFormatInfo(TextureFormat format) { return kFormats[static_cast<uint32_t>(format)]; }

}  // namespace tarn
