#pragma once

#include "fbx/model/fbx_io_base.h"

// Reads a file into a scene.
class FbxImporter : public FbxIOBase {
    KIVA_FBX_OBJECT_DECLARE(FbxImporter, FbxIOBase)
};
