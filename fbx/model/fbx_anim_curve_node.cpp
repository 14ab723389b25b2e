#include "fbx/model/fbx_anim_curve_node.h"

KIVA_FBX_OBJECT_IMPLEMENT(FbxAnimCurveNode)

FbxAnimCurveNode::FbxAnimCurveNode(FbxManager& manager, const char* name) : ParentClass(manager, name) {}
