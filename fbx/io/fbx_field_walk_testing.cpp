#include "fbx/io/fbx_field_walk_testing.h"

#include <cstring>

namespace {

void Mix(FbxWalkStats& stats, uint64_t value) { stats.checksum = (stats.checksum ^ value) * 0x100000001B3ULL; }

void MixBytes(FbxWalkStats& stats, const void* data, size_t size) {
    const unsigned char* p = static_cast<const unsigned char*>(data);
    for (size_t i = 0; i < size; ++i) Mix(stats, p[i]);
}

template <typename T>
void MixArray(FbxWalkStats& stats, const T* data, int count) {
    if (count <= 0) {
        ++stats.emptyArrays;
        Mix(stats, 0xA11A);
        return;
    }
    ++stats.arrays;
    stats.arrayBytes += static_cast<uint64_t>(count) * sizeof(T);
    // Sample the array rather than hash all of it: the walk measures decoding.
    Mix(stats, static_cast<uint64_t>(count));
    uint64_t bits = 0;
    std::memcpy(&bits, &data[0], sizeof(T));
    Mix(stats, bits);
    std::memcpy(&bits, &data[count - 1], sizeof(T));
    Mix(stats, bits);
}

void ReadValue(FbxFieldStream& stream, FbxWalkStats& stats, bool decodeArrays) {
    ++stats.values;
    char code = stream.NextValueType();
    Mix(stats, static_cast<unsigned char>(code));
    int count = 0;
    bool array = code == 'b' || code == 'c' || code == 'h' || code == 'i' || code == 'f' || code == 'l' || code == 'd';
    if (array && !decodeArrays) {
        stream.NextByte();  // steps over the array without decoding it
        return;
    }
    switch (code) {
    case 'C':
        Mix(stats, static_cast<uint64_t>(stream.NextChar()));
        break;
    case 'Z':
        Mix(stats, static_cast<uint64_t>(stream.NextByte()));
        break;
    case 'Y':
        Mix(stats, static_cast<uint64_t>(stream.NextShort()));
        break;
    case 'I':
        Mix(stats, static_cast<uint64_t>(stream.NextInt()));
        break;
    case 'L':
        Mix(stats, static_cast<uint64_t>(stream.NextLong()));
        break;
    case 'F': {
        float f = stream.NextFloat();
        MixBytes(stats, &f, sizeof f);
        break;
    }
    case 'D': {
        double d = stream.NextDouble();
        MixBytes(stats, &d, sizeof d);
        break;
    }
    case 'S': {
        const char* s = stream.NextString();
        MixBytes(stats, s, std::strlen(s));
        break;
    }
    case 'R': {
        int size = 0;
        const void* blob = stream.NextBlob(size);
        if (blob) MixBytes(stats, blob, static_cast<size_t>(size));
        break;
    }
    case 'b': {
        auto* data = stream.NextBoolArray(count);
        MixArray(stats, data, count);
        break;
    }
    case 'c': {
        auto* data = stream.NextUByteArray(count);
        MixArray(stats, data, count);
        break;
    }
    case 'h': {
        auto* data = stream.NextShortArray(count);
        MixArray(stats, data, count);
        break;
    }
    case 'i': {
        auto* data = stream.NextIntArray(count);
        MixArray(stats, data, count);
        break;
    }
    case 'f': {
        auto* data = stream.NextFloatArray(count);
        MixArray(stats, data, count);
        break;
    }
    case 'l': {
        auto* data = stream.NextLongArray(count);
        MixArray(stats, data, count);
        break;
    }
    case 'd': {
        auto* data = stream.NextDoubleArray(count);
        MixArray(stats, data, count);
        break;
    }
    default:
        Mix(stats, static_cast<uint64_t>(stream.NextULong()));
        break;
    }
}

void Walk(FbxFieldStream& stream, FbxWalkStats& stats, bool decodeArrays, int depth, int depthLimit) {
    if (depth > stats.maxDepth) stats.maxDepth = depth;
    int fieldCount = stream.FieldCount();
    for (int f = 0; f < fieldCount; ++f) {
        const char* name = stream.FieldName(f);
        MixBytes(stats, name, std::strlen(name));
        int instances = stream.FieldInstanceCount(name);
        for (int i = 0; i < instances; ++i) {
            if (!stream.BeginFieldAt(f, i)) continue;
            ++stats.fields;
            while (stream.ValuesLeft() > 0) ReadValue(stream, stats, decodeArrays);
            if (depth < depthLimit && stream.HasBlock()) {
                int before = stream.Depth();
                if (stream.EnterBlock()) {
                    ++stats.blocks;
                    Walk(stream, stats, decodeArrays, depth + 1, depthLimit);
                }
                while (stream.Depth() > before) stream.LeaveBlock();
            }
            stream.EndField();
        }
    }
    stream.RewindFields();
}

}  // namespace

FbxWalkStats FbxWalkFields(FbxFieldStream& stream, bool decodeArrays, int depthLimit) {
    FbxWalkStats stats;
    Walk(stream, stats, decodeArrays, 0, depthLimit);
    return stats;
}
