#pragma once

#include "fbx/model/fbx_texture.h"

// A texture made of blended texture layers.
class FbxLayeredTexture : public FbxTexture {
    KIVA_FBX_OBJECT_DECLARE(FbxLayeredTexture, FbxTexture)
};
