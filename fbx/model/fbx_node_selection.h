#pragma once

#include <vector>

class FbxAnimCurveNode;
class FbxNode;
class FbxScene;

// What a scene conversion works on: nodes, and the curve nodes of their
// "Lcl Translation", "Lcl Rotation" and "Lcl Scaling" on the first layer of
// each animation stack of the scene (stacks in the order of their names).
// Each curve node is listed once, even when several nodes or stacks share
// it.
struct NodeSelection {
    std::vector<FbxNode*> nodes;
    std::vector<FbxAnimCurveNode*> translationCurveNodes;
    std::vector<FbxAnimCurveNode*> rotationCurveNodes;
    std::vector<FbxAnimCurveNode*> scalingCurveNodes;

    // The direct children of the scene's root node, in child order, with
    // their curve nodes. Empty without a root node.
    static NodeSelection RootChildren(FbxScene& scene);
};

// Every node below `root` at any depth, depth first in child order, each
// once: a node that connections put under two parents, or in a cycle, is
// not visited again. Walks without recursion.
std::vector<FbxNode*> SelectNodesBelow(FbxNode* root);
