#pragma once

#include "fbx/model/fbx_object.h"

// Base of the parts of a deformer.
class FbxSubDeformer : public FbxObject {
    KIVA_FBX_OBJECT_DECLARE(FbxSubDeformer, FbxObject)
};
