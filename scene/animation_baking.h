#pragma once

#include <string_view>

#include "scene/skeleton_node_map.h"

class ErrorReporter;
class FbxNode;
namespace tarn {
class KivaBuilder;
}

// Samples every bone of `skeletonNodes` at 60 frames per second over the
// length of the evaluator's first stack into one animation of the builder:
// a local translation and rotation per bone and frame. Nothing is added for
// a scene without bones, stack or keys, or shorter than one frame. An
// animation that would take more than 1 GiB is an error of `input`.
void bakeAnimation(FbxNode& rootNode, tarn::KivaBuilder& builder, const SkeletonNodeMap& skeletonNodes,
                   std::string_view input, ErrorReporter& errors);
