#pragma once

#include <cstdint>
#include <memory>

#include "fbx/model/fbx_object.h"
#include "fbx/model/fbx_pivot_set.h"
#include "fbx/model/fbx_time.h"
#include "fbx/model/fbx_transform_record.h"

class FbxAnimStack;
class FbxGeometry;
class FbxMesh;
class FbxNodeAttribute;
class FbxSkeleton;
class FbxStatus;
class FbxSurfaceMaterial;

// The node properties in the order of their creation, each by the name of
// its EProperty value e<Name> and of its accessor <Name>(), and the value
// type of the accessor's handle. "Lcl Translation" is LclTranslation,
// "Visibility Inheritance" VisibilityInheritance; the others are named as
// the property. Enums are read and written as FbxEnum.
#define KIVA_FBX_NODE_PROPERTIES(X) \
    X(QuaternionInterpolate, FbxEnum) \
    X(RotationOffset, FbxDouble3) \
    X(RotationPivot, FbxDouble3) \
    X(ScalingOffset, FbxDouble3) \
    X(ScalingPivot, FbxDouble3) \
    X(TranslationActive, FbxBool) \
    X(TranslationMin, FbxDouble3) \
    X(TranslationMax, FbxDouble3) \
    X(TranslationMinX, FbxBool) \
    X(TranslationMinY, FbxBool) \
    X(TranslationMinZ, FbxBool) \
    X(TranslationMaxX, FbxBool) \
    X(TranslationMaxY, FbxBool) \
    X(TranslationMaxZ, FbxBool) \
    X(RotationOrder, FbxEnum) \
    X(RotationSpaceForLimitOnly, FbxBool) \
    X(RotationStiffnessX, FbxDouble) \
    X(RotationStiffnessY, FbxDouble) \
    X(RotationStiffnessZ, FbxDouble) \
    X(AxisLen, FbxDouble) \
    X(PreRotation, FbxDouble3) \
    X(PostRotation, FbxDouble3) \
    X(RotationActive, FbxBool) \
    X(RotationMin, FbxDouble3) \
    X(RotationMax, FbxDouble3) \
    X(RotationMinX, FbxBool) \
    X(RotationMinY, FbxBool) \
    X(RotationMinZ, FbxBool) \
    X(RotationMaxX, FbxBool) \
    X(RotationMaxY, FbxBool) \
    X(RotationMaxZ, FbxBool) \
    X(InheritType, FbxEnum) \
    X(ScalingActive, FbxBool) \
    X(ScalingMin, FbxDouble3) \
    X(ScalingMax, FbxDouble3) \
    X(ScalingMinX, FbxBool) \
    X(ScalingMinY, FbxBool) \
    X(ScalingMinZ, FbxBool) \
    X(ScalingMaxX, FbxBool) \
    X(ScalingMaxY, FbxBool) \
    X(ScalingMaxZ, FbxBool) \
    X(GeometricTranslation, FbxDouble3) \
    X(GeometricRotation, FbxDouble3) \
    X(GeometricScaling, FbxDouble3) \
    X(MinDampRangeX, FbxDouble) \
    X(MinDampRangeY, FbxDouble) \
    X(MinDampRangeZ, FbxDouble) \
    X(MaxDampRangeX, FbxDouble) \
    X(MaxDampRangeY, FbxDouble) \
    X(MaxDampRangeZ, FbxDouble) \
    X(MinDampStrengthX, FbxDouble) \
    X(MinDampStrengthY, FbxDouble) \
    X(MinDampStrengthZ, FbxDouble) \
    X(MaxDampStrengthX, FbxDouble) \
    X(MaxDampStrengthY, FbxDouble) \
    X(MaxDampStrengthZ, FbxDouble) \
    X(PreferedAngleX, FbxDouble) \
    X(PreferedAngleY, FbxDouble) \
    X(PreferedAngleZ, FbxDouble) \
    X(LookAtProperty, FbxReference) \
    X(UpVectorProperty, FbxReference) \
    X(Show, FbxBool) \
    X(NegativePercentShapeSupport, FbxBool) \
    X(DefaultAttributeIndex, FbxInt) \
    X(Freeze, FbxBool) \
    X(LODBox, FbxBool) \
    X(LclTranslation, FbxDouble3) \
    X(LclRotation, FbxDouble3) \
    X(LclScaling, FbxDouble3) \
    X(Visibility, FbxDouble) \
    X(VisibilityInheritance, FbxBool)

