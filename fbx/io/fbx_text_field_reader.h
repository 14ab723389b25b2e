#pragma once

#include "fbx/io/fbx_byte_buffer.h"
#include "fbx/io/fbx_file.h"
#include "fbx/model/fbx_string.h"

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <unordered_map>

class FbxFieldList;

// The text syntax of an FBX file, read one nesting level at a time.
//
// A text file is lines of "Name: value, value" fields; a "{" behind the
// values opens the field's block and the matching "}" closes it. Lines whose
// first non-blank character is ";" are comments. Loading a level reads its
// lines from the level's start (the position behind its "{", or 0 for the
// top) to its closing brace: its own fields become the list's fields, with
// their values as strings, and each nested block is only walked through and
// remembered by its start position, to be loaded when it is entered.

// Where the blocks that a load walked through end, by their start
// position. A later load meets these blocks again when it reads an
// enclosing level, and steps over them at once instead of reading their
// lines again: a file's nesting then costs one pass, not one per level.
// Only blocks long enough to be worth it are kept, and only so many.
class FbxTextBlockIndex {
public:
    static constexpr uint32_t kMinSpan = 1024;
    static constexpr size_t kMaxEntries = size_t{1} << 20;

    // The position behind the "}" that closes the block starting at
    // `start`; false when the block is not known.
    bool Find(uint32_t start, uint32_t& end) const;
    void Add(uint32_t start, uint32_t end);
    size_t Size() const { return ends_.size(); }

private:
    std::unordered_map<uint32_t, uint32_t> ends_;
};

// What a text array's elements are converted to: each as the scalar read of
// that type converts a text value.
enum class FbxTextElement { eBool, eInt8, eInt16, eInt32, eUInt32, eInt64, eUInt64, eFloat, eDouble };

// The version that a header comment line gives, such as 7400 for
// "; FBX 7.4.0 project file"; false when the line is no FBX header.
bool FbxParseTextHeader(std::string_view line, uint32_t& version);
// Probes the first line of the file for the header comment; leaves the file
// at its start either way.
bool FbxReadTextHeader(FbxFile& file, uint32_t& version);

// Loads the text level at the list's offset into the list (unsorted). A
// missing closing brace ends the level at the end of the file, and a "}" in
// excess ends it where it stands. False only when the file cannot be read
// or holds positions beyond 32 bits.
bool FbxLoadTextLevel(FbxFieldList& list, FbxTextBlockIndex* index);

// The name of the first field at `offset` and where its block starts (0 for
// none), without loading the level. False when the level has no field.
bool FbxPeekFirstTextField(FbxFile& file, uint32_t offset, FbxString& name, uint32_t& blockOffset);

// Converts the array whose block starts at `blockOffset`: the block must
// hold one field with one instance of exactly `count` values. The elements
// go to `out`, each of the type's size. Gives the element count, 0 on any
// mismatch. Memory grows with the values found, not with `count`.
uint32_t FbxLoadTextArray(FbxFile& file, uint32_t blockOffset, uint32_t count, FbxTextElement type, FbxByteBuffer& out,
                          FbxTextBlockIndex* index);
