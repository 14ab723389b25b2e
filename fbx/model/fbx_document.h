#pragma once

#include "fbx/model/fbx_collection.h"

// A collection that forms a document; its parent document is its first
// destination document.
class FbxDocument : public FbxCollection {
    KIVA_FBX_OBJECT_DECLARE(FbxDocument, FbxCollection)

public:
    FbxDocument* GetParentDocument() const { return GetOwnerDocument(); }
    // The outermost document above this one, or this one.
    FbxDocument* GetRootDocument() const { return GetDocument(); }
};
