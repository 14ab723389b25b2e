#pragma once

#include "fbx/model/fbx_object.h"

// Connects animation curves to the channels of an animated property.
class FbxAnimCurveNode : public FbxObject {
    KIVA_FBX_OBJECT_DECLARE(FbxAnimCurveNode, FbxObject)
};
