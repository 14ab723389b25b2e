#pragma once

#include <unordered_map>

class FbxObject;

// Keeps the trees of one read trees. A node takes as its parent the first
// node that a connection puts it under, a document the first document; a
// later parent is not taken, and neither is one that would make an object
// its own ancestor. So every walk of the nodes or of the documents meets
// each one once and ends.
//
// The check of a link finds the top of the parent's tree through shortcuts
// that earlier checks left behind (the links only ever grow upwards, since
// only an object without a parent takes one), so that a read of n links
// costs about n log n steps however deep the trees are.
class Fbx7ParentLinks {
public:
    enum class Verdict {
        eLink,          // `child` may go under `parent`
        eNotATreeLink,  // not two nodes or two documents: no rule applies
        eSecondParent,  // `child` has its parent already
        eCycle,         // `parent` is `child` or hangs below it
    };

    Verdict Check(const FbxObject* child, const FbxObject* parent);
    void Clear() { shortcuts_.clear(); }

    // The parent that the document gives an object of a tree: the first
    // destination node of a node, the owner document of a document.
    static const FbxObject* ParentOf(const FbxObject* object);

private:
    const FbxObject* Top(const FbxObject* object);

    std::unordered_map<const FbxObject*, const FbxObject*> shortcuts_;  // to an ancestor
};
