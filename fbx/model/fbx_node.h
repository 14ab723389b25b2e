#pragma once

#include "fbx/model/fbx_object.h"

// An element of the scene tree with its transform; children, attributes and materials are its sources.
class FbxNode : public FbxObject {
    KIVA_FBX_OBJECT_DECLARE(FbxNode, FbxObject)
};
