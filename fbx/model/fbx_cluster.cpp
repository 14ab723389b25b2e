#include "fbx/model/fbx_cluster.h"

KIVA_FBX_OBJECT_IMPLEMENT(FbxCluster)

FbxCluster::FbxCluster(FbxManager& manager, const char* name) : ParentClass(manager, name) {}
