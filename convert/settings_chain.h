#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "convert/settings_file.h"

class ErrorReporter;

// The settings files that apply to one input, nearest first. Look-ups take
// the first file that holds the key. The files belong to the SettingsStore.
class SettingsChain {
public:
    explicit SettingsChain(ErrorReporter& errors) : errors_(errors) {}

    void append(const SettingsFile& file) { files_.push_back(&file); }
    const std::vector<const SettingsFile*>& files() const { return files_; }

    bool findSetting(std::string_view key, SettingValue& out) const;

    // Typed look-ups: false when the key is absent or its value does not
    // parse (which is reported with the file and line of the setting). The
    // out value changes only on true.
    bool getString(std::string_view key, std::string& out) const;
    bool getInt(std::string_view key, int32_t& out) const;
    bool getBool(std::string_view key, bool& out) const;

private:
    std::vector<const SettingsFile*> files_;
    ErrorReporter& errors_;
};

// "yes"/"true" and "no"/"false" in any case; anything else is reported
// against the setting's file and line and gives false.
bool parseBoolSetting(const SettingValue& setting, ErrorReporter& errors, bool& out);
