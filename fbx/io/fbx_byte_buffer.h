#pragma once

#include <cstddef>
#include <cstdint>

// A growable byte buffer that does not clear what it allocates: decoded
// arrays overwrite every byte they use, so zero-filling would only cost time.
class FbxByteBuffer {
public:
    FbxByteBuffer() = default;
    ~FbxByteBuffer();
    FbxByteBuffer(FbxByteBuffer&& other) noexcept;
    FbxByteBuffer& operator=(FbxByteBuffer&& other) noexcept;
    FbxByteBuffer(const FbxByteBuffer&) = delete;
    FbxByteBuffer& operator=(const FbxByteBuffer&) = delete;

    // Makes room for at least `capacity` bytes, keeping the first `keep`
    // bytes. False when the memory is not there; the buffer is then unchanged.
    bool Reserve(size_t capacity, size_t keep = 0);
    void Clear() { size_ = 0; }
    void Release();
    // Gives up the block (from std::malloc, to be freed with std::free) and
    // its capacity to the caller; the buffer is empty afterwards.
    uint8_t* Detach(size_t& capacity);

    uint8_t* Data() { return data_; }
    const uint8_t* Data() const { return data_; }
    size_t Size() const { return size_; }
    size_t Capacity() const { return capacity_; }
    void SetSize(size_t size) { size_ = size; }

private:
    uint8_t* data_ = nullptr;
    size_t size_ = 0;
    size_t capacity_ = 0;
};
