#include "fbx/io/fbx_text_values.h"

#include <charconv>
#include <cmath>
#include <cstring>
#include <limits>

namespace {

bool IsBlank(char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r' || c == '\v' || c == '\f'; }

// Skips leading blanks and takes one sign; true for a "-".
bool TakeSign(std::string_view& text) {
    size_t i = 0;
    while (i < text.size() && IsBlank(text[i])) ++i;
    bool negative = false;
    if (i < text.size() && (text[i] == '-' || text[i] == '+')) negative = text[i++] == '-';
    text.remove_prefix(i);
    return negative;
}

// The leading digits as a magnitude; `overflow` is set when it passes
// 2^64 - 1.
uint64_t TakeDigits(std::string_view text, bool& overflow) {
    uint64_t value = 0;
    overflow = false;
    for (char c : text) {
        if (c < '0' || c > '9') break;
        uint64_t digit = static_cast<uint64_t>(c - '0');
        if (value > (UINT64_MAX - digit) / 10) overflow = true;
        value = value * 10 + digit;
    }
    return value;
}

int Base64Digit(unsigned char c) {
    if (c >= 'A' && c <= 'Z') return c - 'A';
    if (c >= 'a' && c <= 'z') return c - 'a' + 26;
    if (c >= '0' && c <= '9') return c - '0' + 52;
    if (c == '+') return 62;
    if (c == '/') return 63;
    return -1;
}

}  // namespace

int64_t FbxTextToLong(std::string_view text) {
    bool negative = TakeSign(text);
    bool overflow;
    uint64_t magnitude = TakeDigits(text, overflow);
    if (negative) {
        if (overflow || magnitude > static_cast<uint64_t>(INT64_MAX) + 1) return INT64_MIN;
        return static_cast<int64_t>(0 - magnitude);
    }
    if (overflow || magnitude > static_cast<uint64_t>(INT64_MAX)) return INT64_MAX;
    return static_cast<int64_t>(magnitude);
}

int32_t FbxTextToInt(std::string_view text) {
    int64_t value = FbxTextToLong(text);
    if (value > INT32_MAX) return INT32_MAX;
    if (value < INT32_MIN) return INT32_MIN;
    return static_cast<int32_t>(value);
}

uint64_t FbxTextToULong(std::string_view text) {
    bool negative = TakeSign(text);
    bool overflow;
    uint64_t magnitude = TakeDigits(text, overflow);
    if (overflow) return UINT64_MAX;
    return negative ? 0 - magnitude : magnitude;
}

double FbxTextToDouble(std::string_view text) {
    bool negative = TakeSign(text);
    // A second sign is no number.
    if (!text.empty() && (text[0] == '-' || text[0] == '+')) return 0.0;
    double value = 0.0;
    std::from_chars_result result =
        std::from_chars(text.data(), text.data() + text.size(), value, std::chars_format::general);
    if (result.ec == std::errc::result_out_of_range) {
        // Too large becomes infinite and too small zero, as strtod gives
        // them: a negative exponent makes a number too small.
        std::string_view number(text.data(), static_cast<size_t>(result.ptr - text.data()));
        size_t exponent = number.find_first_of("eE");
        bool small = exponent != std::string_view::npos && exponent + 1 < number.size() && number[exponent + 1] == '-';
        value = small ? 0.0 : std::numeric_limits<double>::infinity();
    } else if (result.ec != std::errc()) {
        value = 0.0;
    }
    return negative ? -value : value;
}

void FbxTextUnescape(std::string_view text, std::string& out) {
    out.clear();
    size_t amp = text.find('&');
    if (amp == std::string_view::npos) {
        out.assign(text);
        return;
    }
    out.reserve(text.size());
    size_t start = 0;
    while (amp != std::string_view::npos) {
        out.append(text.substr(start, amp - start));
        std::string_view rest = text.substr(amp);
        if (rest.starts_with("&quot;")) {
            out += '"';
            start = amp + 6;
        } else if (rest.starts_with("&lf;")) {
            out += '\n';
            start = amp + 4;
        } else if (rest.starts_with("&cr;")) {
            out += '\r';
            start = amp + 4;
        } else {
            out += '&';
            start = amp + 1;
        }
        amp = text.find('&', start);
    }
    out.append(text.substr(start));
}

void FbxTextEscape(std::string_view text, std::string& out) {
    for (char c : text) {
        switch (c) {
        case '"':
            out += "&quot;";
            break;
        case '\n':
            out += "&lf;";
            break;
        case '\r':
            out += "&cr;";
            break;
        default:
            out += c;
        }
    }
}

bool FbxDecodeBase64(std::string_view text, FbxByteBuffer& out) {
    out.Clear();
    if (!out.Reserve(text.size() / 4 * 3 + 3)) return false;
    uint8_t* data = out.Data();
    size_t size = 0;
    uint32_t bits = 0;
    int held = 0;
    for (char c : text) {
        if (IsBlank(c)) continue;
        int digit = Base64Digit(static_cast<unsigned char>(c));
        if (digit < 0) break;
        bits = (bits << 6) | static_cast<uint32_t>(digit);
        held += 6;
        if (held >= 8) {
            held -= 8;
            data[size++] = static_cast<uint8_t>(bits >> held);
        }
    }
    out.SetSize(size);
    return true;
}

void FbxEncodeBase64(const void* data, size_t size, std::string& out) {
    static const char kAlphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    const uint8_t* bytes = static_cast<const uint8_t*>(data);
    out.reserve(out.size() + (size + 2) / 3 * 4);
    size_t i = 0;
    for (; i + 3 <= size; i += 3) {
        uint32_t group = (uint32_t{bytes[i]} << 16) | (uint32_t{bytes[i + 1]} << 8) | bytes[i + 2];
        for (int shift = 18; shift >= 0; shift -= 6) out += kAlphabet[(group >> shift) & 63];
    }
    if (i < size) {
        uint32_t group = uint32_t{bytes[i]} << 16;
        if (i + 1 < size) group |= uint32_t{bytes[i + 1]} << 8;
        out += kAlphabet[(group >> 18) & 63];
        out += kAlphabet[(group >> 12) & 63];
        out += i + 1 < size ? kAlphabet[(group >> 6) & 63] : '=';
        out += '=';
    }
}
