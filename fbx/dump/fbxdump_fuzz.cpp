// Runs fbxdump on arbitrary bytes in each of its modes: the whole import
// with every pass after it and the scene dump, and the raw field dump, so
// that no input crashes, hangs or makes either dump grow without bound.
// The bytes go through a file because both read files.
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <ostream>
#include <string>
#include <vector>

#include "fbx/dump/fbxdump.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const std::string path = "/tmp/kiva_fbxdump_fuzz_" + std::to_string(getpid()) + ".fbx";
    FILE* file = std::fopen(path.c_str(), "wb");
    if (!file) return 0;
    std::fwrite(data, 1, size, file);
    std::fclose(file);
    std::ostream discard(nullptr);
    // The scene as text, the fields as JSON: each dump and each form once.
    runFbxDump({path}, discard, discard);
    runFbxDump({"--json", "--fields", path}, discard, discard);
    std::remove(path.c_str());
    return 0;
}
