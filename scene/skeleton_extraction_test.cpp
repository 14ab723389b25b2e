#include "scene/skeleton_extraction.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>

#include "convert/error_reporter.h"
#include "fbx/model/fbx_cluster.h"
#include "fbx/model/fbx_manager.h"
#include "fbx/model/fbx_node.h"
#include "fbx/model/fbx_scene.h"
#include "fbx/model/fbx_skeleton.h"
#include "fbx/model/fbx_skin.h"
#include "scene/matrix4.h"
#include "tarn/anim_skeleton.h"
#include "tarn/kiva_container.h"

namespace {

SkinInfluences packed(std::initializer_list<SkinInfluence> influences) {
    SkinInfluences point;
    point.influences = influences;
    packInfluences(point);
    return point;
}

using Bytes = std::array<uint8_t, 4>;

TEST(PackInfluences, NormalisesToBytesAddingUpTo255GreatestFirst) {
    // The remainder goes to the last kept weight.
    SkinInfluences two = packed({{3, 0.5f}, {7, 0.5f}});
    EXPECT_EQ(two.weights, (Bytes{128, 127, 0, 0}));
    EXPECT_EQ(two.bones, (Bytes{3, 7, 0, 0}));
    // A lone weight is normalised.
    EXPECT_EQ(packed({{5, 0.2f}}).weights, (Bytes{255, 0, 0, 0}));
    // Five equal weights: the first four met stay, in their order.
    SkinInfluences five = packed({{0, 0.2f}, {1, 0.2f}, {2, 0.2f}, {3, 0.2f}, {4, 0.2f}});
    EXPECT_EQ(five.bones, (Bytes{0, 1, 2, 3}));
    EXPECT_EQ(five.weights, (Bytes{64, 64, 64, 63}));
    // The greatest four of six, sorted; the two smallest are dropped and the
    // rest renormalised.
    SkinInfluences six = packed({{1, 0.5f}, {2, 8.0f}, {3, 2.0f}, {4, 4.0f}, {5, 0.25f}, {6, 1.0f}});
    EXPECT_EQ(six.bones, (Bytes{2, 4, 3, 6}));
    EXPECT_EQ(six.weights, (Bytes{136, 68, 34, 17}));
    EXPECT_EQ(packed({}).weights, (Bytes{255, 0, 0, 0}));  // no influence: bone 0 alone
    // An infinite weight cannot make the bytes wrap.
    SkinInfluences huge = packed({{1, INFINITY}, {2, 1.0f}});
    EXPECT_EQ(huge.weights[0] + huge.weights[1], 255);
}

class SkeletonScene : public ::testing::Test {
protected:
    void SetUp() override {
        manager = FbxManager::Create();
        scene = FbxScene::Create(manager, "Scene");
        root = scene->GetRootNode();
    }
    void TearDown() override { manager->Destroy(); }

    FbxNode* Node(FbxNode* parent, const char* name, bool bone, double x = 0.0) {
        FbxNode* node = FbxNode::Create(scene, name);
        if (bone) node->SetNodeAttribute(FbxSkeleton::Create(scene, name));
        node->LclTranslation().Set(FbxDouble3(x, 0, 0));
        if (parent) parent->AddChild(node);
        return node;
    }
    FbxCluster* Cluster(FbxSkin* skin, FbxNode* link, std::initializer_list<std::pair<int, double>> entries) {
        FbxCluster* cluster = FbxCluster::Create(scene, "");
        cluster->SetLink(link);
        for (auto [index, weight] : entries) {
            cluster->GetControlPointIndexArray().PushBack(index);
            cluster->GetControlPointWeightArray().PushBack(weight);
        }
        skin->AddCluster(cluster);
        return cluster;
    }
    // Fills `points` influences from `skin` for a mesh node named "Body".
    std::vector<SkinInfluences> Fill(tarn::ModelRecord& model, const FbxSkin& skin, size_t points) {
        std::vector<SkinInfluences> influences(points);
        fillSkinInfluences(model, skin, nodes, influences, {"in.fbx", meshNode, &errors, &messages});
        return influences;
    }

