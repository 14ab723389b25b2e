#include "scene/skeleton_extraction.h"

#include <algorithm>
#include <cfloat>
#include <cmath>
#include <unordered_set>
#include <utility>

#include "convert/error_reporter.h"
#include "fbx/model/fbx_cluster.h"
#include "fbx/model/fbx_node.h"
#include "fbx/model/fbx_skin.h"
#include "qe/print_escaped.h"
#include "scene/matrix4.h"
#include "scene/polar_decomposition.h"
#include "tarn/anim_skeleton.h"
#include "tarn/kiva_container.h"

namespace {

// The bone byte of a skinned vertex addresses this many bones.
constexpr uint32_t kAddressableBones = 256;

// Appends the bones of the skeleton that starts at `root`: depth first, a
// parent before its children, children in child order. Every child of a
// skeleton node is a bone; a bone that is no skeleton node ends its branch.
// The walk keeps its own stack, so a deep tree cannot exhaust the call
// stack, and enters a node at most once in the whole scene (`seen`), so
// shared or cyclic connections of a bad file cannot repeat bones.
void extractBones(FbxNode& root, tarn::AnimSkeleton& skeleton, std::vector<FbxNode*>& nodes,
                  std::unordered_set<const FbxNode*>& seen) {
    struct Pending {
        FbxNode* node;
        int32_t parent;
    };
    std::vector<Pending> pending{{&root, -1}};
    std::vector<Matrix4> worlds;  // bind matrix of each bone, by position
    const Matrix4 identity = identityMatrix4();
    while (!pending.empty()) {
        const Pending next = pending.back();
        pending.pop_back();
        FbxNode& node = *next.node;
        if (!seen.insert(&node).second) continue;
        const auto index = static_cast<int32_t>(nodes.size());
        nodes.push_back(&node);

        const Matrix4 local = toMatrix4(node.EvaluateLocalTransform(FbxTime::Infinite()));
        Matrix4 q, s;
        polarDecompose(local, q, s);
        const Matrix4& parentWorld = next.parent < 0 ? identity : worlds[static_cast<size_t>(next.parent)];
        worlds.push_back(multiply(parentWorld, local));
        const Matrix4 inverseBind = inverse(worlds.back());
        skeleton.bones.emplace_back(
            node.GetName(), next.parent, std::array<float, 3>{local[12], local[13], local[14]}, toQuaternion(q),
            std::array<float, 9>{s[0], s[1], s[2], s[4], s[5], s[6], s[8], s[9], s[10]}, inverseBind);

        if (!node.GetSkeleton()) continue;
        // Pushed last to first, so that the first child is taken next.
        for (int i = node.GetChildCount(); i-- > 0;)
            if (FbxNode* child = node.GetChild(i)) pending.push_back({child, index});
    }
}

// The node that holds the skeleton chain of `link` when that chain hangs
// below some node other than the scene root; null otherwise. The chain is
// followed up through skeleton nodes; the walk stops at a repeated node.
const FbxNode* boneHolderBelowRoot(const FbxNode* link) {
    if (!link || !link->GetSkeleton()) return nullptr;
    std::unordered_set<const FbxNode*> seen{link};
    const FbxNode* top = link;
    for (const FbxNode* up = top->GetParent(); up && up->GetSkeleton(); up = up->GetParent()) {
        if (!seen.insert(up).second) return nullptr;
        top = up;
    }
    const FbxNode* holder = top->GetParent();
    // The scene root is the one node without a parent.
    return holder && holder->GetParent() ? holder : nullptr;
}

void printQuoted(std::ostream& out, const char* text) {
    out << '"';
    qe::printEscaped(out, text);
    out << '"';
}

}  // namespace

void extractSkeletons(FbxNode& rootNode, tarn::KivaContainer& container, SkeletonNodeMap& skeletonNodes) {
    std::unordered_set<const FbxNode*> seen{&rootNode};
    const int childCount = rootNode.GetChildCount();
    for (int c = 0; c < childCount; ++c) {
        FbxNode* child = rootNode.GetChild(c);
        if (!child || !child->GetSkeleton() || seen.count(child)) continue;
        qe::Ref<tarn::AnimSkeleton> skeleton(new tarn::AnimSkeleton);
        std::vector<FbxNode*> nodes;
        extractBones(*child, *skeleton, nodes, seen);
        const tarn::SkeletonRecord* holder = container.addSkeleton(std::move(skeleton));
        for (size_t i = 0; i < nodes.size(); ++i) skeletonNodes.insert(nodes[i], {holder, static_cast<uint32_t>(i)});
    }
}

