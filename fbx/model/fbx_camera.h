#pragma once

#include "fbx/model/fbx_node_attribute.h"

// A camera attribute.
class FbxCamera : public FbxNodeAttribute {
    KIVA_FBX_OBJECT_DECLARE(FbxCamera, FbxNodeAttribute)
};
