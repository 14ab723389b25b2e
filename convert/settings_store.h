#pragma once

#include <map>
#include <memory>
#include <string>
#include <string_view>

#include "convert/settings_chain.h"
#include "convert/settings_file.h"

class DependencySet;
class ErrorReporter;

// Finds, parses and caches the settings files of a run. Each file is parsed
// at most once (and its errors reported once), each input's chain built at
// most once. Every path that is looked for enters the DependencySet, found
// or not, so a build notices a settings file that appears later.
class SettingsStore {
public:
    SettingsStore(DependencySet& dependencies, ErrorReporter& errors) : dependencies_(dependencies), errors_(errors) {}
    SettingsStore(const SettingsStore&) = delete;
    SettingsStore& operator=(const SettingsStore&) = delete;

    // The chain of an input: "<input>.settings", then "default.settings" in
    // the input's directory and in each directory above it, as far as the
    // text of the path goes, stopping early at a file whose own "inherit"
    // setting is false or not a boolean.
    const SettingsChain& settingsFor(std::string_view inputPath);

    // The parsed file, or null when it cannot be opened.
    const SettingsFile* loadSettingsFile(std::string_view path);

private:
    DependencySet& dependencies_;
    ErrorReporter& errors_;
    std::map<std::string, std::unique_ptr<SettingsFile>, std::less<>> files_;
    std::map<std::string, std::unique_ptr<SettingsChain>, std::less<>> chains_;
};

// The directory above a path, worked out on its text with '/' and '\\' as
// separators and an optional drive prefix up to a ':'. Returns false when
// the path is its own parent (a root, or the empty text).
bool settingsParentDirectory(std::string_view path, std::string& parent);
