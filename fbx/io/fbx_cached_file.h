#pragma once

#include "fbx/io/fbx_file.h"

#include <cstdint>
#include <memory>

// A read-only FbxFile with one read buffer of its own in front of the file.
// Small reads are served from the buffer, which a read refills whole; a read
// at least as large as the buffer goes straight to the file. A seek inside the
// bytes held only moves the buffer cursor.
class FbxCachedFile : public FbxFile {
public:
    // Buffer size in bytes: 0 gives 8192; anything above 32768 gives
    // 33554432; sizes between stay.
    explicit FbxCachedFile(size_t bufferSize);
    ~FbxCachedFile() override;

    static size_t EffectiveBufferSize(size_t requested);
    // The buffer of a cache size given in KiB, as the settings give it: the
    // rule above applies to the size in bytes.
    static size_t BufferSizeForKiB(uint32_t kib) { return EffectiveBufferSize(static_cast<size_t>(kib) * 1024); }
    size_t BufferSize() const { return capacity_; }

    bool Open(const char* path, const char* mode = "rb") override;
    bool Open(FILE* stream) override;
    void Close() override;
    bool Seek(int64_t offset, ESeekOrigin origin = eBegin) override;
    int64_t Tell() const override;
    size_t Read(void* buffer, size_t size) override;
    char* ReadLine(char* buffer, size_t size) override;
    // The cached file only reads.
    size_t Write(const void* data, size_t size) override;

private:
    void DropBuffer();
    bool Refill();

    std::unique_ptr<unsigned char[]> buffer_;
    size_t capacity_ = 0;
    int64_t bufferStart_ = 0;  // file position of buffer_[0]
    size_t held_ = 0;          // bytes held in the buffer
    size_t cursor_ = 0;        // next byte to serve
    bool valid_ = false;       // the buffer holds bytes of bufferStart_
};
