#pragma once

#include <cstddef>
#include <iosfwd>
#include <string>
#include <string_view>
#include <vector>

#include "fbx/dump/dump_value.h"

// Writes a dump as it is made, in the text or the JSON form, so that a
// dump of any size keeps in memory only the path to where it stands: the
// node tree and the field tree are written level by level, while small
// pieces (one object, one value) can be given whole as a DumpValue.
//
//     DumpWriter w(out, DumpWriter::Form::eText);
//     w.beginObject();
//     w.key("nodes");
//     w.beginArray(DumpWriter::Items::eAny);
//     w.write(oneNode);
//     w.end();
//     w.end();
//     w.finish();
//
// Text: an outline of "key: value" lines in which scalars and arrays of
// scalars (or of arrays of scalars) stay on their key's line and array
// items that are objects start with "- ". JSON: two-space indented. Both
// indent two spaces a level up to kMaxIndentLevels; deeper lines keep that
// indentation, and in the text form start with their level as "<level>",
// so that the output stays linear in its number of lines however deep the
// tree.
class DumpWriter {
public:
    enum class Form { eText, eJson };
    // What the items of an array are, which decides its layout.
    enum class Items {
        eScalars,  // one line in both forms
        eRows,     // scalars or arrays of scalars: one line in text, a line each in JSON
        eAny,      // a line (or more) each in both forms
    };
    static constexpr int kMaxIndentLevels = 64;

    DumpWriter(std::ostream& out, Form form);
    DumpWriter(const DumpWriter&) = delete;
    DumpWriter& operator=(const DumpWriter&) = delete;

    // Containers, each closed by end(). In an object every value follows a
    // key().
    void beginObject();
    void beginArray(Items items);
    void end();
    void key(std::string_view name);
    // A whole value at the current place.
    void write(const DumpValue& value);
    // Closes whatever is still open and ends the output (with a line end in
    // JSON).
    void finish();

    // Containers open.
    size_t depth() const { return frames_.size(); }

private:
    enum class Kind { eObject, eArray };
    struct Frame {
        Kind kind;
        bool oneLine;       // text: an array on one line; JSON: an array of scalars
        bool header;        // text: a "key:" waits for its line end
        bool started;       // a member or an item was written
        int level;          // indentation level of the lines after the first
        std::string first;  // text: the prefix of the first line
    };

    // Writes what stands in front of a new value at the current place, and
    // gives the first-line prefix and the level of a container opened there.
    void placeText(bool oneLine, std::string& first, int& level);
    void placeJson();
    void open(Kind kind, bool oneLine);
    void scalar(const DumpValue& value);
    std::string indent(int level) const;

    std::ostream& out_;
    Form form_;
    std::vector<Frame> frames_;
    std::string key_;  // of the next value in an object
};
