#pragma once

#include <cstdint>

namespace tarn {

// Texel formats of the engine library. The numeric value is what a texture
// row of a .kiva file stores.
enum class TextureFormat : uint32_t {
    Invalid = 0,
    A8R8G8B8 = 1,
    X8R8G8B8 = 2,
    A8B8G8R8 = 3,
    DXT1 = 4,
    DXT3 = 5,
    DXT5 = 6,
    R32F = 7,
    RG32F = 8,
    RGBA32F = 9,
    R16F = 10,
    RG16F = 11,
    RGBA16F = 12,
    R8 = 13,
    R8G8 = 14,
    D0 = 15,
    D16 = 16,
    D24 = 17,
    D24S8 = 18,
    D32 = 19,
    R8I = 20,
    R8UI = 21,
    R16I = 22,
    R16UI = 23,
    RG8I = 24,
    RG8UI = 25,
    RG16I = 26,
    RG16UI = 27,
    R32I = 28,
    R32UI = 29,
    Shadow16 = 30,
    Shadow24 = 31,
    Shadow32 = 32,
};

inline constexpr uint32_t kTextureFormatCount = 33;

// How texels of a format are laid out: blocks of blockWidth x blockHeight
// texels taking bytesPerBlock bytes each. Uncompressed formats have 1x1
// blocks.
struct TextureFormatInfo {
    const char* name;
    uint32_t bytesPerBlock;
    uint32_t blockWidth;
    uint32_t blockHeight;
};

// The descriptor of a format. No range check: the value must be one of the
// enumeration's.
const TextureFormatInfo& textureFormatInfo(TextureFormat format);

// The format's name as in the enumeration ("DXT1", "A8R8G8B8", ...).
inline const char* textureFormatName(TextureFormat format) { return textureFormatInfo(format).name; }

}  // namespace tarn