// An element of the scene tree with its transform. Nothing here holds a
// tree of its own: children, attributes and materials are the node's
// source objects of class FbxNode, FbxNodeAttribute and FbxSurfaceMaterial,
// in connection order, and the parent is the first destination node.
//
// Beside its properties a node keeps two pivot sets (0 the source set that
// everything reads, 1 the destination set), each allocated when first
// written, and a TransformRecord with the values of set 0 and the limits
// for evaluation.
class FbxNode : public FbxObject {
    KIVA_FBX_OBJECT_DECLARE(FbxNode, FbxObject)

public:
#define KIVA_FBX_NODE_ENUM(Name, Type) e##Name,
    enum EProperty { KIVA_FBX_NODE_PROPERTIES(KIVA_FBX_NODE_ENUM) ePropertyCount };
#undef KIVA_FBX_NODE_ENUM

    enum EPivotSet { eSourcePivot = 0, eDestinationPivot = 1 };
    enum EPivotState { ePivotReference = 0, ePivotActive = 1 };
    // Values of "InheritType".
    enum EInheritType { eInheritRrSs = 0, eInheritRSrs = 1, eInheritRrs = 2 };
    // Values of "QuaternionInterpolate".
    enum EQuaternionInterpolation { eQuatOff = 0, eQuatClassic, eQuatAuto, eQuatSlerp, eQuatSquad };
    enum EShadingMode { eHardShading = 0, eWireFrame, eFlatShading, eLightShading, eTextureShading, eFullShading };
    enum ECullingType { eCullingOff = 0, eCullingOnCCW = 1, eCullingOnCW = 2 };

