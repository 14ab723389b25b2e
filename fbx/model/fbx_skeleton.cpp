#include "fbx/model/fbx_skeleton.h"

KIVA_FBX_OBJECT_IMPLEMENT(FbxSkeleton)

FbxSkeleton::FbxSkeleton(FbxManager& manager, const char* name) : ParentClass(manager, name) {}
