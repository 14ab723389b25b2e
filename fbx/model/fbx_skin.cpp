#include "fbx/model/fbx_skin.h"

KIVA_FBX_OBJECT_IMPLEMENT(FbxSkin)

FbxSkin::FbxSkin(FbxManager& manager, const char* name) : ParentClass(manager, name) {}
