#pragma once

#include "fbx/io/fbx_byte_buffer.h"
#include "fbx/model/fbx_string.h"

#include <cstdint>
#include <memory>
#include <vector>

// One record of a field list: its values and where its nested records are.
// Binary values stay the raw bytes of the value list until they are read;
// the list that holds the instance keeps the offset of every value in those
// bytes. Text values are strings that the list keeps one behind the other. Decoded arrays, strings and blobs go to the
// scratch result, which the next such read on this instance replaces.
class FbxFieldInstance {
public:
    FbxFieldInstance() = default;
    FbxFieldInstance(FbxFieldInstance&&) noexcept = default;
    FbxFieldInstance& operator=(FbxFieldInstance&&) noexcept = default;

    // File position of the nested records, 0 when there are none.
    uint32_t BlockOffset() const { return blockOffset_; }
    int ValueCount() const { return valueCount_; }
    uint32_t ValueLength() const { return valueLength_; }
    const uint8_t* ValueBytes() const { return values_; }

    // Text files: the position behind the "{" of the instance's block.
    void SetBlockOffset(uint32_t offset) { blockOffset_ = offset; }

    FbxByteBuffer& Scratch() { return scratch_; }
    uint32_t Cursor() const { return cursor_; }
    void SetCursor(uint32_t cursor) { cursor_ = cursor; }

private:
    friend class FbxFieldList;

    uint32_t blockOffset_ = 0;
    int32_t valueCount_ = 0;
    uint32_t firstOffset_ = 0;  // index of the first value offset (or text offset) in the list's table
    uint32_t valueLength_ = 0;
    const uint8_t* values_ = nullptr;  // into a list buffer, or ownedValues_
    std::unique_ptr<uint8_t[]> ownedValues_;
    FbxByteBuffer scratch_;
    uint32_t cursor_ = 0;
};
