#pragma once

#include "fbx/model/fbx_object.h"

// The media behind a file texture: a file name and optional embedded content.
class FbxVideo : public FbxObject {
    KIVA_FBX_OBJECT_DECLARE(FbxVideo, FbxObject)
};
