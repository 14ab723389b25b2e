#pragma once

#include "fbx/model/fbx_sub_deformer.h"

// One channel of a blend shape with its target shapes.
class FbxBlendShapeChannel : public FbxSubDeformer {
    KIVA_FBX_OBJECT_DECLARE(FbxBlendShapeChannel, FbxSubDeformer)
};