    // The property of a row of the list above; invalid for a value out of
    // range.
    FbxProperty GetProperty(EProperty which) const;
#define KIVA_FBX_NODE_ACCESSOR(Name, Type) \
    FbxPropertyT<Type> Name() const { return FbxProperty(GetPropertyPage(), sIds[e##Name]); }
    KIVA_FBX_NODE_PROPERTIES(KIVA_FBX_NODE_ACCESSOR)
#undef KIVA_FBX_NODE_ACCESSOR

    // Children.
    // Direct children; with `recursive`, every node below, each counted once
    // even when connections make it reachable twice or in a cycle.
    int GetChildCount(bool recursive = false) const;
    FbxNode* GetChild(int index) const;
    FbxNode* GetParent() const;
    // Moves `node` under this node, at the end of the children. False for
    // null, for this node itself and for an ancestor of it (a cycle).
    bool AddChild(FbxNode* node);
    // The node, once disconnected; null when it is no child of this node.
    FbxNode* RemoveChild(FbxNode* node);

    // Attributes.
    int GetNodeAttributeCount() const;
    // Null for an index out of range.
    FbxNodeAttribute* GetNodeAttributeByIndex(int index) const;
    // The attribute at "DefaultAttributeIndex" (null for -1).
    FbxNodeAttribute* GetNodeAttribute() const;
    int GetDefaultNodeAttributeIndex() const;
    // False for an index out of range, with eIndexOutOfRange in `status`.
    bool SetDefaultNodeAttributeIndex(int index, FbxStatus* status = nullptr);
    // An attached attribute becomes the default and the result is null.
    // Otherwise every attribute is detached, last to first, and destroyed,
    // except the default one, which is given back, and any that another
    // node still holds; then `attribute` (if any) is attached as the
    // default.
    FbxNodeAttribute* SetNodeAttribute(FbxNodeAttribute* attribute);
    // False for null and for an attribute attached already. The first
    // attribute becomes the default.
    bool AddNodeAttribute(FbxNodeAttribute* attribute);
    // Detaches the attribute and gives the index it had; the default index
    // keeps pointing at the same attribute where it can. -1, with "Cannot
    // find node attribute" in `status`, when it is not attached.
    int RemoveNodeAttribute(FbxNodeAttribute* attribute, FbxStatus* status = nullptr);
    // -1, with "Cannot find node attribute" in `status`, when not attached.
    int GetNodeAttributeIndex(const FbxNodeAttribute* attribute, FbxStatus* status = nullptr) const;

    // The default attribute when it is a skeleton; other attributes do not
    // count.
    FbxSkeleton* GetSkeleton() const;
    // The default attribute when it is a geometry kind (mesh, nurbs, patch,
    // nurbs curve, trim surface, boundary, nurbs surface, subdivision, line).
    FbxGeometry* GetGeometry() const;
    // The default attribute when it is a mesh; else the first mesh among the
    // attributes.
    FbxMesh* GetMesh() const;

    // Materials.
    int GetMaterialCount() const;
    FbxSurfaceMaterial* GetMaterial(int index) const;

    // Pivot sets. Getters on a value never written give (0, 0, 0), and
    // (1, 1, 1) for geometric scaling. Setters on set 0 update the
    // TransformRecord too, for the first six. A set other than 0 or 1 reads
    // as empty and is not written.
    const FbxVector4& GetRotationOffset(EPivotSet set) const;
    const FbxVector4& GetRotationPivot(EPivotSet set) const;
    const FbxVector4& GetPreRotation(EPivotSet set) const;
    const FbxVector4& GetPostRotation(EPivotSet set) const;
    const FbxVector4& GetScalingOffset(EPivotSet set) const;
    const FbxVector4& GetScalingPivot(EPivotSet set) const;
    const FbxVector4& GetGeometricTranslation(EPivotSet set) const;
    const FbxVector4& GetGeometricRotation(EPivotSet set) const;
    const FbxVector4& GetGeometricScaling(EPivotSet set) const;
    void SetRotationOffset(EPivotSet set, const FbxVector4& v);
    void SetRotationPivot(EPivotSet set, const FbxVector4& v);
    void SetPreRotation(EPivotSet set, const FbxVector4& v);
    void SetPostRotation(EPivotSet set, const FbxVector4& v);
    void SetScalingOffset(EPivotSet set, const FbxVector4& v);
    void SetScalingPivot(EPivotSet set, const FbxVector4& v);
    void SetGeometricTranslation(EPivotSet set, const FbxVector4& v);
    void SetGeometricRotation(EPivotSet set, const FbxVector4& v);
    void SetGeometricScaling(EPivotSet set, const FbxVector4& v);
    // The whole set; the shared empty set when none was written.
    const FbxPivotSet& GetPivotSet(EPivotSet set) const;
    // "RotationOrder" value (0 to 6) of a set.
    int GetRotationOrder(EPivotSet set) const { return GetPivotSet(set).rotationOrder; }
    // True until a value of the set is written.
    bool IsPivotSetUnset(EPivotSet set) const;
    EPivotState GetPivotState(EPivotSet set) const;
    void SetPivotState(EPivotSet set, EPivotState state);

    // Copies the transform properties into pivot set 0 and the
    // TransformRecord, and rewrites the limits from their properties when
    // they differ. Called when a node's properties are complete.
    void UpdatePivotsAndLimitsFromProperties();
    // Gives a quaternion interpolation mode to the curve nodes of "Lcl
    // Rotation" in every layer of the stacks of the node's scene. The reader
    // calls it again once the animation is connected.
    void ApplyQuaternionInterpolationToAnimation(int mode);

    // The values that evaluation reads instead of properties.
    TransformRecord& GetTransform() { return transform_; }
    const TransformRecord& GetTransform() const { return transform_; }
    // Copies a pivot set's rotation order, limit-space flag, offsets,
    // pivots and pre- and post-rotation into the TransformRecord.
    void LoadPivotSet(EPivotSet set);

    // Evaluation, through the manager's evaluator (FbxAnimEvaluator): the
    // global and local matrix, and the animated local values, at a time. At
    // infinite time (or with no stack as the evaluator's context) curves do
    // not count. The reference stays good until this node is evaluated at
    // another time: copy it.
    FbxAMatrix& EvaluateGlobalTransform(FbxTime time = FbxTime::Infinite(), EPivotSet pivotSet = eSourcePivot,
                                        bool applyTarget = false, bool forceEval = false);
    FbxAMatrix& EvaluateLocalTransform(FbxTime time = FbxTime::Infinite(), EPivotSet pivotSet = eSourcePivot,
                                       bool applyTarget = false, bool forceEval = false);
    FbxVector4& EvaluateLocalTranslation(FbxTime time = FbxTime::Infinite(), EPivotSet pivotSet = eSourcePivot,
                                         bool applyTarget = false, bool forceEval = false);
    FbxVector4& EvaluateLocalRotation(FbxTime time = FbxTime::Infinite(), EPivotSet pivotSet = eSourcePivot,
                                      bool applyTarget = false, bool forceEval = false);
    FbxVector4& EvaluateLocalScaling(FbxTime time = FbxTime::Infinite(), EPivotSet pivotSet = eSourcePivot,
                                     bool applyTarget = false, bool forceEval = false);

    // The span of the keys of layer `layerIndex` of `stack` (the scene's
    // first stack when null) on the properties of this node, of its default
    // attribute and of every node below it. False, with `interval` left
    // empty (start above stop), when there is no stack or layer or no curve
    // of two keys or more.
    bool GetAnimationInterval(FbxTimeSpan& interval, FbxAnimStack* stack = nullptr, int layerIndex = 0) const;

    // A changed property value invalidates the node's evaluated record.
    bool PropertyNotify(EPropertyNotifyType type, const FbxProperty& property) override;

    // What a file's model record says and nothing else reads.
    EShadingMode GetShadingMode() const { return shadingMode_; }
    void SetShadingMode(EShadingMode mode);
    ECullingType GetCullingType() const { return cullingType_; }
    void SetCullingType(ECullingType type);
    const FbxVector4& GetPostTargetRotation() const { return postTargetRotation_; }
    void SetPostTargetRotation(const FbxVector4& v) { postTargetRotation_.Set(v[0], v[1], v[2]); }
    const FbxVector4& GetUpTargetRotation() const { return upTargetRotation_; }
    void SetUpTargetRotation(const FbxVector4& v) { upTargetRotation_.Set(v[0], v[1], v[2]); }
    // Set for a model record of an old version.
    bool IsOldVersion() const { return oldVersion_; }
    void SetOldVersion(bool old) { oldVersion_ = old; }

    // Takes over the other node's properties and, beside them, its pivot
    // sets, transform record and model record values.
    bool CopyFrom(const FbxObject& other) override;

protected:
    // A clone of a node takes over the same values as CopyFrom.
    void Construct(const FbxObject* from) override;
    void ConstructProperties(bool forceSet) override;

private:
    static int sIds[ePropertyCount];

    void CopyNodeValues(const FbxNode& other);

    bool IsValidSet(EPivotSet set) const { return set == eSourcePivot || set == eDestinationPivot; }
    FbxPivotSet& EnsurePivotSet(EPivotSet set);
    void SetPivotVector(EPivotSet set, FbxPivotSet::EVector which, const FbxVector4& v);
    // The first six pivot vectors of set 0 into the TransformRecord.
    void CopyToTransform(FbxPivotSet::EVector which, const FbxVector4& v);
    LimitRecord ReadLimits(EProperty active, EProperty minVector, EProperty maxVector, EProperty minX) const;

    struct PivotState {
        bool unset = true;
        EPivotState state = ePivotReference;
    };

    TransformRecord transform_;
    std::unique_ptr<FbxPivotSet> pivots_[2];
    PivotState pivotState_[2];
    EShadingMode shadingMode_ = eHardShading;
    ECullingType cullingType_ = eCullingOff;
    FbxVector4 postTargetRotation_;
    FbxVector4 upTargetRotation_;
    bool oldVersion_ = false;
};

#undef KIVA_FBX_NODE_PROPERTIES
