#include "tool/driver.h"

#include <string>
#include <string_view>

#include "convert/dependency_set.h"
#include "convert/error_reporter.h"
#include "convert/settings.h"
#include "image/convert_image.h"
#include "scene/convert_scene.h"
#include "tarn/kiva_builder.h"
#include "tarn/kiva_container.h"
#include "tarn/kiva_writer.h"
#include "tarn/material_cache.h"
#include "tool/command_line.h"
#include "tool/output_file.h"

namespace {

enum class InputKind { Image, Scene, Unknown };

// The last four characters of the path, without regard to case.
InputKind inputKind(std::string_view path) {
    if (path.size() < 4) return InputKind::Unknown;
    std::string ext(path.substr(path.size() - 4));
    for (char& c : ext)
        if (c >= 'A' && c <= 'Z') c = char(c - 'A' + 'a');
    if (ext == ".png" || ext == ".tga") return InputKind::Image;
    if (ext == ".fbx") return InputKind::Scene;
    return InputKind::Unknown;
}

// Writes the output and the dependency list; false after reporting a
// failure. Both go to temporary files first and replace their targets only
// when both are complete, so that a failure leaves both targets as they were.
bool writeResults(const Options& options, const tarn::KivaContainer& container, const DependencySet& dependencies,
                  ErrorReporter& errors, std::ostream& out) {
    const std::string& outputPath = *options.outputPath;
    const tarn::SerializedKiva file = tarn::serializeKiva(container);
    if (file.limit) {
        errors.error(outputPath) << file.limit.passed << "\n";
        return false;
    }
    StagedFile output;
    switch (output.stage(outputPath,
                         std::string_view(reinterpret_cast<const char*>(file.bytes.data()), file.bytes.size()))) {
    case WriteOutcome::Written:
        break;
    case WriteOutcome::CouldNotOpen:
        errors.error(outputPath) << "could not open for writing\n";
        return false;
    case WriteOutcome::WriteFailed:
        errors.error(outputPath) << "failed trying to write\n";
        return false;
    }

    const bool listToStdout = options.dependencyPath && *options.dependencyPath == "-";
    const bool listToFile = options.dependencyPath && !listToStdout;
    std::string list;
    StagedFile listFile;
    if (listToFile) {
        for (const std::string& p : dependencies.paths()) {
            list += p;
            list += '\n';
        }
        if (listFile.stage(*options.dependencyPath, list) != WriteOutcome::Written) {
            errors.error(*options.dependencyPath) << "could not write\n";
            return false;
        }
    }
    if (output.commit() != WriteOutcome::Written) {
        errors.error(outputPath) << "failed trying to write\n";
        return false;
    }
    if (listToFile && listFile.commit() != WriteOutcome::Written) {
        errors.error(*options.dependencyPath) << "could not write\n";
        return false;
    }
    if (listToStdout) {
        dependencies.writeTo(out);
        out.flush();
    }
    return true;
}

}  // namespace

int runKivatran(int argc, const char* const* argv, std::ostream& err, std::ostream& out) {
    Options options;
    if (!parseCommandLine(argc, argv, options, err)) return 1;

    // Destroyed in reverse order, the reporter last, so that its summary is
    // the last line of the run.
    ErrorReporter errors(err);
    DependencySet dependencies;
    SettingsStore settings(dependencies, errors);
    // Shared by every scene of the run, so that equal materials become one.
    tarn::MaterialCache materialCache;
    tarn::KivaContainer container;
    tarn::KivaBuilder builder(&container);

    const SceneOptions sceneOptions{.noMaterials = options.noMaterials,
                                    .noMeshes = options.noMeshes,
                                    .bakeAnims = options.bakeAnims,
                                    .textureMode = options.textureMode};
    for (const std::string& input : options.inputs) {
        switch (inputKind(input)) {
        case InputKind::Image:
            if (options.textureMode == TextureMode::Include) {
                // The record stays in the container; the handle is not needed.
                convertImage(input.c_str(), TextureMode::Include, builder, settings, dependencies, errors);
            } else {
                errors.error(input) << "--texture-mode incompatable with image input file\n";
            }
            break;
        case InputKind::Scene:
            convertScene(input, sceneOptions, builder, materialCache, settings, dependencies, errors);
            break;
        case InputKind::Unknown:
            errors.error(input) << "unrecognized extension\n";
            break;
        }
    }

    if (errors.errorCount() != 0) return 1;
    return writeResults(options, container, dependencies, errors, out) ? 0 : 1;
}
