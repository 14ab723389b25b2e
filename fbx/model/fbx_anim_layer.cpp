#include "fbx/model/fbx_anim_layer.h"

KIVA_FBX_OBJECT_IMPLEMENT(FbxAnimLayer)

int FbxAnimLayer::sIds[FbxAnimLayer::eIdCount] = {-1, -1, -1, -1, -1, -1, -1, -1, -1};

FbxAnimLayer::FbxAnimLayer(FbxManager& manager, const char* name) : ParentClass(manager, name) {}

void FbxAnimLayer::ConstructProperties(bool forceSet) {
    ParentClass::ConstructProperties(forceSet);
    if (!ClassId.NeedsPropertyDeclaration()) return;
    FbxProperty root = ClassId.GetRootClassProperty();
    sIds[eWeight] = FbxProperty::Declare(root, "Weight", FbxDoubleDT, 100.0, FbxPropertyFlags::eAnimatable).GetId();
    sIds[eMute] = FbxProperty::Declare(root, "Mute", FbxBoolDT, false).GetId();
    sIds[eSolo] = FbxProperty::Declare(root, "Solo", FbxBoolDT, false).GetId();
    sIds[eLock] = FbxProperty::Declare(root, "Lock", FbxBoolDT, false).GetId();
    sIds[eColor] = FbxProperty::Declare(root, "Color", FbxColor3DT, FbxDouble3(0.8, 0.8, 0.8)).GetId();
    sIds[eBlendMode] = FbxProperty::Declare(root, "BlendMode", FbxIntDT, FbxInt(eBlendAdditive)).GetId();
    sIds[eRotationAccumulation] =
        FbxProperty::Declare(root, "RotationAccumulationMode", FbxIntDT, FbxInt(eRotationByLayer)).GetId();
    sIds[eScaleAccumulation] =
        FbxProperty::Declare(root, "ScaleAccumulationMode", FbxIntDT, FbxInt(eScaleMultiply)).GetId();
    sIds[eBypass] = FbxProperty::Declare(root, "BlendModeBypass", FbxULongLongDT, FbxULongLong(0)).GetId();
}

bool FbxAnimLayer::GetBlendModeBypass(int type) const {
    if (type < 1 || type > 23) return false;
    return (BlendModeBypass().Get() >> type) & 1u;
}

void FbxAnimLayer::SetBlendModeBypass(int type, bool on) {
    if (type < 1 || type > 24) return;
    FbxULongLong mask = type == 24 ? (FbxULongLong(1) << 24) - 1 : FbxULongLong(1) << type;
    FbxULongLong bits = BlendModeBypass().Get();
    BlendModeBypass().Set(on ? bits | mask : bits & ~mask);
}
