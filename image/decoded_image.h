#pragma once

#include <cstdint>
#include <string>

// An image file decoded to 8-bit RGBA, rows top first, packed. Owns the one
// decoded copy of the pixels, which the conversion then reduces in place.
class DecodedImage {
public:
    DecodedImage() = default;
    DecodedImage(const DecodedImage&) = delete;
    DecodedImage& operator=(const DecodedImage&) = delete;
    ~DecodedImage() { release(); }

    // Decodes any file the image decoder knows (PNG, TGA, JPEG, BMP, ...).
    // A file that ends before the data its header promises is refused
    // before decoding. On failure returns false and reason() says why, in
    // words for a user ("truncated image data").
    bool load(const char* path);
    void release();

    uint8_t* pixels() const { return pixels_; }
    int32_t width() const { return width_; }
    int32_t height() const { return height_; }
    // Channels stored in the file (1 grey, 2 grey+alpha, 3 colour, 4 colour+
    // alpha), whatever was delivered.
    int32_t channels() const { return channels_; }
    const std::string& reason() const { return reason_; }

private:
    uint8_t* pixels_ = nullptr;
    int32_t width_ = 0;
    int32_t height_ = 0;
    int32_t channels_ = 0;
    std::string reason_;
};
