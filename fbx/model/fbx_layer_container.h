#pragma once

#include "fbx/model/fbx_node_attribute.h"

// A node attribute that holds layers of per-element data.
class FbxLayerContainer : public FbxNodeAttribute {
    KIVA_FBX_OBJECT_DECLARE(FbxLayerContainer, FbxNodeAttribute)
};
