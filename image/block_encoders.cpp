#include "image/block_encoders.h"

#include <squish.h>

#include <memory>

#include "qe/fatal_error.h"

namespace {

void compress(const uint8_t* pixels, int32_t width, int32_t height, uint8_t* destination, size_t pitch, int flag,
              size_t bytesPerBlock) {
    if (width <= 0 || height <= 0) return;
    if (pitch != size_t((width + 3) / 4) * bytesPerBlock)
        qe::fatalError("block compression needs one packed row of blocks per pitch");
    squish::CompressImage(pixels, width, height, destination, flag);
}

}  // namespace

void encodeDxt1(const uint8_t* pixels, int32_t width, int32_t height, uint8_t* destination, size_t pitch) {
    compress(pixels, width, height, destination, pitch, squish::kDxt1, 8);
}

void encodeDxt3(const uint8_t* pixels, int32_t width, int32_t height, uint8_t* destination, size_t pitch) {
    compress(pixels, width, height, destination, pitch, squish::kDxt3, 16);
}

void encodeDxt5(const uint8_t* pixels, int32_t width, int32_t height, uint8_t* destination, size_t pitch) {
    compress(pixels, width, height, destination, pitch, squish::kDxt5, 16);
}

void swizzleNormal(const uint8_t* pixels, int32_t width, int32_t height, uint8_t* swizzled) {
    const size_t count = size_t(width) * size_t(height);
    for (size_t i = 0; i < count; ++i) {
        const uint8_t* s = pixels + 4 * i;
        uint8_t* d = swizzled + 4 * i;
        d[0] = 255;
        d[1] = s[1];
        d[2] = 255;
        d[3] = s[0];
    }
}

void encodeNormalDxt5(const uint8_t* pixels, int32_t width, int32_t height, uint8_t* destination, size_t pitch) {
    if (width <= 0 || height <= 0) return;
    // The only extra buffer: one swizzled level, released once compressed.
    std::unique_ptr<uint8_t[]> swizzled(new uint8_t[size_t(width) * size_t(height) * 4]);
    swizzleNormal(pixels, width, height, swizzled.get());
    compress(swizzled.get(), width, height, destination, pitch, squish::kDxt5, 16);
}
