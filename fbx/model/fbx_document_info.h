#pragma once

#include "fbx/model/fbx_object.h"

// Descriptive information about a document (title, author, ...).
class FbxDocumentInfo : public FbxObject {
    KIVA_FBX_OBJECT_DECLARE(FbxDocumentInfo, FbxObject)
};
