#pragma once

#include "fbx/model/fbx_document.h"

// The document of one scene: every node, geometry, material and animation of a file is a source of it.
class FbxScene : public FbxDocument {
    KIVA_FBX_OBJECT_DECLARE(FbxScene, FbxDocument)
};
