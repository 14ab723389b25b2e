#include "tarn/kivadump/kiva_file.h"

#include <cstring>

namespace tarn::kivaread {

namespace {

float loadFloat(const std::uint8_t* at) {
    std::uint32_t bits =
        std::uint32_t(at[0]) | std::uint32_t(at[1]) << 8 | std::uint32_t(at[2]) << 16 | std::uint32_t(at[3]) << 24;
    float value;
    std::memcpy(&value, &bits, sizeof value);
    return value;
}

}  // namespace

std::uint32_t mipDimension(std::uint32_t size, std::uint32_t level) {
    std::uint32_t shifted = level >= 32 ? 0 : size >> level;
    return shifted == 0 ? 1 : shifted;
}

std::uint64_t textureLevelSize(std::uint8_t format, std::uint32_t width, std::uint32_t height, std::uint32_t level) {
    if (format >= kTextureFormatCount || format == kFormatInvalid) return 0;
    const TextureFormatInfo& info = kTextureFormats[format];
    std::uint64_t w = mipDimension(width, level);
    std::uint64_t h = mipDimension(height, level);
    std::uint64_t pitch = (w + info.blockWidth - 1) / info.blockWidth * info.bytesPerBlock;
    std::uint64_t rows = (h + info.blockHeight - 1) / info.blockHeight;
    return pitch * rows;
}

std::uint64_t textureDataSize(std::uint8_t format, std::uint32_t width, std::uint32_t height, std::uint32_t mipCount) {
    std::uint64_t total = 0;
    for (std::uint32_t level = 0; level < mipCount; ++level) total += textureLevelSize(format, width, height, level);
    return total;
}

KivaTransform KivaFile::transform(const KivaAnimation& animation, std::uint32_t frame, std::uint16_t bone) const {
    KivaTransform result;
    std::uint64_t position = std::uint64_t(frame) * animation.boneNames.size() + bone;
    const std::uint8_t* at = bytes.data() + animation.transformOffset + position * kTransformSize;
    for (int i = 0; i < 3; ++i) result.translation[i] = loadFloat(at + 4 * i);
    for (int i = 0; i < 4; ++i) result.rotation[i] = loadFloat(at + 12 + 4 * i);
    return result;
}

}  // namespace tarn::kivaread
