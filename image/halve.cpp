#include "image/halve.h"

#include <cstddef>

void halveWidth(uint8_t* pixels, int32_t& width, int32_t height) {
    const int32_t newWidth = width >> 1;
    const size_t oldRow = size_t(width) * 4;
    const size_t newRow = size_t(newWidth) * 4;
    // Writing row y at y * newRow never overtakes the reads at y * oldRow +
    // 8x, so the buffer can be rewritten in place front to back.
    for (int32_t y = 0; y < height; ++y) {
        const uint8_t* src = pixels + size_t(y) * oldRow;
        uint8_t* dst = pixels + size_t(y) * newRow;
        for (size_t i = 0; i < newRow; i += 4, src += 8) {
            dst[i + 0] = uint8_t((src[0] + src[4]) >> 1);
            dst[i + 1] = uint8_t((src[1] + src[5]) >> 1);
            dst[i + 2] = uint8_t((src[2] + src[6]) >> 1);
            dst[i + 3] = uint8_t((src[3] + src[7]) >> 1);
        }
    }
    width = newWidth;
}

void halveHeight(uint8_t* pixels, int32_t width, int32_t& height) {
    const int32_t newHeight = height >> 1;
    const size_t row = size_t(width) * 4;
    for (int32_t y = 0; y < newHeight; ++y) {
        const uint8_t* a = pixels + size_t(2 * y) * row;
        const uint8_t* b = a + row;
        uint8_t* dst = pixels + size_t(y) * row;
        for (size_t i = 0; i < row; ++i) dst[i] = uint8_t((a[i] + b[i]) >> 1);
    }
    height = newHeight;
}
