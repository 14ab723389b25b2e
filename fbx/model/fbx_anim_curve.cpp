#include "fbx/model/fbx_anim_curve.h"

KIVA_FBX_OBJECT_IMPLEMENT(FbxAnimCurve)

FbxAnimCurve::FbxAnimCurve(FbxManager& manager, const char* name) : ParentClass(manager, name) {}
