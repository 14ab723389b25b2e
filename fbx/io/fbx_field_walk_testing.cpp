#include "fbx/io/fbx_field_walk_testing.h"

#include <cstring>
#include <vector>

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
    MixBytes(stats, &data[0], sizeof(T));
    MixBytes(stats, &data[count - 1], sizeof(T));
}

void ReadValue(FbxFieldStream& stream, FbxWalkStats& stats, bool decodeArrays) {
    ++stats.values;
    char code = stream.NextValueType();
    Mix(stats, static_cast<unsigned char>(code));
    int count = 0;
    bool array = std::strchr("bchifld", code) != nullptr && code != 0;
    if (array && !decodeArrays) {
        stream.NextByte();  // steps over the array without decoding it
        return;
    }
    auto mixScalar = [&stats](auto value) { MixBytes(stats, &value, sizeof value); };
    switch (code) {
    case 'C':
        return mixScalar(stream.NextChar());
    case 'Z':
        return mixScalar(stream.NextByte());
    case 'Y':
        return mixScalar(stream.NextShort());
    case 'I':
        return mixScalar(stream.NextInt());
    case 'L':
        return mixScalar(stream.NextLong());
    case 'F':
        return mixScalar(stream.NextFloat());
    case 'D':
        return mixScalar(stream.NextDouble());
    case 'S': {
        const char* text = stream.NextString();
        return MixBytes(stats, text, std::strlen(text));
    }
    case 'R': {
        int size = 0;
        const void* blob = stream.NextBlob(size);
        if (blob) MixBytes(stats, blob, static_cast<size_t>(size));
        return;
    }
    case 'b': {
        auto* data = stream.NextBoolArray(count);
        return MixArray(stats, data, count);
    }
    case 'c': {
        auto* data = stream.NextUByteArray(count);
        return MixArray(stats, data, count);
    }
    case 'h': {
        auto* data = stream.NextShortArray(count);
        return MixArray(stats, data, count);
    }
    case 'i': {
        auto* data = stream.NextIntArray(count);
        return MixArray(stats, data, count);
    }
    case 'f': {
        auto* data = stream.NextFloatArray(count);
        return MixArray(stats, data, count);
    }
    case 'l': {
        auto* data = stream.NextLongArray(count);
        return MixArray(stats, data, count);
    }
    case 'd': {
        auto* data = stream.NextDoubleArray(count);
        return MixArray(stats, data, count);
    }
    default:
        return mixScalar(stream.NextULong());
    }
}

// Where the walk stands on one level, and the stream depth to come back to.
struct Level {
    int field = 0;
    int instance = 0;
    int streamDepth = 0;
};

}  // namespace

FbxWalkStats FbxWalkFields(FbxFieldStream& stream, bool decodeArrays, int depthLimit) {
    // A stack of levels rather than recursion: a file can nest blocks to
    // any depth.
    FbxWalkStats stats;
    std::vector<Level> path{{0, 0, stream.Depth()}};
    while (!path.empty()) {
        Level& at = path.back();
        int depth = static_cast<int>(path.size()) - 1;
        if (depth > stats.maxDepth) stats.maxDepth = depth;
        const char* name = stream.FieldName(at.field);
        if (!name) {
            stream.RewindFields();
            path.pop_back();
            if (path.empty()) break;
            // A block that failed to load may have left more than one level.
            while (stream.Depth() > path.back().streamDepth) stream.LeaveBlock();
            stream.EndField();
            continue;
        }
        if (at.instance == 0) MixBytes(stats, name, std::strlen(name));
        if (at.instance >= stream.FieldInstanceCount(name)) {
            ++at.field;
            at.instance = 0;
            continue;
        }
        if (!stream.BeginFieldAt(at.field, at.instance++)) continue;
        ++stats.fields;
        while (stream.ValuesLeft() > 0) ReadValue(stream, stats, decodeArrays);
        if (depth < depthLimit && stream.HasBlock()) {
            int before = stream.Depth();
            if (stream.EnterBlock()) {
                ++stats.blocks;
                path.push_back({0, 0, before + 1});
                continue;
            }
            while (stream.Depth() > before) stream.LeaveBlock();
        }
        stream.EndField();
    }
    return stats;
}
