#include "fbx/model/fbx_pose.h"

KIVA_FBX_OBJECT_IMPLEMENT(FbxPose)

FbxPose::FbxPose(FbxManager& manager, const char* name) : ParentClass(manager, name) {}
