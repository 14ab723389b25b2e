#pragma once

#include <string>

#include "tool/command_line.h"

class DependencySet;
class ErrorReporter;
class SettingsStore;
namespace tarn {
class KivaBuilder;
}

// Converts one scene input into records of the builder's container. This
// build has no scene reader: the input is entered as a dependency and
// refused with one error line. Scene conversion takes this place.
void convertSceneInput(const std::string& path, const Options& options, tarn::KivaBuilder& builder,
                       SettingsStore& settings, DependencySet& dependencies, ErrorReporter& errors);
