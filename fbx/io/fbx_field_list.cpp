#include "fbx/io/fbx_field_list.h"

#include "fbx/io/fbx_byte_order.h"
#include "fbx/io/fbx_text_field_reader.h"

#include <algorithm>
#include <cstdlib>
#include <new>

namespace {

unsigned char LowerAscii(unsigned char c) { return (c >= 'A' && c <= 'Z') ? static_cast<unsigned char>(c + 32) : c; }

std::string LowerKey(std::string_view name) {
    std::string key(name);
    for (char& c : key) c = static_cast<char>(LowerAscii(static_cast<unsigned char>(c)));
    return key;
}

// Fields looked up by a linear scan while a level has fewer names than this.
constexpr size_t kLinearLookup = 16;

}  // namespace

int FbxFieldList::CompareNoCase(std::string_view a, std::string_view b) {
    size_t n = std::min(a.size(), b.size());
    for (size_t i = 0; i < n; ++i) {
        unsigned char x = LowerAscii(static_cast<unsigned char>(a[i]));
        unsigned char y = LowerAscii(static_cast<unsigned char>(b[i]));
        if (x != y) return x < y ? -1 : 1;
    }
    if (a.size() == b.size()) return 0;
    return a.size() < b.size() ? -1 : 1;
}

FbxFieldList::FbxFieldList(FbxFile* file, uint32_t offset, bool binary, bool swap, FbxFieldList* parent)
    : file_(file),
      textIndex_(parent ? parent->textIndex_ : nullptr),
      offset_(offset),
      binary_(binary),
      swap_(swap),
      parent_(parent) {}

FbxFieldList::~FbxFieldList() {
    // Children go one by one rather than recursively, so that a deeply
    // nested path cannot exhaust the stack.
    std::unique_ptr<FbxFieldList> child = std::move(child_);
    while (child) {
        std::unique_ptr<FbxFieldList> next = std::move(child->child_);
        child.reset();
        child = std::move(next);
    }
    if (ownsBuffer_) std::free(buffer_);
}

int FbxFieldList::FindField(std::string_view name) const {
    auto it = std::lower_bound(fields_.begin(), fields_.end(), name,
                               [](const std::unique_ptr<FbxField>& field, std::string_view key) {
                                   return CompareNoCase(field->Name(), key) < 0;
                               });
    if (it == fields_.end() || CompareNoCase((*it)->Name(), name) != 0) return -1;
    return static_cast<int>(it - fields_.begin());
}

FbxField& FbxFieldList::FindOrAddField(std::string_view name) {
    if (lastField_ && CompareNoCase(lastField_->Name(), name) == 0) return *lastField_;
    FbxField* found = nullptr;
    if (fields_.size() < kLinearLookup) {
        for (auto& field : fields_) {
            if (CompareNoCase(field->Name(), name) == 0) {
                found = field.get();
                break;
            }
        }
    } else {
        if (loadIndex_.empty()) {
            for (auto& field : fields_) loadIndex_.emplace(LowerKey(field->Name()), field.get());
        }
        auto it = loadIndex_.find(LowerKey(name));
        if (it != loadIndex_.end()) found = it->second;
    }
    if (!found) {
        fields_.push_back(std::make_unique<FbxField>(FbxString(name)));
        found = fields_.back().get();
        if (!loadIndex_.empty()) loadIndex_.emplace(LowerKey(name), found);
    }
    lastField_ = found;
    return *found;
}

void FbxFieldList::SortFields() {
    std::stable_sort(fields_.begin(), fields_.end(),
                     [](const std::unique_ptr<FbxField>& a, const std::unique_ptr<FbxField>& b) {
                         return CompareNoCase(a->Name(), b->Name()) < 0;
                     });
    loadIndex_.clear();
    lastField_ = nullptr;
}

FbxFieldInstance* FbxFieldList::CurrentInstance() {
    if (currentField_ < 0 || currentField_ >= FieldCount()) return nullptr;
    FbxField& field = FieldAt(currentField_);
    int cursor = field.ReadCursor();
    if (cursor < 0 || cursor >= field.InstanceCount()) return nullptr;
    return &field.Instance(cursor);
}

