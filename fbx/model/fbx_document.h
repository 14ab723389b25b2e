#pragma once

#include <vector>

#include "fbx/model/fbx_collection.h"
#include "fbx/model/fbx_take_info.h"

// A collection that forms a document; its parent document is its first
// destination document. It keeps the take infos of the file it was read
// from.
class FbxDocument : public FbxCollection {
    KIVA_FBX_OBJECT_DECLARE(FbxDocument, FbxCollection)

public:
    FbxDocument* GetParentDocument() const { return GetOwnerDocument(); }
    // The outermost document above this one, or this one.
    FbxDocument* GetRootDocument() const { return GetDocument(); }

    // Stores a copy of the take info under its name, replacing the one of
    // that name; false (nothing stored) for an empty name.
    bool SetTakeInfo(const FbxTakeInfo& takeInfo);
    // The take info of that name, or null.
    const FbxTakeInfo* GetTakeInfo(const char* name) const;

private:
    std::vector<FbxTakeInfo> takeInfos_;
};
