#include "scene/material_translator.h"

#include "fbx/model/fbx_file_texture.h"
#include "fbx/model/fbx_property.h"
#include "fbx/model/fbx_surface_material.h"
#include "fbx/model/fbx_types.h"
#include "image/convert_image.h"
#include "scene/texture_paths.h"

namespace {

// The file texture connected directly to the property, if any. Layered and
// procedural textures are not file textures and count as none.
const FbxFileTexture* fileTextureOf(const FbxProperty& property) {
    if (!property.IsValid()) return nullptr;
    return static_cast<const FbxFileTexture*>(
        property.GetSrcObject(FbxCriteria::ObjectType(FbxFileTexture::ClassId), 0));
}

}  // namespace

MaterialTranslator::MaterialTranslator(tarn::KivaBuilder& builder, std::string folder,
                                       tarn::MaterialCache* materialCache, SettingsStore& settings,
                                       TextureMode textureMode, DependencySet& dependencies, ErrorReporter& errors)
    : builder_(builder),
      folder_(std::move(folder)),
      materialCache_(materialCache),
      settings_(settings),
      textureMode_(textureMode),
      dependencies_(dependencies),
      errors_(errors) {}

qe::Ref<tarn::MaterialData> MaterialTranslator::materialFor(const FbxSurfaceMaterial* surfaceMaterial, bool skinned) {
    if (!materialCache_) return {};
    auto& materials = skinned ? skinnedMaterials_ : plainMaterials_;
    if (auto found = materials.find(surfaceMaterial); found != materials.end()) return found->second;
    qe::Ref<tarn::MaterialData> made = translateMaterial(surfaceMaterial, skinned);
    tarn::internMaterial(made);
    materials.emplace(surfaceMaterial, made);
    return made;
}

qe::Ref<tarn::Texture> MaterialTranslator::textureFor(const FbxFileTexture* fileTexture) {
    if (!fileTexture || textureMode_ == TextureMode::Strip) return {};
    if (auto found = textures_.find(fileTexture); found != textures_.end()) return found->second;
    const std::string path = hostPath(cleanPath(bindPath(folder_, fileTexture->GetRelativeFileName())));
    qe::Ref<tarn::Texture> texture =
        convertImage(path.c_str(), textureMode_, builder_, settings_, dependencies_, errors_);
    textures_.emplace(fileTexture, texture);
    return texture;
}

qe::Ref<tarn::Texture> MaterialTranslator::textureOfProperty(const FbxSurfaceMaterial& surfaceMaterial,
                                                             const char* property) {
    return textureFor(fileTextureOf(surfaceMaterial.FindProperty(property, true)));
}

qe::Ref<tarn::MaterialData> MaterialTranslator::translateMaterial(const FbxSurfaceMaterial* surfaceMaterial,
                                                                  bool skinned) {
    if (!surfaceMaterial) {
        qe::Ref<tarn::MaterialData> material = tarn::createMaterial(materialCache_, "solid");
        tarn::setVectorParameter(material, "DiffuseColor", {1.0f, 1.0f, 1.0f, 1.0f});
        return material;
    }

    const FbxProperty diffuseProperty = surfaceMaterial->FindProperty("DiffuseColor", true);
    qe::Ref<tarn::Texture> diffuse = textureFor(fileTextureOf(diffuseProperty));
    if (!diffuse) {
        // An untextured material keeps its colour, with alpha 0.
        FbxDouble3 color{};
        if (diffuseProperty.IsValid()) color = diffuseProperty.Get<FbxDouble3>();
        qe::Ref<tarn::MaterialData> material = tarn::createMaterial(materialCache_, "solid");
        tarn::setVectorParameter(
            material, "DiffuseColor",
            {static_cast<float>(color[0]), static_cast<float>(color[1]), static_cast<float>(color[2]), 0.0f});
        return material;
    }

    // A skinned mesh carries no tangents, so it never gets a normal map.
    if (!skinned) {
        // All three are converted whether or not they are used, so that each
        // enters the container and the dependency list.
        qe::Ref<tarn::Texture> specularFactor = textureOfProperty(*surfaceMaterial, "SpecularFactor");
        qe::Ref<tarn::Texture> normal = textureOfProperty(*surfaceMaterial, "NormalMap");
        qe::Ref<tarn::Texture> specularColor = textureOfProperty(*surfaceMaterial, "SpecularColor");
        if (normal) {
            if (specularFactor) {
                qe::Ref<tarn::MaterialData> material = tarn::createMaterial(materialCache_, "asteroid");
                tarn::setTextureParameter(material, "NormalTexture", normal);
                tarn::setTextureParameter(material, "SpecularTexture", specularFactor);
                tarn::setTextureParameter(material, "DiffuseTexture", diffuse);
                return material;
            }
            qe::Ref<tarn::MaterialData> material =
                tarn::createMaterial(materialCache_, specularColor ? "textured_normal_material" : "textured_normal");
            tarn::setTextureParameter(material, "NormalTexture", normal);
            tarn::setTextureParameter(material, "DiffuseTexture", diffuse);
            if (specularColor) tarn::setTextureParameter(material, "MaterialTexture", specularColor);
            return material;
        }
    }

    qe::Ref<tarn::MaterialData> material = tarn::createMaterial(materialCache_, "textured");
    tarn::setTextureParameter(material, "DiffuseTexture", diffuse);
    return material;
}
