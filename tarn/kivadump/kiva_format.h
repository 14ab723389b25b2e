#pragma once

// Constants of the .kiva container as the reader sees it: magic, version, row
// sizes and the format tables. Kept apart from the writer on purpose, so that
// the reader is an independent check of every file the writer produces.

#include <cstddef>
#include <cstdint>

namespace tarn::kivaread {

inline constexpr std::uint32_t kMagic = 0x4B697661;  // "aviK" on disk
inline constexpr std::uint32_t kVersion = 0x00030000;
inline constexpr std::uint64_t kNoOffset = 0xFFFFFFFFFFFFFFFFull;
inline constexpr std::uint16_t kNoIndex = 0xFFFF;
inline constexpr std::uint64_t kAlignment = 8;

inline constexpr std::size_t kHeaderSize = 104;
inline constexpr std::size_t kStringRowSize = 16;
inline constexpr std::size_t kTextureRowSize = 24;
inline constexpr std::size_t kBufferRowSize = 24;
inline constexpr std::size_t kMaterialRowSize = 32;
inline constexpr std::size_t kMeshRowSize = 16;
inline constexpr std::size_t kSkeletonRowSize = 16;
inline constexpr std::size_t kModelRowSize = 80;
inline constexpr std::size_t kAnimationRowSize = 32;
inline constexpr std::size_t kVectorParameterSize = 20;
inline constexpr std::size_t kTextureParameterSize = 4;
inline constexpr std::size_t kMatrixParameterSize = 68;
inline constexpr std::size_t kMaterialGroupSize = 16;
inline constexpr std::size_t kBoneSize = 132;
inline constexpr std::size_t kMeshBindingSize = 80;
inline constexpr std::size_t kTransformSize = 28;

// The nine tables in the order of the header's count and offset fields.
enum class Table : int {
    Strings,
    Textures,
    VertexBuffers,
    IndexBuffers,
    Materials,
    Meshes,
    Skeletons,
    Models,
    Animations,
};
inline constexpr int kTableCount = 9;
inline constexpr std::size_t kHeaderCountsAt = 8;     // u16 per table
inline constexpr std::size_t kHeaderReservedAt = 26;  // 6 zero bytes
inline constexpr std::size_t kHeaderOffsetsAt = 32;   // u64 per table

struct TableInfo {
    const char* name;     // "string", used in fault messages ("string 3: ...")
    const char* jsonKey;  // "strings"
    const char* title;    // "strings", heading of the text dump
    std::size_t rowSize;
};
inline constexpr TableInfo kTables[kTableCount] = {
    {"string", "strings", "strings", kStringRowSize},
    {"texture", "textures", "textures", kTextureRowSize},
    {"vertex buffer", "vertexBuffers", "vertex buffers", kBufferRowSize},
    {"index buffer", "indexBuffers", "index buffers", kBufferRowSize},
    {"material", "materials", "materials", kMaterialRowSize},
    {"mesh", "meshes", "meshes", kMeshRowSize},
    {"skeleton", "skeletons", "skeletons", kSkeletonRowSize},
    {"model", "models", "models", kModelRowSize},
    {"animation", "animations", "animations", kAnimationRowSize},
};

struct TextureFormatInfo {
    const char* name;
    std::uint32_t bytesPerBlock;
    std::uint32_t blockWidth;
    std::uint32_t blockHeight;
};
inline constexpr TextureFormatInfo kTextureFormats[] = {
    {"Invalid", 0, 0, 0},  {"A8R8G8B8", 4, 1, 1}, {"X8R8G8B8", 4, 1, 1}, {"A8B8G8R8", 4, 1, 1}, {"DXT1", 8, 4, 4},
    {"DXT3", 16, 4, 4},    {"DXT5", 16, 4, 4},    {"R32F", 4, 1, 1},     {"RG32F", 8, 1, 1},    {"RGBA32F", 16, 1, 1},
    {"R16F", 2, 1, 1},     {"RG16F", 4, 1, 1},    {"RGBA16F", 8, 1, 1},  {"R8", 1, 1, 1},       {"R8G8", 2, 1, 1},
    {"D0", 0, 1, 1},       {"D16", 2, 1, 1},      {"D24", 3, 1, 1},      {"D24S8", 4, 1, 1},    {"D32", 4, 1, 1},
    {"R8I", 1, 1, 1},      {"R8UI", 1, 1, 1},     {"R16I", 2, 1, 1},     {"R16UI", 2, 1, 1},    {"RG8I", 2, 1, 1},
    {"RG8UI", 2, 1, 1},    {"RG16I", 4, 1, 1},    {"RG16UI", 4, 1, 1},   {"R32I", 4, 1, 1},     {"R32UI", 4, 1, 1},
    {"Shadow16", 2, 1, 1}, {"Shadow24", 3, 1, 1}, {"Shadow32", 4, 1, 1},
};
inline constexpr std::uint32_t kTextureFormatCount = sizeof(kTextureFormats) / sizeof(kTextureFormats[0]);
inline constexpr std::uint8_t kFormatInvalid = 0;
inline constexpr std::uint8_t kFormatA8R8G8B8 = 1;
inline constexpr std::uint8_t kFormatX8R8G8B8 = 2;
inline constexpr std::uint8_t kFormatA8B8G8R8 = 3;
inline constexpr std::uint8_t kFormatDxt1 = 4;
inline constexpr std::uint8_t kFormatDxt3 = 5;
inline constexpr std::uint8_t kFormatDxt5 = 6;
inline constexpr std::uint8_t kMipCountMask = 0x7F;
inline constexpr std::uint8_t kSrgbBit = 0x80;

struct VertexFormatInfo {
    const char* name;
    std::uint32_t stride;
};
inline constexpr VertexFormatInfo kVertexFormats[] = {
    {"Position3", 12},
    {"Position3Color4bTexCoord2", 24},
    {"Position3Color4bTexCoord4", 32},
    {"Position3Color4bTexCoord6", 40},
    {"Position3Normal3", 24},
    {"Position3Normal3TexCoord2", 32},
    {"Position3Normal3Color4TexCoord2", 36},
    {"Position3Normal3Color4TexCoord4", 44},
    {"Position3Weights4bBones4bNormal3TexCoord2", 40},
    {"Position3Normal3Tan3Bin3TexCoord2", 56},
    {"Position3Normal3Tan3Bin3TexCoord4", 64},
    {"Position3Normal3Tan3Bin3Color4TexCoord4", 68},
    {"TexCoord4", 16},
    {"Position3Color8fTexCoord6", 68},
    {"Matrix", 64},
};
inline constexpr std::uint32_t kVertexFormatCount = sizeof(kVertexFormats) / sizeof(kVertexFormats[0]);

struct IndexFormatInfo {
    const char* name;
    std::uint32_t size;
};
inline constexpr IndexFormatInfo kIndexFormats[] = {{"IF_UInt16", 2}, {"IF_UInt32", 4}};
inline constexpr std::uint32_t kIndexFormatCount = 2;

// The only primitive type the format defines: a list of triangles, three
// indices each.
inline constexpr std::uint8_t kTriangleList = 2;
inline constexpr const char* kTriangleListName = "TriangleList";

}  // namespace tarn::kivaread
