#include "fbx/model/fbx_null.h"

KIVA_FBX_OBJECT_IMPLEMENT(FbxNull)

FbxNull::FbxNull(FbxManager& manager, const char* name) : ParentClass(manager, name) {}
