#pragma once

#include <cstdint>

#include "qe/counted.h"
#include "tarn/texture.h"
#include "tarn/texture_format.h"

namespace tarn {

// Creates textures. The result carries one reference taken for the caller.
class TextureFactory {
public:
    virtual ~TextureFactory() = default;

    // width, height and mipCount as signed 32-bit numbers; usage is a hint
    // that a factory may ignore; srgb non-zero for sRGB-encoded texels.
    virtual qe::Ref<Texture> createTexture(TextureFormat format, int32_t width, int32_t height, int32_t mipCount,
                                           uint32_t usage, uint8_t srgb) = 0;
    virtual qe::Ref<Texture> createCubeTexture(TextureFormat format, int32_t size, int32_t mipCount, uint32_t usage,
                                               uint8_t srgb) = 0;
    virtual qe::Ref<Texture> createVolumeTexture(TextureFormat format, int32_t width, int32_t height, int32_t depth,
                                                 int32_t mipCount, uint32_t usage, uint8_t srgb) = 0;
};

}  // namespace tarn
