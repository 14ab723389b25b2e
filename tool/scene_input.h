#pragma once

#include <string>

#include "tool/command_line.h"

class DependencySet;
class ErrorReporter;
class SettingsStore;
namespace tarn {
class KivaBuilder;
class MaterialCache;
}

// Converts one scene input into records of the builder's container, with
// the run's options and the material cache shared by all scenes. This build
// has no scene reader: the input is entered as a dependency and refused with
// one error line. Scene conversion takes this place.
void convertSceneInput(const std::string& path, const Options& options, tarn::KivaBuilder& builder,
                       tarn::MaterialCache& materialCache, SettingsStore& settings,
                       DependencySet& dependencies, ErrorReporter& errors);
