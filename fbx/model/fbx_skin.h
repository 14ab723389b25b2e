#pragma once

#include "fbx/model/fbx_deformer.h"

// A skin deformer: a set of clusters that bind a geometry to bones.
class FbxSkin : public FbxDeformer {
    KIVA_FBX_OBJECT_DECLARE(FbxSkin, FbxDeformer)
};
