#pragma once

#include "fbx/model/fbx_document.h"

// A document that holds reusable objects; the manager keeps three of them.
class FbxLibrary : public FbxDocument {
    KIVA_FBX_OBJECT_DECLARE(FbxLibrary, FbxDocument)
};
