#pragma once

// Writes one JSON document to a stream, indented by two spaces per level.
// Arrays opened as inline stay on one line (used for vectors and matrices).
// The caller keeps the nesting right; the writer adds commas, line breaks and
// indentation.

#include <cstdint>
#include <ostream>
#include <string_view>
#include <vector>

namespace tarn::kivaread {

class JsonWriter {
public:
    explicit JsonWriter(std::ostream& out) : out_(out) {}

    void beginObject();
    void endObject();
    void beginArray(bool inlined = false);
    void endArray();
    // Names the next value of the current object.
    void key(std::string_view name);

    void string(std::string_view text);  // escaped
    void number(std::uint64_t value);
    void number(float value);  // non-finite values as the strings "nan", "inf", "-inf"
    void boolean(bool value);
    void null();

    // Shorthands for one member of an object.
    void member(std::string_view name, std::string_view text) { key(name), string(text); }
    void member(std::string_view name, std::uint64_t value) { key(name), number(value); }
    // A member whose value is an index or null for kNoIndex.
    void indexMember(std::string_view name, std::uint16_t index);
    // A member holding an inline array of floats.
    void floatsMember(std::string_view name, const float* values, std::size_t count);

private:
    struct Level {
        bool object;
        bool inlined;
        std::size_t count;
    };
    void beforeValue();
    void newline();

    std::ostream& out_;
    std::vector<Level> levels_;
    bool afterKey_ = false;
};

}  // namespace tarn::kivaread
