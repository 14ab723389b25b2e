#pragma once

#include "fbx/model/fbx_node_attribute.h"

// A node attribute that marks a node with nothing in it.
class FbxNull : public FbxNodeAttribute {
    KIVA_FBX_OBJECT_DECLARE(FbxNull, FbxNodeAttribute)
};