const uint8_t* FbxFieldList::ValueAt(const FbxFieldInstance& instance, int index, size_t& available) const {
    available = 0;
    if (index < 0 || index >= instance.valueCount_ || !instance.values_) return nullptr;
    uint32_t offset = valueOffsets_[instance.firstOffset_ + static_cast<uint32_t>(index)];
    if (offset > instance.valueLength_) return nullptr;
    available = instance.valueLength_ - offset;
    return instance.values_ + offset;
}

char FbxFieldList::ValueCode(const FbxFieldInstance& instance, int index) const {
    size_t available;
    const uint8_t* value = ValueAt(instance, index, available);
    return value ? static_cast<char>(value[-1]) : 0;
}

void FbxFieldList::AddTextValue(FbxFieldInstance& instance, std::string_view text) {
    if (instance.valueCount_ == 0) instance.firstOffset_ = static_cast<uint32_t>(valueOffsets_.size());
    valueOffsets_.push_back(static_cast<uint32_t>(text_.size()));
    text_.append(text);
    text_ += '\0';
    ++instance.valueCount_;
}

bool FbxFieldList::TextValueAt(const FbxFieldInstance& instance, int index, std::string_view& text) const {
    if (binary_ || index < 0 || index >= instance.valueCount_) return false;
    size_t slot = instance.firstOffset_ + static_cast<size_t>(index);
    size_t start = valueOffsets_[slot];
    size_t end = slot + 1 < valueOffsets_.size() ? valueOffsets_[slot + 1] : text_.size();
    text = std::string_view(text_.data() + start, end - start - 1);
    return true;
}

FbxFieldList* FbxFieldList::OpenChild(uint32_t offset) {
    CloseChild();
    child_ = std::make_unique<FbxFieldList>(file_, offset, binary_, swap_, this);
    return child_.get();
}

void FbxFieldList::CloseChild() { std::unique_ptr<FbxFieldList> child = std::move(child_); }

void FbxFieldList::Rewind() {
    CloseChild();
    for (auto& field : fields_) field->SetReadCursor(0);
    currentField_ = -1;
}

bool FbxFieldList::Load() {
    bool loaded = binary_ ? LoadBinary() : FbxLoadTextLevel(*this, textIndex_);
    SortFields();
    return loaded;
}

bool FbxFieldList::ReadU32(uint32_t& value) {
    uint8_t bytes[4];
    if (file_->Read(bytes, 4) != 4) return false;
    value = FbxLoadU32(bytes, swap_);
    return true;
}

bool FbxFieldList::PeekFirstRecord(FbxFile* file, uint32_t offset, bool swap, FbxString& name, uint32_t& blockOffset) {
    name.clear();
    blockOffset = 0;
    if (!file->Seek(offset)) return false;
    uint8_t header[13];
    if (file->Read(header, sizeof header) != sizeof header) return false;
    uint32_t end = FbxLoadU32(header, swap);
    if (end == 0) return false;
    uint32_t length = FbxLoadU32(header + 8, swap);
    uint8_t nameLength = header[12];
    char text[256];
    if (file->Read(text, nameLength) != nameLength) return false;
    name.assign(text, nameLength);
    uint64_t valuesEnd = static_cast<uint64_t>(offset) + sizeof header + nameLength + length;
    if (valuesEnd < end) blockOffset = static_cast<uint32_t>(valuesEnd);
    return true;
}

