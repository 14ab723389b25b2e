#pragma once

#include "fbx/model/fbx_object.h"

// Base of the objects that deform a geometry.
class FbxDeformer : public FbxObject {
    KIVA_FBX_OBJECT_DECLARE(FbxDeformer, FbxObject)
};
