#include "fbx/model/fbx_anim_layer.h"

KIVA_FBX_OBJECT_IMPLEMENT(FbxAnimLayer)

FbxAnimLayer::FbxAnimLayer(FbxManager& manager, const char* name) : ParentClass(manager, name) {}
