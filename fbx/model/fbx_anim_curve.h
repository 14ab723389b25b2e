#pragma once

#include "fbx/model/fbx_object.h"

// A function of time given by keys.
class FbxAnimCurve : public FbxObject {
    KIVA_FBX_OBJECT_DECLARE(FbxAnimCurve, FbxObject)
};
