#include "fbx/dump/dump_value.h"

#include <charconv>
#include <cmath>
#include <ostream>

DumpValue& DumpValue::push(DumpValue value) {
    items_.push_back(std::move(value));
    return items_.back();
}

DumpValue& DumpValue::add(std::string key, DumpValue value) {
    members_.emplace_back(std::move(key), std::move(value));
    return members_.back().second;
}

const DumpValue* DumpValue::find(const std::string& key) const {
    for (const auto& member : members_)
        if (member.first == key) return &member.second;
    return nullptr;
}

std::string formatDouble(double value) {
    if (std::isnan(value)) return "nan";
    if (std::isinf(value)) return value < 0 ? "-inf" : "inf";
    if (value == 0.0) return "0";  // also for -0, so that outputs compare
    char buffer[64];
    auto result = std::to_chars(buffer, buffer + sizeof buffer, value);
    return std::string(buffer, result.ptr);
}

namespace {

// Length of the valid UTF-8 sequence at `i` (2 to 4 bytes), 0 when there
// is none.
size_t utf8Length(const std::string& text, size_t i) {
    unsigned char c = static_cast<unsigned char>(text[i]);
    size_t length = c >= 0xF0 && c <= 0xF4 ? 4 : c >= 0xE0 ? 3 : c >= 0xC2 && c < 0xE0 ? 2 : 0;
    if (length == 0 || i + length > text.size()) return 0;
    for (size_t k = 1; k < length; ++k)
        if ((static_cast<unsigned char>(text[i + k]) & 0xC0) != 0x80) return 0;
    return length;
}

void writeQuoted(const std::string& text, std::ostream& out) {
    static const char* hex = "0123456789abcdef";
    out << '"';
    for (size_t i = 0; i < text.size(); ++i) {
        unsigned char c = static_cast<unsigned char>(text[i]);
        switch (c) {
        case '"':
            out << "\\\"";
            break;
        case '\\':
            out << "\\\\";
            break;
        case '\n':
            out << "\\n";
            break;
        case '\r':
            out << "\\r";
            break;
        case '\t':
            out << "\\t";
            break;
        default:
            if (c >= 0x20 && c < 0x7F) {
                out << static_cast<char>(c);
            } else if (size_t length = c >= 0x80 ? utf8Length(text, i) : 0) {
                out.write(text.data() + i, static_cast<std::streamsize>(length));
                i += length - 1;
            } else {
                // Control bytes and bytes that are no UTF-8 are escaped,
                // so that the output is valid UTF-8 whatever the file held.
                out << "\\u00" << hex[c >> 4] << hex[c & 15];
            }
        }
    }
    out << '"';
}

void writeScalar(const DumpValue& value, std::ostream& out, bool json) {
    switch (value.kind()) {
    case DumpValue::Kind::eNull:
        out << "null";
        break;
    case DumpValue::Kind::eBool:
        out << (value.intValue() ? "true" : "false");
        break;
    case DumpValue::Kind::eInt:
        out << value.intValue();
        break;
    case DumpValue::Kind::eDouble: {
        std::string text = formatDouble(value.doubleValue());
        bool finite = std::isfinite(value.doubleValue());
        if (json && !finite)
            writeQuoted(text, out);
        else
            out << text;
        break;
    }
    case DumpValue::Kind::eString:
        writeQuoted(value.stringValue(), out);
        break;
    default:
        break;
    }
}

bool allScalars(const DumpValue& value) {
    for (const DumpValue& item : value.items())
        if (!item.isScalar()) return false;
    return true;
}

void writeJsonAt(const DumpValue& value, std::ostream& out, int indent) {
    std::string pad(static_cast<size_t>(indent + 2), ' ');
    if (value.kind() == DumpValue::Kind::eArray) {
        if (value.items().empty()) {
            out << "[]";
            return;
        }
        if (allScalars(value)) {
            out << '[';
            for (size_t i = 0; i < value.items().size(); ++i) {
                if (i) out << ", ";
                writeScalar(value.items()[i], out, true);
            }
            out << ']';
            return;
        }
        out << "[\n";
        for (size_t i = 0; i < value.items().size(); ++i) {
            out << pad;
            writeJsonAt(value.items()[i], out, indent + 2);
            out << (i + 1 < value.items().size() ? ",\n" : "\n");
        }
        out << std::string(static_cast<size_t>(indent), ' ') << ']';
    } else if (value.kind() == DumpValue::Kind::eObject) {
        if (value.members().empty()) {
            out << "{}";
            return;
        }
        out << "{\n";
        for (size_t i = 0; i < value.members().size(); ++i) {
            out << pad;
            writeQuoted(value.members()[i].first, out);
            out << ": ";
            writeJsonAt(value.members()[i].second, out, indent + 2);
            out << (i + 1 < value.members().size() ? ",\n" : "\n");
        }
        out << std::string(static_cast<size_t>(indent), ' ') << '}';
    } else {
        writeScalar(value, out, true);
    }
}

void writeInlineArray(const DumpValue& value, std::ostream& out) {
    out << '[';
    for (size_t i = 0; i < value.items().size(); ++i) {
        if (i) out << ", ";
        if (value.items()[i].isScalar())
            writeScalar(value.items()[i], out, false);
        else
            writeInlineArray(value.items()[i], out);
    }
    out << ']';
}

// Scalars, and arrays of scalars or of arrays of scalars (such as the
// code and value pairs of a field), stay on one line.
bool isInline(const DumpValue& value) {
    if (value.kind() == DumpValue::Kind::eObject) return value.members().empty();
    if (value.kind() != DumpValue::Kind::eArray) return true;
    for (const DumpValue& item : value.items())
        if (!item.isScalar() && !(item.kind() == DumpValue::Kind::eArray && allScalars(item))) return false;
    return true;
}

void writeInline(const DumpValue& value, std::ostream& out) {
    if (value.kind() == DumpValue::Kind::eArray)
        writeInlineArray(value, out);
    else if (value.kind() == DumpValue::Kind::eObject)
        out << "{}";
    else
        writeScalar(value, out, false);
}

// `first` is what stands before the first line (a "- " for an array item),
// `pad` the indentation of the following lines.
void writeTextAt(const DumpValue& value, std::ostream& out, const std::string& first, const std::string& pad) {
    if (value.kind() == DumpValue::Kind::eObject) {
        bool start = true;
        for (const auto& [key, member] : value.members()) {
            out << (start ? first : pad) << key << ':';
            start = false;
            if (isInline(member)) {
                out << ' ';
                writeInline(member, out);
                out << '\n';
            } else {
                out << '\n';
                writeTextAt(member, out, pad + "  ", pad + "  ");
            }
        }
        if (start) out << first << "{}\n";
    } else if (value.kind() == DumpValue::Kind::eArray) {
        bool start = true;
        for (const DumpValue& item : value.items()) {
            std::string lead = (start ? first : pad) + "- ";
            start = false;
            if (isInline(item)) {
                out << lead;
                writeInline(item, out);
                out << '\n';
            } else {
                writeTextAt(item, out, lead, pad + "  ");
            }
        }
        if (start) out << first << "[]\n";
    } else {
        out << first;
        writeScalar(value, out, false);
        out << '\n';
    }
}

}  // namespace

void writeJson(const DumpValue& value, std::ostream& out) {
    writeJsonAt(value, out, 0);
    out << '\n';
}

void writeText(const DumpValue& value, std::ostream& out) { writeTextAt(value, out, "", ""); }
