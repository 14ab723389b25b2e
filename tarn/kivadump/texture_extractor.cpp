#include "tarn/kivadump/texture_extractor.h"

#include <squish.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <system_error>

#define STB_IMAGE_WRITE_STATIC
#define STB_IMAGE_WRITE_IMPLEMENTATION
#include <stb/stb_image_write.h>

namespace tarn::kivaread {

namespace {

// How the channels of a raw format are stored.
enum class Channel { U8, I8, U16, I16, U24, U32, I32, F16, F32 };

struct RawLayout {
    Channel channel;
    int channels;  // 1 grey, 2 red and green, 4 red, green, blue, alpha
};

// Layouts of the raw formats by format value; channels 0 marks formats with a
// conversion of their own or without texels.
constexpr RawLayout kRawLayouts[kTextureFormatCount] = {
    {Channel::U8, 0},  {Channel::U8, 0},  {Channel::U8, 0},  {Channel::U8, 0},  {Channel::U8, 0},  {Channel::U8, 0},
    {Channel::U8, 0},  {Channel::F32, 1}, {Channel::F32, 2}, {Channel::F32, 4}, {Channel::F16, 1}, {Channel::F16, 2},
    {Channel::F16, 4}, {Channel::U8, 1},  {Channel::U8, 2},  {Channel::U8, 0},  {Channel::U16, 1}, {Channel::U24, 1},
    {Channel::U8, 0},  {Channel::U32, 1}, {Channel::I8, 1},  {Channel::U8, 1},  {Channel::I16, 1}, {Channel::U16, 1},
    {Channel::I8, 2},  {Channel::U8, 2},  {Channel::I16, 2}, {Channel::U16, 2}, {Channel::I32, 1}, {Channel::U32, 1},
    {Channel::U16, 1}, {Channel::U24, 1}, {Channel::U32, 1},
};
constexpr std::uint8_t kFormatD0 = 15;
constexpr std::uint8_t kFormatD24S8 = 18;

int channelBytes(Channel channel) {
    switch (channel) {
    case Channel::U8:
    case Channel::I8:
        return 1;
    case Channel::U16:
    case Channel::I16:
    case Channel::F16:
        return 2;
    case Channel::U24:
        return 3;
    case Channel::U32:
    case Channel::I32:
    case Channel::F32:
        return 4;
    }
    return 1;
}

std::uint32_t loadLittle(const std::uint8_t* at, int bytes) {
    std::uint32_t value = 0;
    for (int i = bytes - 1; i >= 0; --i) value = value << 8 | at[i];
    return value;
}

float halfToFloat(std::uint16_t half) {
    const int sign = half >> 15, exponent = (half >> 10) & 0x1F, mantissa = half & 0x3FF;
    float magnitude;
    if (exponent == 0)
        magnitude = std::ldexp(float(mantissa), -24);
    else if (exponent == 31)
        magnitude = mantissa ? NAN : INFINITY;
    else
        magnitude = std::ldexp(float(mantissa | 0x400), exponent - 25);
    return sign ? -magnitude : magnitude;
}

std::uint8_t toByte(float unit) {
    if (!(unit > 0.0f)) return 0;  // also NaN
    if (unit >= 1.0f) return 255;
    return std::uint8_t(std::lround(unit * 255.0f));
}

// One channel as an 8-bit value: the top byte of the stored integer (signed
// values shifted to unsigned first), floats clamped to 0..1.
std::uint8_t channelByte(Channel channel, const std::uint8_t* at) {
    const std::uint32_t raw = loadLittle(at, channelBytes(channel));
    switch (channel) {
    case Channel::U8:
        return std::uint8_t(raw);
    case Channel::I8:
        return std::uint8_t(raw ^ 0x80);
    case Channel::U16:
        return std::uint8_t(raw >> 8);
    case Channel::I16:
        return std::uint8_t((raw ^ 0x8000) >> 8);
    case Channel::U24:
        return std::uint8_t(raw >> 16);
    case Channel::U32:
        return std::uint8_t(raw >> 24);
    case Channel::I32:
        return std::uint8_t((raw ^ 0x80000000u) >> 24);
    case Channel::F16:
        return toByte(halfToFloat(std::uint16_t(raw)));
    case Channel::F32: {
        float value;
        std::memcpy(&value, &raw, sizeof value);
        return toByte(value);
    }
    }
    return 0;
}

std::uint64_t levelOffset(const KivaTexture& texture, std::uint32_t level) {
    std::uint64_t offset = 0;
    for (std::uint32_t i = 0; i < level; ++i)
        offset += textureLevelSize(texture.format, texture.width, texture.height, i);
    return offset;
}

}  // namespace

bool decodeTextureLevel(const KivaFile& file, const KivaTexture& texture, std::uint32_t level,
                        std::vector<std::uint8_t>& rgba) {
    if (texture.format == kFormatInvalid || texture.format == kFormatD0 || texture.format >= kTextureFormatCount ||
        level >= texture.mipCount)
        return false;
    const std::uint32_t width = mipDimension(texture.width, level);
    const std::uint32_t height = mipDimension(texture.height, level);
    const std::size_t pixels = std::size_t(width) * height;
    const std::uint8_t* source = file.texelData(texture).data() + levelOffset(texture, level);
    rgba.assign(pixels * 4, 0);

    switch (texture.format) {
    case kFormatDxt1:
    case kFormatDxt3:
    case kFormatDxt5: {
        const int flags = texture.format == kFormatDxt1   ? squish::kDxt1
                          : texture.format == kFormatDxt3 ? squish::kDxt3
                                                          : squish::kDxt5;
        squish::DecompressImage(rgba.data(), int(width), int(height), source, flags);
        return true;
    }
    case kFormatA8R8G8B8:  // stored red, green, blue, alpha
        std::memcpy(rgba.data(), source, pixels * 4);
        return true;
    case kFormatX8R8G8B8:  // the fourth byte is unused
        for (std::size_t i = 0; i < pixels; ++i) {
            std::memcpy(&rgba[4 * i], source + 4 * i, 3);
            rgba[4 * i + 3] = 255;
        }
        return true;
    case kFormatA8B8G8R8:  // red and blue swapped against A8R8G8B8
        for (std::size_t i = 0; i < pixels; ++i) {
            rgba[4 * i] = source[4 * i + 2];
            rgba[4 * i + 1] = source[4 * i + 1];
            rgba[4 * i + 2] = source[4 * i];
            rgba[4 * i + 3] = source[4 * i + 3];
        }
        return true;
    case kFormatD24S8:  // depth in the top 24 bits, stencil below
        for (std::size_t i = 0; i < pixels; ++i) {
            const std::uint8_t depth = source[4 * i + 3];
            rgba[4 * i] = rgba[4 * i + 1] = rgba[4 * i + 2] = depth;
            rgba[4 * i + 3] = 255;
        }
        return true;
    default:
        break;
    }

    const RawLayout layout = kRawLayouts[texture.format];
    const int size = channelBytes(layout.channel);
    for (std::size_t i = 0; i < pixels; ++i) {
        const std::uint8_t* texel = source + i * std::size_t(size) * layout.channels;
        std::uint8_t* out = &rgba[4 * i];
        if (layout.channels == 1) {
            out[0] = out[1] = out[2] = channelByte(layout.channel, texel);
            out[3] = 255;
        } else if (layout.channels == 2) {
            out[0] = channelByte(layout.channel, texel);
            out[1] = channelByte(layout.channel, texel + size);
            out[3] = 255;
        } else {
            for (int c = 0; c < 4; ++c) out[c] = channelByte(layout.channel, texel + c * size);
        }
    }
    return true;
}

std::string textureFileName(const KivaFile& file, std::size_t textureIndex, std::uint32_t level) {
    std::string name = std::to_string(textureIndex);
    const std::string_view text = file.string(file.textures[textureIndex].name);
    if (!text.empty()) {
        name += '_';
        for (char c : text.substr(0, 96)) {
            const bool keep = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '.' ||
                              c == '-' || c == '_';
            name += keep ? c : '_';
        }
    }
    return name + "_mip" + std::to_string(level) + ".png";
}

bool extractTextures(const KivaFile& file, const std::filesystem::path& directory, std::string& error) {
    std::error_code code;
    std::filesystem::create_directories(directory, code);
    if (code) {
        error = "cannot create directory " + directory.string() + ": " + code.message();
        return false;
    }
    std::vector<std::uint8_t> rgba;
    for (std::size_t t = 0; t < file.textures.size(); ++t) {
        const KivaTexture& texture = file.textures[t];
        for (std::uint32_t level = 0; level < texture.mipCount; ++level) {
            if (!decodeTextureLevel(file, texture, level, rgba)) break;
            const int width = int(mipDimension(texture.width, level));
            const int height = int(mipDimension(texture.height, level));
            const std::filesystem::path path = directory / textureFileName(file, t, level);
            if (!stbi_write_png(path.string().c_str(), width, height, 4, rgba.data(), width * 4)) {
                error = "cannot write " + path.string();
                return false;
            }
        }
    }
    return true;
}

}  // namespace tarn::kivaread
