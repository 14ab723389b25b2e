#include "fbx/model/fbx_video.h"

KIVA_FBX_OBJECT_IMPLEMENT(FbxVideo)

FbxVideo::FbxVideo(FbxManager& manager, const char* name) : ParentClass(manager, name) {}
