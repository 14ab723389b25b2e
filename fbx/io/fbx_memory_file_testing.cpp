#include "fbx/io/fbx_memory_file_testing.h"

FbxMemoryFile::FbxMemoryFile(std::vector<uint8_t> bytes) : bytes_(std::move(bytes)) { OpenBytes(); }

FbxMemoryFile::FbxMemoryFile(const uint8_t* data, size_t size) : bytes_(data, data + size) { OpenBytes(); }

void FbxMemoryFile::OpenBytes() {
    // A memory stream over zero bytes is refused by some C libraries; an
    // empty device stands in for it.
    if (bytes_.empty()) {
        memory_ = std::fopen("/dev/null", "rb");
    } else {
        memory_ = fmemopen(bytes_.data(), bytes_.size(), "rb");
    }
    Open(memory_);
}

FbxMemoryFile::~FbxMemoryFile() {
    Close();
    if (memory_) std::fclose(memory_);
}
