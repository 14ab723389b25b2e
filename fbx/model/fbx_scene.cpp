#include "fbx/model/fbx_scene.h"

KIVA_FBX_OBJECT_IMPLEMENT(FbxScene)

FbxScene::FbxScene(FbxManager& manager, const char* name) : ParentClass(manager, name) {}
