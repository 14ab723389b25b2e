#pragma once

#include "fbx/model/fbx_geometry_base.h"

// A target shape of a blend shape channel.
class FbxShape : public FbxGeometryBase {
    KIVA_FBX_OBJECT_DECLARE(FbxShape, FbxGeometryBase)
};
