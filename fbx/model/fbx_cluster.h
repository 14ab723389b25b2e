#pragma once

#include "fbx/model/fbx_sub_deformer.h"

// The influence of one bone on the control points of a skinned geometry.
class FbxCluster : public FbxSubDeformer {
    KIVA_FBX_OBJECT_DECLARE(FbxCluster, FbxSubDeformer)
};
