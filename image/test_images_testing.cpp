#include "image/test_images_testing.h"

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wunused-function"
#pragma GCC diagnostic ignored "-Wmissing-field-initializers"
#define STB_IMAGE_WRITE_STATIC
#define STB_IMAGE_WRITE_IMPLEMENTATION
#include <stb/stb_image_write.h>
#pragma GCC diagnostic pop

std::vector<uint8_t> patternPixels(int width, int height, int channels, uint32_t seed) {
    std::vector<uint8_t> p(size_t(width) * size_t(height) * size_t(channels));
    uint32_t state = seed * 2654435761u + 12345u;
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            for (int c = 0; c < channels; ++c) {
                state = state * 1664525u + 1013904223u;
                // A smooth gradient with a little noise, like real art.
                const int v =
                    (x * 255 / (width > 1 ? width - 1 : 1)) * (c % 2 ? 1 : -1) + y * 3 + c * 40 + int(state >> 28);
                p[(size_t(y) * size_t(width) + size_t(x)) * size_t(channels) + size_t(c)] = uint8_t(v & 255);
            }
    return p;
}

bool writePng(const std::string& path, int width, int height, int channels, const std::vector<uint8_t>& pixels) {
    return stbi_write_png(path.c_str(), width, height, channels, pixels.data(), width * channels) != 0;
}

bool writeTga(const std::string& path, int width, int height, int channels, const std::vector<uint8_t>& pixels) {
    return stbi_write_tga(path.c_str(), width, height, channels, pixels.data()) != 0;
}
