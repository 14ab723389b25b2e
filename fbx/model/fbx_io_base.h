#pragma once

#include "fbx/model/fbx_object.h"
#include "fbx/model/fbx_status.h"

// Base of importers and exporters: the status of the last operation and the
// name of the file at work.
class FbxIOBase : public FbxObject {
    KIVA_FBX_OBJECT_DECLARE(FbxIOBase, FbxObject)

public:
    FbxStatus& GetStatus() { return status_; }
    const FbxStatus& GetStatus() const { return status_; }

protected:
    FbxStatus status_;
    FbxString fileName_;
};
