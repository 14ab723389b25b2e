#include "fbx/model/fbx_texture.h"

KIVA_FBX_OBJECT_IMPLEMENT(FbxTexture)

FbxTexture::FbxTexture(FbxManager& manager, const char* name) : ParentClass(manager, name) {}
