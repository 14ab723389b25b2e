#pragma once

#include "fbx/model/fbx_string.h"
#include "fbx/model/fbx_time.h"

// One take of a file's take list: a name, its description and its time
// spans, which the stack of the same name takes over.
struct FbxTakeInfo {
    FbxString name;
    FbxString importedName;
    FbxString description;
    bool select = true;
    FbxTimeSpan localTimeSpan;
    FbxTimeSpan referenceTimeSpan;
};
