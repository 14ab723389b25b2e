#include "tool/scene_input.h"

#include "tool/dependency_set.h"
#include "tool/error_reporter.h"

void convertSceneInput(const std::string& path, const Options&, tarn::KivaBuilder&, tarn::MaterialCache&,
                       SettingsStore&, DependencySet& dependencies, ErrorReporter& errors) {
    dependencies.add(path);
    errors.error(path) << "scene input is not supported by this build\n";
}
