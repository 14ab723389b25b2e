#pragma once

#include <cstddef>
#include <cstdint>
#include <unordered_map>
#include <utility>
#include <vector>

class FbxNode;
namespace tarn {
struct SkeletonRecord;
}

// Which bone of which skeleton a node of the scene became.
struct BoneRef {
    const tarn::SkeletonRecord* skeleton = nullptr;
    uint32_t boneIndex = 0;  // position in the skeleton's bones
};

// Every bone node of one scene, across all its skeletons. Lookup is by node
// identity; iteration is in the order the bones were entered (skeleton by
// skeleton, bone by bone), so that whatever is made by walking the map does
// not depend on where nodes lie in memory.
class SkeletonNodeMap {
public:
    // Enters a node once; a node entered before keeps its first bone.
    void insert(const FbxNode* node, BoneRef bone) {
        if (index_.emplace(node, entries_.size()).second) entries_.emplace_back(node, bone);
    }
    const BoneRef* find(const FbxNode* node) const {
        auto it = index_.find(node);
        return it == index_.end() ? nullptr : &entries_[it->second].second;
    }
    const std::vector<std::pair<const FbxNode*, BoneRef>>& entries() const { return entries_; }
    bool empty() const { return entries_.empty(); }
    size_t size() const { return entries_.size(); }

private:
    std::vector<std::pair<const FbxNode*, BoneRef>> entries_;
    std::unordered_map<const FbxNode*, size_t> index_;
};
