#pragma once

#include <cstdint>
#include <istream>
#include <map>
#include <string>
#include <string_view>
#include <utility>

class ErrorReporter;

// One setting as found: its value and where it stands.
struct SettingValue {
    std::string value;
    std::string source;  // path of the settings file
    int32_t line = -1;   // 1-based; -1 until a look-up fills it
};

// One parsed settings file: lines of the form "key: value". Keys are
// case-sensitive; the first line with a key wins.
class SettingsFile {
public:
    explicit SettingsFile(std::string path) : path_(std::move(path)) {}

    // Reads the lines of in. Every invalid line is reported with its line
    // number and skipped, so one file can give several errors.
    void parse(std::istream& in, ErrorReporter& errors);

    bool find(std::string_view key, SettingValue& out) const;

    const std::string& path() const { return path_; }
    size_t size() const { return entries_.size(); }

private:
    std::string path_;
    std::map<std::string, std::pair<std::string, int32_t>, std::less<>> entries_;
};

// Splits one line into key and value. Trailing white space is ignored. The
// key starts with '-', '$', a letter or a digit and goes on with '-', '$' or
// letters up to ':'; white space may stand before the key and between ':'
// and the value. Returns false for an invalid line; an empty line is
// neither valid nor invalid and gives false with empty set.
bool splitSettingLine(std::string_view line, std::string_view& key, std::string_view& value, bool& empty);
