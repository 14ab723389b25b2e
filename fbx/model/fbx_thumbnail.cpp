#include "fbx/model/fbx_thumbnail.h"

KIVA_FBX_OBJECT_IMPLEMENT(FbxThumbnail)

FbxThumbnail::FbxThumbnail(FbxManager& manager, const char* name) : ParentClass(manager, name) {}
