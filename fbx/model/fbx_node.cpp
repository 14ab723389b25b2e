#include "fbx/model/fbx_node.h"

#include <initializer_list>
#include <unordered_set>
#include <vector>

#include "fbx/model/fbx_geometry.h"
#include "fbx/model/fbx_manager.h"
#include "fbx/model/fbx_mesh.h"
#include "fbx/model/fbx_node_attribute.h"
#include "fbx/model/fbx_skeleton.h"
#include "fbx/model/fbx_status.h"
#include "fbx/model/fbx_surface_material.h"

KIVA_FBX_OBJECT_IMPLEMENT(FbxNode)

int FbxNode::sIds[FbxNode::ePropertyCount] = {};

FbxNode::FbxNode(FbxManager& manager, const char* name) : ParentClass(manager, name) {}

namespace {

enum class Kind { Bool, Int, Double, Double3, Enum, Reference };

// One row of the node's property declarations, in the order of creation.
struct Declaration {
    FbxNode::EProperty id;
    const char* name;
    Kind kind;
    const char* dataType;  // a named data type, or null for the kind's own
    double x, y, z;        // the default: x alone for scalars
    uint32_t flags;
};

constexpr uint32_t kAnim = FbxPropertyFlags::eAnimatable;

#define D3(id, name, v) \
    { FbxNode::e##id, name, Kind::Double3, nullptr, v, v, v, 0 }
#define B(id, name, v) \
    { FbxNode::e##id, name, Kind::Bool, nullptr, v, 0, 0, 0 }
#define R(id, name, v) \
    { FbxNode::e##id, name, Kind::Double, nullptr, v, 0, 0, 0 }
const Declaration kDeclarations[] = {
    {FbxNode::eQuaternionInterpolate, "QuaternionInterpolate", Kind::Enum, nullptr, 0, 0, 0, 0},
    D3(RotationOffset, "RotationOffset", 0),
    D3(RotationPivot, "RotationPivot", 0),
    D3(ScalingOffset, "ScalingOffset", 0),
    D3(ScalingPivot, "ScalingPivot", 0),
    B(TranslationActive, "TranslationActive", 0),
    D3(TranslationMin, "TranslationMin", 0),
    D3(TranslationMax, "TranslationMax", 0),
    B(TranslationMinX, "TranslationMinX", 0),
    B(TranslationMinY, "TranslationMinY", 0),
    B(TranslationMinZ, "TranslationMinZ", 0),
    B(TranslationMaxX, "TranslationMaxX", 0),
    B(TranslationMaxY, "TranslationMaxY", 0),
    B(TranslationMaxZ, "TranslationMaxZ", 0),
    {FbxNode::eRotationOrder, "RotationOrder", Kind::Enum, nullptr, 0, 0, 0, 0},
    B(RotationSpaceForLimitOnly, "RotationSpaceForLimitOnly", 0),
    R(RotationStiffnessX, "RotationStiffnessX", 0),
    R(RotationStiffnessY, "RotationStiffnessY", 0),
    R(RotationStiffnessZ, "RotationStiffnessZ", 0),
    R(AxisLen, "AxisLen", 10.0),
    D3(PreRotation, "PreRotation", 0),
    D3(PostRotation, "PostRotation", 0),
    B(RotationActive, "RotationActive", 0),
    D3(RotationMin, "RotationMin", 0),
    D3(RotationMax, "RotationMax", 0),
    B(RotationMinX, "RotationMinX", 0),
    B(RotationMinY, "RotationMinY", 0),
    B(RotationMinZ, "RotationMinZ", 0),
    B(RotationMaxX, "RotationMaxX", 0),
    B(RotationMaxY, "RotationMaxY", 0),
    B(RotationMaxZ, "RotationMaxZ", 0),
    {FbxNode::eInheritType, "InheritType", Kind::Enum, nullptr, 0, 0, 0, 0},
    B(ScalingActive, "ScalingActive", 0),
    D3(ScalingMin, "ScalingMin", 0),
    D3(ScalingMax, "ScalingMax", 1),
    B(ScalingMinX, "ScalingMinX", 0),
    B(ScalingMinY, "ScalingMinY", 0),
    B(ScalingMinZ, "ScalingMinZ", 0),
    B(ScalingMaxX, "ScalingMaxX", 0),
    B(ScalingMaxY, "ScalingMaxY", 0),
    B(ScalingMaxZ, "ScalingMaxZ", 0),
    D3(GeometricTranslation, "GeometricTranslation", 0),
    D3(GeometricRotation, "GeometricRotation", 0),
    D3(GeometricScaling, "GeometricScaling", 1),
    R(MinDampRangeX, "MinDampRangeX", 0),
    R(MinDampRangeY, "MinDampRangeY", 0),
    R(MinDampRangeZ, "MinDampRangeZ", 0),
    R(MaxDampRangeX, "MaxDampRangeX", 0),
    R(MaxDampRangeY, "MaxDampRangeY", 0),
    R(MaxDampRangeZ, "MaxDampRangeZ", 0),
    R(MinDampStrengthX, "MinDampStrengthX", 0),
    R(MinDampStrengthY, "MinDampStrengthY", 0),
    R(MinDampStrengthZ, "MinDampStrengthZ", 0),
    R(MaxDampStrengthX, "MaxDampStrengthX", 0),
    R(MaxDampStrengthY, "MaxDampStrengthY", 0),
    R(MaxDampStrengthZ, "MaxDampStrengthZ", 0),
    R(PreferedAngleX, "PreferedAngleX", 0),
    R(PreferedAngleY, "PreferedAngleY", 0),
    R(PreferedAngleZ, "PreferedAngleZ", 0),
    {FbxNode::eLookAtProperty, "LookAtProperty", Kind::Reference, nullptr, 0, 0, 0, 0},
    {FbxNode::eUpVectorProperty, "UpVectorProperty", Kind::Reference, nullptr, 0, 0, 0, 0},
    B(Show, "Show", 1),
    B(NegativePercentShapeSupport, "NegativePercentShapeSupport", 1),
    {FbxNode::eDefaultAttributeIndex, "DefaultAttributeIndex", Kind::Int, nullptr, -1, 0, 0, 0},
    B(Freeze, "Freeze", 0),
    B(LODBox, "LODBox", 0),
    {FbxNode::eLclTranslation, "Lcl Translation", Kind::Double3, "Lcl Translation", 0, 0, 0, kAnim},
    {FbxNode::eLclRotation, "Lcl Rotation", Kind::Double3, "Lcl Rotation", 0, 0, 0, kAnim},
    {FbxNode::eLclScaling, "Lcl Scaling", Kind::Double3, "Lcl Scaling", 1, 1, 1, kAnim},
    {FbxNode::eVisibility, "Visibility", Kind::Double, "Visibility", 1, 0, 0, kAnim},
    {FbxNode::eVisibilityInheritance, "Visibility Inheritance", Kind::Bool, "Visibility Inheritance", 1, 0, 0, 0},
};
#undef D3
#undef B
#undef R
static_assert(sizeof kDeclarations / sizeof kDeclarations[0] == FbxNode::ePropertyCount);

FbxProperty declare(const FbxProperty& root, const Declaration& d) {
    FbxDataType type;
    if (d.dataType) type = FbxDataTypeTable::FromName(d.dataType);
    switch (d.kind) {
    case Kind::Bool:
        return FbxProperty::Declare(root, d.name, type.Valid() ? type : FbxBoolDT, d.x != 0.0, d.flags);
    case Kind::Int:
        return FbxProperty::Declare(root, d.name, FbxIntDT, static_cast<FbxInt>(d.x), d.flags);
    case Kind::Double:
        return FbxProperty::Declare(root, d.name, type.Valid() ? type : FbxDoubleDT, d.x, d.flags);
    case Kind::Double3:
        return FbxProperty::Declare(root, d.name, type.Valid() ? type : FbxDouble3DT, FbxDouble3(d.x, d.y, d.z),
                                    d.flags);
    case Kind::Enum:
        return FbxProperty::Declare(root, d.name, FbxEnumDT, static_cast<FbxEnum>(d.x), d.flags);
    case Kind::Reference:
        return FbxProperty::Create(root, FbxReferenceDT, d.name);
    }
    return FbxProperty();
}

void addItems(FbxProperty p, std::initializer_list<const char*> items) {
    for (const char* item : items) p.AddEnumValue(item);
}

FbxVector4 vectorOf(const FbxProperty& p) {
    FbxDouble3 v = p.Get<FbxDouble3>();
    return FbxVector4(v[0], v[1], v[2]);
}

bool same3(const FbxVector4& a, const FbxVector4& b) { return a[0] == b[0] && a[1] == b[1] && a[2] == b[2]; }

}  // namespace

void FbxNode::ConstructProperties(bool forceSet) {
    ParentClass::ConstructProperties(forceSet);
    if (!ClassId.NeedsPropertyDeclaration()) return;
    FbxProperty root = ClassId.GetRootClassProperty();
    for (const Declaration& d : kDeclarations) sIds[d.id] = declare(root, d).GetId();
    auto onClass = [&](EProperty which) { return FbxProperty(root.GetPage(), sIds[which]); };
    addItems(onClass(eQuaternionInterpolate), {"OFF", "Classic", "Auto", "Slerp", "Squad"});
    addItems(onClass(eRotationOrder),
             {"Euler XYZ", "Euler XZY", "Euler YZX", "Euler YXZ", "Euler ZXY", "Euler ZYX", "Spheric XYZ"});
    addItems(onClass(eInheritType), {"RrSs", "RSrs", "Rrs"});
}

FbxProperty FbxNode::GetProperty(EProperty which) const {
    if (which < 0 || which >= ePropertyCount) return FbxProperty();
    return FbxProperty(GetPropertyPage(), sIds[which]);
}

void FbxNode::Construct(const FbxObject* from) {
    ParentClass::Construct(from);
    if (from && from->GetClassId() == GetClassId()) CopyNodeValues(*static_cast<const FbxNode*>(from));
}

bool FbxNode::CopyFrom(const FbxObject& other) {
    if (!ParentClass::CopyFrom(other)) return false;
    if (&other != this) CopyNodeValues(static_cast<const FbxNode&>(other));
    return true;
}

void FbxNode::CopyNodeValues(const FbxNode& other) {
    transform_ = other.transform_;
    for (int set = 0; set < 2; ++set) {
        pivots_[set] = other.pivots_[set] ? std::make_unique<FbxPivotSet>(*other.pivots_[set]) : nullptr;
        pivotState_[set] = other.pivotState_[set];
    }
    shadingMode_ = other.shadingMode_;
    cullingType_ = other.cullingType_;
    postTargetRotation_ = other.postTargetRotation_;
    upTargetRotation_ = other.upTargetRotation_;
    oldVersion_ = other.oldVersion_;
}

// Children ------------------------------------------------------------------

int FbxNode::GetChildCount(bool recursive) const {
    int direct = GetSrcObjectCount<FbxNode>();
    if (!recursive) return direct;
    // Connections made by hand or read from a bad file can form cycles and
    // shared subtrees: walk with a visited set.
    std::unordered_set<const FbxNode*> seen{this};
    std::vector<const FbxNode*> pending{this};
    int count = 0;
    while (!pending.empty()) {
        const FbxNode* node = pending.back();
        pending.pop_back();
        int n = node->GetSrcObjectCount<FbxNode>();
        for (int i = 0; i < n; ++i) {
            const FbxNode* child = node->GetSrcObject<FbxNode>(i);
            if (child && seen.insert(child).second) {
                ++count;
                pending.push_back(child);
            }
        }
    }
    return count;
}

FbxNode* FbxNode::GetChild(int index) const { return GetSrcObject<FbxNode>(index); }

FbxNode* FbxNode::GetParent() const { return GetDstObject<FbxNode>(0); }

bool FbxNode::AddChild(FbxNode* node) {
    if (!node || node == this) return false;
    // Refuse an ancestor: it would close a cycle. The walk is bounded in
    // case the parents already form one.
    FbxManager* manager = GetFbxManager();
    int steps = manager ? manager->GetObjectCount() + 1 : 1 << 20;
    for (const FbxNode* up = GetParent(); up && steps-- > 0; up = up->GetParent())
        if (up == node) return false;
    if (FbxNode* parent = node->GetParent()) parent->DisconnectSrcObject(node);
    return ConnectSrcObject(node);
}

FbxNode* FbxNode::RemoveChild(FbxNode* node) {
    if (!node || !IsConnectedSrcObject(node)) return nullptr;
    return DisconnectSrcObject(node) ? node : nullptr;
}

// Attributes ----------------------------------------------------------------

int FbxNode::GetNodeAttributeCount() const { return GetSrcObjectCount<FbxNodeAttribute>(); }

FbxNodeAttribute* FbxNode::GetNodeAttributeByIndex(int index) const { return GetSrcObject<FbxNodeAttribute>(index); }

FbxNodeAttribute* FbxNode::GetNodeAttribute() const { return GetNodeAttributeByIndex(GetDefaultNodeAttributeIndex()); }

int FbxNode::GetDefaultNodeAttributeIndex() const { return DefaultAttributeIndex().Get(); }

bool FbxNode::SetDefaultNodeAttributeIndex(int index, FbxStatus* status) {
    if (index < 0 || index >= GetNodeAttributeCount()) {
        if (status) status->SetCode(FbxStatus::eIndexOutOfRange);
        return false;
    }
    return DefaultAttributeIndex().Set(FbxInt(index));
}

FbxNodeAttribute* FbxNode::SetNodeAttribute(FbxNodeAttribute* attribute) {
    if (attribute) {
        int index = GetNodeAttributeIndex(attribute);
        if (index >= 0) {
            SetDefaultNodeAttributeIndex(index);
            return nullptr;
        }
    }
    FbxNodeAttribute* kept = GetNodeAttribute();
    for (int i = GetNodeAttributeCount() - 1; i >= 0; --i) {
        FbxNodeAttribute* old = GetNodeAttributeByIndex(i);
        if (!old) continue;  // a destroyed attribute took another along
        DisconnectSrcObject(old);
        // An attribute that another node still holds is that node's too.
        if (old != kept && old->GetNodeCount() == 0) old->Destroy();
    }
    if (attribute) ConnectSrcObject(attribute);
    DefaultAttributeIndex().Set(FbxInt(attribute ? 0 : -1));
    return kept;
}

bool FbxNode::AddNodeAttribute(FbxNodeAttribute* attribute) {
    if (!attribute || IsConnectedSrcObject(attribute)) return false;
    if (!ConnectSrcObject(attribute)) return false;
    if (GetDefaultNodeAttributeIndex() < 0) DefaultAttributeIndex().Set(FbxInt(0));
    return true;
}

int FbxNode::RemoveNodeAttribute(FbxNodeAttribute* attribute, FbxStatus* status) {
    int index = GetNodeAttributeIndex(attribute, status);
    if (index < 0 || !DisconnectSrcObject(attribute)) return -1;
    int defaultIndex = GetDefaultNodeAttributeIndex();
    if (index < defaultIndex) --defaultIndex;
    int count = GetNodeAttributeCount();
    if (defaultIndex >= count) defaultIndex = count - 1;
    DefaultAttributeIndex().Set(FbxInt(defaultIndex));
    return index;
}

int FbxNode::GetNodeAttributeIndex(const FbxNodeAttribute* attribute, FbxStatus* status) const {
    if (attribute) {
        int count = GetNodeAttributeCount();
        for (int i = 0; i < count; ++i)
            if (GetNodeAttributeByIndex(i) == attribute) return i;
    }
    if (status) status->SetCode(FbxStatus::eFailure, "Cannot find node attribute");
    return -1;
}

FbxSkeleton* FbxNode::GetSkeleton() const {
    FbxNodeAttribute* attribute = GetNodeAttribute();
    if (!attribute || attribute->GetAttributeType() != FbxNodeAttribute::eSkeleton) return nullptr;
    return FbxCast<FbxSkeleton>(attribute);
}

FbxGeometry* FbxNode::GetGeometry() const {
    FbxNodeAttribute* attribute = GetNodeAttribute();
    if (!attribute) return nullptr;
    switch (attribute->GetAttributeType()) {
    case FbxNodeAttribute::eMesh:
    case FbxNodeAttribute::eNurbs:
    case FbxNodeAttribute::ePatch:
    case FbxNodeAttribute::eNurbsCurve:
    case FbxNodeAttribute::eTrimNurbsSurface:
    case FbxNodeAttribute::eBoundary:
    case FbxNodeAttribute::eNurbsSurface:
    case FbxNodeAttribute::eSubDiv:
    case FbxNodeAttribute::eLine:
        return FbxCast<FbxGeometry>(attribute);
    default:
        return nullptr;
    }
}

FbxMesh* FbxNode::GetMesh() const {
    FbxGeometry* geometry = GetGeometry();
    if (geometry && geometry->GetAttributeType() == FbxNodeAttribute::eMesh) return FbxCast<FbxMesh>(geometry);
    int count = GetNodeAttributeCount();
    for (int i = 0; i < count; ++i) {
        FbxNodeAttribute* attribute = GetNodeAttributeByIndex(i);
        if (attribute->GetAttributeType() == FbxNodeAttribute::eMesh) return FbxCast<FbxMesh>(attribute);
    }
    return nullptr;
}

int FbxNode::GetMaterialCount() const { return GetSrcObjectCount<FbxSurfaceMaterial>(); }

FbxSurfaceMaterial* FbxNode::GetMaterial(int index) const { return GetSrcObject<FbxSurfaceMaterial>(index); }

// Pivot sets ----------------------------------------------------------------

const FbxPivotSet& FbxNode::GetPivotSet(EPivotSet set) const {
    if (!IsValidSet(set) || !pivots_[set]) return FbxPivotSet::Empty();
    return *pivots_[set];
}

FbxPivotSet& FbxNode::EnsurePivotSet(EPivotSet set) {
    if (!pivots_[set]) pivots_[set] = std::make_unique<FbxPivotSet>();
    return *pivots_[set];
}

bool FbxNode::IsPivotSetUnset(EPivotSet set) const { return !IsValidSet(set) || pivotState_[set].unset; }

FbxNode::EPivotState FbxNode::GetPivotState(EPivotSet set) const {
    return IsValidSet(set) ? pivotState_[set].state : ePivotReference;
}

void FbxNode::SetPivotState(EPivotSet set, EPivotState state) {
    if (!IsValidSet(set)) return;
    pivotState_[set].state = state;
    if (pivots_[set]) pivots_[set]->pivotState = state;
}

void FbxNode::CopyToTransform(FbxPivotSet::EVector which, const FbxVector4& v) {
    switch (which) {
    case FbxPivotSet::eRotationOffset:
        transform_.SetRotationOffset(v);
        break;
    case FbxPivotSet::eRotationPivot:
        transform_.SetRotationPivot(v);
        break;
    case FbxPivotSet::ePreRotation:
        transform_.rotationSpace.SetPreRotation(v);
        break;
    case FbxPivotSet::ePostRotation:
        transform_.rotationSpace.SetPostRotation(v);
        break;
    case FbxPivotSet::eScalingOffset:
        transform_.SetScalingOffset(v);
        break;
    case FbxPivotSet::eScalingPivot:
        transform_.SetScalingPivot(v);
        break;
    default:
        break;
    }
}

void FbxNode::SetPivotVector(EPivotSet set, FbxPivotSet::EVector which, const FbxVector4& v) {
    if (!IsValidSet(set)) return;
    FbxPivotSet& pivots = EnsurePivotSet(set);
    pivots.Set(which, v);
    pivots.pivotState = pivotState_[set].state;
    pivotState_[set].unset = false;
    if (set == eSourcePivot) CopyToTransform(which, v);
}

#define KIVA_FBX_PIVOT_ACCESSORS(Name, Vector) \
    const FbxVector4& FbxNode::Get##Name(EPivotSet set) const { return GetPivotSet(set).Get(FbxPivotSet::Vector); } \
    void FbxNode::Set##Name(EPivotSet set, const FbxVector4& v) { SetPivotVector(set, FbxPivotSet::Vector, v); }
KIVA_FBX_PIVOT_ACCESSORS(RotationOffset, eRotationOffset)
KIVA_FBX_PIVOT_ACCESSORS(RotationPivot, eRotationPivot)
KIVA_FBX_PIVOT_ACCESSORS(PreRotation, ePreRotation)
KIVA_FBX_PIVOT_ACCESSORS(PostRotation, ePostRotation)
KIVA_FBX_PIVOT_ACCESSORS(ScalingOffset, eScalingOffset)
KIVA_FBX_PIVOT_ACCESSORS(ScalingPivot, eScalingPivot)
KIVA_FBX_PIVOT_ACCESSORS(GeometricTranslation, eGeometricTranslation)
KIVA_FBX_PIVOT_ACCESSORS(GeometricRotation, eGeometricRotation)
KIVA_FBX_PIVOT_ACCESSORS(GeometricScaling, eGeometricScaling)
#undef KIVA_FBX_PIVOT_ACCESSORS

LimitRecord FbxNode::ReadLimits(EProperty active, EProperty minVector, EProperty maxVector, EProperty minX) const {
    // The six axis flags follow minX in the order MinX, MinY, MinZ, MaxX,
    // MaxY, MaxZ.
    LimitRecord limits;
    limits.SetActive(GetProperty(active).Get<FbxBool>());
    for (int axis = 0; axis < 3; ++axis) {
        limits.SetMinActive(axis, GetProperty(static_cast<EProperty>(minX + axis)).Get<FbxBool>());
        limits.SetMaxActive(axis, GetProperty(static_cast<EProperty>(minX + 3 + axis)).Get<FbxBool>());
    }
    limits.min = vectorOf(GetProperty(minVector));
    limits.max = vectorOf(GetProperty(maxVector));
    return limits;
}

void FbxNode::UpdatePivotsAndLimitsFromProperties() {
    // Rotation order, the nine pivot vectors, the limit-space flag and the
    // quaternion mode, as the properties give them.
    int order = RotationOrder().Get();
    if (order < 0 || order > 6) order = 0;
    static constexpr EProperty kVectorProperties[FbxPivotSet::eVectorCount] = {
        eRotationOffset, eRotationPivot,        ePreRotation,       ePostRotation,    eScalingOffset,
        eScalingPivot,   eGeometricTranslation, eGeometricRotation, eGeometricScaling};
    FbxVector4 vectors[FbxPivotSet::eVectorCount];
    bool allDefault = order == 0;
    for (int i = 0; i < FbxPivotSet::eVectorCount; ++i) {
        vectors[i] = vectorOf(GetProperty(kVectorProperties[i]));
        allDefault = allDefault && same3(vectors[i], FbxPivotSet::Default(static_cast<FbxPivotSet::EVector>(i)));
    }
    bool spaceForLimitOnly = RotationSpaceForLimitOnly().Get();
    int quaternionMode = QuaternionInterpolate().Get();
    allDefault = allDefault && !spaceForLimitOnly && quaternionMode == 0;

    // A node whose values are all defaults keeps reading the shared empty
    // set; any other gets its own set 0.
    if (pivots_[eSourcePivot] || !allDefault) {
        FbxPivotSet& pivots = EnsurePivotSet(eSourcePivot);
        pivots.rotationOrder = order;
        for (int i = 0; i < FbxPivotSet::eVectorCount; ++i)
            pivots.Set(static_cast<FbxPivotSet::EVector>(i), vectors[i]);
        pivots.rotationSpaceForLimitOnly = spaceForLimitOnly;
        pivots.quaternionInterpolate = quaternionMode;
        pivots.pivotState = pivotState_[eSourcePivot].state;
    }
    pivotState_[eSourcePivot].unset = false;

    transform_.rotationSpace.rotationOrder = RotationOrderFromProperty(order);
    for (int i = FbxPivotSet::eRotationOffset; i <= FbxPivotSet::eScalingPivot; ++i)
        CopyToTransform(static_cast<FbxPivotSet::EVector>(i), vectors[i]);
    transform_.rotationSpaceForLimitOnly = spaceForLimitOnly;

    LimitRecord translation = ReadLimits(eTranslationActive, eTranslationMin, eTranslationMax, eTranslationMinX);
    LimitRecord rotation = ReadLimits(eRotationActive, eRotationMin, eRotationMax, eRotationMinX);
    LimitRecord scaling = ReadLimits(eScalingActive, eScalingMin, eScalingMax, eScalingMinX);
    if (!translation.SameAs(transform_.translationLimits) || !rotation.SameAs(transform_.rotationLimits) ||
        !scaling.SameAs(transform_.scalingLimits)) {
        transform_.translationLimits = translation;
        transform_.rotationLimits = rotation;
        transform_.scalingLimits = scaling;
    }

    if (quaternionMode != 0) ApplyQuaternionInterpolationToAnimation(quaternionMode);
}

// Model record values ---------------------------------------------------------

void FbxNode::SetShadingMode(EShadingMode mode) {
    shadingMode_ = mode >= eHardShading && mode <= eFullShading ? mode : eHardShading;
}

void FbxNode::SetCullingType(ECullingType type) {
    cullingType_ = type >= eCullingOff && type <= eCullingOnCW ? type : eCullingOff;
}
