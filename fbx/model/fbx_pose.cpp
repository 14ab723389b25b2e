#include "fbx/model/fbx_pose.h"

#include <utility>

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

void FbxPose::Sync() const {
    FbxProperty nodes = Nodes();
    int sources = nodes.GetSrcObjectCount();
    if (sources == live_) return;
    // The sources are the live entries' nodes in entry order, less those
    // that left: walk both together.
    int next = 0;
    index_.clear();
    live_ = 0;
    for (size_t i = 0; i < entries_.size(); ++i) {
        FbxPoseInfo& entry = entries_[i];
        if (!entry.node) continue;
        int at = next;
        while (at < sources && nodes.GetSrcObject(at) != entry.node) ++at;
        if (at == sources) {
            entry.node = nullptr;
            continue;
        }
        next = at + 1;
        index_.emplace(entry.node, static_cast<int>(i));
        ++live_;
    }
}

void FbxPose::ConnectEntries() {
    FbxProperty nodes = Nodes();
    nodes.DisconnectAllSrcObject();
    index_.clear();
    live_ = 0;
    for (size_t i = 0; i < entries_.size(); ++i) {
        FbxNode* node = entries_[i].node;
        if (node && index_.emplace(node, static_cast<int>(i)).second && nodes.ConnectSrcObject(node))
            ++live_;
        else
            entries_[i].node = nullptr;
    }
}

FbxNode* FbxPose::GetNode(int index) const {
    if (index < 0 || index >= GetCount()) return nullptr;
    Sync();
    return entries_[static_cast<size_t>(index)].node;
}

const FbxMatrix& FbxPose::GetMatrix(int index) const {
    static const FbxMatrix identity;
    return index >= 0 && index < GetCount() ? entries_[static_cast<size_t>(index)].matrix : identity;
}

bool FbxPose::IsLocalMatrix(int index) const {
    return index >= 0 && index < GetCount() && entries_[static_cast<size_t>(index)].local;
}

int FbxPose::Find(const FbxNode* node) const {
    if (!node) return -1;
    Sync();
    auto it = index_.find(node);
    return it == index_.end() ? -1 : it->second;
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
    if (!Nodes().ConnectSrcObject(node)) return -1;
    entries_.push_back(FbxPoseInfo{matrix, local, node});
    index_.emplace(node, GetCount() - 1);
    ++live_;
    return GetCount() - 1;
}

void FbxPose::Remove(int index) {
    if (index < 0 || index >= GetCount()) return;
    Sync();
    entries_.erase(entries_.begin() + index);
    ConnectEntries();
}

void FbxPose::ReplaceEntries(std::vector<FbxPoseInfo> entries) {
    entries_ = std::move(entries);
    ConnectEntries();
}

void FbxPose::CopyPoseValues(const FbxPose& other) {
    other.Sync();
    poseType_ = other.poseType_;
    entries_ = other.entries_;
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
