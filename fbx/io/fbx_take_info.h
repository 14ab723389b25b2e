#pragma once

#include <cstdint>

#include "fbx/model/fbx_string.h"
#include "fbx/model/fbx_time.h"

// A span of time: a start and a stop.
struct FbxTimeSpan {
    FbxTime start;
    FbxTime stop;
    friend bool operator==(const FbxTimeSpan&, const FbxTimeSpan&) = default;
};

// One take of a file's "Takes" block.
struct FbxTakeInfo {
    FbxString name;
    FbxString importedName;
    FbxString description;
    bool select = true;
    FbxTimeSpan localTimeSpan;
    FbxTimeSpan referenceTimeSpan;
};
