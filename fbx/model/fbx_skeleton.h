#pragma once

#include "fbx/model/fbx_node_attribute.h"

// A node attribute that makes a node a bone of a skeleton.
class FbxSkeleton : public FbxNodeAttribute {
    KIVA_FBX_OBJECT_DECLARE(FbxSkeleton, FbxNodeAttribute)
};
