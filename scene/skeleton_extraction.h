#pragma once

#include <iostream>
#include <string_view>
#include <vector>

#include "scene/skeleton_node_map.h"
#include "scene/skin_influences.h"

class ErrorReporter;
class FbxNode;
class FbxSkin;
namespace tarn {
class KivaContainer;
struct ModelRecord;
}  // namespace tarn

// Makes one skeleton of each direct child of the scene root whose default
// attribute is a skeleton, adds it to the container and enters every bone's
// node in `skeletonNodes`. Bones are read from the nodes' static local
// transforms: depth first, a parent before its children; every direct child
// of a skeleton node is a bone, and a bone that is no skeleton node ends its
// branch.
void extractSkeletons(FbxNode& rootNode, tarn::KivaContainer& container, SkeletonNodeMap& skeletonNodes);

// Where a skin's problems are reported: the input file and the node of the
// mesh that the skin deforms; errors go to `errors`, messages and warnings
// that count as no error to `messages`.
struct SkinSource {
    std::string_view input;
    const FbxNode* meshNode = nullptr;
    ErrorReporter* errors = nullptr;
    std::ostream* messages = &std::cerr;
};

// Collects the influences of the skin's clusters on the control points
// (`influences` has one entry per control point) and packs each point's
// bytes. The model takes the skeleton of the first cluster that reaches a
// bone; clusters that reach no bone, or a bone of another skeleton, are
// ignored with a message. When bones were missed because their skeleton
// hangs below a node other than the scene root, one warning per mesh names
// that node. Weights on a bone the 8-bit bone byte cannot address are an
// error reported against the input.
void fillSkinInfluences(tarn::ModelRecord& model, const FbxSkin& skin, const SkeletonNodeMap& skeletonNodes,
                        std::vector<SkinInfluences>& influences, const SkinSource& source);

// Packs the four greatest influences into bone and weight bytes adding up to
// 255; a point without influences follows bone 0 alone.
void packInfluences(SkinInfluences& point);
