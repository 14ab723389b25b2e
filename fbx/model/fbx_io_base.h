#pragma once

#include "fbx/model/fbx_object.h"

// Base of importers and exporters.
class FbxIOBase : public FbxObject {
    KIVA_FBX_OBJECT_DECLARE(FbxIOBase, FbxObject)
};
