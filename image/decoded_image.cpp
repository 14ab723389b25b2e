#include "image/decoded_image.h"

#include <sys/stat.h>

#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstring>
#include <string_view>
#include <vector>

#include "image/truncated_image.h"

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

namespace {

// The whole file; false with errno set when it cannot be read.
bool readWholeFile(const char* path, std::vector<uint8_t>& bytes) {
    std::FILE* file = std::fopen(path, "rb");
    if (!file) return false;
    struct stat st;
    if (::fstat(::fileno(file), &st) == 0 && S_ISREG(st.st_mode)) bytes.reserve(size_t(st.st_size));
    uint8_t buffer[1 << 16];
    size_t n;
    while ((n = std::fread(buffer, 1, sizeof buffer, file)) > 0) bytes.insert(bytes.end(), buffer, buffer + n);
    const bool ok = !std::ferror(file);
    const int error = errno;
    std::fclose(file);
    errno = error;
    return ok;
}

// The decoder's terse failure codes in words a user understands.
std::string describeFailure(const char* code) {
    static const std::pair<std::string_view, const char*> kWords[] = {
        {"outofdata", "truncated image data"},          {"not enough pixels", "truncated image data"},
        {"unknown image type", "unknown image format"}, {"outofmem", "not enough memory to decode the image"},
        {"too large", "image too large to decode"},
    };
    for (const auto& [terse, words] : kWords)
        if (code && terse == code) return words;
    return "damaged image data";
}

}  // namespace

bool DecodedImage::load(const char* path) {
    release();
    std::vector<uint8_t> file;
    if (!readWholeFile(path, file)) {
        reason_ = std::string("cannot read the file (") + std::strerror(errno) + ")";
        return false;
    }
    if (imageIsTruncated(file)) {
        reason_ = "truncated image data";
        return false;
    }
    if (file.empty() || file.size() > size_t(INT_MAX)) {  // the decoder counts bytes in an int
        reason_ = file.empty() ? "empty file" : "image file too large to decode";
        return false;
    }
    int w = 0, h = 0, channels = 0;
    stbi_uc* data = stbi_load_from_memory(file.data(), int(file.size()), &w, &h, &channels, 4);
    if (!data) {
        reason_ = describeFailure(stbi_failure_reason());
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
    reason_.clear();
}
