#pragma once

#include "fbx/model/fbx_object.h"

// A small preview image of a document.
class FbxThumbnail : public FbxObject {
    KIVA_FBX_OBJECT_DECLARE(FbxThumbnail, FbxObject)
};
