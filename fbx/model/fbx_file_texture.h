#pragma once

#include "fbx/model/fbx_texture.h"

// A texture read from an image file.
class FbxFileTexture : public FbxTexture {
    KIVA_FBX_OBJECT_DECLARE(FbxFileTexture, FbxTexture)
};
