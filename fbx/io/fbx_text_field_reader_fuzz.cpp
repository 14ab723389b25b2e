// Opens arbitrary bytes behind a text FBX header and walks the field tree
// down to a fixed depth, reading every value through one of the typed reads
// in turn (arrays of every element type, blobs, times, numbers, strings).
#include "fbx/io/fbx_field_stream.h"
#include "fbx/io/fbx_memory_file_testing.h"

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <vector>

namespace {

constexpr int kMaxDepth = 48;

uint64_t ReadValue(FbxFieldStream& s, unsigned turn) {
    int n = 0;
    int size = 0;
    if (s.NextValueType() == 'a') {
        switch (turn % 5) {
        case 0:
            return s.NextDoubleArray(n) ? static_cast<uint64_t>(n) : 1;
        case 1:
            return s.NextIntArray(n) ? static_cast<uint64_t>(n) : 2;
        case 2:
            return s.NextBoolArray(n) ? static_cast<uint64_t>(n) : 3;
        case 3:
            return s.NextFloatArray(n) ? static_cast<uint64_t>(n) : 4;
        default:
            return s.NextULongArray(n) ? static_cast<uint64_t>(n) : 5;
        }
    }
    switch (turn % 8) {
    case 0:
        return static_cast<uint64_t>(s.NextInt());
    case 1: {
        double value = s.NextDouble();
        uint64_t bits;
        std::memcpy(&bits, &value, sizeof bits);
        return bits;
    }
    case 2:
        return std::strlen(s.NextString());
    case 3:
        return s.NextBlob(size) ? static_cast<uint64_t>(size) : 6;
    case 4:
        return static_cast<uint64_t>(s.NextTime());
    case 5:
        return s.NextULong();
    case 6:
        return static_cast<uint64_t>(s.NextChar());
    default:
        return s.NextBool();
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const char kHeader[] = "; FBX 7.4.0 project file\n";
    std::vector<uint8_t> bytes(kHeader, kHeader + sizeof kHeader - 1);
    bytes.insert(bytes.end(), data, data + size);
    FbxMemoryFile file(std::move(bytes));
    FbxFieldStream stream;
    stream.SetFbx7Mode(true);
    FbxHeaderInfo info;
    if (!stream.OpenStream(&file, nullptr, true, false, &info)) return 0;

    // An iterative walk: the field position and instance of each open level.
    struct Level {
        int field = 0;
        int instance = 0;
    };
    std::vector<Level> path(1);
    volatile uint64_t sink = 0;
    unsigned turn = 0;
    while (!path.empty()) {
        Level& level = path.back();
        if (level.field >= stream.FieldCount()) {
            path.pop_back();
            if (!path.empty()) {
                stream.LeaveBlock();
                stream.EndField();
            }
            continue;
        }
        if (!stream.BeginFieldAt(level.field, level.instance)) {
            ++level.field;
            level.instance = 0;
            continue;
        }
        if (++level.instance >= stream.FieldInstanceCount(stream.FieldName(level.field))) {
            ++level.field;
            level.instance = 0;
        }
        while (stream.ValuesLeft() > 0) sink = sink + ReadValue(stream, turn++);
        if (path.size() < kMaxDepth && stream.HasBlock()) {
            stream.EnterBlock();
            path.emplace_back();
            continue;
        }
        stream.EndField();
    }
    return 0;
}
