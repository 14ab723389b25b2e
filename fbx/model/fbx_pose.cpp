#include "fbx/model/fbx_pose.h"

#include "fbx/model/fbx_manager.h"
#include "fbx/model/fbx_node.h"
#include "fbx/model/fbx_scene.h"

KIVA_FBX_OBJECT_IMPLEMENT(FbxPose)

int FbxPose::sNodes = -1;

FbxPose::FbxPose(FbxManager& manager, const char* name) : ParentClass(manager, name) {}

void FbxPose::ConstructProperties(bool forceSet) {
    ParentClass::ConstructProperties(forceSet);
    if (!ClassId.NeedsPropertyDeclaration()) return;
    sNodes = FbxProperty::Create(ClassId.GetRootClassProperty(), FbxReferenceDT, "Nodes").GetId();
}

bool FbxPose::IsLive(const FbxNode* node) const {
    // The pointer is only compared: a node that was destroyed has left the
    // property's sources.
    return node && Nodes().IsConnectedSrcObject(node);
}

void FbxPose::ConnectEntries() {
    FbxProperty nodes = Nodes();
    nodes.DisconnectAllSrcObject();
    for (const FbxPoseInfo& entry : entries_)
        if (entry.node) nodes.ConnectSrcObject(entry.node);
}

FbxNode* FbxPose::GetNode(int index) const {
    if (index < 0 || index >= GetCount()) return nullptr;
    FbxNode* node = entries_[static_cast<size_t>(index)].node;
    return IsLive(node) ? node : nullptr;
}

const FbxMatrix& FbxPose::GetMatrix(int index) const {
    static const FbxMatrix identity;
    return index >= 0 && index < GetCount() ? entries_[static_cast<size_t>(index)].matrix : identity;
}

bool FbxPose::IsLocalMatrix(int index) const {
    return index >= 0 && index < GetCount() && entries_[static_cast<size_t>(index)].local;
}

int FbxPose::Find(const FbxNode* node) const {
    if (!IsLive(node)) return -1;
    for (size_t i = 0; i < entries_.size(); ++i)
        if (entries_[i].node == node) return static_cast<int>(i);
    return -1;
}

int FbxPose::Add(FbxNode* node, const FbxMatrix& matrix, bool local, bool multipleBindPose) {
    if (!node) return -1;
    if (!multipleBindPose && IsBindPose()) {
        // Another bind pose that holds the node with another matrix wins.
        FbxManager* manager = GetFbxManager();
        for (int d = 0; manager && d < manager->GetDocumentCount(); ++d) {
            FbxScene* scene = FbxCast<FbxScene>(manager->GetDocument(d));
            if (!scene) continue;
            for (int p = 0; p < scene->GetPoseCount(); ++p) {
                FbxPose* other = scene->GetPose(p);
                if (!other || other == this || !other->IsBindPose()) continue;
                int at = other->Find(node);
                if (at >= 0 && other->GetMatrix(at) != matrix) return -1;
            }
        }
    }
    int existing = Find(node);
    if (existing >= 0) return existing;
    entries_.push_back(FbxPoseInfo{matrix, local, node});
    Nodes().ConnectSrcObject(node);
    return GetCount() - 1;
}

void FbxPose::Remove(int index) {
    if (index < 0 || index >= GetCount()) return;
    entries_.erase(entries_.begin() + index);
    for (FbxPoseInfo& entry : entries_)
        if (!IsLive(entry.node)) entry.node = nullptr;
    ConnectEntries();
}

void FbxPose::CopyPoseValues(const FbxPose& other) {
    poseType_ = other.poseType_;
    entries_ = other.entries_;
    for (FbxPoseInfo& entry : entries_)
        if (!other.IsLive(entry.node)) entry.node = nullptr;
    ConnectEntries();
}

void FbxPose::Construct(const FbxObject* from) {
    ParentClass::Construct(from);
    if (from && from->GetClassId() == GetClassId()) CopyPoseValues(*static_cast<const FbxPose*>(from));
}

bool FbxPose::CopyFrom(const FbxObject& other) {
    if (!ParentClass::CopyFrom(other)) return false;
    if (&other != this) CopyPoseValues(static_cast<const FbxPose&>(other));
    return true;
}
