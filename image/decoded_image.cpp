#include "image/decoded_image.h"

// The decoder's implementation lives here, private to this file.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wunused-function"
#pragma GCC diagnostic ignored "-Wmissing-field-initializers"
#pragma GCC diagnostic ignored "-Wsign-compare"
#pragma GCC diagnostic ignored "-Wunused-but-set-variable"
#define STB_IMAGE_STATIC
#define STB_IMAGE_IMPLEMENTATION
#include <stb/stb_image.h>
#pragma GCC diagnostic pop

bool DecodedImage::load(const char* path) {
    release();
    int w = 0, h = 0, channels = 0;
    stbi_uc* data = stbi_load(path, &w, &h, &channels, 4);
    if (!data) {
        const char* why = stbi_failure_reason();
        reason_ = why ? why : "unknown failure";
        return false;
    }
    pixels_ = data;
    width_ = w;
    height_ = h;
    channels_ = channels;
    return true;
}

void DecodedImage::release() {
    if (pixels_) stbi_image_free(pixels_);
    pixels_ = nullptr;
    width_ = height_ = channels_ = 0;
}
