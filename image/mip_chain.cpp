#include "image/mip_chain.h"

#include <memory>

#include "image/halve.h"

void writeLevels(uint8_t* pixels, int32_t& width, int32_t& height, int32_t mipCount, tarn::TextureFormat format,
                 Encoder encoder, tarn::Texture& texture) {
    const tarn::TextureFormatInfo& info = tarn::textureFormatInfo(format);
    for (int32_t level = 0; level < mipCount; ++level) {
        if (level > 0) {
            if (width > 1) halveWidth(pixels, width, height);
            if (height > 1) halveHeight(pixels, width, height);
        }
        const size_t pitch = (size_t(width) + info.blockWidth - 1) / info.blockWidth * info.bytesPerBlock;
        const size_t rows = (size_t(height) + info.blockHeight - 1) / info.blockHeight;
        // The one buffer of encoded bytes alive beside the pixels.
        std::unique_ptr<uint8_t[]> encoded(new uint8_t[pitch * rows]());
        encoder(pixels, width, height, encoded.get(), pitch);
        texture.writeLevel(level, encoded.get(), pitch, 0);
    }
}

int32_t fullMipCount(int32_t width, int32_t height) {
    int32_t n = 1;
    while (n < 31 && ((int64_t(1) << n) < width || (int64_t(1) << n) < height)) ++n;
    return n;
}
