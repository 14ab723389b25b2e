#include "fbx/model/fbx_deformer.h"

KIVA_FBX_OBJECT_IMPLEMENT(FbxDeformer)

FbxDeformer::FbxDeformer(FbxManager& manager, const char* name) : ParentClass(manager, name) {}
