#include "scene/animation_baking.h"

#include <gtest/gtest.h>

#include <sstream>

#include <cmath>

#include "convert/error_reporter.h"
#include "fbx/model/fbx_anim_curve.h"
#include "fbx/model/fbx_anim_curve_node.h"
#include "fbx/model/fbx_anim_layer.h"
#include "fbx/model/fbx_anim_stack.h"
#include "fbx/model/fbx_manager.h"
#include "fbx/model/fbx_node.h"
#include "fbx/model/fbx_scene.h"
#include "fbx/model/fbx_skeleton.h"
#include "scene/skeleton_extraction.h"
#include "tarn/animation.h"
#include "tarn/kiva_builder.h"

namespace {

class AnimationBaking : public ::testing::Test {
protected:
    void SetUp() override {
        manager = FbxManager::Create();
        scene = FbxScene::Create(manager, "Scene");
        root = scene->GetRootNode();
        hips = Node(root, "Hips", true);
        spine = Node(hips, "Spine", true);
        spine->LclTranslation().Set(FbxDouble3(0, 2, 0));
    }
    void TearDown() override { manager->Destroy(); }

    FbxNode* Node(FbxNode* parent, const char* name, bool bone) {
        FbxNode* node = FbxNode::Create(scene, name);
        if (bone) node->SetNodeAttribute(FbxSkeleton::Create(scene, name));
        parent->AddChild(node);
        return node;
    }
    FbxAnimLayer* Stack(const char* name) {
        FbxAnimStack* stack = FbxAnimStack::Create(scene, name);
        FbxAnimLayer* layer = FbxAnimLayer::Create(scene, name);
        stack->AddMember(layer);
        return layer;
    }
    // Linear keys (seconds, value) on one channel of a property.
    void Keys(FbxProperty property, FbxAnimLayer* layer, unsigned channel,
              std::initializer_list<std::pair<double, float>> keys) {
        FbxAnimCurveNode* curveNode = property.GetCurveNode(layer, true);
        FbxAnimCurve* curve = FbxAnimCurve::Create(scene, "");
        for (const auto& [seconds, value] : keys)
            curve->KeyAdd(FbxTime::FromSeconds(seconds), value, KFCurve::eInterpolationLinear);
        curveNode->ConnectToChannel(curve, channel);
    }
    // Extracts the skeletons once and bakes; the animation made, or null.
    const tarn::Animation* Bake() {
        if (nodes.empty()) extractSkeletons(*root, container, nodes);
        const size_t before = container.animations().size();
        bakeAnimation(*root, builder, nodes, "scene.fbx", errors);
        if (container.animations().size() == before) return nullptr;
        EXPECT_EQ(container.animations().size(), before + 1);
        return container.animations().back()->animation.get();
    }

    FbxManager* manager = nullptr;
    FbxScene* scene = nullptr;
    FbxNode* root = nullptr;
    FbxNode* hips = nullptr;
    FbxNode* spine = nullptr;
    tarn::KivaContainer container;
    tarn::KivaBuilder builder{&container};
    SkeletonNodeMap nodes;
    std::ostringstream err;
    ErrorReporter errors{err};
};

TEST_F(AnimationBaking, LengthOfTheIntervalSetsTheFramesSamplingStartsAtZero) {
    FbxAnimLayer* layer = Stack("Take");
    // From second 2 to 3: 60 frames at 0 to 59/60 seconds, before the first
    // key, where the curve holds its first value.
    Keys(hips->LclTranslation(), layer, 0, {{2.0, 5.0f}, {3.0, 8.0f}});
    const tarn::Animation* animation = Bake();
    ASSERT_NE(animation, nullptr);
    EXPECT_EQ(animation->frameCount, 60);
    EXPECT_EQ(animation->transforms[0].translation[0], 5.0f);
    EXPECT_EQ(animation->transforms[2 * 59].translation[0], 5.0f);
}

TEST_F(AnimationBaking, OneFrameAtLeast) {
    FbxAnimLayer* layer = Stack("Take");
    Keys(hips->LclTranslation(), layer, 0, {{0.0, 0.0f}, {1.0 / 120.0, 1.0f}});
    EXPECT_EQ(Bake(), nullptr);  // half a frame

    Keys(hips->LclTranslation(), layer, 1, {{0.0, 0.0f}, {1.0 / 60.0, 1.0f}});
    const tarn::Animation* animation = Bake();
    ASSERT_NE(animation, nullptr);
    EXPECT_EQ(animation->frameCount, 1);
}

TEST_F(AnimationBaking, OneAnimationHoldsTheBonesOfEverySkeleton) {
    FbxNode* other = Node(root, "Other", true);
    other->LclTranslation().Set(FbxDouble3(7, 0, 0));
    FbxAnimLayer* layer = Stack("Take");
    Keys(hips->LclTranslation(), layer, 0, {{0.0, 0.0f}, {0.5, 1.0f}});
    const tarn::Animation* animation = Bake();
    ASSERT_NE(animation, nullptr);
    EXPECT_EQ(container.skeletons().size(), 2u);
    EXPECT_EQ(animation->boneNames, (std::vector<std::string>{"Hips", "Spine", "Other"}));
    EXPECT_EQ(animation->frameCount, 30);
    EXPECT_EQ(animation->transforms[3 * 29 + 2].translation[0], 7.0f);
}

TEST_F(AnimationBaking, NothingWithoutStackKeysOrBones) {
    EXPECT_EQ(Bake(), nullptr);  // no stack at all
    FbxAnimLayer* layer = Stack("Take");
    EXPECT_EQ(Bake(), nullptr);  // a stack without keys
    Keys(hips->LclTranslation(), layer, 0, {{0.0, 1.0f}});
    EXPECT_EQ(Bake(), nullptr);  // a single key spans no time
    Keys(hips->LclTranslation(), layer, 1, {{0.0, 0.0f}, {1.0, 1.0f}});
    // Curves but no bones.
    bakeAnimation(*root, builder, SkeletonNodeMap{}, "scene.fbx", errors);
    EXPECT_TRUE(container.animations().empty());
    EXPECT_NE(Bake(), nullptr);
    EXPECT_EQ(errors.errorCount(), 0u);
}

TEST_F(AnimationBaking, KeysFarApartAreAnErrorNotAHugeAnimation) {
    FbxAnimLayer* layer = Stack("Take");
    Keys(hips->LclTranslation(), layer, 0, {{0.0, 0.0f}, {1e7, 1.0f}});
    EXPECT_EQ(Bake(), nullptr);
    EXPECT_EQ(
        err.str(),
        "scene.fbx: animation of 600000000 frames for 2 bones is too long to bake (at most 1 GiB of transforms)\n");
}

}  // namespace
