#pragma once

#include "fbx/model/fbx_object.h"

// A bind pose or rest pose: a matrix per node.
class FbxPose : public FbxObject {
    KIVA_FBX_OBJECT_DECLARE(FbxPose, FbxObject)
};
