#include "convert/settings_store.h"

#include <filesystem>
#include <fstream>

#include "convert/dependency_set.h"
#include "convert/error_reporter.h"

namespace {

bool isSeparator(char c) { return c == '/' || c == '\\'; }

// Length of the root part: an optional prefix up to and including the first
// ':' that stands before any separator, then every separator right behind.
size_t rootLength(std::string_view path) {
    size_t n = 0;
    for (size_t i = 0; i < path.size(); ++i) {
        if (isSeparator(path[i])) break;
        if (path[i] == ':') {
            n = i + 1;
            break;
        }
    }
    while (n < path.size() && isSeparator(path[n])) ++n;
    return n;
}

}  // namespace

bool settingsParentDirectory(std::string_view path, std::string& parent) {
    const size_t root = rootLength(path);
    size_t cut = root;
    for (size_t i = path.size(); i-- > root;) {
        if (isSeparator(path[i])) {
            cut = i;
            while (cut > root && isSeparator(path[cut - 1])) --cut;
            break;
        }
    }
    if (cut == path.size()) return false;  // the path is its own parent
    parent.assign(path.substr(0, cut));
    return true;
}

const SettingsFile* SettingsStore::loadSettingsFile(std::string_view path) {
    if (auto it = files_.find(path); it != files_.end()) return it->second.get();
    dependencies_.add(path);
    std::unique_ptr<SettingsFile> file;
    std::error_code ec;
    // A directory of that name is no settings file.
    if (!std::filesystem::is_directory(std::filesystem::path(path), ec)) {
        std::ifstream in{std::string(path), std::ios::binary};
        if (in) {
            file = std::make_unique<SettingsFile>(std::string(path));
            file->parse(in, errors_);
        }
    }
    const SettingsFile* result = file.get();
    files_.emplace(std::string(path), std::move(file));
    return result;
}

const SettingsChain& SettingsStore::settingsFor(std::string_view inputPath) {
    if (auto it = chains_.find(inputPath); it != chains_.end()) return *it->second;

    auto chain = std::make_unique<SettingsChain>(errors_);
    std::string candidate = std::string(inputPath) + ".settings";
    // The input's own directory; an input without directory text lies in
    // the working directory, spelt "".
    std::string directory;
    bool haveDirectory = settingsParentDirectory(inputPath, directory);
    for (;;) {
        if (const SettingsFile* file = loadSettingsFile(candidate)) {
            chain->append(*file);
            SettingValue inherit;
            if (file->find("inherit", inherit)) {
                bool goOn = false;
                if (!parseBoolSetting(inherit, errors_, goOn) || !goOn) break;
            }
        }
        if (!haveDirectory) break;
        candidate = directory;
        if (!candidate.empty() && !isSeparator(candidate.back())) candidate += '/';
        candidate += "default.settings";
        std::string parent;
        haveDirectory = settingsParentDirectory(directory, parent);
        directory = std::move(parent);
    }
    const SettingsChain& result = *chain;
    chains_.emplace(std::string(inputPath), std::move(chain));
    return result;
}
