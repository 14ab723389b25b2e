#pragma once

#include <array>
#include <cstdint>
#include <string_view>

#include "qe/counted.h"
#include "tarn/material_data.h"
#include "tarn/vertex_format.h"

// The three vertex layouts that scene meshes are built in. Each struct is
// the byte image of one vertex of its format: no padding, so that whole
// vertices can be compared and copied as bytes.

// A static vertex with two texture coordinate sets; the colour is unused
// and always zero.
struct VertexP3N3C4T4 {
    static constexpr tarn::VertexFormat kFormat = tarn::VertexFormat::Position3Normal3Color4TexCoord4;

    std::array<float, 3> position;
    std::array<float, 3> normal;
    std::array<uint8_t, 4> color;
    std::array<float, 2> texCoord0;
    std::array<float, 2> texCoord1;
};
static_assert(sizeof(VertexP3N3C4T4) == 44);

// A skinned vertex: four bone weights adding up to 255 and the four bones
// they belong to, as positions in the model's skeleton.
struct VertexP3W4B4N3T2 {
    static constexpr tarn::VertexFormat kFormat = tarn::VertexFormat::Position3Weights4bBones4bNormal3TexCoord2;

    std::array<float, 3> position;
    std::array<uint8_t, 4> weights;
    std::array<uint8_t, 4> bones;
    std::array<float, 3> normal;
    std::array<float, 2> texCoord;
};
static_assert(sizeof(VertexP3W4B4N3T2) == 40);

// A static vertex with a tangent frame for normal mapping.
struct VertexP3N3G3B3T4 {
    static constexpr tarn::VertexFormat kFormat = tarn::VertexFormat::Position3Normal3Tan3Bin3TexCoord4;

    std::array<float, 3> position;
    std::array<float, 3> normal;
    std::array<float, 3> tangent;
    std::array<float, 3> binormal;
    std::array<float, 2> texCoord0;
    std::array<float, 2> texCoord1;
};
static_assert(sizeof(VertexP3N3G3B3T4) == 64);

// The vertex format a shader's meshes are built in: a skinned mesh always
// takes the skinned format; "solid" and "textured" the plain one;
// "textured_normal", "textured_normal_material" and "asteroid" the one with
// tangents. Names are compared exactly. Shader names come only from the
// material translator, so any other name is a broken invariant and stops
// the program with "no vertex format for shader".
tarn::VertexFormat vertexFormatForShader(std::string_view shaderName, bool skinned);

// The same for a material of the translator. An empty material (materials
// switched off) has no shader: its meshes take the plain format, or the
// skinned one when skinned.
tarn::VertexFormat vertexFormatFor(const qe::Ref<tarn::MaterialData>& material, bool skinned);
