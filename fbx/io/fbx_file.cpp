#include "fbx/io/fbx_file.h"

#include <cstdarg>
#include <vector>

FbxFile::~FbxFile() {
    if (file_ && ownsFile_) std::fclose(file_);
}

bool FbxFile::Open(const char* path, const char* mode) {
    Close();
    if (!path || !mode) return false;
    file_ = std::fopen(path, mode);
    ownsFile_ = file_ != nullptr;
    return file_ != nullptr;
}

bool FbxFile::Open(FILE* stream) {
    Close();
    file_ = stream;
    ownsFile_ = false;
    return file_ != nullptr;
}

void FbxFile::Close() {
    if (file_ && ownsFile_) std::fclose(file_);
    file_ = nullptr;
    ownsFile_ = false;
}

static int ToWhence(FbxFile::ESeekOrigin origin) {
    switch (origin) {
    case FbxFile::eBegin:
        return SEEK_SET;
    case FbxFile::eCurrent:
        return SEEK_CUR;
    case FbxFile::eEnd:
        return SEEK_END;
    }
    return SEEK_SET;
}

bool FbxFile::Seek(int64_t offset, ESeekOrigin origin) {
    if (!file_) return false;
    if (origin == eBegin && offset < 0) return false;
    return fseeko(file_, static_cast<off_t>(offset), ToWhence(origin)) == 0;
}

int64_t FbxFile::Tell() const {
    if (!file_) return -1;
    return static_cast<int64_t>(ftello(file_));
}

size_t FbxFile::Read(void* buffer, size_t size) {
    if (!file_ || size == 0) return 0;
    return std::fread(buffer, 1, size, file_);
}

char* FbxFile::ReadLine(char* buffer, size_t size) {
    if (!file_ || size < 2) return nullptr;
    return std::fgets(buffer, static_cast<int>(size > 0x7FFFFFFF ? 0x7FFFFFFF : size), file_);
}

size_t FbxFile::Write(const void* data, size_t size) {
    if (!file_ || size == 0) return 0;
    return std::fwrite(data, 1, size, file_);
}

int FbxFile::Print(const char* format, ...) {
    va_list args;
    va_start(args, format);
    va_list copy;
    va_copy(copy, args);
    int length = std::vsnprintf(nullptr, 0, format, copy);
    va_end(copy);
    if (length < 0) {
        va_end(args);
        return -1;
    }
    std::vector<char> text(static_cast<size_t>(length) + 1);
    std::vsnprintf(text.data(), text.size(), format, args);
    va_end(args);
    return static_cast<int>(Write(text.data(), static_cast<size_t>(length)));
}
