#include "tarn/vertex_format.h"

namespace tarn {

namespace {

constexpr VertexFormatInfo kVertexFormats[kVertexFormatCount] = {
    // name, stride, position, weights, bones, normal, tangent, binormal, colour, colour 2, texcoords
    {"Position3", 12, 0, -1, -1, -1, -1, -1, -1, -1, {-1, -1, -1}},
    {"Position3Color4bTexCoord2", 24, 0, -1, -1, -1, -1, -1, 12, -1, {16, -1, -1}},
    {"Position3Color4bTexCoord4", 32, 0, -1, -1, -1, -1, -1, 12, -1, {16, 24, -1}},
    {"Position3Color4bTexCoord6", 40, 0, -1, -1, -1, -1, -1, 12, -1, {16, 24, 32}},
    {"Position3Normal3", 24, 0, -1, -1, 12, -1, -1, -1, -1, {-1, -1, -1}},
    {"Position3Normal3TexCoord2", 32, 0, -1, -1, 12, -1, -1, -1, -1, {24, -1, -1}},
    {"Position3Normal3Color4TexCoord2", 36, 0, -1, -1, 12, -1, -1, 24, -1, {28, -1, -1}},
    {"Position3Normal3Color4TexCoord4", 44, 0, -1, -1, 12, -1, -1, 24, -1, {28, 36, -1}},
    {"Position3Weights4bBones4bNormal3TexCoord2", 40, 0, 12, 16, 20, -1, -1, -1, -1, {32, -1, -1}},
    {"Position3Normal3Tan3Bin3TexCoord2", 56, 0, -1, -1, 12, 24, 36, -1, -1, {48, -1, -1}},
    {"Position3Normal3Tan3Bin3TexCoord4", 64, 0, -1, -1, 12, 24, 36, -1, -1, {48, 56, -1}},
    {"Position3Normal3Tan3Bin3Color4TexCoord4", 68, 0, -1, -1, 12, 24, 36, 48, -1, {52, 60, -1}},
    {"TexCoord4", 16, -1, -1, -1, -1, -1, -1, -1, -1, {0, 8, -1}},
    {"Position3Color8fTexCoord6", 68, 0, -1, -1, -1, -1, -1, 12, 28, {44, 52, 60}},
    {"Matrix", 64, -1, -1, -1, -1, -1, -1, -1, -1, {-1, -1, -1}},
};

constexpr IndexFormatInfo kIndexFormats[2] = {{"IF_UInt16", 2}, {"IF_UInt32", 4}};

}  // namespace

const VertexFormatInfo& vertexFormatInfo(VertexFormat format) { return kVertexFormats[static_cast<uint32_t>(format)]; }

const IndexFormatInfo& indexFormatInfo(IndexFormat format) { return kIndexFormats[format]; }

}  // namespace tarn
