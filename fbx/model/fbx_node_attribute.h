#pragma once

#include "fbx/model/fbx_object.h"

// What a node stands for: mesh, skeleton, camera, light, ...
class FbxNodeAttribute : public FbxObject {
    KIVA_FBX_OBJECT_DECLARE(FbxNodeAttribute, FbxObject)
};
