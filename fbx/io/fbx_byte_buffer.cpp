#include "fbx/io/fbx_byte_buffer.h"

#include <cstdlib>
#include <utility>

FbxByteBuffer::~FbxByteBuffer() { std::free(data_); }

FbxByteBuffer::FbxByteBuffer(FbxByteBuffer&& other) noexcept
    : data_(std::exchange(other.data_, nullptr)),
      size_(std::exchange(other.size_, 0)),
      capacity_(std::exchange(other.capacity_, 0)) {}

FbxByteBuffer& FbxByteBuffer::operator=(FbxByteBuffer&& other) noexcept {
    if (this != &other) {
        std::free(data_);
        data_ = std::exchange(other.data_, nullptr);
        size_ = std::exchange(other.size_, 0);
        capacity_ = std::exchange(other.capacity_, 0);
    }
    return *this;
}

bool FbxByteBuffer::Reserve(size_t capacity, size_t keep) {
    if (capacity <= capacity_) return true;
    if (capacity == 0) capacity = 1;
    uint8_t* grown;
    if (keep == 0) {
        grown = static_cast<uint8_t*>(std::malloc(capacity));
        if (!grown) return false;
        std::free(data_);
    } else {
        grown = static_cast<uint8_t*>(std::realloc(data_, capacity));
        if (!grown) return false;
    }
    data_ = grown;
    capacity_ = capacity;
    return true;
}

void FbxByteBuffer::Release() {
    std::free(data_);
    data_ = nullptr;
    size_ = 0;
    capacity_ = 0;
}

uint8_t* FbxByteBuffer::Detach(size_t& capacity) {
    capacity = std::exchange(capacity_, 0);
    size_ = 0;
    return std::exchange(data_, nullptr);
}
