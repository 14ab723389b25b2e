// Arbitrary bytes as a settings file, and the values found in it through the
// typed look-ups: nothing may crash or read out of bounds.
#include <cstddef>
#include <cstdint>
#include <sstream>
#include <string>

#include "convert/error_reporter.h"
#include "convert/settings.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    std::ostringstream sink;
    ErrorReporter errors(sink);
    SettingsFile file("fuzz.settings");
    std::istringstream in(std::string(reinterpret_cast<const char*>(data), size));
    file.parse(in, errors);
    SettingsChain chain(errors);
    chain.append(file);
    int32_t n = 0;
    bool b = false;
    std::string s;
    for (const char* key : {"inherit", "texture-max-size", "resource-root", "a", "$", "-"}) {
        chain.getInt(key, n);
        chain.getBool(key, b);
        chain.getString(key, s);
    }
    return 0;
}
