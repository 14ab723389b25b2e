#include "fbx/model/fbx_layer_container.h"

KIVA_FBX_OBJECT_IMPLEMENT(FbxLayerContainer)

FbxLayerContainer::FbxLayerContainer(FbxManager& manager, const char* name) : ParentClass(manager, name) {}
