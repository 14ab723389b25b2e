#include "fbx/model/fbx_node_attribute.h"

KIVA_FBX_OBJECT_IMPLEMENT(FbxNodeAttribute)

FbxNodeAttribute::FbxNodeAttribute(FbxManager& manager, const char* name) : ParentClass(manager, name) {}
