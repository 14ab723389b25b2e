#pragma once

#include "scene/skeleton_node_map.h"

class FbxNode;
namespace tarn {
class KivaBuilder;
}

// Samples every bone of `skeletonNodes` at 60 frames per second over the
// length of the evaluator's first stack into one animation of the builder:
// a local translation and rotation per bone and frame. Nothing is added for
// a scene without bones, stack or keys, or shorter than one frame.
void bakeAnimation(FbxNode& rootNode, tarn::KivaBuilder& builder, const SkeletonNodeMap& skeletonNodes);
