#include "fbx/model/fbx_anim_curve.h"

#include "fbx/model/fbx_anim_eval_state.h"

KIVA_FBX_OBJECT_IMPLEMENT(FbxAnimCurve)

FbxAnimCurve::FbxAnimCurve(FbxManager& manager, const char* name) : ParentClass(manager, name) {}

void FbxAnimCurve::Construct(const FbxObject* from) {
    ParentClass::Construct(from);
    if (const FbxAnimCurve* curve = FbxCast<FbxAnimCurve>(from)) curve_.CopyFrom(curve->curve_);
}

bool FbxAnimCurve::CopyFrom(const FbxObject& other) {
    if (!ParentClass::CopyFrom(other)) return false;
    curve_.CopyFrom(static_cast<const FbxAnimCurve&>(other).curve_);
    return true;
}

void FbxAnimCurve::Destruct(bool recursive) {
    FbxAnimEvalState::BumpCurveNodeGeneration();
    ParentClass::Destruct(recursive);
}
