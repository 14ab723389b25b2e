#include "convert/parse_integer.h"

bool parseInteger(std::string_view text, int32_t& out) {
    size_t i = 0;
    const bool negative = !text.empty() && text[0] == '-';
    if (negative) i = 1;
    if (i == text.size()) return false;
    // Accumulate the magnitude; the limit is checked before each digit so
    // that -2147483648 fits and 2147483648 does not.
    const uint32_t limit = negative ? 2147483648u : 2147483647u;
    uint32_t value = 0;
    for (; i < text.size(); ++i) {
        const char c = text[i];
        if (c < '0' || c > '9') return false;
        const uint32_t digit = uint32_t(c - '0');
        if (value > (limit - digit) / 10) return false;
        value = value * 10 + digit;
    }
    out = negative ? int32_t(-int64_t(value)) : int32_t(value);
    return true;
}
