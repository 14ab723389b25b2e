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
    bool noMaterials = false;  // meshes keep their groups, each with an empty material
    bool noMeshes = false;     // the file is read and listed, and adds nothing
    bool bakeAnims = false;    // accepted; the first stack is always baked
    TextureMode textureMode = TextureMode::Include;
};

// Converts one FBX scene into records of the builder's container: reads the
// file, brings it to up +Z, front -Y, right-handed, in metres, then adds
// its skeletons, its models with their meshes, materials and textures, and
// its first animation stack baked at 60 frames per second. The file is
// listed in `dependencies` before it is opened; its textures as they are
// read. Bad input is reported through `errors`. False only when the file
// could not be opened.
bool convertScene(const std::string& path, const SceneOptions& options, tarn::KivaBuilder& builder,
                  tarn::MaterialCache& materialCache, SettingsStore& settings, DependencySet& dependencies,
                  ErrorReporter& errors);

// The folder part of a scene path, which relative texture names are taken
// from: what stands before the last '/', or before the last '\\' when the
// path has no '/'. A path with neither is returned whole, as if it were a
// folder.
std::string folderOf(const std::string& path);
