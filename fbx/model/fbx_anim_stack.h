#pragma once

#include "fbx/model/fbx_collection.h"

// A take: a collection of animation layers with its time span.
class FbxAnimStack : public FbxCollection {
    KIVA_FBX_OBJECT_DECLARE(FbxAnimStack, FbxCollection)
};
