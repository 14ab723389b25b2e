#pragma once

#include <unordered_map>
#include <vector>

#include "fbx/model/fbx_matrix.h"
#include "fbx/model/fbx_object.h"

class FbxNode;

// One entry of a pose: a node's matrix, global or relative to its parent.
struct FbxPoseInfo {
    FbxMatrix matrix;
    bool local = false;
    FbxNode* node = nullptr;
};

// A bind pose or rest pose: a matrix per node. Each entry's node is also a
// source of the pose's "Nodes" property, in entry order; an entry whose node
// has left that property (a destroyed node) reads as having no node. Finding
// a node's entry costs a hash lookup, so that large poses read in linear
// time.
class FbxPose : public FbxObject {
    KIVA_FBX_OBJECT_DECLARE(FbxPose, FbxObject)

public:
    bool IsBindPose() const { return poseType_ == 'b'; }
    bool IsRestPose() const { return poseType_ == 'r'; }
    void SetIsBindPose(bool bindPose) { poseType_ = bindPose ? 'b' : 'r'; }

    int GetCount() const { return static_cast<int>(entries_.size()); }
    // Null, a static identity matrix or false for a bad index.
    FbxNode* GetNode(int index) const;
    const FbxMatrix& GetMatrix(int index) const;
    bool IsLocalMatrix(int index) const;
    // The entry index of the node, or -1.
    int Find(const FbxNode* node) const;

    // Adds an entry; its index, or -1. A node that has an entry gives that
    // entry's index and changes nothing. Without `multipleBindPose`, a bind
    // pose also refuses (-1) a node that another bind pose of a scene of the
    // manager holds with a different matrix.
    int Add(FbxNode* node, const FbxMatrix& matrix, bool local = false, bool multipleBindPose = true);
    // Deletes the entry and rebuilds "Nodes" from the remaining entries. A
    // bad index does nothing.
    void Remove(int index);
    // Replaces every entry at once, with one rebuild of "Nodes": what a run
    // of Remove and Add calls gives, at the cost of one of them. An entry
    // without a node, or whose node an earlier entry has, keeps no node.
    void ReplaceEntries(std::vector<FbxPoseInfo> entries);

    bool CopyFrom(const FbxObject& other) override;

protected:
    void Construct(const FbxObject* from) override;
    void ConstructProperties(bool forceSet) override;

private:
    FbxProperty Nodes() const { return GetPropertyById(sNodes); }
    // Forgets the nodes that have left "Nodes" since the last look. Node
    // pointers are only compared, never followed, so that a destroyed node
    // is harmless.
    void Sync() const;
    // Makes "Nodes" hold the entries' nodes in entry order, and the index.
    void ConnectEntries();
    void CopyPoseValues(const FbxPose& other);

    static int sNodes;

    char poseType_ = 'r';
    mutable std::vector<FbxPoseInfo> entries_;
    // Each live entry's node to its index; `live_` of them.
    mutable std::unordered_map<const FbxNode*, int> index_;
    mutable int live_ = 0;
};
