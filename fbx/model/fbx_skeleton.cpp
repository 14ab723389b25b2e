#include "fbx/model/fbx_skeleton.h"

KIVA_FBX_OBJECT_IMPLEMENT(FbxSkeleton)

int FbxSkeleton::sSize = -1;
int FbxSkeleton::sLimbLength = -1;

FbxSkeleton::FbxSkeleton(FbxManager& manager, const char* name) : ParentClass(manager, name) {}

void FbxSkeleton::ConstructProperties(bool forceSet) {
    ParentClass::ConstructProperties(forceSet);
    if (!ClassId.NeedsPropertyDeclaration()) return;
    FbxProperty root = ClassId.GetRootClassProperty();
    // The inherited "Color" gets this class's own default on its page.
    FbxProperty(root.GetPage(), sColor).Set(FbxDouble3(0.8, 0.8, 0.8), false);
    sSize = FbxProperty::Declare(root, "Size", FbxDoubleDT, 100.0).GetId();
    sLimbLength = FbxProperty::Declare(root, "LimbLength", FbxDoubleDT, 1.0).GetId();
}

void FbxSkeleton::Construct(const FbxObject* from) {
    ParentClass::Construct(from);
    if (from && from->GetClassId() == GetClassId())
        skeletonType_ = static_cast<const FbxSkeleton*>(from)->skeletonType_;
}

bool FbxSkeleton::CopyFrom(const FbxObject& other) {
    if (!ParentClass::CopyFrom(other)) return false;
    skeletonType_ = static_cast<const FbxSkeleton&>(other).skeletonType_;
    return true;
}

bool FbxSkeleton::SetSkeletonType(EType type) {
    if (type < eRoot || type > eEffector) return false;
    skeletonType_ = type;
    return true;
}

const char* FbxSkeleton::GetTypeName() const {
    switch (skeletonType_) {
    case eLimb:
        return "Limb";
    case eLimbNode:
        return "LimbNode";
    default:
        return "Root";
    }
}

std::vector<FbxString> FbxSkeleton::GetTypeFlags() const {
    switch (skeletonType_) {
    case eLimb:
        return {"Skeleton", "Limb"};
    case eLimbNode:
        return {"Skeleton", "LimbNode"};
    default:
        return {"Null", "Skeleton", "Root"};
    }
}
