#include "fbx/model/fbx_layered_texture.h"

KIVA_FBX_OBJECT_IMPLEMENT(FbxLayeredTexture)

FbxLayeredTexture::FbxLayeredTexture(FbxManager& manager, const char* name) : ParentClass(manager, name) {}
