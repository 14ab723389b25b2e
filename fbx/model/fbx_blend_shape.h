#pragma once

#include "fbx/model/fbx_deformer.h"

// A blend shape deformer: a set of channels.
class FbxBlendShape : public FbxDeformer {
    KIVA_FBX_OBJECT_DECLARE(FbxBlendShape, FbxDeformer)
};
