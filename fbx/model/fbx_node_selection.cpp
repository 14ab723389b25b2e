#include "fbx/model/fbx_node_selection.h"

#include <algorithm>
#include <cstring>
#include <unordered_set>

#include "fbx/model/fbx_anim_curve_node.h"
#include "fbx/model/fbx_anim_stack.h"
#include "fbx/model/fbx_node.h"
#include "fbx/model/fbx_scene.h"

NodeSelection NodeSelection::RootChildren(FbxScene& scene) {
    NodeSelection selection;
    FbxNode* root = scene.GetRootNode();
    if (!root) return selection;

    // The first layer of each stack, stacks ordered by name.
    std::vector<FbxAnimStack*> stacks;
    for (int i = 0; i < scene.GetSrcObjectCount<FbxAnimStack>(); ++i)
        if (FbxAnimStack* stack = scene.GetSrcObject<FbxAnimStack>(i)) stacks.push_back(stack);
    std::stable_sort(stacks.begin(), stacks.end(), [](const FbxAnimStack* a, const FbxAnimStack* b) {
        return std::strcmp(a->GetName(), b->GetName()) < 0;
    });
    std::vector<FbxAnimLayer*> layers;
    for (FbxAnimStack* stack : stacks)
        if (FbxAnimLayer* layer = stack->GetLayer(0)) layers.push_back(layer);

    std::unordered_set<const FbxAnimCurveNode*> listed;  // lookup only
    auto add = [&](const FbxProperty& property, std::vector<FbxAnimCurveNode*>& list) {
        for (FbxAnimLayer* layer : layers)
            if (FbxAnimCurveNode* curveNode = property.GetCurveNode(layer);
                curveNode && listed.insert(curveNode).second)
                list.push_back(curveNode);
    };
    const int count = root->GetChildCount();
    selection.nodes.reserve(static_cast<size_t>(count));
    for (int i = 0; i < count; ++i) {
        FbxNode* node = root->GetChild(i);
        if (!node) continue;
        selection.nodes.push_back(node);
        add(node->LclTranslation(), selection.translationCurveNodes);
        add(node->LclRotation(), selection.rotationCurveNodes);
        add(node->LclScaling(), selection.scalingCurveNodes);
    }
    return selection;
}

std::vector<FbxNode*> SelectNodesBelow(FbxNode* root) {
    std::vector<FbxNode*> nodes;
    if (!root) return nodes;
    std::unordered_set<const FbxNode*> seen{root};  // lookup only
    // Each entry is a node whose children are still to visit, and the next
    // child's index.
    std::vector<std::pair<FbxNode*, int>> path{{root, 0}};
    while (!path.empty()) {
        auto& [node, next] = path.back();
        if (next == node->GetChildCount()) {
            path.pop_back();
            continue;
        }
        FbxNode* child = node->GetChild(next++);
        if (!child || !seen.insert(child).second) continue;
        nodes.push_back(child);
        path.emplace_back(child, 0);
    }
    return nodes;
}
