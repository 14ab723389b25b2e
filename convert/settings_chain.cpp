#include "convert/settings_chain.h"

#include "convert/error_reporter.h"
#include "convert/parse_integer.h"
#include "qe/print_escaped.h"

namespace {

bool equalsIgnoringCase(std::string_view a, std::string_view b) {
    if (a.size() != b.size()) return false;
    for (size_t i = 0; i < a.size(); ++i) {
        char x = a[i], y = b[i];
        if (x >= 'A' && x <= 'Z') x = char(x - 'A' + 'a');
        if (y >= 'A' && y <= 'Z') y = char(y - 'A' + 'a');
        if (x != y) return false;
    }
    return true;
}

}  // namespace

bool parseBoolSetting(const SettingValue& setting, ErrorReporter& errors, bool& out) {
    const std::string_view v = setting.value;
    if (equalsIgnoringCase(v, "yes") || equalsIgnoringCase(v, "true")) {
        out = true;
        return true;
    }
    if (equalsIgnoringCase(v, "no") || equalsIgnoringCase(v, "false")) {
        out = false;
        return true;
    }
    std::ostream& s = errors.errorAtLine(setting.source, setting.line);
    s << "invalid boolean value (\"";
    qe::printEscaped(s, v);
    s << "\").  Expected one of \"yes\", \"true\", \"no\", or \"false\".\n";
    return false;
}

bool SettingsChain::findSetting(std::string_view key, SettingValue& out) const {
    for (const SettingsFile* f : files_)
        if (f->find(key, out)) return true;
    return false;
}

bool SettingsChain::getString(std::string_view key, std::string& out) const {
    SettingValue v;
    if (!findSetting(key, v)) return false;
    out = std::move(v.value);
    return true;
}

bool SettingsChain::getInt(std::string_view key, int32_t& out) const {
    SettingValue v;
    if (!findSetting(key, v)) return false;
    if (parseInteger(v.value, out)) return true;
    std::ostream& s = errors_.errorAtLine(v.source, v.line);
    s << "invalid integer value (\"";
    qe::printEscaped(s, v.value);
    s << "\").\n";
    return false;
}

bool SettingsChain::getBool(std::string_view key, bool& out) const {
    SettingValue v;
    if (!findSetting(key, v)) return false;
    return parseBoolSetting(v, errors_, out);
}
