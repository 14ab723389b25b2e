#include "fbx/model/fbx_scene.h"

#include "fbx/model/fbx_global_settings.h"
#include "fbx/model/fbx_node.h"
#include "fbx/model/fbx_pose.h"

KIVA_FBX_OBJECT_IMPLEMENT(FbxScene)

FbxScene::FbxScene(FbxManager& manager, const char* name) : ParentClass(manager, name) {}

void FbxScene::Construct(const FbxObject* from) {
    ParentClass::Construct(from);
    rootNode_ = FbxNode::Create(this, "RootNode");
    FbxGlobalSettings::Create(this, "GlobalSettings");
}

FbxNode* FbxScene::GetRootNode() const {
    // The pointer is trusted only while the node is still a source: a
    // destroyed root node leaves no dangling answer. The root node comes
    // first among the node sources, so the search ends at once.
    int count = GetSrcObjectCount<FbxNode>();
    for (int i = 0; i < count; ++i)
        if (GetSrcObject<FbxNode>(i) == rootNode_) return rootNode_;
    return nullptr;
}

FbxGlobalSettings* FbxScene::GetGlobalSettings() const { return GetSrcObject<FbxGlobalSettings>(0); }

int FbxScene::GetPoseCount() const { return GetSrcObjectCount<FbxPose>(); }

FbxPose* FbxScene::GetPose(int index) const { return GetSrcObject<FbxPose>(index); }

void FbxScene::Clear() {
    rootNode_ = GetRootNode();
    if (rootNode_) DisconnectSrcObject(rootNode_);
    // From the last source to the first; a destroyed source may take others
    // with it, so the count is read again each time.
    int count = GetSrcObjectCount();
    while (count > 0) {
        FbxObject* source = GetSrcObject(count - 1);
        if (source == rootNode_)
            DisconnectSrcObject(source);  // the root node was connected twice
        else
            source->Destroy();
        int left = GetSrcObjectCount();
        if (left >= count) break;  // nothing went: do not spin
        count = left;
    }
    if (!rootNode_) rootNode_ = FbxNode::Create(GetFbxManager(), "RootNode");
    if (rootNode_) ConnectSrcObject(rootNode_);
    FbxGlobalSettings::Create(this, "GlobalSettings");
}
