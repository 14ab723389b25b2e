#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>

// A file or caller's stream read through the platform's buffered file
// interface. The field streams read every byte through this interface, so
// that a caller may hand in its own stream (an in-memory one, for instance).
class FbxFile {
public:
    enum ESeekOrigin { eBegin, eCurrent, eEnd };

    FbxFile() = default;
    virtual ~FbxFile();
    FbxFile(const FbxFile&) = delete;
    FbxFile& operator=(const FbxFile&) = delete;

    // Opens a file by name; `mode` is an fopen mode ("rb" reads).
    virtual bool Open(const char* path, const char* mode = "rb");
    // Reads and writes a caller's open stream. Close leaves it open.
    virtual bool Open(FILE* stream);
    virtual void Close();
    bool IsOpen() const { return file_ != nullptr; }

    virtual bool Seek(int64_t offset, ESeekOrigin origin = eBegin);
    virtual int64_t Tell() const;
    // Returns the number of bytes read.
    virtual size_t Read(void* buffer, size_t size);
    // Reads up to size - 1 bytes, through the next line end; null at the end
    // of the file.
    virtual char* ReadLine(char* buffer, size_t size);
    virtual size_t Write(const void* data, size_t size);
    int Print(const char* format, ...) __attribute__((format(printf, 2, 3)));

protected:
    FILE* file_ = nullptr;
    bool ownsFile_ = false;
};
