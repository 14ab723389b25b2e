#pragma once

#include "fbx/model/fbx_object.h"

// Base of the objects that deform a geometry. A deformer belongs to a
// geometry by being one of its source objects.
class FbxDeformer : public FbxObject {
    KIVA_FBX_OBJECT_DECLARE(FbxDeformer, FbxObject)

public:
    enum EDeformerType { eUnknown = 0, eSkin = 1, eBlendShape = 2, eVertexCache = 3 };

    // eUnknown for a deformer of no known kind.
    virtual EDeformerType GetDeformerType() const { return eUnknown; }
};
