#include "fbx/model/fbx_camera.h"

KIVA_FBX_OBJECT_IMPLEMENT(FbxCamera)

FbxCamera::FbxCamera(FbxManager& manager, const char* name) : ParentClass(manager, name) {}
