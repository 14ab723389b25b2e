#pragma once

// The decoded contents of one .kiva file: every row of every table with its
// fields as stored, payload arrays decoded, bulk data (texels, vertices,
// indices, animation transforms) left in the file's bytes and reached through
// offsets. A KivaFile does not own those bytes.

#include <array>
#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

#include "tarn/kivadump/kiva_format.h"

namespace tarn::kivaread {

struct KivaHeader {
    std::uint32_t magic = 0;
    std::uint32_t version = 0;
    std::array<std::uint16_t, kTableCount> counts{};
    std::array<std::uint64_t, kTableCount> offsets{};
};

struct KivaString {
    std::uint64_t offset = kNoOffset;
    std::string_view text;  // points into the file's bytes
};

struct KivaTexture {
    std::uint16_t name = kNoIndex;
    std::uint8_t format = 0;
    std::uint8_t mipCount = 0;
    bool srgb = false;
    std::uint16_t width = 0;
    std::uint16_t height = 0;
    std::uint64_t dataSize = 0;
    std::uint64_t dataOffset = kNoOffset;
};

// A row of the vertex buffer or the index buffer table.
struct KivaBuffer {
    std::uint8_t format = 0;
    std::uint32_t count = 0;
    std::uint64_t dataSize = 0;
    std::uint64_t dataOffset = kNoOffset;
};

struct KivaVectorParameter {
    std::uint16_t name = kNoIndex;
    std::array<float, 4> value{};
};

struct KivaTextureParameter {
    std::uint16_t name = kNoIndex;
    std::uint16_t texture = kNoIndex;
};

struct KivaMatrixParameter {
    std::uint16_t name = kNoIndex;
    std::array<float, 16> value{};
};

struct KivaMaterial {
    std::uint16_t shader = kNoIndex;
    std::vector<KivaVectorParameter> vectors;
    std::vector<KivaTextureParameter> textures;
    std::vector<KivaMatrixParameter> matrices;
    std::uint64_t vectorOffset = kNoOffset;
    std::uint64_t textureOffset = kNoOffset;
    std::uint64_t matrixOffset = kNoOffset;
};

struct KivaMaterialGroup {
    std::uint16_t name = kNoIndex;
    std::uint16_t material = kNoIndex;
    std::uint32_t firstIndex = 0;
    std::uint32_t primitiveCount = 0;
    std::uint8_t primitive = 0;
};

struct KivaMesh {
    std::uint16_t vertexBuffer = kNoIndex;
    std::uint16_t indexBuffer = kNoIndex;
    std::vector<KivaMaterialGroup> groups;
    std::uint64_t groupOffset = kNoOffset;
};

struct KivaBone {
    std::uint16_t name = kNoIndex;
    std::uint16_t parent = kNoIndex;
    std::array<float, 3> translation{};
    std::array<float, 4> rotation{};  // x, y, z, w
    std::array<float, 9> scaleShear{};
    std::array<float, 16> inverseBind{};
};

struct KivaSkeleton {
    std::vector<KivaBone> bones;
    std::uint64_t boneOffset = kNoOffset;
};

struct KivaMeshBinding {
    std::uint16_t name = kNoIndex;
    std::uint16_t mesh = kNoIndex;
    std::array<float, 16> matrix{};
    std::vector<std::uint16_t> boneMap;
    std::uint64_t boneMapOffset = kNoOffset;
};

struct KivaModel {
    std::uint16_t name = kNoIndex;
    std::uint16_t skeleton = kNoIndex;
    std::array<float, 16> matrix{};
    std::vector<KivaMeshBinding> bindings;
    std::uint64_t bindingOffset = kNoOffset;
};

struct KivaAnimation {
    std::uint16_t name = kNoIndex;
    std::uint32_t frameCount = 0;
    std::uint32_t framesPerSecondNumerator = 0;
    std::uint32_t framesPerSecondDenominator = 0;
    std::vector<std::uint16_t> boneNames;
    std::uint64_t boneNameOffset = kNoOffset;
    std::uint64_t transformOffset = kNoOffset;
};

// One record of an animation: translation then rotation (x, y, z, w).
struct KivaTransform {
    std::array<float, 3> translation{};
    std::array<float, 4> rotation{};
};

struct KivaFile {
    std::span<const std::uint8_t> bytes;
    KivaHeader header;
    std::vector<KivaString> strings;
    std::vector<KivaTexture> textures;
    std::vector<KivaBuffer> vertexBuffers;
    std::vector<KivaBuffer> indexBuffers;
    std::vector<KivaMaterial> materials;
    std::vector<KivaMesh> meshes;
    std::vector<KivaSkeleton> skeletons;
    std::vector<KivaModel> models;
    std::vector<KivaAnimation> animations;

    // The text of a string index; "" for kNoIndex. The index must have been
    // validated (every index in a file that read without fault is).
    std::string_view string(std::uint16_t index) const {
        return index == kNoIndex ? std::string_view() : strings[index].text;
    }
    // The texel bytes of a texture, all mip levels, level 0 first.
    std::span<const std::uint8_t> texelData(const KivaTexture& texture) const {
        return payload(texture.dataOffset, texture.dataSize);
    }
    // The data bytes of a vertex or index buffer.
    std::span<const std::uint8_t> bufferData(const KivaBuffer& buffer) const {
        return payload(buffer.dataOffset, buffer.dataSize);
    }
    // Transform of bone b in frame f of an animation (frame-major order).
    KivaTransform transform(const KivaAnimation& animation, std::uint32_t frame, std::uint16_t bone) const;

private:
    std::span<const std::uint8_t> payload(std::uint64_t offset, std::uint64_t size) const {
        return size == 0 ? std::span<const std::uint8_t>() : bytes.subspan(offset, size);
    }
};

// Byte size of mip level `level` of a texture, and of all its levels together.
// Levels halve by shift with a floor of 1; a pitch is a whole number of blocks.
std::uint64_t textureLevelSize(std::uint8_t format, std::uint32_t width, std::uint32_t height, std::uint32_t level);
std::uint64_t textureDataSize(std::uint8_t format, std::uint32_t width, std::uint32_t height, std::uint32_t mipCount);
// Dimension of a mip level: max(1, size >> level).
std::uint32_t mipDimension(std::uint32_t size, std::uint32_t level);

}  // namespace tarn::kivaread
