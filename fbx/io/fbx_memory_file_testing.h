#pragma once

#include "fbx/io/fbx_file.h"

#include <cstdint>
#include <vector>

// An FbxFile over bytes in memory, for tests, benchmarks and fuzz targets.
// It reads through a stdio stream on its own copy of the bytes, so that the
// field stream runs the same code path as for a file on disk.
class FbxMemoryFile : public FbxFile {
public:
    explicit FbxMemoryFile(std::vector<uint8_t> bytes);
    FbxMemoryFile(const uint8_t* data, size_t size);
    ~FbxMemoryFile() override;

private:
    void OpenBytes();
    std::vector<uint8_t> bytes_;
    FILE* memory_ = nullptr;
};
