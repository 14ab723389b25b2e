#include "image/raw_encoders.h"

#include <algorithm>
#include <cstring>

void encodeRawCopy(const uint8_t* pixels, int32_t width, int32_t height, uint8_t* destination, size_t pitch) {
    const size_t sourceRow = size_t(width) * 4;
    const size_t bytes = std::min(pitch, sourceRow);
    for (int32_t y = 0; y < height; ++y)
        std::memcpy(destination + size_t(y) * pitch, pixels + size_t(y) * sourceRow, bytes);
}

void encodeRedChannel(const uint8_t* pixels, int32_t width, int32_t height, uint8_t* destination, size_t pitch) {
    for (int32_t y = 0; y < height; ++y) {
        const uint8_t* src = pixels + size_t(y) * size_t(width) * 4;
        uint8_t* dst = destination + size_t(y) * pitch;
        for (int32_t x = 0; x < width; ++x) dst[x] = src[size_t(x) * 4];
    }
}
