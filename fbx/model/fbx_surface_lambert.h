#pragma once

#include "fbx/model/fbx_surface_material.h"

// A Lambert surface material.
class FbxSurfaceLambert : public FbxSurfaceMaterial {
    KIVA_FBX_OBJECT_DECLARE(FbxSurfaceLambert, FbxSurfaceMaterial)
};
