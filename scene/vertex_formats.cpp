#include "scene/vertex_formats.h"

#include "qe/fatal_error.h"

tarn::VertexFormat vertexFormatForShader(std::string_view shaderName, bool skinned) {
    if (skinned) return VertexP3W4B4N3T2::kFormat;
    if (shaderName == "solid" || shaderName == "textured") return VertexP3N3C4T4::kFormat;
    if (shaderName == "asteroid" || shaderName == "textured_normal" || shaderName == "textured_normal_material")
        return VertexP3N3G3B3T4::kFormat;
    qe::fatalError("no vertex format for shader");
}

tarn::VertexFormat vertexFormatFor(const qe::Ref<tarn::MaterialData>& material, bool skinned) {
    if (!material) return skinned ? VertexP3W4B4N3T2::kFormat : VertexP3N3C4T4::kFormat;
    return vertexFormatForShader(material->shaderName(), skinned);
}
