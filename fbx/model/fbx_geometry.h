#pragma once

#include "fbx/model/fbx_geometry_base.h"

// A geometry that can carry deformers and shapes.
class FbxGeometry : public FbxGeometryBase {
    KIVA_FBX_OBJECT_DECLARE(FbxGeometry, FbxGeometryBase)
};
