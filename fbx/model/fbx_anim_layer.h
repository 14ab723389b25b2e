#pragma once

#include "fbx/model/fbx_collection.h"

// One layer of an animation stack: a collection of curve nodes.
class FbxAnimLayer : public FbxCollection {
    KIVA_FBX_OBJECT_DECLARE(FbxAnimLayer, FbxCollection)
};
