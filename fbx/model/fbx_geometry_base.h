#pragma once

#include "fbx/model/fbx_layer_container.h"

// Control points and the layers over them.
class FbxGeometryBase : public FbxLayerContainer {
    KIVA_FBX_OBJECT_DECLARE(FbxGeometryBase, FbxLayerContainer)
};
