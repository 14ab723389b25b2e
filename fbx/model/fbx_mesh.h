#pragma once

#include "fbx/model/fbx_geometry.h"

// A polygon mesh.
class FbxMesh : public FbxGeometry {
    KIVA_FBX_OBJECT_DECLARE(FbxMesh, FbxGeometry)
};
