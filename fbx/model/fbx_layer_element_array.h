#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "fbx/model/fbx_array.h"
#include "fbx/model/fbx_color.h"
#include "fbx/model/fbx_types.h"
#include "fbx/model/fbx_vector2.h"
#include "fbx/model/fbx_vector4.h"

// The values of a layer element: a growing array of fixed-size elements of
// one base type (eFbxInt, eFbxBool, eFbxFloat, eFbxDouble, eFbxDouble2 or
// eFbxDouble4), with the status of the last operation and a lock discipline
// for callers that work on the raw values.
//
// Every operation that takes a type compares it with the stored one first
// (type eFbxUndefined skips the check). Locks: while a write lock is held
// nothing else reads; while any lock is held nothing may change the size or
// the values through the array's own operations.
class FbxLayerElementArray {
public:
    enum EStatus {
        eSuccess = 0,
        eTypeMismatch = 1,
        eBadValue = 3,            // bad argument, or no buffer
        eWriteAccessRefused = 5,  // a lock is held
        eReadAccessRefused = 6,   // a write lock is held
        eLocked = 8,              // the size cannot change while a lock is held
    };
    enum ELockMode { eReadLock = 1, eWriteLock = 2 };

    explicit FbxLayerElementArray(EFbxType type);

    EFbxType GetDataType() const { return type_; }
    // Bytes of one element.
    size_t GetStride() const { return stride_; }
    int GetStatus() const { return status_; }
    void ClearStatus() const { status_ = eSuccess; }

    int GetCount() const { return static_cast<int>(bytes_.Size() / stride_); }
    // Sizes the array, keeping the values; new elements are zero.
    bool SetCount(int count);
    bool Resize(int count) { return SetCount(count); }
    void Clear();
    // Appends a value; its index, or -1.
    int Add(const void* value, EFbxType type);
    // Copies element `index` into `out`. Out of range: `out` zero-filled
    // and false.
    bool GetAt(int index, void* out, EFbxType type) const;
    bool SetAt(int index, const void* value, EFbxType type);
    bool SetLast(const void* value, EFbxType type);
    // Index of the first element equal (byte for byte) to `value`, or -1.
    int Find(const void* value, EFbxType type) const;

    // The raw values for a caller that holds a lock: a read lock fails
    // while a write lock is held, a write lock while any lock is held.
    // Null on refusal. Every successful GetLocked needs a Release.
    void* GetLocked(ELockMode mode);
    const void* GetLocked() const;
    void Release(ELockMode mode) const;
    int GetReadLockCount() const { return readLocks_; }
    bool IsWriteLocked() const { return writeLocked_; }

    // The raw values without a lock, for code that reads or fills the array
    // in one go while nobody else holds it.
    void* GetData() { return bytes_.Data(); }
    const void* GetData() const { return bytes_.Data(); }

    // Takes over a block from std::malloc that holds `count` elements and
    // has room for `capacityBytes`; the old values are freed. False (and
    // the block freed) while a lock is held.
    bool Adopt(void* block, size_t count, size_t capacityBytes);
    // Takes the other array's values when both have one type.
    bool CopyFrom(const FbxLayerElementArray& other);

protected:
    bool TypeMatches(EFbxType type) const;
    bool Writable() const;

    EFbxType type_;
    size_t stride_;
    FbxArray<uint8_t> bytes_;
    mutable int status_ = eSuccess;
    mutable int readLocks_ = 0;
    mutable bool writeLocked_ = false;
};

// The base type that stores T in a layer element array.
template <class T>
struct FbxLayerElementTypeOf;
template <>
struct FbxLayerElementTypeOf<int> {
    static constexpr EFbxType value = eFbxInt;
};
template <>
struct FbxLayerElementTypeOf<bool> {
    static constexpr EFbxType value = eFbxBool;
};
template <>
struct FbxLayerElementTypeOf<float> {
    static constexpr EFbxType value = eFbxFloat;
};
template <>
struct FbxLayerElementTypeOf<double> {
    static constexpr EFbxType value = eFbxDouble;
};
template <>
struct FbxLayerElementTypeOf<FbxVector2> {
    static constexpr EFbxType value = eFbxDouble2;
};
template <>
struct FbxLayerElementTypeOf<FbxVector4> {
    static constexpr EFbxType value = eFbxDouble4;
};
template <>
struct FbxLayerElementTypeOf<FbxColor> {
    static constexpr EFbxType value = eFbxDouble4;
};

// The same array with its values as T.
template <class T>
class FbxLayerElementArrayTemplate : public FbxLayerElementArray {
public:
    static constexpr EFbxType kType = FbxLayerElementTypeOf<T>::value;
    static_assert(sizeof(T) == (kType == eFbxInt || kType == eFbxFloat ? 4
                                : kType == eFbxBool                    ? 1
                                : kType == eFbxDouble                  ? 8
                                : kType == eFbxDouble2                 ? 16
                                                                       : 32));

    FbxLayerElementArrayTemplate() : FbxLayerElementArray(kType) {}

    using FbxLayerElementArray::Add;
    using FbxLayerElementArray::Find;
    using FbxLayerElementArray::GetAt;
    using FbxLayerElementArray::SetAt;
    // The value at `index`; all zero bytes when it cannot be read.
    T GetAt(int index) const {
        T value;
        std::memset(static_cast<void*>(&value), 0, sizeof(T));
        FbxLayerElementArray::GetAt(index, &value, kType);
        return value;
    }
    T operator[](int index) const { return GetAt(index); }
    bool SetAt(int index, const T& value) { return FbxLayerElementArray::SetAt(index, &value, kType); }
    int Add(const T& value) { return FbxLayerElementArray::Add(&value, kType); }
    int Find(const T& value) const { return FbxLayerElementArray::Find(&value, kType); }

    // The values for reading or filling in one go (see GetData).
    T* GetArray() { return static_cast<T*>(GetData()); }
    const T* GetArray() const { return static_cast<const T*>(GetData()); }
};
