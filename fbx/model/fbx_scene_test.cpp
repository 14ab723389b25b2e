#include "fbx/model/fbx_scene.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "fbx/model/fbx_global_settings.h"
#include "fbx/model/fbx_manager.h"
#include "fbx/model/fbx_mesh.h"
#include "fbx/model/fbx_node.h"
#include "fbx/model/fbx_surface_material.h"

namespace {

class FbxSceneTest : public ::testing::Test {
protected:
    void SetUp() override { manager = FbxManager::Create(); }
    void TearDown() override { manager->Destroy(); }

    FbxManager* manager = nullptr;
};

std::vector<std::string> propertyNames(const FbxObject* object) {
    std::vector<std::string> names;
    for (FbxProperty p = object->GetFirstProperty(); p.IsValid(); p = object->GetNextProperty(p))
        names.push_back(p.GetName());
    return names;
}

TEST_F(FbxSceneTest, AFreshSceneHasAnEmptyRootNodeAndItsSettings) {
    FbxScene* scene = FbxScene::Create(manager, "Scene");
    FbxNode* root = scene->GetRootNode();
    ASSERT_NE(root, nullptr);
    EXPECT_STREQ(root->GetName(), "RootNode");
    EXPECT_EQ(root->GetScene(), scene);
    EXPECT_EQ(root->GetParent(), nullptr);
    EXPECT_EQ(root->GetChildCount(true), 0);
    EXPECT_EQ(root->GetNodeAttributeCount(), 0);
    EXPECT_EQ(root->GetNodeAttribute(), nullptr);
    EXPECT_EQ(root->GetMesh(), nullptr);
    EXPECT_EQ(root->GetSkeleton(), nullptr);
    EXPECT_EQ(root->GetGeometry(), nullptr);

    FbxGlobalSettings* settings = scene->GetGlobalSettings();
    ASSERT_NE(settings, nullptr);
    EXPECT_STREQ(settings->GetName(), "GlobalSettings");
    EXPECT_EQ(scene->GetSrcObject<FbxGlobalSettings>(0), settings);
    EXPECT_EQ(scene->GetSrcObjectCount(), 2);
}

TEST_F(FbxSceneTest, GlobalSettingsHoldTheirPropertiesInOrderWithDefaults) {
    FbxGlobalSettings* settings = FbxScene::Create(manager, "Scene")->GetGlobalSettings();
    std::vector<std::string> expected = {
        "UpAxis",        "UpAxisSign",     "FrontAxis",          "FrontAxisSign",   "CoordAxis",
        "CoordAxisSign", "OriginalUpAxis", "OriginalUpAxisSign", "UnitScaleFactor", "OriginalUnitScaleFactor",
        "AmbientColor",  "DefaultCamera",  "TimeMode",           "TimeProtocol",    "SnapOnFrameMode",
        "TimeSpanStart", "TimeSpanStop",   "CustomFrameRate",    "TimeMarker",      "CurrentTimeMarker"};
    EXPECT_EQ(propertyNames(settings), expected);

    EXPECT_EQ(settings->UpAxis().Get(), 1);
    EXPECT_EQ(settings->FrontAxis().Get(), 2);
    EXPECT_EQ(settings->CoordAxis().Get(), 0);
    EXPECT_EQ(settings->CoordAxisSign().Get(), 1);
    EXPECT_EQ(settings->OriginalUpAxis().Get(), -1);
    EXPECT_EQ(settings->UnitScaleFactor().Get(), 1.0);
    EXPECT_EQ(settings->AmbientColor().Get(), FbxDouble3(0, 0, 0));
    EXPECT_EQ(settings->AmbientColor().GetPropertyDataType(), FbxColor3DT);
    EXPECT_EQ(settings->DefaultCamera().Get(), "Producer Perspective");
    EXPECT_EQ(settings->TimeMode().Get(), 0);
    EXPECT_EQ(settings->TimeMode().GetEnumCount(), 19);
    EXPECT_STREQ(settings->TimeMode().GetEnumValue(7), "Frames30_DROP");
    EXPECT_STREQ(settings->TimeMode().GetEnumValue(18), "TimeModeCount");
    EXPECT_EQ(settings->TimeProtocol().Get(), 2);
    EXPECT_STREQ(settings->TimeProtocol().GetEnumValue(2), "DefaultProtocol");
    EXPECT_STREQ(settings->SnapOnFrameMode().GetEnumValue(3), "SnapAndPlayOnFrame");
    EXPECT_EQ(settings->TimeSpanStart().Get(), FbxTime(0));
    EXPECT_EQ(settings->TimeSpanStop().Get(), FbxTime(46186158000LL));
    EXPECT_EQ(settings->CustomFrameRate().Get(), -1.0);
    EXPECT_EQ(settings->TimeMarker().GetPropertyDataType().GetType(), eFbxUndefined);
    EXPECT_EQ(settings->CurrentTimeMarker().Get(), -1);
}

TEST_F(FbxSceneTest, ClearKeepsTheRootNodeAndRenewsEverythingElse) {
    int before = manager->GetObjectCount();
    FbxScene* scene = FbxScene::Create(manager, "Scene");
    FbxNode* root = scene->GetRootNode();
    scene->GetGlobalSettings()->UpAxis().Set(FbxInt(2));
    root->LclTranslation().Set(FbxDouble3(1, 2, 3));
    for (int i = 0; i < 3; ++i) {
        FbxNode* child = FbxNode::Create(scene, "child");
        root->AddChild(child);
        child->AddNodeAttribute(FbxMesh::Create(scene, "mesh"));
        child->ConnectSrcObject(FbxSurfaceMaterial::Create(scene, "material"));
    }
    EXPECT_EQ(root->GetChildCount(), 3);

    scene->Clear();
    EXPECT_EQ(scene->GetRootNode(), root);
    EXPECT_EQ(root->GetChildCount(), 0);
    EXPECT_EQ(scene->GetSrcObjectCount(), 2);
    EXPECT_EQ(manager->GetObjectCount(), before + 2);
    ASSERT_NE(scene->GetGlobalSettings(), nullptr);
    EXPECT_STREQ(scene->GetGlobalSettings()->GetName(), "GlobalSettings");
    EXPECT_EQ(scene->GetGlobalSettings()->UpAxis().Get(), 1);
    // The root node is the same object, with its own values.
    EXPECT_EQ(root->LclTranslation().Get(), FbxDouble3(1, 2, 3));

    scene->Destroy();
    EXPECT_EQ(manager->GetObjectCount(), before);
}

TEST_F(FbxSceneTest, ADestroyedRootNodeLeavesNoDanglingAnswer) {
    FbxScene* scene = FbxScene::Create(manager, "Scene");
    scene->GetRootNode()->Destroy();
    EXPECT_EQ(scene->GetRootNode(), nullptr);
    scene->Clear();
    ASSERT_NE(scene->GetRootNode(), nullptr);
    EXPECT_STREQ(scene->GetRootNode()->GetName(), "RootNode");
}

}  // namespace
