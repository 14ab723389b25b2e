#pragma once

#include <string>

#include "convert/texture_mode.h"

class DependencySet;
class ErrorReporter;
class SettingsStore;
namespace tarn {
class KivaBuilder;
class MaterialCache;
}  // namespace tarn

// What a run asks of every scene it converts.
struct SceneOptions {
    bool noMaterials = false;
    bool noMeshes = false;
    bool bakeAnims = false;
    TextureMode textureMode = TextureMode::Include;
};

// Converts one FBX scene into records of the builder's container, with the
// material cache shared by all scenes of the run. This build has no scene
// reader yet: the input is entered as a dependency and refused with one
// error line.
void convertScene(const std::string& path, const SceneOptions& options, tarn::KivaBuilder& builder,
                  tarn::MaterialCache& materialCache, SettingsStore& settings, DependencySet& dependencies,
                  ErrorReporter& errors);
