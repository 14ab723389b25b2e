#include "convert/settings_file.h"

#include <string>

#include "convert/error_reporter.h"

namespace {

// The classic white-space set, the carriage return included; bytes above
// 127 are never white space.
bool isSpace(char c) { return c == ' ' || (c >= '\t' && c <= '\r'); }
bool isLetter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }
bool isDigit(char c) { return c >= '0' && c <= '9'; }

}  // namespace

bool splitSettingLine(std::string_view line, std::string_view& key, std::string_view& value, bool& empty) {
    size_t end = line.size();
    while (end > 0 && isSpace(line[end - 1])) --end;
    line = line.substr(0, end);
    empty = line.empty();
    if (empty) return false;

    enum class State { BeforeKey, InKey, BeforeValue, InValue };
    State state = State::BeforeKey;
    size_t keyStart = 0;
    for (size_t i = 0; i < line.size(); ++i) {
        const char c = line[i];
        switch (state) {
        case State::BeforeKey:
            if (c == '-' || c == '$' || isLetter(c) || isDigit(c)) {
                keyStart = i;
                state = State::InKey;
            } else if (!isSpace(c)) {
                return false;
            }
            break;
        case State::InKey:
            if (c == ':') {
                key = line.substr(keyStart, i - keyStart);
                state = State::BeforeValue;
            } else if (!(c == '-' || c == '$' || isLetter(c))) {
                return false;
            }
            break;
        case State::BeforeValue:
            if (!isSpace(c)) {
                value = line.substr(i);
                return true;
            }
            break;
        case State::InValue:
            break;
        }
    }
    if (state == State::BeforeValue) {
        value = std::string_view();
        return true;
    }
    return false;
}

void SettingsFile::parse(std::istream& in, ErrorReporter& errors) {
    std::string line;
    int32_t number = 0;
    while (std::getline(in, line)) {
        ++number;
        std::string_view key, value;
        bool empty = false;
        if (splitSettingLine(line, key, value, empty)) {
            // emplace keeps the earlier line when the key is already there.
            entries_.emplace(std::string(key), std::make_pair(std::string(value), number));
        } else if (!empty) {
            errors.errorAtLine(path_, number) << "invalid setting\n";
        }
    }
}

bool SettingsFile::find(std::string_view key, SettingValue& out) const {
    auto it = entries_.find(key);
    if (it == entries_.end()) return false;
    out.value = it->second.first;
    out.source = path_;
    out.line = it->second.second;
    return true;
}
