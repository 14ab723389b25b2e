#pragma once

#include "fbx/model/fbx_object.h"

// A surface material.
class FbxSurfaceMaterial : public FbxObject {
    KIVA_FBX_OBJECT_DECLARE(FbxSurfaceMaterial, FbxObject)
};
