#pragma once

#include "fbx/model/fbx_surface_lambert.h"

// A Phong surface material.
class FbxSurfacePhong : public FbxSurfaceLambert {
    KIVA_FBX_OBJECT_DECLARE(FbxSurfacePhong, FbxSurfaceLambert)
};
