#pragma once

#include "fbx/io/fbx_field_stream.h"

#include <cstdint>

// What a walk of a field tree met.
struct FbxWalkStats {
    uint64_t fields = 0;       // field instances begun
    uint64_t blocks = 0;       // blocks entered
    uint64_t values = 0;       // values read
    uint64_t arrays = 0;       // arrays decoded to at least one element
    uint64_t arrayBytes = 0;   // decoded array bytes
    uint64_t emptyArrays = 0;  // array reads that gave no elements
    uint64_t checksum = 0;     // mixes every value read, to compare walks
    int maxDepth = 0;
};

// Walks the current list of `stream` and, up to `depthLimit` levels below
// it, every nested block: each instance of each field, each value by its
// code (arrays decoded when `decodeArrays` is set). Leaves the list rewound.
FbxWalkStats FbxWalkFields(FbxFieldStream& stream, bool decodeArrays = true, int depthLimit = 1 << 30);
