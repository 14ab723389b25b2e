#include "fbx/model/fbx_file_texture.h"

KIVA_FBX_OBJECT_IMPLEMENT(FbxFileTexture)

FbxFileTexture::FbxFileTexture(FbxManager& manager, const char* name) : ParentClass(manager, name) {}
