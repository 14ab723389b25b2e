#pragma once

#include "fbx/io/fbx_field.h"
#include "fbx/io/fbx_file.h"
#include "fbx/model/fbx_string.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string_view>
#include <unordered_map>
#include <vector>

class FbxTextBlockIndex;

// One nesting level of the field tree. Loading reads the level once: every
// record header and the value bytes of every record go into one buffer,
// while nested levels stay on disk until a child list is opened on them. A
// child takes the free tail of its parent's buffer, and since one child at
// most is open at a time, siblings reuse the same bytes in turn. A level of
// a text file keeps its values as strings, one behind the other, and its
// nested blocks as their positions in the file (see FbxLoadTextLevel).
class FbxFieldList {
public:
    // Levels larger than this do not get one buffer; each instance then
    // allocates its own value bytes.
    static constexpr size_t kMaxBufferSize = 262144000;

    // A list of the level at `offset` in `file`. A parent, when given, lends
    // the free tail of its buffer and, in a text file, its block index.
    FbxFieldList(FbxFile* file, uint32_t offset, bool binary, bool swap, FbxFieldList* parent = nullptr);
    ~FbxFieldList();
    FbxFieldList(const FbxFieldList&) = delete;
    FbxFieldList& operator=(const FbxFieldList&) = delete;

    // Reads the level. On failure the list keeps what it read so far.
    bool Load();
    // Text files: where the loads of this file note the ends of the blocks
    // they walked through (not owned).
    void SetTextIndex(FbxTextBlockIndex* index) { textIndex_ = index; }

    // Reads only the header of the first record at `offset`: its name and
    // where its nested records start (0 for none). False on a null record or
    // a short read.
    static bool PeekFirstRecord(FbxFile* file, uint32_t offset, bool swap, FbxString& name, uint32_t& blockOffset);

    uint32_t Offset() const { return offset_; }
    bool IsBinary() const { return binary_; }
    bool IsSwapped() const { return swap_; }
    FbxFile* File() const { return file_; }
    // Stream position behind the null record that ended the level.
    int64_t LoadEnd() const { return loadEnd_; }
    size_t BufferCapacity() const { return capacity_; }
    size_t BufferUsed() const { return used_; }
    bool OwnsBuffer() const { return ownsBuffer_; }

    // Fields in sorted order; names compare without regard to case.
    int FieldCount() const { return static_cast<int>(fields_.size()); }
    FbxField& FieldAt(int index) { return *fields_[static_cast<size_t>(index)]; }
    const FbxField& FieldAt(int index) const { return *fields_[static_cast<size_t>(index)]; }
    // Index of the field of that name, -1 when absent.
    int FindField(std::string_view name) const;
    // The field of that name, added when absent (for the loaders).
    FbxField& FindOrAddField(std::string_view name);
    // Puts the fields added by a load into sorted order.
    void SortFields();

    int CurrentFieldIndex() const { return currentField_; }
    void SetCurrentFieldIndex(int index) { currentField_ = index; }
    // Instance at the read cursor of the current field, null when none.
    FbxFieldInstance* CurrentInstance();

    // Place of value `index` of a binary instance: the byte behind its code.
    // `available` receives the bytes of the value list from there on. Null
    // when the index is out of range.
    const uint8_t* ValueAt(const FbxFieldInstance& instance, int index, size_t& available) const;
    // Code byte of value `index`, 0 when out of range.
    char ValueCode(const FbxFieldInstance& instance, int index) const;

    // Text files: appends a value to the instance, which must be the last
    // instance to get values in this list.
    void AddTextValue(FbxFieldInstance& instance, std::string_view text);
    // Text value `index` of an instance, NUL-terminated, valid while the
    // list lives; false when out of range.
    bool TextValueAt(const FbxFieldInstance& instance, int index, std::string_view& text) const;

    FbxFieldList* Parent() const { return parent_; }
    FbxFieldList* Child() const { return child_.get(); }
    // Replaces any open child with a new, unloaded list at `offset`.
    FbxFieldList* OpenChild(uint32_t offset);
    void CloseChild();
    // Closes any child, sets every read cursor to 0 and clears the current field.
    void Rewind();

    static int CompareNoCase(std::string_view a, std::string_view b);

private:
    bool LoadBinary();
    bool ReadU32(uint32_t& value);
    bool WalkValues(FbxFieldInstance& instance, uint32_t count);

    FbxFile* file_;
    FbxTextBlockIndex* textIndex_;
    uint32_t offset_;
    bool binary_;
    bool swap_;
    int64_t loadEnd_ = -1;

    std::vector<std::unique_ptr<FbxField>> fields_;
    std::unordered_map<std::string, FbxField*> loadIndex_;  // lower-case name, only while loading big levels
    FbxField* lastField_ = nullptr;
    std::vector<uint32_t> valueOffsets_;  // binary: into the value bytes; text: into text_
    std::string text_;                    // text values, each ending in a NUL

    uint8_t* buffer_ = nullptr;
    size_t capacity_ = 0;
    size_t used_ = 0;
    bool ownsBuffer_ = false;

    int currentField_ = -1;
    std::unique_ptr<FbxFieldList> child_;
    FbxFieldList* parent_;
};
