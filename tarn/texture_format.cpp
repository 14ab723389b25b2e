#include "tarn/texture_format.h"

namespace tarn {

namespace {

constexpr TextureFormatInfo kFormats[kTextureFormatCount] = {
    {"Invalid", 0, 0, 0},   {"A8R8G8B8", 4, 1, 1}, {"X8R8G8B8", 4, 1, 1}, {"A8B8G8R8", 4, 1, 1},
    {"DXT1", 8, 4, 4},      {"DXT3", 16, 4, 4},    {"DXT5", 16, 4, 4},    {"R32F", 4, 1, 1},
    {"RG32F", 8, 1, 1},     {"RGBA32F", 16, 1, 1}, {"R16F", 2, 1, 1},     {"RG16F", 4, 1, 1},
    {"RGBA16F", 8, 1, 1},   {"R8", 1, 1, 1},       {"R8G8", 2, 1, 1},     {"D0", 0, 1, 1},
    {"D16", 2, 1, 1},       {"D24", 3, 1, 1},      {"D24S8", 4, 1, 1},    {"D32", 4, 1, 1},
    {"R8I", 1, 1, 1},       {"R8UI", 1, 1, 1},     {"R16I", 2, 1, 1},     {"R16UI", 2, 1, 1},
    {"RG8I", 2, 1, 1},      {"RG8UI", 2, 1, 1},    {"RG16I", 4, 1, 1},    {"RG16UI", 4, 1, 1},
    {"R32I", 4, 1, 1},      {"R32UI", 4, 1, 1},    {"Shadow16", 2, 1, 1}, {"Shadow24", 3, 1, 1},
    {"Shadow32", 4, 1, 1},
};

}  // namespace

const TextureFormatInfo& textureFormatInfo(TextureFormat format) {
    return kFormats[static_cast<uint32_t>(format)];
}

}  // namespace tarn
