#pragma once

#include "fbx/model/fbx_node_attribute.h"

// A node attribute that makes a node a bone of a skeleton.
class FbxSkeleton : public FbxNodeAttribute {
    KIVA_FBX_OBJECT_DECLARE(FbxSkeleton, FbxNodeAttribute)

public:
    enum EType { eRoot = 0, eLimb = 1, eLimbNode = 2, eEffector = 3 };

    FbxNodeAttribute::EType GetAttributeType() const override { return FbxNodeAttribute::eSkeleton; }
    // "Root" for a root or an effector, "Limb", "LimbNode".
    const char* GetTypeName() const override;
    // "Null", "Skeleton", "Root" for a root or an effector; "Skeleton" and
    // "Limb" or "LimbNode" for the others.
    std::vector<FbxString> GetTypeFlags() const override;

    EType GetSkeletonType() const { return skeletonType_; }
    // A value outside the four types is refused.
    bool SetSkeletonType(EType type);

    // "Size" (double, 100.0), "LimbLength" (double, 1.0). "Color" defaults
    // to (0.8, 0.8, 0.8) on this class; it is the limb node colour.
    FbxPropertyT<FbxDouble> Size() const { return FbxProperty(GetPropertyPage(), sSize); }
    FbxPropertyT<FbxDouble> LimbLength() const { return FbxProperty(GetPropertyPage(), sLimbLength); }
    FbxDouble3 GetLimbNodeColor() const { return Color().Get(); }
    bool SetLimbNodeColor(const FbxDouble3& color) { return Color().Set(color); }

    // Takes over the other skeleton's properties and type.
    bool CopyFrom(const FbxObject& other) override;

protected:
    // A clone of a skeleton has its type.
    void Construct(const FbxObject* from) override;
    void ConstructProperties(bool forceSet) override;

private:
    static int sSize;
    static int sLimbLength;

    EType skeletonType_ = eRoot;
};
