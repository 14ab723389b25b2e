#include "fbx/io/fbx_cached_file.h"

#include <cstring>

size_t FbxCachedFile::EffectiveBufferSize(size_t requested) {
    if (requested == 0) return 8192;
    if (requested > 32768) return 33554432;
    return requested;
}

FbxCachedFile::FbxCachedFile(size_t bufferSize) : capacity_(EffectiveBufferSize(bufferSize)) {}

FbxCachedFile::~FbxCachedFile() = default;

bool FbxCachedFile::Open(const char* path, const char* mode) {
    Close();
    if (!mode || mode[0] != 'r') return false;
    if (!FbxFile::Open(path, "rb")) return false;
    // The cache does the buffering; a second buffer in stdio would only copy.
    std::setvbuf(file_, nullptr, _IONBF, 0);
    return true;
}

bool FbxCachedFile::Open(FILE* stream) {
    Close();
    return FbxFile::Open(stream);
}

void FbxCachedFile::Close() {
    DropBuffer();
    FbxFile::Close();
}

void FbxCachedFile::DropBuffer() {
    valid_ = false;
    held_ = 0;
    cursor_ = 0;
}

bool FbxCachedFile::Seek(int64_t offset, ESeekOrigin origin) {
    if (!file_) return false;
    int64_t target = offset;
    if (origin == eCurrent) {
        target = Tell() + offset;
    } else if (origin == eEnd) {
        DropBuffer();
        return FbxFile::Seek(offset, eEnd);
    }
    if (target < 0) return false;
    if (valid_ && target >= bufferStart_ && target <= bufferStart_ + static_cast<int64_t>(held_)) {
        cursor_ = static_cast<size_t>(target - bufferStart_);
        return true;
    }
    DropBuffer();
    return FbxFile::Seek(target, eBegin);
}

int64_t FbxCachedFile::Tell() const {
    if (valid_) return bufferStart_ + static_cast<int64_t>(cursor_);
    return FbxFile::Tell();
}

bool FbxCachedFile::Refill() {
    if (!buffer_) buffer_.reset(new unsigned char[capacity_]);
    int64_t start = Tell();
    // The file itself stands behind the bytes held; move it only when the
    // cursor is elsewhere.
    if (valid_ && start != bufferStart_ + static_cast<int64_t>(held_) && !FbxFile::Seek(start, eBegin)) return false;
    DropBuffer();
    if (start < 0) return false;
    held_ = FbxFile::Read(buffer_.get(), capacity_);
    bufferStart_ = start;
    valid_ = true;
    return held_ > 0;
}

size_t FbxCachedFile::Read(void* buffer, size_t size) {
    if (!file_ || size == 0) return 0;
    unsigned char* out = static_cast<unsigned char*>(buffer);
    size_t done = 0;
    if (valid_ && cursor_ < held_) {
        size_t take = held_ - cursor_ < size ? held_ - cursor_ : size;
        std::memcpy(out, buffer_.get() + cursor_, take);
        cursor_ += take;
        done = take;
        if (done == size) return done;
    }
    size_t rest = size - done;
    if (rest >= capacity_) {
        int64_t position = Tell();
        if (valid_) {
            bool atFile = position == bufferStart_ + static_cast<int64_t>(held_);
            DropBuffer();
            if (!atFile && !FbxFile::Seek(position, eBegin)) return done;
        }
        return done + FbxFile::Read(out + done, rest);
    }
    if (!Refill()) return done;
    size_t take = held_ < rest ? held_ : rest;
    std::memcpy(out + done, buffer_.get(), take);
    cursor_ = take;
    return done + take;
}

char* FbxCachedFile::ReadLine(char* buffer, size_t size) {
    if (!file_ || size < 2) return nullptr;
    size_t length = 0;
    while (length + 1 < size) {
        if (!valid_ || cursor_ >= held_) {
            if (!Refill()) break;
        }
        char c = static_cast<char>(buffer_[cursor_++]);
        buffer[length++] = c;
        if (c == '\n') break;
    }
    if (length == 0) return nullptr;
    buffer[length] = '\0';
    return buffer;
}

size_t FbxCachedFile::Write(const void*, size_t) { return 0; }
