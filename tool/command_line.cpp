#include "tool/command_line.h"

#include <cstring>

void printUsage(const char* programName, std::ostream& err) {
    err << "usage: " << programName << " [options] files\n"
        << "  options:\n"
        << "    -o/--output FILENAME     output filename (required)\n"
        << "    --no-materials           exclude all materials\n"
        << "    --texture-mode           'include' (default), 'strip', 'reference'\n"
        << "    --no-baked-anim          do not bake animations\n"
        << "    --dependencies FILENAME  log dependencies to FILENAME\n";
}

namespace {

bool usageError(const char* programName, std::ostream& err, const std::string& message) {
    err << message;
    printUsage(programName, err);
    return false;
}

}  // namespace

bool parseCommandLine(int argc, const char* const* argv, Options& options, std::ostream& err) {
    const char* program = argc > 0 && argv[0] ? argv[0] : "kivatran";
    bool haveMode = false;
    for (int i = 1; i < argc; ++i) {
        const std::string arg = argv[i];
        if (arg == "--no-materials") {
            options.noMaterials = true;
        } else if (arg == "--texture-mode") {
            if (haveMode) return usageError(program, err, "-texture-mode can only be supplied once.\n");
            if (i + 1 >= argc) return usageError(program, err, "-texture-mode must be followed by a mode name.\n");
            const std::string word = argv[++i];
            if (word == "include")
                options.textureMode = TextureMode::Include;
            else if (word == "strip")
                options.textureMode = TextureMode::Strip;
            else if (word == "reference")
                options.textureMode = TextureMode::Reference;
            else
                return usageError(program, err, "unknown texture mode " + word + "\n");
            haveMode = true;
        } else if (arg == "--no-meshes") {
            options.noMeshes = true;
        } else if (arg == "--bake-anims") {
            options.bakeAnims = true;
        } else if (arg == "-o" || arg == "--output") {
            if (options.outputPath) return usageError(program, err, "-o/--output can only be supplied once.\n");
            if (i + 1 >= argc) return usageError(program, err, "-o/--output must be followed by a filename.\n");
            options.outputPath = argv[++i];
        } else if (arg == "--dependencies") {
            if (options.dependencyPath) return usageError(program, err, "--dependencies can only be supplied once.\n");
            if (i + 1 >= argc) return usageError(program, err, "--dependencies must be followed by a filename.\n");
            options.dependencyPath = argv[++i];
        } else if (!arg.empty() && arg[0] == '-') {
            return usageError(program, err, "Invalid option: " + arg + "\n");
        } else {
            options.inputs.push_back(arg);
        }
    }
    if (argc < 2 || options.inputs.empty()) return usageError(program, err, "No input files supplied.\n");
    if (!options.outputPath) return usageError(program, err, "No output file supplied.\n");
    return true;
}
