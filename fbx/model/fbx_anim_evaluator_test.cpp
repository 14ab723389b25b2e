#include "fbx/model/fbx_anim_evaluator.h"

#include <gtest/gtest.h>

#include <cmath>
#include <initializer_list>
#include <vector>

#include "fbx/model/fbx_anim_curve.h"
#include "fbx/model/fbx_anim_curve_node.h"
#include "fbx/model/fbx_anim_layer.h"
#include "fbx/model/fbx_anim_stack.h"
#include "fbx/model/fbx_manager.h"
#include "fbx/model/fbx_rotation.h"
#include "fbx/model/fbx_scene.h"

namespace {

FbxTime At(double seconds) { return FbxTime::FromSeconds(seconds); }

void expectMatrix(const FbxAMatrix& actual, const FbxAMatrix& expected, double tolerance = 1e-9) {
    for (int r = 0; r < 4; ++r)
        for (int c = 0; c < 4; ++c) EXPECT_NEAR(actual[r][c], expected[r][c], tolerance) << r << "," << c;
}

void expectRow(const FbxAMatrix& m, int row, double x, double y, double z) {
    EXPECT_NEAR(m[row][0], x, 1e-9) << "row " << row;
    EXPECT_NEAR(m[row][1], y, 1e-9) << "row " << row;
    EXPECT_NEAR(m[row][2], z, 1e-9) << "row " << row;
}

class FbxAnimEvaluatorTest : public ::testing::Test {
protected:
    void SetUp() override {
        manager = FbxManager::Create();
        scene = FbxScene::Create(manager, "Scene");
        stack = FbxAnimStack::Create(scene, "Take");
        base = FbxAnimLayer::Create(scene, "Base");
        stack->AddMember(base);
        node = Child(scene->GetRootNode(), "node");
    }
    void TearDown() override { manager->Destroy(); }

    FbxNode* Child(FbxNode* parent, const char* name) {
        FbxNode* child = FbxNode::Create(scene, name);
        parent->AddChild(child);
        return child;
    }
    FbxAnimLayer* Layer(const char* name, int blendMode, double weight) {
        FbxAnimLayer* layer = FbxAnimLayer::Create(scene, name);
        stack->AddMember(layer);
        layer->BlendMode().Set(blendMode);
        layer->Weight().Set(weight);
        return layer;
    }
    // A curve node on `property` in `layer` whose channels hold the given
    // values through one-key curves (a value is held by the channel itself
    // where `curves` is false).
    FbxAnimCurveNode* Animate(FbxProperty property, FbxAnimLayer* layer, std::initializer_list<double> values,
                              bool curves = true) {
        FbxAnimCurveNode* curveNode = property.GetCurveNode(layer, true);
        unsigned channel = 0;
        for (double value : values) {
            curveNode->SetChannelValue(channel, value);
            if (curves) {
                FbxAnimCurve* curve = FbxAnimCurve::Create(scene, "");
                curve->KeyAdd(FbxTime(0), static_cast<float>(value));
                curveNode->ConnectToChannel(curve, channel);
            }
            ++channel;
        }
        return curveNode;
    }
    FbxAnimCurve* Keys(FbxAnimCurveNode* curveNode, unsigned channel,
                       std::initializer_list<std::pair<double, float>> keys, uint32_t flags) {
        FbxAnimCurve* curve = FbxAnimCurve::Create(scene, "");
        for (const auto& [seconds, value] : keys) curve->KeyAdd(FbxTime::FromSeconds(seconds), value, flags);
        curveNode->ConnectToChannel(curve, channel);
        return curve;
    }
    FbxAMatrix Global(FbxNode* n, FbxTime time = FbxTime::Infinite()) { return n->EvaluateGlobalTransform(time); }

