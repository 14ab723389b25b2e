#pragma once

#include <cstdint>

namespace tarn {

// Vertex layouts of the engine library. The numeric value is what a vertex
// buffer row of a .kiva file stores.
enum class VertexFormat : uint32_t {
    Position3 = 0,
    Position3Color4bTexCoord2 = 1,
    Position3Color4bTexCoord4 = 2,
    Position3Color4bTexCoord6 = 3,
    Position3Normal3 = 4,
    Position3Normal3TexCoord2 = 5,
    Position3Normal3Color4TexCoord2 = 6,
    Position3Normal3Color4TexCoord4 = 7,
    Position3Weights4bBones4bNormal3TexCoord2 = 8,
    Position3Normal3Tan3Bin3TexCoord2 = 9,
    Position3Normal3Tan3Bin3TexCoord4 = 10,
    Position3Normal3Tan3Bin3Color4TexCoord4 = 11,
    TexCoord4 = 12,
    Position3Color8fTexCoord6 = 13,
    Matrix = 14,
};

inline constexpr uint32_t kVertexFormatCount = 15;

// Stride and byte offsets of the attributes inside one vertex; -1 where the
// format has no such attribute.
struct VertexFormatInfo {
    const char* name;
    int32_t stride;
    int32_t position;
    int32_t weights;
    int32_t bones;
    int32_t normal;
    int32_t tangent;
    int32_t binormal;
    int32_t color;
    int32_t color2;
    int32_t texCoord[3];
};

// No range check: the value must be one of the enumeration's.
const VertexFormatInfo& vertexFormatInfo(VertexFormat format);

enum IndexFormat : uint32_t {
    IF_UInt16 = 0,
    IF_UInt32 = 1,
};

struct IndexFormatInfo {
    const char* name;
    uint32_t indexSize;
};

// No range check: the value must be one of the enumeration's.
const IndexFormatInfo& indexFormatInfo(IndexFormat format);

// Primitive type of a material group: a list of triangles, three indices each.
inline constexpr uint32_t kPrimitiveTriangleList = 2;

}  // namespace tarn
