#include "fbx/model/fbx_anim_stack.h"

KIVA_FBX_OBJECT_IMPLEMENT(FbxAnimStack)

FbxAnimStack::FbxAnimStack(FbxManager& manager, const char* name) : ParentClass(manager, name) {}
