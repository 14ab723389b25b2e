#include "scene/animation_baking.h"

#include <cmath>
#include <cstdio>
#include <string>
#include <utility>
#include <vector>

#include "convert/error_reporter.h"
#include "fbx/model/fbx_node.h"
#include "fbx/model/fbx_time.h"
#include "scene/matrix4.h"
#include "scene/polar_decomposition.h"
#include "tarn/anim_skeleton.h"
#include "tarn/animation.h"
#include "tarn/kiva_builder.h"

namespace {

constexpr uint32_t kFramesPerSecond = 60;
constexpr double kSecondsPerFrame = 0.016666666666666666;
// What one bake may take: a file of a few bytes can hold two keys a year
// apart, and nothing else bounds the frames.
constexpr double kMaxTransformBytes = 1024.0 * 1024.0 * 1024.0;

}  // namespace

void bakeAnimation(FbxNode& rootNode, tarn::KivaBuilder& builder, const SkeletonNodeMap& skeletonNodes,
                   std::string_view input, ErrorReporter& errors) {
    if (skeletonNodes.empty()) return;
    FbxTimeSpan interval;
    if (!rootNode.GetAnimationInterval(interval)) return;
    const double start = interval.start.GetSecondDouble();
    const double stop = interval.stop.GetSecondDouble();
    // Only the length of the interval counts; sampling starts at second 0.
    const float length = static_cast<float>((stop - start) * 60.0);
    if (!(length >= 1.0f)) return;  // shorter than a frame, or not a number
    const double bytes = std::floor(static_cast<double>(length)) * static_cast<double>(skeletonNodes.size()) *
                         static_cast<double>(sizeof(tarn::AnimTransform));
    if (length >= 2147483648.0f || bytes > kMaxTransformBytes) {
        char frames[64];
        std::snprintf(frames, sizeof frames, "%.0f", std::floor(static_cast<double>(length)));
        errors.error(input) << "animation of " << frames << " frames for " << skeletonNodes.size()
                            << " bones is too long to bake (at most 1 GiB of transforms)\n";
        return;
    }
    const auto frames = static_cast<int32_t>(std::floor(length));

    std::vector<std::string> boneNames;
    boneNames.reserve(skeletonNodes.size());
    for (const auto& [node, bone] : skeletonNodes.entries())
        boneNames.push_back(bone.skeleton->skeleton->bones[bone.boneIndex].name);
    qe::Ref<tarn::Animation> animation(
        new tarn::Animation(std::string(), std::move(boneNames), frames, kFramesPerSecond, 1));

    // Bone by bone, frame by frame: consecutive evaluations hit one node.
    size_t channel = 0;
    for (const auto& [constNode, bone] : skeletonNodes.entries()) {
        // Evaluation caches its result in the node, hence the cast; the map
        // holds nodes of the scene being converted, which is not const.
        FbxNode* node = const_cast<FbxNode*>(constNode);
        for (int32_t f = 0; f < frames; ++f) {
            const FbxTime time = FbxTime::FromSeconds(static_cast<double>(f) * kSecondsPerFrame);
            const Matrix4 local = toMatrix4(node->EvaluateLocalTransform(time, FbxNode::eSourcePivot, false, false));
            Matrix4 q, s;
            polarDecompose(local, q, s);
            tarn::AnimTransform& out = animation->at(static_cast<size_t>(f), channel);
            out.translation = {local[12], local[13], local[14]};
            out.rotation = toQuaternion(q);
        }
        ++channel;
    }
    builder.addAnimation(std::move(animation));
}
