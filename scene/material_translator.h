#pragma once

#include <string>
#include <unordered_map>

#include "convert/texture_mode.h"
#include "qe/counted.h"
#include "tarn/material_data.h"
#include "tarn/texture.h"

class DependencySet;
class ErrorReporter;
class FbxFileTexture;
class FbxSurfaceMaterial;
class SettingsStore;
namespace tarn {
class KivaBuilder;
class MaterialCache;
}  // namespace tarn

// Turns the surface materials of one scene into the engine's materials, and
// their file textures into textures of the builder's container. A material
// gets one of five shaders by the channels that have a file texture
// directly connected ("DiffuseColor", "NormalMap", "SpecularFactor",
// "SpecularColor"):
//   "solid"                     no diffuse texture: "DiffuseColor" is the
//                               material's colour with alpha 0, or white
//                               with alpha 1 for a node without material
//   "textured"                  a diffuse texture ("DiffuseTexture"), and no
//                               normal map or a skinned mesh
//   "textured_normal"           a normal map too ("NormalTexture")
//   "textured_normal_material"  and a specular colour texture
//                               ("MaterialTexture")
//   "asteroid"                  a normal map and a specular factor texture
//                               ("SpecularTexture")
// Texture names are taken relative to the scene's folder (see
// texture_paths.h) and converted by convertImage with the settings of the
// run. Each material (separately for skinned and plain meshes) and each
// texture object is translated once per scene; a texture that fails is
// reported once and counts as absent.
class MaterialTranslator {
public:
    // Without a material cache (materials switched off) every material is
    // empty and no texture is converted. Everything passed must outlive the
    // translator.
    MaterialTranslator(tarn::KivaBuilder& builder, std::string folder, tarn::MaterialCache* materialCache,
                       SettingsStore& settings, TextureMode textureMode, DependencySet& dependencies,
                       ErrorReporter& errors);
    MaterialTranslator(const MaterialTranslator&) = delete;
    MaterialTranslator& operator=(const MaterialTranslator&) = delete;

    // The canonical material for a surface material of a skinned or a plain
    // mesh; null `surfaceMaterial` for a node without materials. Empty when
    // materials are switched off.
    qe::Ref<tarn::MaterialData> materialFor(const FbxSurfaceMaterial* surfaceMaterial, bool skinned);

    // The texture of a file texture object; empty for null, under
    // TextureMode::Strip, and when the image could not be converted.
    qe::Ref<tarn::Texture> textureFor(const FbxFileTexture* fileTexture);

private:
    qe::Ref<tarn::MaterialData> translateMaterial(const FbxSurfaceMaterial* surfaceMaterial, bool skinned);
    qe::Ref<tarn::Texture> textureOfProperty(const FbxSurfaceMaterial& surfaceMaterial, const char* property);

    tarn::KivaBuilder& builder_;
    std::string folder_;
    tarn::MaterialCache* materialCache_;
    SettingsStore& settings_;
    TextureMode textureMode_;
    DependencySet& dependencies_;
    ErrorReporter& errors_;
    // Keyed by the document objects; only ever looked up, never walked, so
    // that nothing depends on where objects lie in memory.
    std::unordered_map<const FbxFileTexture*, qe::Ref<tarn::Texture>> textures_;  // failed ones empty
    std::unordered_map<const FbxSurfaceMaterial*, qe::Ref<tarn::MaterialData>> plainMaterials_;
    std::unordered_map<const FbxSurfaceMaterial*, qe::Ref<tarn::MaterialData>> skinnedMaterials_;
};