void fillSkinInfluences(tarn::ModelRecord& model, const FbxSkin& skin, const SkeletonNodeMap& skeletonNodes,
                        std::vector<SkinInfluences>& influences, const SkinSource& source) {
    std::ostream& messages = source.messages ? *source.messages : std::cerr;
    const char* meshName = source.meshNode ? source.meshNode->GetName() : "";
    bool warnedHolder = false;
    bool reportedBone = false;
    const int clusterCount = skin.GetClusterCount();
    for (int c = 0; c < clusterCount; ++c) {
        const FbxCluster* cluster = skin.GetCluster(c);
        const FbxNode* link = cluster ? cluster->GetLink() : nullptr;
        const BoneRef* bone = link ? skeletonNodes.find(link) : nullptr;
        if (!bone) {
            messages << "Ignoring cluster because it isn't linked to an FbxSkeleton\n";
            if (!warnedHolder) {
                if (const FbxNode* holder = boneHolderBelowRoot(link)) {
                    messages << source.input << ": warning: mesh ";
                    printQuoted(messages, meshName);
                    messages << ": its bones hang under ";
                    printQuoted(messages, holder->GetName());
                    messages << ", not under the scene root, so its skin is ignored\n";
                    warnedHolder = true;
                }
            }
            continue;
        }
        if (!model.skeleton) model.skeleton = bone->skeleton;
        if (model.skeleton != bone->skeleton) {
            messages << "Ignoring cluster because it is linked to a different skeleton\n";
            continue;
        }
        const int count = cluster->GetControlPointIndicesCount();
        const int* indices = cluster->GetControlPointIndices();
        const double* weights = cluster->GetControlPointWeights();
        for (int j = 0; j < count; ++j) {
            const int point = indices[j];
            if (point < 0 || static_cast<size_t>(point) >= influences.size()) continue;
            // Narrowed to float; a weight beyond float's range stays finite.
            const auto weight =
                static_cast<float>(std::clamp(weights[j], -static_cast<double>(FLT_MAX), static_cast<double>(FLT_MAX)));
            if (!(weight > 0.0f)) continue;
            if (bone->boneIndex >= kAddressableBones && !reportedBone && source.errors) {
                std::ostream& out = source.errors->error(source.input);
                out << "mesh ";
                printQuoted(out, meshName);
                out << ": bone ";
                printQuoted(out, link->GetName());
                out << " is bone " << kAddressableBones
                    << " or above of its skeleton; a skinned vertex addresses at most " << kAddressableBones
                    << " bones\n";
                reportedBone = true;
            }
            influences[static_cast<size_t>(point)].influences.push_back({bone->boneIndex, weight});
        }
    }
    for (SkinInfluences& point : influences) packInfluences(point);
}

void packInfluences(SkinInfluences& point) {
    // The four greatest weights, greatest first; equal weights keep the
    // order in which they were met. Selected in place rather than by
    // sorting a copy, so that no point allocates.
    constexpr size_t kSlots = 4;
    SkinInfluence kept[kSlots];
    size_t n = 0;
    for (const SkinInfluence& influence : point.influences) {
        size_t at = n;
        while (at > 0 && influence.weight > kept[at - 1].weight) --at;
        if (at >= kSlots) continue;
        for (size_t k = std::min(n, kSlots - 1); k > at; --k) kept[k] = kept[k - 1];
        kept[at] = influence;
        if (n < kSlots) ++n;
    }
    if (n == 0) kept[n++] = {0, 1.0f};  // a point without influences follows bone 0 alone

    // The running sum and the shares are kept in double precision: the sum
    // of the weights still to share out then stays exact for float weights,
    // and equal weights get equal bytes (0.2 five times gives 64, 64, 64,
    // 63) where float rounding would hand out 64, 64, 63, 64.
    double sum = 0.0;
    for (size_t i = 0; i < n; ++i) sum += kept[i].weight;
    int left = 255;
    for (size_t i = 0; i + 1 < n; ++i) {
        const double share = std::floor(kept[i].weight / sum * left + 0.5);
        // Kept within what is left, so that the last byte cannot wrap.
        const int q = share >= 0.0 ? static_cast<int>(std::min(share, static_cast<double>(left))) : 0;
        point.bones[i] = static_cast<uint8_t>(kept[i].bone & 0xFFu);
        point.weights[i] = static_cast<uint8_t>(q);
        left -= q;
        sum -= kept[i].weight;
    }
    point.bones[n - 1] = static_cast<uint8_t>(kept[n - 1].bone & 0xFFu);
    point.weights[n - 1] = static_cast<uint8_t>(left);
    for (size_t i = n; i < kSlots; ++i) {
        point.bones[i] = 0;
        point.weights[i] = 0;
    }
}
