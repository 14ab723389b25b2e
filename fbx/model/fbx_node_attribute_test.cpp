#include "fbx/model/fbx_node_attribute.h"

#include <gtest/gtest.h>

#include <vector>

#include "fbx/model/fbx_manager.h"
#include "fbx/model/fbx_null.h"
#include "fbx/model/fbx_skeleton.h"

namespace {

class FbxNodeAttributeTest : public ::testing::Test {
protected:
    void SetUp() override { manager = FbxManager::Create(); }
    void TearDown() override { manager->Destroy(); }

    FbxManager* manager = nullptr;
};

TEST_F(FbxNodeAttributeTest, SkeletonsHaveTheirOwnColourDefaultEvenWhenMadeFirst) {
    // The skeleton is the first attribute of the process's fresh registry,
    // so its class page and its parent's are declared together.
    FbxSkeleton* skeleton = FbxSkeleton::Create(manager, "bone");
    FbxNull* null = FbxNull::Create(manager, "null");
    FbxNodeAttribute* plain = FbxNodeAttribute::Create(manager, "plain");
    EXPECT_EQ(skeleton->Color().Get(), FbxDouble3(0.8, 0.8, 0.8));
    EXPECT_EQ(null->Color().Get(), FbxDouble3(0, 0, 0));
    EXPECT_EQ(plain->Color().Get(), FbxDouble3(0, 0, 0));
    EXPECT_EQ(skeleton->Size().Get(), 100.0);
    EXPECT_EQ(skeleton->LimbLength().Get(), 1.0);

    skeleton->SetLimbNodeColor(FbxDouble3(1, 0, 0));
    EXPECT_EQ(skeleton->Color().Get(), FbxDouble3(1, 0, 0));
    EXPECT_EQ(FbxSkeleton::Create(manager, "other")->GetLimbNodeColor(), FbxDouble3(0.8, 0.8, 0.8));
}

TEST_F(FbxNodeAttributeTest, SkeletonTypesNameThemselvesAndRefuseOthers) {
    FbxSkeleton* skeleton = FbxSkeleton::Create(manager, "bone");
    EXPECT_STREQ(skeleton->GetTypeName(), "Root");
    EXPECT_TRUE(skeleton->SetSkeletonType(FbxSkeleton::eLimbNode));
    EXPECT_STREQ(skeleton->GetTypeName(), "LimbNode");
    EXPECT_EQ(skeleton->GetTypeFlags(), (std::vector<FbxString>{"Skeleton", "LimbNode"}));
    EXPECT_TRUE(skeleton->SetSkeletonType(FbxSkeleton::eEffector));
    EXPECT_STREQ(skeleton->GetTypeName(), "Root");
    EXPECT_FALSE(skeleton->SetSkeletonType(static_cast<FbxSkeleton::EType>(4)));
    EXPECT_EQ(skeleton->GetSkeletonType(), FbxSkeleton::eEffector);
}

}  // namespace
