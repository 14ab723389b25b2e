#include "fbx/model/fbx_sub_deformer.h"

KIVA_FBX_OBJECT_IMPLEMENT(FbxSubDeformer)

FbxSubDeformer::FbxSubDeformer(FbxManager& manager, const char* name) : ParentClass(manager, name) {}