    FbxManager* manager = nullptr;
    FbxScene* scene = nullptr;
    FbxNode* root = nullptr;
    FbxNode* meshNode = nullptr;
    tarn::KivaContainer container;
    SkeletonNodeMap nodes;
    std::ostringstream errorText;
    ErrorReporter errors{errorText};
    std::ostringstream messages;
};

TEST_F(SkeletonScene, BonesDepthFirstFromEachSkeletonChildOfTheRoot) {
    FbxNode* hips = Node(root, "Hips", true, 1.0);
    FbxNode* spine = Node(hips, "Spine", true, 2.0);
    FbxNode* mesh = Node(spine, "Mesh", false, 4.0);  // a bone, whose child is not
    Node(mesh, "UnderMesh", true);
    FbxNode* head = Node(spine, "Head", true, 8.0);
    FbxNode* leg = Node(hips, "Leg", true, -1.0);
    head->LclRotation().Set(FbxDouble3(0, 0, 90));
    head->LclScaling().Set(FbxDouble3(2, 1, 1));
    Node(root, "NotABone", false);
    FbxNode* other = Node(root, "Other", true, 5.0);
    FbxNode* hidden = Node(Node(root, "Armature", false), "Hidden", true);

    extractSkeletons(*root, container, nodes);

    ASSERT_EQ(container.skeletons().size(), 2u);
    const auto& bones = container.skeletons()[0]->skeleton->bones;
    ASSERT_EQ(bones.size(), 5u);
    const char* names[] = {"Hips", "Spine", "Mesh", "Head", "Leg"};
    const int32_t parents[] = {-1, 0, 1, 1, 0};
    for (size_t i = 0; i < 5; ++i) {
        EXPECT_EQ(bones[i].name, names[i]);
        EXPECT_EQ(bones[i].parent, parents[i]) << names[i];
    }
    EXPECT_EQ(bones[3].translation, (std::array<float, 3>{8, 0, 0}));
    // Rotation and scale of the head apart: a quarter turn about z, and the
    // scale along the bone's own x axis.
    const float h = std::sqrt(0.5f);
    for (int k = 0; k < 4; ++k) EXPECT_NEAR(bones[3].rotation[k], (std::array<float, 4>{0, 0, h, h})[k], 1e-6f);
    const std::array<float, 9> scale{2, 0, 0, 0, 1, 0, 0, 0, 1};
    for (int k = 0; k < 9; ++k) EXPECT_NEAR(bones[3].scaleShear[k], scale[k], 1e-6f) << k;
    // The inverse bind undoes the chain of local transforms: the spine's
    // origin lies at x = 1 + 2, the head's at x = 11 turned by its own
    // quarter turn.
    EXPECT_NEAR(bones[1].inverseBind[12], -3.0f, 1e-6f);
    EXPECT_NEAR(bones[3].inverseBind[12], 0.0f, 1e-5f);
    EXPECT_NEAR(bones[3].inverseBind[13], 11.0f, 1e-5f);
    EXPECT_NEAR(bones[4].inverseBind[12], 0.0f, 1e-6f);

    const auto& second = container.skeletons()[1]->skeleton->bones;
    ASSERT_EQ(second.size(), 1u);
    EXPECT_EQ(second[0].name, "Other");

    // The map in bone order, skeleton by skeleton.
    ASSERT_EQ(nodes.size(), 6u);
    const FbxNode* order[] = {hips, spine, mesh, head, leg, other};
    for (size_t i = 0; i < 6; ++i) EXPECT_EQ(nodes.entries()[i].first, order[i]);
    EXPECT_EQ(nodes.find(head)->skeleton, container.skeletons()[0].get());
    EXPECT_EQ(nodes.find(head)->boneIndex, 3u);
    EXPECT_EQ(nodes.find(other)->skeleton, container.skeletons()[1].get());
    EXPECT_EQ(nodes.find(hidden), nullptr);
}

TEST_F(SkeletonScene, DeepChainIsWalkedWithoutRecursion) {
    // Built from the leaf up, so that each link is made in constant time.
    constexpr int kDepth = 20000;  // a recursive walk would need megabytes of stack
    FbxNode* below = nullptr;
    for (int i = 0; i < kDepth; ++i) {
        FbxNode* node = Node(nullptr, "b", true);
        if (below) node->AddChild(below);
        below = node;
    }
    root->AddChild(below);
    extractSkeletons(*root, container, nodes);
    const auto& bones = container.skeletons().at(0)->skeleton->bones;
    ASSERT_EQ(bones.size(), static_cast<size_t>(kDepth));
    EXPECT_EQ(bones.back().parent, kDepth - 2);
}

TEST_F(SkeletonScene, ClustersOfOneSkeletonFillInfluencesOthersAreIgnored) {
    FbxNode* a = Node(root, "A", true);
    FbxNode* a1 = Node(a, "A1", true);
    FbxNode* b = Node(root, "B", true);
    FbxNode* loose = Node(root, "Loose", false);
    meshNode = Node(root, "Body", false);
    extractSkeletons(*root, container, nodes);

    FbxSkin* skin = FbxSkin::Create(scene, "");
    Cluster(skin, nullptr, {{0, 1.0}});                                        // no link
    Cluster(skin, loose, {{0, 1.0}});                                          // no bone
    Cluster(skin, a1, {{0, 0.75}, {1, 0.0}, {2, -1.0}, {-1, 1.0}, {3, 1.0}});  // the model takes A
    Cluster(skin, b, {{1, 1.0}});                                              // another skeleton
    Cluster(skin, a, {{0, 0.25}, {1, 0.5}});
    Cluster(skin, a1, {{1, 0.5}});  // a second entry of one bone stays apart
    tarn::ModelRecord model;
    std::vector<SkinInfluences> points = Fill(model, *skin, 3);

    EXPECT_EQ(model.skeleton, container.skeletons()[0].get());
    EXPECT_EQ(messages.str(),
              "Ignoring cluster because it isn't linked to an FbxSkeleton\n"
              "Ignoring cluster because it isn't linked to an FbxSkeleton\n"
              "Ignoring cluster because it is linked to a different skeleton\n");
    EXPECT_EQ(errors.errorCount(), 0u);
    ASSERT_EQ(points[0].influences.size(), 2u);
    EXPECT_EQ(points[0].influences[0].bone, 1u);
    EXPECT_EQ(points[0].influences[0].weight, 0.75f);
    EXPECT_EQ(points[0].bones, (Bytes{1, 0, 0, 0}));
    EXPECT_EQ(points[0].weights, (Bytes{191, 64, 0, 0}));
    ASSERT_EQ(points[1].influences.size(), 2u);  // zero weight dropped
    EXPECT_EQ(points[1].bones, (Bytes{0, 1, 0, 0}));
    EXPECT_EQ(points[1].weights, (Bytes{128, 127, 0, 0}));
    EXPECT_TRUE(points[2].influences.empty());  // negative weight dropped
    EXPECT_EQ(points[2].weights, (Bytes{255, 0, 0, 0}));

    // A model that already follows B ignores A's clusters.
    tarn::ModelRecord onB;
    onB.skeleton = container.skeletons()[1].get();
    messages.str("");
    points = Fill(onB, *skin, 3);
    EXPECT_EQ(points[1].influences.size(), 1u);
    EXPECT_EQ(points[1].influences[0].bone, 0u);
    EXPECT_EQ(points[0].influences.size(), 0u);
}

TEST_F(SkeletonScene, WeightsOnBonesBeyondTheBoneByteAreAnErrorOfTheMesh) {
    FbxNode* top = Node(root, "Root", true);
    std::vector<FbxNode*> fingers;
    for (int i = 1; i < 300; ++i) fingers.push_back(Node(top, ("Finger_" + std::to_string(i)).c_str(), true));
    meshNode = Node(root, "Body", false);
    extractSkeletons(*root, container, nodes);

    FbxSkin* low = FbxSkin::Create(scene, "");
    Cluster(low, fingers[254], {{0, 1.0}});  // bone 255: addressable
    Cluster(low, fingers[255], {{0, 0.0}});  // bone 256 without weight
    tarn::ModelRecord model;
    EXPECT_EQ(Fill(model, *low, 1)[0].bones[0], 255);
    EXPECT_EQ(errors.errorCount(), 0u);

    FbxSkin* high = FbxSkin::Create(scene, "");
    Cluster(high, fingers[256], {{0, 1.0}});
    Cluster(high, fingers[257], {{1, 1.0}});
    Fill(model, *high, 2);
    EXPECT_EQ(errors.errorCount(), 1u);
    EXPECT_EQ(errorText.str(),
              "in.fbx: mesh \"Body\": bone \"Finger_257\" is bone 256 or above of its skeleton; a skinned vertex "
              "addresses at most 256 bones\n");
}

TEST_F(SkeletonScene, BonesBelowANodeOtherThanTheRootAreNamedOncePerMesh) {
    FbxNode* armature = Node(root, "Armature", false);
    FbxNode* bone = Node(armature, "Bone", true);
    FbxNode* tip = Node(bone, "Bone.001", true);
    FbxNode* prop = Node(armature, "Prop", false);
    meshNode = Node(root, "Body", false);
    extractSkeletons(*root, container, nodes);
    EXPECT_TRUE(nodes.empty());

    FbxSkin* skin = FbxSkin::Create(scene, "");
    Cluster(skin, prop, {{0, 1.0}});  // not a bone node: no warning
    Cluster(skin, tip, {{0, 1.0}});
    Cluster(skin, bone, {{0, 1.0}});
    tarn::ModelRecord model;
    std::vector<SkinInfluences> points = Fill(model, *skin, 1);
    EXPECT_EQ(messages.str(),
              "Ignoring cluster because it isn't linked to an FbxSkeleton\n"
              "Ignoring cluster because it isn't linked to an FbxSkeleton\n"
              "in.fbx: warning: mesh \"Body\": its bones hang under \"Armature\", not under the scene root, so its "
              "skin is ignored\n"
              "Ignoring cluster because it isn't linked to an FbxSkeleton\n");
    EXPECT_EQ(errors.errorCount(), 0u);
    EXPECT_EQ(model.skeleton, nullptr);
    EXPECT_EQ(points[0].weights, (Bytes{255, 0, 0, 0}));
}

}  // namespace
