#include "tarn/kiva_limits.h"

#include <sstream>

#include "qe/print_escaped.h"

namespace tarn {

namespace {

// `kind "name"`, or "one <kind>" for a record without a name. Names are
// escaped so that the message stays one line.
std::string named(const char* kind, const std::string& name) {
    if (name.empty()) return std::string("one ") + kind;
    std::ostringstream out;
    out << kind << " \"";
    qe::printEscaped(out, name);
    out << '"';
    return out.str();
}

}  // namespace

KivaLimit tooMany(const std::string& what) {
    return {"too many " + what + " (at most " + std::to_string(kKivaMaxRows) + ")"};
}

KivaLimit kivaLimitOf(const TextureRecord& texture) {
    if (texture.width <= kKivaMaxTextureSide && texture.height <= kKivaMaxTextureSide) return {};
    return {named("texture", texture.name) + " of " + std::to_string(texture.width) + " by " +
            std::to_string(texture.height) + " texels is too large (at most " + std::to_string(kKivaMaxTextureSide) +
            " on a side)"};
}

// The messages are made only when a limit is passed: the writer checks every
// row.

KivaLimit kivaLimitOf(const MeshRecord& mesh) {
    return mesh.materialGroups.size() > kKivaMaxRows ? tooMany("material groups in one mesh") : KivaLimit{};
}

KivaLimit kivaLimitOf(const MaterialRecord& material) {
    const char* kind = material.vectorParameters.size() > kKivaMaxRows    ? "vector"
                       : material.textureParameters.size() > kKivaMaxRows ? "texture"
                       : material.matrixParameters.size() > kKivaMaxRows  ? "matrix"
                                                                          : nullptr;
    if (!kind) return {};
    return tooMany(std::string(kind) + " parameters in " +
                   (material.shaderName.empty() ? "one material" : named("material of shader", material.shaderName)));
}

KivaLimit kivaLimitOf(const ModelRecord& model) {
    if (model.meshBindings.size() > kKivaMaxRows) return tooMany("mesh bindings in " + named("model", model.name));
    for (const MeshBinding& binding : model.meshBindings)
        if (binding.boneMap.size() > kKivaMaxRows)
            return tooMany("bone map entries in " + named("mesh binding", binding.name) + " of " +
                           named("model", model.name));
    return {};
}

KivaLimit kivaLimitOf(const AnimSkeleton& skeleton) {
    return skeleton.bones.size() > kKivaMaxRows ? tooMany("bones in one skeleton") : KivaLimit{};
}

KivaLimit kivaLimitOf(const Animation& animation) {
    return animation.boneNames.size() > kKivaMaxRows ? tooMany("bones in " + named("animation", animation.name))
                                                     : KivaLimit{};
}

}  // namespace tarn
