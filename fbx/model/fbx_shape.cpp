#include "fbx/model/fbx_shape.h"

KIVA_FBX_OBJECT_IMPLEMENT(FbxShape)

FbxShape::FbxShape(FbxManager& manager, const char* name) : ParentClass(manager, name) {}
