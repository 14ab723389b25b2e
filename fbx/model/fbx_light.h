#pragma once

#include "fbx/model/fbx_node_attribute.h"

// A light attribute.
class FbxLight : public FbxNodeAttribute {
    KIVA_FBX_OBJECT_DECLARE(FbxLight, FbxNodeAttribute)
};
