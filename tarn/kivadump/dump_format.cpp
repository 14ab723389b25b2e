#include "tarn/kivadump/dump_format.h"

#include <charconv>
#include <cinttypes>
#include <cmath>
#include <cstdio>

namespace tarn::kivaread {

std::string formatFloat(float value) {
    if (std::isnan(value)) return "nan";
    if (std::isinf(value)) return value < 0 ? "-inf" : "inf";
    char text[32];
    auto result = std::to_chars(text, text + sizeof text, value);
    return std::string(text, result.ptr);
}

std::string formatHex(std::uint64_t value) {
    char text[24];
    std::snprintf(text, sizeof text, "0x%" PRIX64, value);
    return text;
}

std::string quoteText(std::string_view text) {
    std::string out;
    out.reserve(text.size() + 2);
    out += '"';
    for (unsigned char c : text) {
        if (c == '"' || c == '\\') {
            out += '\\';
            out += char(c);
        } else if (c < 0x20 || c == 0x7F) {
            char escaped[8];
            std::snprintf(escaped, sizeof escaped, "\\x%02X", c);
            out += escaped;
        } else {
            out += char(c);
        }
    }
    out += '"';
    return out;
}

namespace {

// Length of the valid UTF-8 sequence that starts at text[at], or 0.
std::size_t utf8Length(std::string_view text, std::size_t at) {
    const unsigned char lead = static_cast<unsigned char>(text[at]);
    std::size_t length;
    std::uint32_t code;
    if (lead >= 0xC2 && lead <= 0xDF) {
        length = 2;
        code = lead & 0x1F;
    } else if (lead >= 0xE0 && lead <= 0xEF) {
        length = 3;
        code = lead & 0x0F;
    } else if (lead >= 0xF0 && lead <= 0xF4) {
        length = 4;
        code = lead & 0x07;
    } else {
        return 0;
    }
    if (text.size() - at < length) return 0;
    for (std::size_t i = 1; i < length; ++i) {
        const unsigned char c = static_cast<unsigned char>(text[at + i]);
        if ((c & 0xC0) != 0x80) return 0;
        code = code << 6 | (c & 0x3F);
    }
    // Overlong forms, surrogates and values past U+10FFFF are not UTF-8.
    if ((length == 3 && code < 0x800) || (length == 4 && (code < 0x10000 || code > 0x10FFFF)) ||
        (code >= 0xD800 && code <= 0xDFFF))
        return 0;
    return length;
}

}  // namespace

std::string jsonEscape(std::string_view text) {
    std::string out;
    out.reserve(text.size());
    for (std::size_t i = 0; i < text.size();) {
        const unsigned char c = static_cast<unsigned char>(text[i]);
        if (c < 0x80) {
            switch (c) {
            case '"':
                out += "\\\"";
                break;
            case '\\':
                out += "\\\\";
                break;
            case '\n':
                out += "\\n";
                break;
            case '\r':
                out += "\\r";
                break;
            case '\t':
                out += "\\t";
                break;
            case '\b':
                out += "\\b";
                break;
            case '\f':
                out += "\\f";
                break;
            default:
                if (c < 0x20 || c == 0x7F) {
                    char escaped[8];
                    std::snprintf(escaped, sizeof escaped, "\\u%04X", c);
                    out += escaped;
                } else {
                    out += char(c);
                }
            }
            ++i;
            continue;
        }
        const std::size_t length = utf8Length(text, i);
        if (length == 0) {
            char escaped[8];
            std::snprintf(escaped, sizeof escaped, "\\u%04X", c);
            out += escaped;
            ++i;
        } else {
            out.append(text.substr(i, length));
            i += length;
        }
    }
    return out;
}

}  // namespace tarn::kivaread
