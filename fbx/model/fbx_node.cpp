#include "fbx/model/fbx_node.h"

KIVA_FBX_OBJECT_IMPLEMENT(FbxNode)

FbxNode::FbxNode(FbxManager& manager, const char* name) : ParentClass(manager, name) {}
