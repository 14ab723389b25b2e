// Skins, clusters and poses, and the surface materials and file textures
// that the same files carry.
#include <gtest/gtest.h>

#include "fbx/model/fbx_cluster.h"
#include "fbx/model/fbx_file_texture.h"
#include "fbx/model/fbx_manager.h"
#include "fbx/model/fbx_mesh.h"
#include "fbx/model/fbx_node.h"
#include "fbx/model/fbx_pose.h"
#include "fbx/model/fbx_scene.h"
#include "fbx/model/fbx_skin.h"
#include "fbx/model/fbx_surface_phong.h"
#include "fbx/model/fbx_video.h"

namespace {

class DeformerTest : public ::testing::Test {
protected:
    void SetUp() override {
        manager = FbxManager::Create();
        scene = FbxScene::Create(manager, "scene");
    }
    void TearDown() override { manager->Destroy(); }

    FbxManager* manager = nullptr;
    FbxScene* scene = nullptr;
};

TEST_F(DeformerTest, SkinsClampBlendWeightsAndClustersKeepTheirs) {
    FbxSkin* skin = FbxSkin::Create(manager, "skin");
    skin->AddControlPointIndex(3, 1.5);
    skin->AddControlPointIndex(-1, 0.5);
    ASSERT_EQ(skin->GetControlPointIndicesCount(), 1);
    EXPECT_EQ(skin->GetControlPointBlendWeights()[0], 1.0);

    FbxCluster* cluster = FbxCluster::Create(manager, "cluster");
    EXPECT_EQ(cluster->GetLinkMode(), FbxCluster::eAdditive);
    EXPECT_EQ(cluster->GetLink(), nullptr);
    cluster->AddControlPointIndex(3, 1.5);
    cluster->AddControlPointIndex(-2, 1.0);
    cluster->SetControlPointIWCount(3);
    ASSERT_EQ(cluster->GetControlPointIndicesCount(), 3);
    EXPECT_EQ(cluster->GetControlPointWeights()[0], 1.5);
    EXPECT_EQ(cluster->GetControlPointWeights()[2], 0.0);

    FbxNode* first = FbxNode::Create(manager, "first");
    FbxNode* second = FbxNode::Create(manager, "second");
    cluster->SetLink(first);
    cluster->SetLink(second);
    cluster->SetLink(nullptr);
    EXPECT_EQ(cluster->GetLink(), second);
    EXPECT_STREQ(cluster->GetLinkName(), "second");
    EXPECT_EQ(cluster->GetSrcObjectCount<FbxNode>(), 1);

    // Getters rebuild the matrix from its translation, rotation and
    // scaling: shear does not come back.
    FbxAMatrix trs(FbxVector4(1, 2, 3), FbxVector4(10, 20, 30), FbxVector4(2, 2, 2));
    cluster->SetTransformLinkMatrix(trs);
    FbxAMatrix out;
    cluster->GetTransformLinkMatrix(out);
    for (int i = 0; i < 16; ++i) EXPECT_NEAR(out.Buffer()[i], trs.Buffer()[i], 1e-9);
    FbxAMatrix sheared;
    sheared.Set(1, 0, 0.5);
    cluster->SetTransformMatrix(sheared);
    EXPECT_EQ(cluster->GetTransform().Get(1, 0), 0.5);
    EXPECT_NE(cluster->GetTransformMatrix(out), sheared);

    ASSERT_TRUE(skin->AddCluster(cluster));
    FbxMesh* mesh = FbxMesh::Create(manager, "mesh");
    ASSERT_TRUE(skin->SetGeometry(mesh));
    EXPECT_EQ(skin->GetGeometry(), mesh);
    // A copy of the mesh carries a clone of the skin and its cluster, which
    // links the same node.
    FbxMesh* copy = FbxMesh::Create(manager, "copy");
    ASSERT_TRUE(copy->CopyFrom(*mesh));
    ASSERT_EQ(copy->GetDeformerCount(FbxDeformer::eSkin), 1);
    auto* cloned = static_cast<FbxSkin*>(copy->GetDeformer(0));
    EXPECT_NE(cloned, skin);
    ASSERT_EQ(cloned->GetClusterCount(), 1);
    EXPECT_NE(cloned->GetCluster(0), cluster);
    EXPECT_EQ(cloned->GetCluster(0)->GetLink(), second);
    EXPECT_EQ(cloned->GetCluster(0)->GetControlPointIndicesCount(), 3);
    EXPECT_EQ(cloned->GetControlPointBlendWeights()[0], 1.0);
    auto* clone = static_cast<FbxMesh*>(mesh->Clone());
    ASSERT_EQ(clone->GetDeformerCount(), 1);
    EXPECT_EQ(static_cast<FbxSkin*>(clone->GetDeformer(0))->GetCluster(0)->GetLink(), second);

    cluster->Reset();
    EXPECT_EQ(cluster->GetLink(), nullptr);
    EXPECT_EQ(cluster->GetControlPointIndicesCount(), 0);
    EXPECT_EQ(cluster->GetTransform(), FbxMatrix());
    EXPECT_EQ(skin->RemoveCluster(cluster), cluster);
    EXPECT_EQ(skin->GetClusterCount(), 0);
}

TEST_F(DeformerTest, PosesHoldOneEntryPerNode) {
    FbxPose* pose = FbxPose::Create(scene, "bind");
    pose->SetIsBindPose(true);
    FbxNode* a = FbxNode::Create(scene, "a");
    FbxNode* b = FbxNode::Create(scene, "b");
    FbxMatrix twice;
    twice.Set(0, 0, 2.0);
    EXPECT_EQ(pose->Add(nullptr, twice), -1);
    EXPECT_EQ(pose->Add(a, twice), 0);
    EXPECT_EQ(pose->Add(a, twice), 0);
    EXPECT_EQ(pose->Add(a, FbxMatrix()), 0);  // another matrix changes nothing
    EXPECT_EQ(pose->Add(b, FbxMatrix(), true), 1);
    ASSERT_EQ(pose->GetCount(), 2);
    EXPECT_EQ(pose->GetMatrix(0), twice);
    EXPECT_TRUE(pose->IsLocalMatrix(1));
    EXPECT_EQ(pose->GetNode(2), nullptr);
    EXPECT_EQ(pose->GetMatrix(-1), FbxMatrix());
    EXPECT_FALSE(pose->IsLocalMatrix(5));
    EXPECT_EQ(scene->GetPoseCount(), 1);

    // Another bind pose refuses a node held there with another matrix,
    // unless several bind poses are allowed.
    FbxPose* other = FbxPose::Create(scene, "other");
    other->SetIsBindPose(true);
    EXPECT_EQ(other->Add(a, FbxMatrix(), false, false), -1);
    EXPECT_EQ(other->Add(a, twice, false, false), 0);
    EXPECT_EQ(other->Add(b, twice, false, true), 1);

    pose->Remove(0);
    ASSERT_EQ(pose->GetCount(), 1);
    EXPECT_EQ(pose->GetNode(0), b);
    EXPECT_EQ(pose->FindProperty("Nodes").GetSrcObjectCount(), 1);
    pose->Remove(3);
    b->Destroy();
    EXPECT_EQ(pose->GetNode(0), nullptr);
    EXPECT_EQ(pose->GetCount(), 1);
    pose->Remove(0);
    EXPECT_EQ(pose->GetCount(), 0);
}

TEST_F(DeformerTest, MaterialsHaveTheirClassesPropertiesAndFileTexturesTheirNames) {
    auto* lambert = FbxSurfaceLambert::Create(manager, "lambert");
    auto* phong = FbxSurfacePhong::Create(manager, "phong");
    auto* plain = FbxSurfaceMaterial::Create(manager, "plain");
    EXPECT_EQ(plain->ShadingModel().Get(), "Unknown");
    EXPECT_EQ(lambert->ShadingModel().Get(), "Lambert");
    EXPECT_EQ(phong->ShadingModel().Get(), "Phong");
    EXPECT_FALSE(plain->FindProperty(FbxSurfaceMaterial::sDiffuse).IsValid());
    EXPECT_FALSE(lambert->FindProperty(FbxSurfaceMaterial::sSpecular, true).IsValid());
    EXPECT_EQ(lambert->Diffuse().Get(), FbxDouble3(0.8, 0.8, 0.8));
    EXPECT_EQ(lambert->TransparencyFactor().Get(), 0.0);
    FbxProperty specular = phong->FindProperty(FbxSurfaceMaterial::sSpecular, true);
    ASSERT_TRUE(specular.IsValid());
    EXPECT_EQ(specular.Get<FbxDouble3>(), FbxDouble3(0.2, 0.2, 0.2));
    EXPECT_EQ(phong->Shininess().Get(), 20.0);

    FbxFileTexture* texture = FbxFileTexture::Create(manager, "texture");
    EXPECT_STREQ(texture->GetRelativeFileName(), "");
    EXPECT_EQ(texture->UVSet().Get(), "default");
    FbxVideo* video = FbxVideo::Create(manager, "video");
    texture->ConnectSrcObject(video);
    EXPECT_TRUE(texture->SetRelativeFileName("maps/a.png"));
    EXPECT_FALSE(texture->SetRelativeFileName(""));
    EXPECT_FALSE(texture->SetFileName(nullptr));
    EXPECT_TRUE(texture->SetFileName("/art/maps/a.png"));
    EXPECT_STREQ(texture->GetRelativeFileName(), "maps/a.png");
    EXPECT_STREQ(video->GetFileName(), "/art/maps/a.png");
    EXPECT_STREQ(video->GetRelativeFileName(), "maps/a.png");
}

}  // namespace
