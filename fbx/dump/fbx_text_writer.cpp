#include "fbx/dump/fbx_text_writer.h"

#include <algorithm>
#include <charconv>
#include <cstring>
#include <ostream>
#include <vector>

#include "fbx/io/fbx_field_list.h"
#include "fbx/io/fbx_field_stream.h"
#include "fbx/io/fbx_text_values.h"

namespace {

// A value list is wrapped behind the comma that passes this column.
constexpr size_t kWrapColumn = 120;
// Deeper levels are indented no further, so that a deeply nested file does
// not grow with the square of its depth.
constexpr size_t kMaxIndent = 32;
constexpr size_t kFlushSize = 1 << 20;
// Bytes of embedded content per base64 value.
constexpr int kBlobChunk = 3072;

bool isArrayCode(char code) {
    return code == 'b' || code == 'c' || code == 'h' || code == 'i' || code == 'f' || code == 'l' || code == 'd';
}

// A text value that reads back the same without quotes: a decimal number
// ([sign] digits [. digits] [e [sign] digits], the integer part or the
// fraction may be left out) or an array's "*count".
bool isBareNumber(std::string_view text) {
    size_t i = 0;
    auto digits = [&] {
        size_t start = i;
        while (i < text.size() && text[i] >= '0' && text[i] <= '9') ++i;
        return i > start;
    };
    if (!text.empty() && text[0] == '*') {
        i = 1;
        return digits() && i == text.size();
    }
    if (i < text.size() && (text[i] == '-' || text[i] == '+')) ++i;
    bool whole = digits();
    bool fraction = false;
    if (i < text.size() && text[i] == '.') {
        ++i;
        fraction = digits();
    }
    if (!whole && !fraction) return false;
    if (i < text.size() && (text[i] == 'e' || text[i] == 'E')) {
        ++i;
        if (i < text.size() && (text[i] == '-' || text[i] == '+')) ++i;
        if (!digits()) return false;
    }
    return i == text.size();
}

// A name that needs no quotes: a plain word, blanks inside allowed.
bool isBareName(std::string_view name) {
    if (name.empty() || name.front() == ' ' || name.back() == ' ') return false;
    for (char c : name) {
        bool plain = (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '_' ||
                     c == '|' || c == '-' || c == '.' || c == ' ' || c == '~';
        if (!plain) return false;
    }
    return true;
}

struct Level {
    int position = 0;      // field position in writing order
    int instance = 0;      // instance of that field
    int headerField = -1;  // at the top: "FBXHeaderExtension", written first
    bool keyWordsAsInts = false;
};

class TextWriter {
public:
    TextWriter(FbxFieldStream& stream, std::ostream& out) : stream_(stream), out_(out) {}

    bool write(std::string& error) {
        uint32_t version = stream_.FileVersion();
        text_ += "; FBX " + std::to_string(version / 1000) + "." + std::to_string(version % 1000 / 100) + "." +
                 std::to_string(version % 100) + " project file\n";
        text_ += "; written by fbxdump from a ";
        text_ += stream_.IsBinary() ? "binary" : "text";
        text_ += " file\n\n";

        std::vector<Level> stack(1, enterLevel());
        for (int i = 0; i < stream_.FieldCount(); ++i) {
            if (FbxFieldList::CompareNoCase(stream_.FieldName(i), "FBXHeaderExtension") == 0) {
                stack[0].headerField = i;
                break;
            }
        }
        while (!stack.empty()) {
            Level& level = stack.back();
            size_t depth = stack.size() - 1;
            if (level.position >= stream_.FieldCount()) {
                stack.pop_back();
                if (stack.empty()) break;
                stream_.LeaveBlock();
                indent(depth - 1);
                text_ += "}\n";
                stream_.EndField();
                advance(stack.back());
                flushIfFull();
                continue;
            }
            int field = fieldAt(level);
            if (!stream_.BeginFieldAt(field, level.instance)) {
                advance(level);
                continue;
            }
            std::string name = stream_.FieldName(field);
            indent(depth);
            if (!writeName(name, error)) return false;
            bool arrayWritten = false;
            if (!writeValues(name, depth, level.keyWordsAsInts, arrayWritten, error)) return false;
            if (stream_.HasBlock() && !arrayWritten) {
                text_ += " {\n";
                // A block that loads only in part is written as far as it
                // was read.
                stream_.EnterBlock();
                stack.push_back(enterLevel());
                continue;
            }
            text_ += '\n';
            stream_.EndField();
            advance(level);
            flushIfFull();
        }
        out_.write(text_.data(), static_cast<std::streamsize>(text_.size()));
        return true;
    }

private:
    Level enterLevel() {
        Level level;
        if (stream_.IsBinary() && stream_.FieldInstanceCount("KeyAttrDataFloat") > 0)
            level.keyWordsAsInts = stream_.NextInt("KeyVer", 0) != 4007;
        return level;
    }

    int fieldAt(const Level& level) const {
        if (level.headerField < 0) return level.position;
        if (level.position == 0) return level.headerField;
        return level.position - 1 < level.headerField ? level.position - 1 : level.position;
    }

    void advance(Level& level) {
        const char* name = stream_.FieldName(fieldAt(level));
        if (++level.instance >= stream_.FieldInstanceCount(name)) {
            ++level.position;
            level.instance = 0;
        }
    }

    void indent(size_t depth) { text_.append(depth < kMaxIndent ? depth : kMaxIndent, '\t'); }

    void flushIfFull() {
        if (text_.size() < kFlushSize) return;
        out_.write(text_.data(), static_cast<std::streamsize>(text_.size()));
        text_.clear();
    }

    bool writeName(const std::string& name, std::string& error) {
        if (isBareName(name)) {
            text_ += name;
        } else if (name.find_first_of("\"\r\n") == std::string::npos) {
            text_ += '"' + name + '"';
        } else {
            error = "the field name \"" + name + "\" cannot be written as text";
            return false;
        }
        text_ += ": ";
        return true;
    }

    // Separates values, wrapping the line behind the comma when it is long.
    void separate(size_t depth, size_t& lineStart) {
        text_ += ',';
        if (text_.size() - lineStart < kWrapColumn) return;
        text_ += '\n';
        lineStart = text_.size();
        indent(depth + 1);
    }

    void appendInt(int64_t value) {
        char buffer[24];
        text_.append(buffer, std::to_chars(buffer, buffer + sizeof buffer, value).ptr);
    }

    template <typename T>
    void appendFloat(T value) {
        char buffer[40];
        text_.append(buffer, std::to_chars(buffer, buffer + sizeof buffer, value).ptr);
    }

    void appendQuoted(std::string_view text) {
        text_ += '"';
        FbxTextEscape(text, text_);
        text_ += '"';
    }

    bool writeValues(const std::string& name, size_t depth, bool keyWordsAsInts, bool& arrayWritten,
                     std::string& error) {
        size_t lineStart = text_.rfind('\n') + 1;
        bool first = true;
        if (!stream_.IsBinary()) {
            while (stream_.ValuesLeft() > 0) {
                if (!first) separate(depth, lineStart);
                first = false;
                const char* value = stream_.NextString();
                if (isBareNumber(value))
                    text_ += value;
                else
                    appendQuoted(value);
            }
            return true;
        }
        if (stream_.ValueCount() == 1 && stream_.NextValueType() == 'R' && !stream_.HasBlock() &&
            FbxFieldList::CompareNoCase(name, "Content") == 0) {
            writeChunkedBlob(depth);
            arrayWritten = true;
            return true;
        }
        while (stream_.ValuesLeft() > 0) {
            if (!first) separate(depth, lineStart);
            first = false;
            char code = stream_.NextValueType();
            switch (code) {
            case 'C': {
                unsigned char c = static_cast<unsigned char>(stream_.NextChar());
                if ((c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z'))
                    text_ += static_cast<char>(c);
                else
                    appendInt(c);
                break;
            }
            case 'Z':
                appendInt(stream_.NextByte());
                break;
            case 'Y':
                appendInt(stream_.NextShort());
                break;
            case 'I':
                appendInt(stream_.NextInt());
                break;
            case 'L':
                appendInt(stream_.NextLong());
                break;
            case 'F':
            case 'D':
                appendFloat(stream_.NextDouble());
                break;
            case 'S':
                appendQuoted(stream_.NextString());
                break;
            case 'R': {
                int size = 0;
                const void* data = stream_.NextBlob(size);
                text_ += '"';
                if (data) FbxEncodeBase64(data, static_cast<size_t>(size), text_);
                text_ += '"';
                break;
            }
            default:
                if (!isArrayCode(code)) {
                    stream_.NextByte();
                    text_ += '0';
                    break;
                }
                if (arrayWritten || stream_.HasBlock()) {
                    error = "the field \"" + name + "\" has " +
                            (arrayWritten ? std::string("two arrays") : std::string("an array beside nested fields")) +
                            ", which text cannot hold";
                    return false;
                }
                arrayWritten = true;
                writeArray(code, depth, FbxFieldList::CompareNoCase(name, "KeyAttrDataFloat") == 0 && keyWordsAsInts);
                lineStart = text_.rfind('\n') + 1;
            }
        }
        return true;
    }

    // Embedded file content, which text keeps as a blob property does: the
    // size, then "BinaryData" values of base64 in the block.
    void writeChunkedBlob(size_t depth) {
        int size = 0;
        const uint8_t* data = static_cast<const uint8_t*>(stream_.NextBlob(size));
        appendInt(size);
        if (size == 0) return;
        text_ += " {\n";
        indent(depth + 1);
        text_ += "BinaryData: ";
        size_t lineStart = text_.rfind('\n') + 1;
        for (int at = 0; at < size; at += kBlobChunk) {
            if (at) separate(depth + 1, lineStart);
            text_ += '"';
            FbxEncodeBase64(data + at, static_cast<size_t>(std::min(kBlobChunk, size - at)), text_);
            text_ += '"';
        }
        text_ += '\n';
        indent(depth);
        text_ += '}';
    }

    template <typename T, typename Append>
    void writeElements(const T* data, int count, size_t depth, Append append) {
        text_ += "*" + std::to_string(count);
        if (count == 0) return;  // text arrays hold one element at least
        text_ += " {\n";
        indent(depth + 1);
        text_ += "a: ";
        size_t lineStart = text_.rfind('\n') + 1;
        for (int i = 0; i < count; ++i) {
            if (i) separate(depth + 1, lineStart);
            append(data[i]);
            if (text_.size() >= kFlushSize) {
                size_t column = text_.size() - lineStart;
                flushIfFull();
                lineStart = text_.size() - column;
            }
        }
        text_ += '\n';
        indent(depth);
        text_ += '}';
    }

    void writeArray(char code, size_t depth, bool floatsAsWords) {
        int count = 0;
        auto asInt = [this](auto v) { appendInt(static_cast<int64_t>(v)); };
        auto asFloat = [this](auto v) { appendFloat(v); };
        auto floatWord = [this](float v) {
            int32_t word;
            std::memcpy(&word, &v, sizeof word);
            appendInt(word);
        };
        if (code == 'b') {
            const bool* data = stream_.NextBoolArray(count);
            writeElements(data, count, depth, asInt);
        } else if (code == 'c') {
            const unsigned char* data = stream_.NextUByteArray(count);
            writeElements(data, count, depth, asInt);
        } else if (code == 'h') {
            const short* data = stream_.NextShortArray(count);
            writeElements(data, count, depth, asInt);
        } else if (code == 'i') {
            const int* data = stream_.NextIntArray(count);
            writeElements(data, count, depth, asInt);
        } else if (code == 'l') {
            const int64_t* data = stream_.NextLongArray(count);
            writeElements(data, count, depth, asInt);
        } else if (code == 'd') {
            const double* data = stream_.NextDoubleArray(count);
            writeElements(data, count, depth, asFloat);
        } else if (floatsAsWords) {
            const float* data = stream_.NextFloatArray(count);
            writeElements(data, count, depth, floatWord);
        } else {
            const float* data = stream_.NextFloatArray(count);
            writeElements(data, count, depth, asFloat);
        }
    }

    FbxFieldStream& stream_;
    std::ostream& out_;
    std::string text_;
};

}  // namespace

bool writeFbxText(FbxFieldStream& stream, std::ostream& out, std::string& error) {
    TextWriter writer(stream, out);
    return writer.write(error);
}
