#include "fbx/model/fbx_scene_conversion.h"

#include <gtest/gtest.h>

#include "fbx/model/fbx_anim_curve.h"
#include "fbx/model/fbx_anim_curve_node.h"
#include "fbx/model/fbx_anim_evaluator.h"
#include "fbx/model/fbx_anim_layer.h"
#include "fbx/model/fbx_anim_stack.h"
#include "fbx/model/fbx_axis_system.h"
#include "fbx/model/fbx_camera.h"
#include "fbx/model/fbx_cluster.h"
#include "fbx/model/fbx_global_settings.h"
#include "fbx/model/fbx_light.h"
#include "fbx/model/fbx_manager.h"
#include "fbx/model/fbx_mesh.h"
#include "fbx/model/fbx_node.h"
#include "fbx/model/fbx_pose.h"
#include "fbx/model/fbx_scene.h"
#include "fbx/model/fbx_skin.h"
#include "fbx/model/fbx_system_unit.h"

namespace {

void expectVector(const FbxDouble3& v, double x, double y, double z, double tolerance = 1e-12) {
    EXPECT_NEAR(v[0], x, tolerance);
    EXPECT_NEAR(v[1], y, tolerance);
    EXPECT_NEAR(v[2], z, tolerance);
}

void expectMatrix(const FbxAMatrix& actual, const FbxAMatrix& expected, double tolerance = 1e-9) {
    for (int r = 0; r < 4; ++r)
        for (int c = 0; c < 4; ++c) EXPECT_NEAR(actual[r][c], expected[r][c], tolerance) << r << "," << c;
}

FbxAMatrix Scaling(double f) {
    FbxAMatrix m;
    m.SetS(FbxVector4(f, f, f));
    return m;
}

// A Y-up centimetre scene (the defaults of fresh global settings) with one
// stack, a root child `top` with a child `deep`.
class SceneConversion : public ::testing::Test {
protected:
    void SetUp() override {
        manager = FbxManager::Create();
        scene = FbxScene::Create(manager, "Scene");
        stack = FbxAnimStack::Create(scene, "Take");
        layer = FbxAnimLayer::Create(scene, "Base");
        stack->AddMember(layer);
        manager->GetAnimationEvaluator()->SetContext(stack);
        top = Child(scene->GetRootNode(), "top");
        deep = Child(top, "deep");
    }
    void TearDown() override { manager->Destroy(); }

    FbxNode* Child(FbxNode* parent, const char* name) {
        FbxNode* child = FbxNode::Create(scene, name);
        parent->AddChild(child);
        return child;
    }
    FbxAnimCurve* Curve(FbxAnimCurveNode* curveNode, unsigned channel, float first, float second) {
        FbxAnimCurve* curve = FbxAnimCurve::Create(scene, "");
        curve->KeyAdd(FbxTime::FromSeconds(0), first);
        curve->KeyAdd(FbxTime::FromSeconds(1), second);
        curveNode->ConnectToChannel(curve, channel);
        return curve;
    }
    static void ToTarget(FbxScene* scene) {
        FbxAxisSystem(FbxAxisSystem::eZAxis, -FbxAxisSystem::eParityOdd, FbxAxisSystem::eRightHanded)
            .ConvertScene(scene);
        FbxSystemUnit(100.0, 1.0).ConvertScene(scene, FbxSystemUnit::ConversionOptions());
    }

