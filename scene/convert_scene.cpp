#include "scene/convert_scene.h"

#include "convert/dependency_set.h"
#include "convert/error_reporter.h"

void convertScene(const std::string& path, const SceneOptions&, tarn::KivaBuilder&, tarn::MaterialCache&,
                  SettingsStore&, DependencySet& dependencies, ErrorReporter& errors) {
    dependencies.add(path);
    errors.error(path) << "scene input is not supported by this build\n";
}
