#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <type_traits>
#include <utility>

// A growable array of plain values in one block from std::malloc. Beside
// std::vector it allows two things that large geometry arrays need: a reader
// hands over a block it decoded a file's array into (Adopt), so that the
// values are never copied once more, and growing leaves the new room
// unwritten when the caller fills it anyway (ResizeUninitialized).
//
// Elements must be trivially copyable; they are moved as bytes. Operations
// that need memory give false when there is none and leave the array as it
// was.
template <class T>
class FbxArray {
    static_assert(std::is_trivially_copyable_v<T>, "FbxArray holds plain values");

public:
    FbxArray() = default;
    ~FbxArray() { std::free(data_); }
    FbxArray(const FbxArray& other) { CopyFrom(other); }
    FbxArray& operator=(const FbxArray& other) {
        if (this != &other) CopyFrom(other);
        return *this;
    }
    FbxArray(FbxArray&& other) noexcept
        : data_(std::exchange(other.data_, nullptr)),
          size_(std::exchange(other.size_, 0)),
          capacity_(std::exchange(other.capacity_, 0)) {}
    FbxArray& operator=(FbxArray&& other) noexcept {
        if (this != &other) {
            std::free(data_);
            data_ = std::exchange(other.data_, nullptr);
            size_ = std::exchange(other.size_, 0);
            capacity_ = std::exchange(other.capacity_, 0);
        }
        return *this;
    }

    size_t Size() const { return size_; }
    bool Empty() const { return size_ == 0; }
    size_t Capacity() const { return capacity_; }
    T* Data() { return data_; }
    const T* Data() const { return data_; }
    T& operator[](size_t index) { return data_[index]; }
    const T& operator[](size_t index) const { return data_[index]; }
    T* begin() { return data_; }
    T* end() { return data_ + size_; }
    const T* begin() const { return data_; }
    const T* end() const { return data_ + size_; }

    // Room for `count` elements, keeping the values.
    bool Reserve(size_t count) {
        if (count <= capacity_) return true;
        if (count > SIZE_MAX / sizeof(T)) return false;
        void* grown = std::realloc(data_, count * sizeof(T));
        if (!grown) return false;
        data_ = static_cast<T*>(grown);
        capacity_ = count;
        return true;
    }
    // Sizes the array; elements past the old size are zero bytes.
    bool Resize(size_t count) {
        size_t old = size_;
        if (!ResizeUninitialized(count)) return false;
        if (count > old) std::memset(static_cast<void*>(data_ + old), 0, (count - old) * sizeof(T));
        return true;
    }
    // Sizes the array; elements past the old size are for the caller to
    // write. Growing one element at a time costs amortised constant time.
    bool ResizeUninitialized(size_t count) {
        if (count > capacity_ && !Reserve(count < capacity_ * 2 ? capacity_ * 2 : count)) return false;
        size_ = count;
        return true;
    }
    bool PushBack(const T& value) {
        if (!ResizeUninitialized(size_ + 1)) return false;
        data_[size_ - 1] = value;
        return true;
    }
    // Empties the array and keeps its memory.
    void Clear() { size_ = 0; }
    // Empties the array and frees its memory.
    void Release() {
        std::free(data_);
        data_ = nullptr;
        size_ = capacity_ = 0;
    }
    // Takes over `block`, from std::malloc or std::realloc, whose first
    // `count` elements are the values and which has room for
    // `capacityBytes`. What the array held is freed.
    void Adopt(void* block, size_t count, size_t capacityBytes) {
        std::free(data_);
        data_ = static_cast<T*>(block);
        capacity_ = block ? capacityBytes / sizeof(T) : 0;
        size_ = count <= capacity_ ? count : capacity_;
    }

    friend bool operator==(const FbxArray& a, const FbxArray& b) {
        return a.size_ == b.size_ && (a.size_ == 0 || std::memcmp(a.data_, b.data_, a.size_ * sizeof(T)) == 0);
    }

private:
    void CopyFrom(const FbxArray& other) {
        if (!ResizeUninitialized(other.size_)) return;
        if (other.size_) std::memcpy(static_cast<void*>(data_), other.data_, other.size_ * sizeof(T));
    }

    T* data_ = nullptr;
    size_t size_ = 0;
    size_t capacity_ = 0;
};
