#include "fbx/model/fbx_skin.h"

#include <algorithm>

#include "fbx/model/fbx_cluster.h"
#include "fbx/model/fbx_document.h"
#include "fbx/model/fbx_geometry.h"

KIVA_FBX_OBJECT_IMPLEMENT(FbxSkin)

FbxSkin::FbxSkin(FbxManager& manager, const char* name) : ParentClass(manager, name) {}

int FbxSkin::GetClusterCount() const { return GetSrcObjectCount<FbxCluster>(); }

FbxCluster* FbxSkin::GetCluster(int index) const { return GetSrcObject<FbxCluster>(index); }

bool FbxSkin::AddCluster(FbxCluster* cluster) { return cluster && ConnectSrcObject(cluster); }

FbxCluster* FbxSkin::RemoveCluster(FbxCluster* cluster) {
    return cluster && DisconnectSrcObject(cluster) ? cluster : nullptr;
}

bool FbxSkin::SetGeometry(FbxGeometry* geometry) { return geometry && geometry->AddDeformer(this) >= 0; }

FbxGeometry* FbxSkin::GetGeometry() const { return GetDstObject<FbxGeometry>(); }

void FbxSkin::AddControlPointIndex(int index, double weight) {
    if (index < 0) return;
    if (!indices_.PushBack(index)) return;
    if (!blendWeights_.PushBack(std::clamp(weight, 0.0, 1.0))) indices_.ResizeUninitialized(indices_.Size() - 1);
}

void FbxSkin::SetControlPointIndexCount(int count) {
    size_t n = count > 0 ? static_cast<size_t>(count) : 0;
    if (!indices_.Resize(n) || !blendWeights_.Resize(n)) {
        indices_.Clear();
        blendWeights_.Clear();
    }
}

void FbxSkin::CopySkinValues(const FbxSkin& other) {
    deformAccuracy_ = other.deformAccuracy_;
    skinningType_ = other.skinningType_;
    indices_ = other.indices_;
    blendWeights_ = other.blendWeights_;
}

void FbxSkin::Construct(const FbxObject* from) {
    ParentClass::Construct(from);
    if (from && from->GetClassId() == GetClassId()) CopySkinValues(*static_cast<const FbxSkin*>(from));
}

bool FbxSkin::CopyFrom(const FbxObject& other) {
    if (!ParentClass::CopyFrom(other)) return false;
    if (&other != this) CopySkinValues(static_cast<const FbxSkin&>(other));
    return true;
}

FbxObject* FbxSkin::Clone(FbxObject* container) const {
    auto* skin = static_cast<FbxSkin*>(ParentClass::Clone(container));
    if (!skin) return nullptr;
    for (int i = 0; i < GetClusterCount(); ++i) {
        FbxCluster* cluster = GetCluster(i);
        if (auto* copy = static_cast<FbxCluster*>(cluster->Clone(cluster->GetOwnerDocument()))) skin->AddCluster(copy);
    }
    return skin;
}