    FbxManager* manager = nullptr;
    FbxScene* scene = nullptr;
    FbxAnimStack* stack = nullptr;
    FbxAnimLayer* base = nullptr;
    FbxNode* node = nullptr;
};

TEST_F(FbxAnimEvaluatorTest, StaticTransformsAtInfiniteTimeOrWithoutStack) {
    EXPECT_EQ(manager->GetAnimationEvaluator()->GetContext(), stack);  // the first stack made
    EXPECT_STREQ(manager->GetAnimationEvaluator()->GetName(), "DefaultEvaluator");
    node->LclTranslation().Set(FbxDouble3(1, 2, 3));
    Animate(node->LclTranslation(), base, {7, 8, 9});
    expectRow(Global(node), 3, 1, 2, 3);
    expectRow(Global(node, At(1)), 3, 7, 8, 9);
    manager->GetAnimationEvaluator()->SetContext(nullptr);
    expectRow(Global(node, At(1)), 3, 1, 2, 3);

    // A curve node in layer 0 replaces the static value; a channel without
    // a curve gives its own value, not the property's.
    manager->GetAnimationEvaluator()->SetContext(stack);
    FbxAnimCurveNode* rotation = Animate(node->LclRotation(), base, {0, 0, 90}, false);
    node->LclRotation().Set(FbxDouble3(45, 45, 45));
    Keys(rotation, 0, {{0.0, 0.0f}}, KFCurve::eInterpolationLinear);
    FbxAMatrix m = Global(node, At(2));
    expectRow(m, 0, 0, 1, 0);
    expectRow(m, 3, 7, 8, 9);
    EXPECT_EQ(node->EvaluateLocalRotation(At(2))[2], 90.0);
}

TEST_F(FbxAnimEvaluatorTest, LayersBlendByModeWeightAndBypass) {
    Animate(node->LclTranslation(), base, {10, 0, 0});
    FbxAnimLayer* top = Layer("Top", FbxAnimLayer::eBlendAdditive, 50);
    Animate(node->LclTranslation(), top, {4, 0, 0});
    auto x = [&](FbxTime t) { return node->EvaluateLocalTranslation(t)[0]; };
    EXPECT_DOUBLE_EQ(x(At(1)), 12.0);
    top->BlendMode().Set(FbxAnimLayer::eBlendOverridePassthrough);
    EXPECT_DOUBLE_EQ(x(At(2)), 7.0);
    top->BlendMode().Set(FbxAnimLayer::eBlendOverride);
    top->Weight().Set(100.0);
    EXPECT_DOUBLE_EQ(x(At(3)), 4.0);
    top->BlendMode().Set(FbxAnimLayer::eBlendAdditive);
    top->SetBlendModeBypass(eFbxDouble3, true);  // the type of "Lcl Translation"
    EXPECT_DOUBLE_EQ(x(At(4)), 4.0);
    top->SetBlendModeBypass(24, false);
    EXPECT_FALSE(top->GetBlendModeBypass(eFbxDouble3));
    // An animated weight wins over the property's value.
    Animate(top->Weight(), top, {25});
    EXPECT_DOUBLE_EQ(x(At(5)), 11.0);
    top->Mute().Set(true);
    EXPECT_DOUBLE_EQ(x(At(6)), 10.0);

    // Rotations of a layer compose as turns.
    top->Mute().Set(false);
    top->Weight().DisconnectAllSrcObject();
    top->Weight().Set(50.0);
    Animate(node->LclRotation(), base, {0, 0, 60});
    Animate(node->LclRotation(), top, {0, 0, 30});
    EXPECT_NEAR(node->EvaluateLocalRotation(At(7))[2], 75.0, 1e-9);

    // A muted layer 0 leaves the others blending into zero: multiplying
    // scale gives 0.
    base->Mute().Set(true);
    Animate(node->LclScaling(), top, {2, 2, 2});
    EXPECT_EQ(node->EvaluateLocalScaling(At(8))[0], 0.0);
    top->ScaleAccumulationMode().Set(FbxAnimLayer::eScaleAdditive);
    EXPECT_DOUBLE_EQ(node->EvaluateLocalScaling(At(9))[0], 1.0);
}

TEST_F(FbxAnimEvaluatorTest, RotationOrderPreAndPostRotationNeedRotationActive) {
    node->LclRotation().Set(FbxDouble3(10, 20, 30));
    node->RotationOrder().Set(5);  // "Euler ZYX"
    node->UpdatePivotsAndLimitsFromProperties();
    expectMatrix(Global(node), RotationXYZ(FbxVector4(10, 20, 30)));
    node->RotationActive().Set(true);
    node->UpdatePivotsAndLimitsFromProperties();
    FbxAMatrix rx = RotationXYZ(FbxVector4(10, 0, 0)), ry = RotationXYZ(FbxVector4(0, 20, 0)),
               rz = RotationXYZ(FbxVector4(0, 0, 30));
    expectMatrix(Global(node, At(1)), rx * ry * rz);

    node->LclRotation().Set(FbxDouble3(0, 0, 0));
    node->RotationOrder().Set(0);
    node->PreRotation().Set(FbxDouble3(0, 0, 90));
    node->UpdatePivotsAndLimitsFromProperties();
    expectMatrix(Global(node, At(2)), RotationXYZ(FbxVector4(0, 0, 90)));
    node->PreRotation().Set(FbxDouble3(0, 0, 0));
    node->PostRotation().Set(FbxDouble3(0, 0, 90));
    node->UpdatePivotsAndLimitsFromProperties();
    expectMatrix(Global(node, At(3)), RotationXYZ(FbxVector4(0, 0, -90)));
}

TEST_F(FbxAnimEvaluatorTest, LimitsPivotsAndOffsets) {
    node->LclTranslation().Set(FbxDouble3(-1, 5, 0));
    node->TranslationMinX().Set(true);
    node->TranslationMax().Set(FbxDouble3(0, 2, 0));
    node->TranslationMaxY().Set(true);
    node->UpdatePivotsAndLimitsFromProperties();
    expectRow(Global(node), 3, -1, 5, 0);
    node->TranslationActive().Set(true);
    expectRow(Global(node, At(1)), 3, 0, 2, 0);
    node->RotationActive().Set(true);
    node->RotationMin().Set(FbxDouble3(0, 0, 10));
    node->RotationMinZ().Set(true);
    node->UpdatePivotsAndLimitsFromProperties();
    EXPECT_EQ(node->EvaluateLocalRotation(At(2))[2], 10.0);

    FbxNode* pivoted = Child(scene->GetRootNode(), "pivoted");
    pivoted->LclRotation().Set(FbxDouble3(0, 0, 90));
    pivoted->RotationPivot().Set(FbxDouble3(1, 0, 0));
    pivoted->UpdatePivotsAndLimitsFromProperties();
    expectRow(Global(pivoted), 3, 1, -1, 0);
    FbxNode* scaled = Child(scene->GetRootNode(), "scaled");
    scaled->LclScaling().Set(FbxDouble3(2, 2, 2));
    scaled->ScalingPivot().Set(FbxDouble3(1, 0, 0));
    scaled->RotationOffset().Set(FbxDouble3(0, 0, 5));
    scaled->UpdatePivotsAndLimitsFromProperties();
    expectRow(Global(scaled), 3, -1, 0, 5);
}

TEST_F(FbxAnimEvaluatorTest, InheritTypesAndTheLocalMatrix) {
    node->LclScaling().Set(FbxDouble3(2, 1, 1));
    node->LclTranslation().Set(FbxDouble3(5, 0, 0));
    FbxNode* child = Child(node, "child");
    child->LclRotation().Set(FbxDouble3(0, 0, 90));
    child->LclTranslation().Set(FbxDouble3(1, 1, 0));
    const double rows[3][2][3] = {{{0, 2, 0}, {-1, 0, 0}}, {{0, 1, 0}, {-2, 0, 0}}, {{0, 1, 0}, {-1, 0, 0}}};
    for (int type = 0; type < 3; ++type) {
        child->InheritType().Set(type);
        FbxAMatrix global = Global(child, FbxTime(type));
        expectRow(global, 0, rows[type][0][0], rows[type][0][1], rows[type][0][2]);
        expectRow(global, 1, rows[type][1][0], rows[type][1][1], rows[type][1][2]);
        expectRow(global, 3, 7, 1, 0);
        // The local matrix is the parent's global undone.
        expectMatrix(child->EvaluateLocalTransform(FbxTime(type)), Global(node).Inverse() * global, 1e-12);
    }
}

TEST_F(FbxAnimEvaluatorTest, RecordsAreReusedUntilTheTimeChanges) {
    FbxNode* child = Child(node, "child");
    child->LclTranslation().Set(FbxDouble3(1, 0, 0));
    expectRow(Global(child, At(1)), 3, 1, 0, 0);
    // Without property notification the records do not know of changes.
    node->LclTranslation().Set(FbxDouble3(0, 10, 0));
    child->LclTranslation().Set(FbxDouble3(2, 0, 0));
    expectRow(Global(child, At(1)), 3, 1, 0, 0);
    manager->GetAnimationEvaluator()->SetContext(stack);  // the same stack: kept
    expectRow(Global(child, At(1)), 3, 1, 0, 0);
    // Forcing recomputes the node asked for, not its parent.
    expectRow(child->EvaluateGlobalTransform(At(1), FbxNode::eSourcePivot, false, true), 3, 2, 0, 0);
    expectRow(Global(child, At(2)), 3, 2, 10, 0);
    // With notification on, a set invalidates the node.
    child->SetFlag(FbxObject::eNotifyPropertyChanges, true);
    child->LclTranslation().Set(FbxDouble3(3, 0, 0));
    expectRow(Global(child, At(2)), 3, 3, 10, 0);
}

TEST_F(FbxAnimEvaluatorTest, DeepChainsAndCyclesOfParents) {
    // Far deeper than a call stack would take if each parent were a call.
    const int depth = 30000;
    FbxNode* last = node;
    for (int i = 0; i < depth; ++i) {
        FbxNode* link = FbxNode::Create(manager, "link");
        last->ConnectSrcObject(link);
        link->LclTranslation().Set(FbxDouble3(1, 0, 0));
        last = link;
    }
    expectRow(Global(last), 3, depth, 0, 0);
    expectRow(last->EvaluateLocalTransform(), 3, 1, 0, 0);

    // Connections made by hand can close a cycle: evaluation still ends.
    FbxNode* a = FbxNode::Create(scene, "a");
    FbxNode* b = FbxNode::Create(scene, "b");
    a->ConnectSrcObject(b);
    b->ConnectSrcObject(a);
    a->LclTranslation().Set(FbxDouble3(1, 0, 0));
    b->LclTranslation().Set(FbxDouble3(0, 1, 0));
    expectRow(Global(a, At(1)), 3, 1, 1, 0);
    expectRow(Global(b, At(2)), 3, 1, 1, 0);
}

TEST_F(FbxAnimEvaluatorTest, AnimationIntervalSpansTheKeysOfANodeAndBelow) {
    FbxTimeSpan interval;
    FbxAnimCurveNode* single = Animate(node->LclTranslation(), base, {1, 2, 3});
    EXPECT_FALSE(scene->GetRootNode()->GetAnimationInterval(interval));  // one key per curve
    EXPECT_GT(interval.start, interval.stop);

    FbxNode* child = Child(node, "child");
    FbxAnimCurveNode* rotation = Animate(child->LclRotation(), base, {0, 0, 0}, false);
    Keys(rotation, 1, {{-1.0, 0.0f}, {2.0, 1.0f}}, KFCurve::eInterpolationLinear);
    Keys(single, 2, {{0.5, 0.0f}, {4.0, 1.0f}}, KFCurve::eInterpolationLinear);  // not the channel's first curve
    ASSERT_TRUE(scene->GetRootNode()->GetAnimationInterval(interval));
    EXPECT_EQ(interval.start, FbxTime::FromSeconds(-1.0));
    EXPECT_EQ(interval.stop, FbxTime::FromSeconds(2.0));
    EXPECT_FALSE(scene->GetRootNode()->GetAnimationInterval(interval, stack, 1));  // no layer 1

    FbxAnimLayer* other = Layer("Other", 0, 100);
    EXPECT_FALSE(scene->GetRootNode()->GetAnimationInterval(interval, stack, 1));  // nothing of the tree in it
    (void)other;
    stack->Destroy();
    EXPECT_FALSE(scene->GetRootNode()->GetAnimationInterval(interval));  // no stack
}

TEST_F(FbxAnimEvaluatorTest, QuaternionInterpolationTurnsTheShortWay) {
    FbxAnimCurveNode* rotation = Animate(node->LclRotation(), base, {0, 0, 0}, false);
    const uint32_t linear = KFCurve::eInterpolationLinear;
    FbxAnimCurve* x = Keys(rotation, 0, {{0.0, 0.0f}, {1.0, 0.0f}}, linear);
    Keys(rotation, 1, {{0.0, 0.0f}, {0.7, 0.0f}}, linear);  // other key times: read at channel 0's keys
    FbxAnimCurve* z = Keys(rotation, 2, {{0.0, 0.0f}, {1.0, 90.0f}}, linear);
    // Forced: a new mode leaves the cached records as they are.
    auto angles = [&](double seconds) {
        return node->EvaluateLocalRotation(FbxTime::FromSeconds(seconds), FbxNode::eSourcePivot, false, true);
    };

    node->QuaternionInterpolate().Set(FbxNode::eQuatAuto);
    node->UpdatePivotsAndLimitsFromProperties();
    EXPECT_EQ(rotation->GetQuaternionMode(), 2u);
    EXPECT_NEAR(angles(0.5)[2], 45.0, 1e-9);
    EXPECT_EQ(angles(1.0)[2], 90.0);  // on a key: the curves themselves

    // 350 degrees apart the Euler curves go the long way, the quaternions
    // the short one.
    z->GetKFCurve().KeySetValue(1, 350.0f);
    EXPECT_NEAR(angles(0.5)[2], -5.0, 1e-9);
    for (unsigned mode : {1u, 3u, 4u}) {
        rotation->SetQuaternionMode(mode);
        EXPECT_NEAR(angles(0.5)[2], -5.0, 1e-6) << mode;  // two keys: symmetric
    }
    EXPECT_FALSE(rotation->SetQuaternionMode(5));

    // Squad on a constant key of channel 0 holds the key's rotation.
    rotation->SetQuaternionMode(4);
    x->GetKFCurve().KeySetInterpolation(0, KFCurve::eInterpolationConstant);
    EXPECT_NEAR(angles(0.5)[2], 0.0, 1e-9);
    // A single key on channel 0: the channels apart.
    FbxAnimCurveNode* single = Animate(node->LclRotation(), Layer("Top", 1, 100), {0, 0, 0}, false);
    single->SetQuaternionMode(2);
    Keys(single, 0, {{0.0, 5.0f}}, linear);
    Keys(single, 2, {{0.0, 0.0f}, {1.0, 350.0f}}, linear);
    double values[3];
    single->Evaluate(values, FbxTime::FromSeconds(0.5));
    EXPECT_EQ(values[2], 175.0);
}

TEST_F(FbxAnimEvaluatorTest, PropertyValuesAndMadeCurveNodes) {
    FbxAnimEvaluator* evaluator = manager->GetAnimationEvaluator();
    PropertyEvalRecord& still = evaluator->GetPropertyValue(node->Visibility(), At(1));
    ASSERT_TRUE(still.valid);
    EXPECT_EQ(still.count, 1);
    EXPECT_EQ(still.values[0], 1.0);

    node->LclTranslation().Set(FbxDouble3(1, 2, 3));
    FbxAnimCurveNode* made = node->LclTranslation().GetCurveNode(base, true);
    ASSERT_NE(made, nullptr);
    EXPECT_EQ(made->GetChannelsCount(), 3u);
    EXPECT_STREQ(made->GetChannel(1).GetName(), "Y");
    EXPECT_EQ(made->GetChannelValue(2), 3.0);
    EXPECT_EQ(node->LclTranslation().GetCurveNode(base), made);
    EXPECT_EQ(node->LclTranslation().GetCurveNode(nullptr, true), nullptr);

    // Outside the node path layer 0 blends too: additive with weight 50.
    FbxAnimCurveNode* visibility = Animate(node->Visibility(), base, {0.5});
    EXPECT_STREQ(visibility->GetChannel(0).GetName(), "Visibility");
    base->Weight().Set(50.0);
    EXPECT_EQ(evaluator->GetPropertyValue(node->Visibility(), At(2)).values[0], 0.25);
    // A curve node that goes leaves no trace in the cache.
    visibility->Destroy();
    EXPECT_EQ(node->Visibility().GetCurveNode(base), nullptr);
    EXPECT_EQ(evaluator->GetPropertyValue(node->Visibility(), At(3)).values[0], 1.0);
}

}  // namespace