bool FbxFieldList::LoadBinary() {
    // Hop from record to record by their end offsets to find how much the
    // level spans. Every end offset must lie behind its record's start, so
    // that the hop always moves forward and ends.
    if (!file_->Seek(offset_)) return false;
    uint32_t last = offset_;
    for (;;) {
        uint32_t end;
        if (!ReadU32(end)) return false;
        if (end == 0) break;
        if (end <= last) return false;
        last = end;
        if (!file_->Seek(end)) return false;
    }

    // One buffer for the whole span, nested levels included: children take
    // its tail. The span is proven by the hop, so it is never larger than
    // the file.
    size_t size = static_cast<size_t>(last - offset_) + 1;
    if (parent_ && parent_->buffer_) {
        buffer_ = parent_->buffer_ + parent_->used_;
        capacity_ = std::min(size, parent_->capacity_ - parent_->used_);
        ownsBuffer_ = false;
    } else if (size <= kMaxBufferSize) {
        buffer_ = static_cast<uint8_t*>(std::malloc(size));
        capacity_ = buffer_ ? size : 0;
        ownsBuffer_ = buffer_ != nullptr;
    }
    used_ = 0;

    if (!file_->Seek(offset_)) return false;
    uint64_t position = offset_;
    uint32_t previousEnd = offset_;
    for (;;) {
        uint8_t header[13];
        size_t got = file_->Read(header, sizeof header);
        if (got >= 4 && FbxLoadU32(header, swap_) == 0) {
            loadEnd_ = static_cast<int64_t>(position + got);
            return true;
        }
        if (got != sizeof header) return false;
        uint32_t end = FbxLoadU32(header, swap_);
        uint32_t count = FbxLoadU32(header + 4, swap_);
        uint32_t length = FbxLoadU32(header + 8, swap_);
        uint8_t nameLength = header[12];
        if (end <= previousEnd) return false;
        char name[256];
        if (file_->Read(name, nameLength) != nameLength) return false;
        uint64_t valuesStart = position + sizeof header + nameLength;
        uint64_t valuesEnd = valuesStart + length;
        // The value list must lie inside its record.
        if (valuesEnd > end) return false;

        FbxFieldInstance& instance = FindOrAddField(std::string_view(name, nameLength)).AddInstance();
        if (count != 0) {
            // Each value takes at least two bytes.
            if (count > length / 2) return false;
            uint8_t* place;
            if (buffer_) {
                if (length > capacity_ - used_) return false;
                place = buffer_ + used_;
                used_ += length;
            } else {
                instance.ownedValues_.reset(new (std::nothrow) uint8_t[length]);
                if (!instance.ownedValues_) return false;
                place = instance.ownedValues_.get();
            }
            if (file_->Read(place, length) != length) return false;
            instance.values_ = place;
            instance.valueLength_ = length;
            if (!WalkValues(instance, count)) return false;
        }
        if (valuesEnd < end) instance.blockOffset_ = static_cast<uint32_t>(valuesEnd);

        previousEnd = end;
        position = end;
        if (!file_->Seek(end)) return false;
    }
}

bool FbxFieldList::WalkValues(FbxFieldInstance& instance, uint32_t count) {
    const uint8_t* values = instance.values_;
    uint64_t length = instance.valueLength_;
    size_t first = valueOffsets_.size();
    if (first + count > UINT32_MAX) return false;
    // No reserve here: an exact reserve per record would defeat the vector's
    // geometric growth and make loading a level quadratic in its records.
    uint64_t offset = 0;
    for (uint32_t i = 0; i < count; ++i) {
        if (offset >= length) return false;
        uint64_t size;
        switch (values[offset]) {
        case 'C':
        case 'Z':
            size = 1;
            break;
        case 'Y':
            size = 2;
            break;
        case 'I':
        case 'F':
            size = 4;
            break;
        case 'L':
        case 'D':
            size = 8;
            break;
        case 'S':
        case 'R':
            if (offset + 5 > length) return false;
            size = 4 + static_cast<uint64_t>(FbxLoadU32(values + offset + 1, swap_));
            break;
        case 'b':
        case 'c':
        case 'h':
        case 'i':
        case 'f':
        case 'l':
        case 'd':
            if (offset + 13 > length) return false;
            size = 12 + static_cast<uint64_t>(FbxLoadU32(values + offset + 9, swap_));
            break;
        default:
            return false;
        }
        valueOffsets_.push_back(static_cast<uint32_t>(offset + 1));
        offset += 1 + size;
    }
    if (offset > length) return false;
    instance.firstOffset_ = static_cast<uint32_t>(first);
    instance.valueCount_ = static_cast<int32_t>(count);
    return true;
}
