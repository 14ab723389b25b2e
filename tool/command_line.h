#pragma once

#include <optional>
#include <ostream>
#include <string>
#include <vector>

#include "convert/texture_mode.h"

// The options of one run. Paths stay exactly as they were given.
struct Options {
    std::optional<std::string> outputPath;
    std::optional<std::string> dependencyPath;
    bool noMaterials = false;
    bool noMeshes = false;
    bool bakeAnims = false;
    TextureMode textureMode = TextureMode::Include;
    std::vector<std::string> inputs;  // in command-line order
};

// Parses argv from index 1. On a usage error writes its message and the
// usage text to err and returns false; the first failure ends the parse.
bool parseCommandLine(int argc, const char* const* argv, Options& options, std::ostream& err);

// The usage text, headed by the program name as given.
void printUsage(const char* programName, std::ostream& err);
