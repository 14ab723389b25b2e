#pragma once

#include "fbx/model/fbx_object.h"

// The options of importers and exporters.
class FbxIOSettings : public FbxObject {
    KIVA_FBX_OBJECT_DECLARE(FbxIOSettings, FbxObject)
};