    FbxManager* manager = nullptr;
    FbxScene* scene = nullptr;
    FbxAnimStack* stack = nullptr;
    FbxAnimLayer* layer = nullptr;
    FbxNode* top = nullptr;
    FbxNode* deep = nullptr;
};

TEST(AxisSystem, ConstructorArgumentsNameUpFrontAndCoord) {
    const FbxAxisSystem target(3, -2, 0);
    EXPECT_EQ(target.Up(), (FbxAxisSystem::AxisDef{2, 1}));
    EXPECT_EQ(target.Front(), (FbxAxisSystem::AxisDef{1, -1}));
    EXPECT_EQ(target.Coord(), (FbxAxisSystem::AxisDef{0, 1}));
    const FbxAxisSystem yUp(2, 2, 0);  // up +Y, front +Z, coord +X
    EXPECT_EQ(yUp.Front(), (FbxAxisSystem::AxisDef{2, 1}));
    EXPECT_EQ(yUp.Coord(), (FbxAxisSystem::AxisDef{0, 1}));
    EXPECT_EQ(FbxAxisSystem(2, 2, 1).Coord(), (FbxAxisSystem::AxisDef{0, -1}));
    // The conversion matrix is a signed permutation taking Y-up to Z-up.
    const FbxAMatrix c = target.ConversionMatrixFrom(yUp);
    const FbxVector4 moved = c.MultT(FbxVector4(1, 2, 3));
    expectVector(FbxDouble3(moved[0], moved[1], moved[2]), 1, -3, 2);
}

TEST_F(SceneConversion, AxisConversionMovesRootChildrenTheirCurvesAndWhatRecordsGlobalPositions) {
    top->LclTranslation().Set(FbxDouble3(1, 2, 3));
    top->LclRotation().Set(FbxDouble3(10, 20, 30));
    SetSourcePivot(*top, FbxPivotSet::eRotationPivot, FbxVector4(0.5, -1, 2));
    SetSourcePivot(*top, FbxPivotSet::ePreRotation, FbxVector4(0, 45, 0));
    deep->LclTranslation().Set(FbxDouble3(4, 5, 6));
    FbxAnimCurveNode* curveNode = top->LclTranslation().GetCurveNode(layer, true);
    FbxAnimCurve* y = Curve(curveNode, 1, 2, 7);
    FbxAnimCurve* z = Curve(curveNode, 2, 3, -5);
    top->TranslationActive().Set(true);
    top->TranslationMin().Set(FbxDouble3(-1, -2, -3));
    top->TranslationMax().Set(FbxDouble3(1, 2, 30));
    top->TranslationMaxZ().Set(true);
    top->RotationActive().Set(true);
    top->UpdatePivotsAndLimitsFromProperties();
    FbxNode* camera = Child(deep, "camera");
    FbxCamera* cameraAttribute = FbxCamera::Create(scene, "");
    camera->AddNodeAttribute(cameraAttribute);
    FbxProperty position = FbxProperty::Create(cameraAttribute, FbxDouble3DT, "Position");
    position.Set(FbxDouble3(0, 1, 0));
    FbxPose* pose = FbxPose::Create(scene, "pose");
    FbxAMatrix bind;
    bind.SetT(FbxVector4(0, 1, 0));
    pose->Add(deep, FbxMatrix(bind), true);
    pose->Add(top, FbxMatrix(bind), false);

    const FbxAMatrix c = FbxAxisSystem(3, -2, 0).ConversionMatrixFrom(FbxAxisSystem(2, 2, 0));
    const FbxAMatrix deepBefore = deep->EvaluateGlobalTransform(),
                     movingBefore = deep->EvaluateGlobalTransform(FbxTime::FromSeconds(0.5));
    FbxAxisSystem(3, -2, 0).ConvertScene(scene);

    expectVector(top->LclTranslation().Get(), 1, -3, 2);
    expectVector(deep->LclTranslation().Get(), 4, 5, 6);
    EXPECT_TRUE(top->RotationActive().Get());
    EXPECT_FALSE(deep->RotationActive().Get());
    // The whole picture turns: each global matrix is the old one followed by
    // the axis change, static and animated.
    expectMatrix(deep->EvaluateGlobalTransform(), c * deepBefore);
    expectMatrix(deep->EvaluateGlobalTransform(FbxTime::FromSeconds(0.5)), c * movingBefore);
    // The Y curve drives Z unchanged, the Z curve drives Y negated.
    EXPECT_EQ(curveNode->GetCurve(2), y);
    EXPECT_EQ(curveNode->GetCurve(1), z);
    EXPECT_EQ(z->KeyGetValue(0), -3.0f);
    EXPECT_EQ(z->KeyGetValue(1), 5.0f);
    EXPECT_EQ(y->KeyGetValue(1), 7.0f);
    // Z went to -Y: the interval [-3, 30] is mirrored and its flags swap.
    expectVector(top->TranslationMin().Get(), -1, -30, -2);
    expectVector(top->TranslationMax().Get(), 1, 3, 2);
    EXPECT_TRUE(top->TranslationMinY().Get());
    EXPECT_FALSE(top->TranslationMaxY().Get());
    expectVector(position.Get<FbxDouble3>(), 0, 0, 1);
    // The local entry stays; the global one comes back converted, last.
    ASSERT_EQ(pose->GetCount(), 2);
    EXPECT_EQ(pose->GetNode(0), deep);
    EXPECT_EQ(pose->GetMatrix(0), FbxMatrix(bind));
    EXPECT_EQ(pose->GetMatrix(1), FbxMatrix(c * bind));

    const FbxGlobalSettings* settings = scene->GetGlobalSettings();
    EXPECT_EQ(FbxAxisSystem::FromSettings(*settings), FbxAxisSystem(3, -2, 0));
    // A second conversion changes nothing, not even "RotationActive".
    top->RotationActive().Set(false);
    FbxAxisSystem(3, -2, 0).ConvertScene(scene);
    EXPECT_FALSE(top->RotationActive().Get());
    expectVector(top->LclTranslation().Get(), 1, -3, 2);
    FbxAxisSystem(3, -2, 0).ConvertScene(nullptr);
}

TEST_F(SceneConversion, UnitConversionScalesRootChildrenAndKeepsEveryPictureInPlaceButForTheScale) {
    top->LclTranslation().Set(FbxDouble3(100, 0, 0));
    top->LclRotation().Set(FbxDouble3(0, 30, 0));
    SetSourcePivot(*top, FbxPivotSet::eRotationPivot, FbxVector4(3, 4, 5));
    SetSourcePivot(*top, FbxPivotSet::eRotationOffset, FbxVector4(-1, 2, 0));
    top->ScalingPivot().Set(FbxDouble3(1, 1, 1));
    top->SetScalingPivot(FbxNode::eSourcePivot, FbxVector4(1, 1, 1));
    top->LclScaling().Set(FbxDouble3(2, 1, 1));
    deep->LclTranslation().Set(FbxDouble3(0, 50, 0));
    FbxAnimCurveNode* moves = top->LclTranslation().GetCurveNode(layer, true);
    FbxAnimCurve* x = Curve(moves, 0, 100, 300);
    FbxNode* other = Child(scene->GetRootNode(), "plain");
    other->LclTranslation().Set(FbxDouble3(100, 0, 0));
    deep->ScalingActive().Set(true);
    deep->ScalingMax().Set(FbxDouble3(4, 4, 4));

    FbxNode* lamp = Child(top, "lamp");
    FbxLight* light = FbxLight::Create(scene, "");
    lamp->AddNodeAttribute(light);
    FbxProperty decay = FbxProperty::Create(light, FbxIntDT, "DecayType");
    decay.Set(FbxInt(2));
    FbxProperty intensity = FbxProperty::Create(light, FbxDoubleDT, "Intensity");
    intensity.SetFlag(FbxPropertyFlags::eAnimatable, true);
    FbxAnimCurveNode* bright = FbxAnimCurveNode::CreateTypedCurveNode(intensity, layer);
    FbxAnimCurve* brightCurve = Curve(bright, 0, 100, 200);
    FbxNode* eye = Child(scene->GetRootNode(), "eye");
    FbxCamera* camera = FbxCamera::Create(scene, "");
    eye->AddNodeAttribute(camera);
    FbxProperty farPlane = FbxProperty::Create(camera, FbxDoubleDT, "FarPlane");
    farPlane.Set(1000.0);

    FbxNode* skinned = Child(scene->GetRootNode(), "skinned");
    FbxMesh* mesh = FbxMesh::Create(scene, "");
    skinned->AddNodeAttribute(mesh);
    FbxSkin* skin = FbxSkin::Create(scene, "");
    mesh->AddDeformer(skin);
    FbxCluster* cluster = FbxCluster::Create(scene, "");
    skin->AddCluster(cluster);
    FbxAMatrix link;
    link.SetT(FbxVector4(0, 200, 0));
    cluster->SetTransformLinkMatrix(link);

    FbxPose* pose = FbxPose::Create(scene, "pose");
    pose->Add(deep, FbxMatrix(link), true);
    pose->Add(other, FbxMatrix(link), true);

    const FbxAMatrix deepBefore = deep->EvaluateGlobalTransform();
    const FbxAMatrix movingBefore = deep->EvaluateGlobalTransform(FbxTime::FromSeconds(0.5));
    FbxSystemUnit::m.ConvertScene(scene, FbxSystemUnit::ConversionOptions());

    expectVector(other->LclTranslation().Get(), 1, 0, 0);
    expectVector(other->LclScaling().Get(), 0.01, 0.01, 0.01);
    expectVector(other->RotationPivot().Get(), 0, 0, 0, 1e-12);
    expectVector(other->RotationOffset().Get(), 0, 0, 0, 1e-12);
    expectVector(deep->LclTranslation().Get(), 0, 50, 0);
    EXPECT_FLOAT_EQ(x->KeyGetValue(1), 3.0f);
    expectMatrix(deep->EvaluateGlobalTransform(), Scaling(0.01) * deepBefore);
    expectMatrix(deep->EvaluateGlobalTransform(FbxTime::FromSeconds(0.5)), Scaling(0.01) * movingBefore);
    expectVector(deep->ScalingMax().Get(), 0.04, 0.04, 0.04);
    // Quadratic decay: intensity curves take f squared; the value stays.
    EXPECT_FLOAT_EQ(brightCurve->KeyGetValue(1), 0.02f);
    EXPECT_DOUBLE_EQ(intensity.Get<FbxDouble>(), 0.0);
    EXPECT_DOUBLE_EQ(farPlane.Get<FbxDouble>(), 10.0);
    FbxAMatrix converted;
    EXPECT_NEAR(cluster->GetTransformLinkMatrix(converted).GetT()[1], 2.0, 1e-12);
    // A local entry below another node stays; a root child's comes back
    // global and scaled.
    ASSERT_EQ(pose->GetCount(), 2);
    EXPECT_EQ(pose->GetMatrix(0), FbxMatrix(link));
    EXPECT_TRUE(pose->IsLocalMatrix(0));
    EXPECT_FALSE(pose->IsLocalMatrix(1));
    EXPECT_NEAR(pose->GetMatrix(1).Get(3, 1), 2.0, 1e-12);

    const FbxGlobalSettings* settings = scene->GetGlobalSettings();
    EXPECT_EQ(settings->UnitScaleFactor().Get(), 100.0);
    EXPECT_EQ(settings->OriginalUnitScaleFactor().Get(), 1.0);
    // A metre scene converts nothing, and records metres as its origin.
    FbxSystemUnit::m.ConvertScene(scene, FbxSystemUnit::ConversionOptions());
    expectVector(other->LclTranslation().Get(), 1, 0, 0);
    EXPECT_EQ(settings->OriginalUnitScaleFactor().Get(), 100.0);
}

TEST_F(SceneConversion, GeometryStaysAsItIs) {
    FbxNode* shape = Child(scene->GetRootNode(), "shape");
    FbxMesh* mesh = FbxMesh::Create(scene, "");
    mesh->InitControlPoints(1);
    mesh->SetControlPointAt(FbxVector4(1, 2, 3), 0);
    shape->AddNodeAttribute(mesh);
    ToTarget(scene);
    EXPECT_EQ(mesh->GetControlPointAt(0), FbxVector4(1, 2, 3));
}

}  // namespace
