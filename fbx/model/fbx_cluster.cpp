#include "fbx/model/fbx_cluster.h"

#include "fbx/model/fbx_document.h"
#include "fbx/model/fbx_node.h"

KIVA_FBX_OBJECT_IMPLEMENT(FbxCluster)

int FbxCluster::sAssociateModel = -1;

FbxCluster::FbxCluster(FbxManager& manager, const char* name) : ParentClass(manager, name) {}

void FbxCluster::ConstructProperties(bool forceSet) {
    ParentClass::ConstructProperties(forceSet);
    if (!ClassId.NeedsPropertyDeclaration()) return;
    sAssociateModel = FbxProperty::Create(ClassId.GetRootClassProperty(), FbxReferenceDT, "AssociateModel").GetId();
}

void FbxCluster::SetLink(FbxNode* node) {
    if (!node) return;
    for (FbxNode* old; (old = GetLink()) && DisconnectSrcObject(old);) {}
    if (ConnectSrcObject(node)) linkName_ = node->GetName();
}

FbxNode* FbxCluster::GetLink() const { return GetSrcObject<FbxNode>(); }

void FbxCluster::SetAssociateModel(FbxNode* node) {
    FbxProperty p = GetPropertyById(sAssociateModel);
    p.DisconnectAllSrcObject();
    if (node) p.ConnectSrcObject(node);
}

FbxNode* FbxCluster::GetAssociateModel() const {
    return static_cast<FbxNode*>(
        GetPropertyById(sAssociateModel).GetSrcObject(FbxCriteria::ObjectType(FbxNode::ClassId), 0));
}

void FbxCluster::AddControlPointIndex(int index, double weight) {
    if (index < 0) return;
    if (!indices_.PushBack(index)) return;
    if (!weights_.PushBack(weight)) indices_.ResizeUninitialized(indices_.Size() - 1);
}

void FbxCluster::SetControlPointIWCount(int count) {
    size_t n = count > 0 ? static_cast<size_t>(count) : 0;
    if (!indices_.Resize(n) || !weights_.Resize(n)) {
        indices_.Clear();
        weights_.Clear();
    }
}

void FbxCluster::SetUserData(const char* id, const char* data) {
    userDataId_ = id ? id : "";
    userData_ = data ? data : "";
}

void FbxCluster::Reset() {
    for (FbxNode* link; (link = GetLink()) && DisconnectSrcObject(link);) {}
    SetAssociateModel(nullptr);
    userDataId_.clear();
    userData_.clear();
    linkMode_ = eAdditive;
    indices_.Release();
    weights_.Release();
    transform_ = transformLink_ = transformAssociateModel_ = transformParent_ = FbxMatrix();
    transformParentSet_ = false;
    linkName_.clear();
}

void FbxCluster::CopyClusterValues(const FbxCluster& other) {
    userDataId_ = other.userDataId_;
    userData_ = other.userData_;
    linkMode_ = other.linkMode_;
    indices_ = other.indices_;
    weights_ = other.weights_;
    transform_ = other.transform_;
    transformLink_ = other.transformLink_;
    transformAssociateModel_ = other.transformAssociateModel_;
    transformParent_ = other.transformParent_;
    transformParentSet_ = other.transformParentSet_;
    linkName_ = other.linkName_;
}

void FbxCluster::Construct(const FbxObject* from) {
    ParentClass::Construct(from);
    if (from && from->GetClassId() == GetClassId()) CopyClusterValues(*static_cast<const FbxCluster*>(from));
}

bool FbxCluster::CopyFrom(const FbxObject& other) {
    if (!ParentClass::CopyFrom(other)) return false;
    if (&other != this) CopyClusterValues(static_cast<const FbxCluster&>(other));
    return true;
}

FbxObject* FbxCluster::Clone(FbxObject* container) const {
    auto* cluster = static_cast<FbxCluster*>(ParentClass::Clone(container));
    if (!cluster) return nullptr;
    if (FbxNode* link = GetLink()) cluster->SetLink(link);
    if (FbxNode* model = GetAssociateModel()) cluster->SetAssociateModel(model);
    return cluster;
}
