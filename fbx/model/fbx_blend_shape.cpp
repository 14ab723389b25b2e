#include "fbx/model/fbx_blend_shape.h"

KIVA_FBX_OBJECT_IMPLEMENT(FbxBlendShape)

FbxBlendShape::FbxBlendShape(FbxManager& manager, const char* name) : ParentClass(manager, name) {}
