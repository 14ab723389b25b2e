#pragma once

#include "fbx/io/fbx_field_instance.h"
#include "fbx/model/fbx_string.h"

#include <vector>

// All instances of one name in one field list, in file order, and the read
// cursor: the instance that the next BeginField takes.
class FbxField {
public:
    explicit FbxField(FbxString name) : name_(std::move(name)) {}

    const FbxString& Name() const { return name_; }
    int InstanceCount() const { return static_cast<int>(instances_.size()); }
    FbxFieldInstance& Instance(int i) { return instances_[static_cast<size_t>(i)]; }
    const FbxFieldInstance& Instance(int i) const { return instances_[static_cast<size_t>(i)]; }
    FbxFieldInstance& AddInstance() {
        lastAdded_ = static_cast<int>(instances_.size());
        return instances_.emplace_back();
    }
    int LastAdded() const { return lastAdded_; }

    int ReadCursor() const { return readCursor_; }
    void SetReadCursor(int cursor) { readCursor_ = cursor; }

private:
    FbxString name_;
    std::vector<FbxFieldInstance> instances_;
    int lastAdded_ = -1;
    int readCursor_ = 0;
};
