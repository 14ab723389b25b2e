#pragma once

#include "fbx/model/fbx_object.h"

// Base of the textures.
class FbxTexture : public FbxObject {
    KIVA_FBX_OBJECT_DECLARE(FbxTexture, FbxObject)
};
