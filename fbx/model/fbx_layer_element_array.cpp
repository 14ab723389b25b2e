#include "fbx/model/fbx_layer_element_array.h"

#include <climits>
#include <cstdlib>
#include <cstring>

namespace {

size_t strideOf(EFbxType type) {
    switch (type) {
    case eFbxBool:
    case eFbxChar:
    case eFbxUChar:
        return 1;
    case eFbxInt:
    case eFbxFloat:
    case eFbxUInt:
        return 4;
    case eFbxDouble:
    case eFbxLongLong:
        return 8;
    case eFbxDouble2:
        return 16;
    case eFbxDouble3:
        return 24;
    case eFbxDouble4:
        return 32;
    default:
        return 8;
    }
}

}  // namespace

FbxLayerElementArray::FbxLayerElementArray(EFbxType type) : type_(type), stride_(strideOf(type)) {}

bool FbxLayerElementArray::TypeMatches(EFbxType type) const {
    if (type == eFbxUndefined || type == type_) return true;
    status_ = eTypeMismatch;
    return false;
}

bool FbxLayerElementArray::Writable() const {
    if (readLocks_ == 0 && !writeLocked_) return true;
    status_ = eLocked;
    return false;
}

bool FbxLayerElementArray::SetCount(int count) {
    if (count < 0) {
        status_ = eBadValue;
        return false;
    }
    if (!Writable()) return false;
    if (!bytes_.Resize(static_cast<size_t>(count) * stride_)) {
        status_ = eBadValue;
        return false;
    }
    status_ = eSuccess;
    return true;
}

void FbxLayerElementArray::Clear() {
    if (!Writable()) return;
    bytes_.Release();
    status_ = eSuccess;
}

int FbxLayerElementArray::Add(const void* value, EFbxType type) {
    if (!value) {
        status_ = eBadValue;
        return -1;
    }
    if (!TypeMatches(type) || !Writable()) return -1;
    size_t at = bytes_.Size();
    if (at / stride_ >= static_cast<size_t>(INT_MAX) || !bytes_.ResizeUninitialized(at + stride_)) {
        status_ = eBadValue;
        return -1;
    }
    std::memcpy(bytes_.Data() + at, value, stride_);
    status_ = eSuccess;
    return static_cast<int>(at / stride_);
}

bool FbxLayerElementArray::GetAt(int index, void* out, EFbxType type) const {
    if (!out) {
        status_ = eBadValue;
        return false;
    }
    if (!TypeMatches(type)) return false;
    if (writeLocked_) {
        status_ = eReadAccessRefused;
        return false;
    }
    if (index < 0 || index >= GetCount()) {
        std::memset(out, 0, stride_);
        status_ = eBadValue;
        return false;
    }
    std::memcpy(out, bytes_.Data() + static_cast<size_t>(index) * stride_, stride_);
    status_ = eSuccess;
    return true;
}

bool FbxLayerElementArray::SetAt(int index, const void* value, EFbxType type) {
    if (!value || index < 0 || index >= GetCount()) {
        status_ = eBadValue;
        return false;
    }
    if (!TypeMatches(type)) return false;
    if (readLocks_ > 0 || writeLocked_) {
        status_ = eWriteAccessRefused;
        return false;
    }
    std::memcpy(bytes_.Data() + static_cast<size_t>(index) * stride_, value, stride_);
    status_ = eSuccess;
    return true;
}

bool FbxLayerElementArray::SetLast(const void* value, EFbxType type) { return SetAt(GetCount() - 1, value, type); }

int FbxLayerElementArray::Find(const void* value, EFbxType type) const {
    if (!value) {
        status_ = eBadValue;
        return -1;
    }
    if (!TypeMatches(type)) return -1;
    int count = GetCount();
    for (int i = 0; i < count; ++i)
        if (std::memcmp(bytes_.Data() + static_cast<size_t>(i) * stride_, value, stride_) == 0) {
            status_ = eSuccess;
            return i;
        }
    status_ = eSuccess;
    return -1;
}

void* FbxLayerElementArray::GetLocked(ELockMode mode) {
    if (mode == eWriteLock) {
        if (readLocks_ > 0 || writeLocked_) {
            status_ = eLocked;
            return nullptr;
        }
        writeLocked_ = true;
    } else {
        if (writeLocked_) {
            status_ = eReadAccessRefused;
            return nullptr;
        }
        ++readLocks_;
    }
    status_ = eSuccess;
    // An empty array still gives a valid pointer, so that null means refusal.
    return bytes_.Data() ? static_cast<void*>(bytes_.Data()) : static_cast<void*>(&bytes_);
}

const void* FbxLayerElementArray::GetLocked() const {
    return const_cast<FbxLayerElementArray*>(this)->GetLocked(eReadLock);
}

void FbxLayerElementArray::Release(ELockMode mode) const {
    if (mode == eWriteLock)
        writeLocked_ = false;
    else if (readLocks_ > 0)
        --readLocks_;
}

bool FbxLayerElementArray::Adopt(void* block, size_t count, size_t capacityBytes) {
    if (!Writable() || count > capacityBytes / stride_ || count > static_cast<size_t>(INT_MAX)) {
        std::free(block);
        return false;
    }
    bytes_.Adopt(block, count * stride_, capacityBytes);
    status_ = eSuccess;
    return true;
}

bool FbxLayerElementArray::CopyFrom(const FbxLayerElementArray& other) {
    if (!TypeMatches(other.type_) || !Writable()) return false;
    bytes_ = other.bytes_;
    status_ = eSuccess;
    return true;
}
