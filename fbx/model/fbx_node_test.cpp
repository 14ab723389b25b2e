#include "fbx/model/fbx_node.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "fbx/model/fbx_camera.h"
#include "fbx/model/fbx_further_classes.h"
#include "fbx/model/fbx_manager.h"
#include "fbx/model/fbx_mesh.h"
#include "fbx/model/fbx_null.h"
#include "fbx/model/fbx_rotation.h"
#include "fbx/model/fbx_scene.h"
#include "fbx/model/fbx_shape.h"
#include "fbx/model/fbx_skeleton.h"
#include "fbx/model/fbx_status.h"
#include "fbx/model/fbx_surface_phong.h"

namespace {

class FbxNodeTest : public ::testing::Test {
protected:
    void SetUp() override {
        manager = FbxManager::Create();
        scene = FbxScene::Create(manager, "Scene");
        node = FbxNode::Create(scene, "node");
    }
    void TearDown() override { manager->Destroy(); }

    // True while the manager still lists `object`, without touching it.
    bool Alive(const FbxObject* object) const {
        for (int i = 0; i < scene->GetSrcObjectCount(); ++i)
            if (scene->GetSrcObject(i) == object) return true;
        return false;
    }

    FbxManager* manager = nullptr;
    FbxScene* scene = nullptr;
    FbxNode* node = nullptr;
};

void expectVector(const FbxVector4& v, double x, double y, double z) {
    EXPECT_EQ(v[0], x);
    EXPECT_EQ(v[1], y);
    EXPECT_EQ(v[2], z);
}

TEST_F(FbxNodeTest, DefaultsLiveOnTheClass) {
    EXPECT_EQ(node->LclScaling().Get(), FbxDouble3(1, 1, 1));
    EXPECT_EQ(node->GeometricScaling().Get(), FbxDouble3(1, 1, 1));
    EXPECT_EQ(node->DefaultAttributeIndex().Get(), -1);
    EXPECT_TRUE(node->LclTranslation().GetFlag(FbxPropertyFlags::eAnimatable));
    EXPECT_FALSE(node->GetProperty(FbxNode::ePropertyCount).IsValid());
    // A fresh node stores no value of its own, and a value set on one node
    // does not show on another.
    for (const FbxPropertyPage::Entry& entry : node->GetPropertyPage()->Entries()) EXPECT_FALSE(entry.value);
    FbxNode* other = FbxNode::Create(scene, "other");
    other->LclScaling().Set(FbxDouble3(2, 2, 2));
    EXPECT_EQ(node->LclScaling().Get(), FbxDouble3(1, 1, 1));
}

TEST_F(FbxNodeTest, ChildrenAreSourceNodesAndMoveBetweenParents) {
    FbxNode* a = FbxNode::Create(scene, "a");
    FbxNode* b = FbxNode::Create(scene, "b");
    FbxNode* c = FbxNode::Create(scene, "c");
    EXPECT_FALSE(node->AddChild(nullptr));
    EXPECT_TRUE(node->AddChild(a));
    node->ConnectSrcObject(FbxNull::Create(scene, "not a child"));
    EXPECT_TRUE(node->AddChild(b));
    EXPECT_TRUE(a->AddChild(c));
    EXPECT_EQ(node->GetChildCount(), 2);
    EXPECT_EQ(node->GetChildCount(true), 3);
    EXPECT_EQ(node->GetChild(1), b);
    EXPECT_EQ(node->GetChild(2), nullptr);
    EXPECT_EQ(node->GetChild(-1), nullptr);
    EXPECT_EQ(c->GetParent(), a);

    // Moving c under b takes it from a.
    EXPECT_TRUE(b->AddChild(c));
    EXPECT_EQ(c->GetParent(), b);
    EXPECT_EQ(a->GetChildCount(), 0);
    EXPECT_EQ(node->GetChildCount(true), 3);

    // A node cannot go under itself or under its own descendant.
    EXPECT_FALSE(c->AddChild(c));
    EXPECT_FALSE(c->AddChild(node));
    EXPECT_EQ(node->GetParent(), nullptr);

    EXPECT_EQ(node->RemoveChild(c), nullptr);
    EXPECT_EQ(b->RemoveChild(c), c);
    EXPECT_EQ(c->GetParent(), nullptr);
    EXPECT_EQ(node->GetChildCount(true), 2);

    // A cycle made by raw connections does not hang the recursive count.
    c->ConnectSrcObject(node);
    node->ConnectSrcObject(c);
    EXPECT_EQ(node->GetChildCount(true), 3);
}

TEST_F(FbxNodeTest, MeshIsFoundBesideTheDefaultAttributeButSkeletonOnlyAsDefault) {
    FbxNull* null = FbxNull::Create(scene, "null");
    FbxMesh* mesh = FbxMesh::Create(scene, "mesh");
    FbxSkeleton* skeleton = FbxSkeleton::Create(scene, "skeleton");
    EXPECT_TRUE(node->AddNodeAttribute(null));
    EXPECT_EQ(node->GetDefaultNodeAttributeIndex(), 0);
    EXPECT_TRUE(node->AddNodeAttribute(skeleton));
    EXPECT_TRUE(node->AddNodeAttribute(mesh));
    EXPECT_FALSE(node->AddNodeAttribute(mesh));
    EXPECT_FALSE(node->AddNodeAttribute(nullptr));
    EXPECT_EQ(node->GetNodeAttributeCount(), 3);

    EXPECT_EQ(node->GetNodeAttribute(), null);
    EXPECT_EQ(node->GetMesh(), mesh);
    EXPECT_EQ(node->GetGeometry(), nullptr);
    EXPECT_EQ(node->GetSkeleton(), nullptr);

    EXPECT_TRUE(node->SetDefaultNodeAttributeIndex(1));
    EXPECT_EQ(node->GetSkeleton(), skeleton);
    EXPECT_TRUE(node->SetDefaultNodeAttributeIndex(2));
    EXPECT_EQ(node->GetGeometry(), mesh);
    EXPECT_EQ(node->GetMesh(), mesh);
    EXPECT_EQ(node->GetSkeleton(), nullptr);

    // A geometry that is no mesh is the geometry, and the mesh is looked for
    // among the others.
    FbxNode* other = FbxNode::Create(scene, "other");
    FbxLine* line = FbxLine::Create(scene, "line");
    other->AddNodeAttribute(line);
    EXPECT_EQ(other->GetGeometry(), line);
    EXPECT_EQ(other->GetMesh(), nullptr);
    other->AddNodeAttribute(FbxShape::Create(scene, "shape"));
    EXPECT_EQ(other->GetMesh(), nullptr);
}

TEST_F(FbxNodeTest, AttributeTypesFollowTheNearestClassOfTheChain) {
    EXPECT_EQ(FbxNodeAttribute::Create(scene, "a")->GetAttributeType(), FbxNodeAttribute::eUnknown);
    EXPECT_EQ(FbxMarker::Create(scene, "a")->GetAttributeType(), FbxNodeAttribute::eMarker);
    EXPECT_EQ(FbxMesh::Create(scene, "a")->GetAttributeType(), FbxNodeAttribute::eMesh);
    EXPECT_EQ(FbxCamera::Create(scene, "a")->GetAttributeType(), FbxNodeAttribute::eCamera);
    EXPECT_EQ(FbxCameraStereo::Create(scene, "a")->GetAttributeType(), FbxNodeAttribute::eCameraStereo);
    EXPECT_EQ(FbxShape::Create(scene, "a")->GetAttributeType(), FbxNodeAttribute::eShape);
    EXPECT_EQ(FbxLine::Create(scene, "a")->GetAttributeType(), FbxNodeAttribute::eLine);
}

TEST_F(FbxNodeTest, SetNodeAttributeOnAnAttachedAttributeOnlyMovesTheDefault) {
    FbxNull* a = FbxNull::Create(scene, "a");
    FbxNull* b = FbxNull::Create(scene, "b");
    FbxMesh* c = FbxMesh::Create(scene, "c");
    node->AddNodeAttribute(a);
    node->AddNodeAttribute(b);
    node->AddNodeAttribute(c);
    EXPECT_EQ(node->SetNodeAttribute(c), nullptr);
    EXPECT_EQ(node->GetDefaultNodeAttributeIndex(), 2);
    EXPECT_EQ(node->GetNodeAttributeCount(), 3);
    EXPECT_EQ(node->GetNodeAttributeByIndex(0), a);
}

TEST_F(FbxNodeTest, SetNodeAttributeReplacesAllGivingBackTheDefault) {
    FbxNull* a = FbxNull::Create(scene, "a");
    FbxNull* b = FbxNull::Create(scene, "b");
    FbxNull* shared = FbxNull::Create(scene, "shared");
    node->AddNodeAttribute(a);
    node->AddNodeAttribute(b);
    node->AddNodeAttribute(shared);
    FbxNode* other = FbxNode::Create(scene, "other");
    other->AddNodeAttribute(shared);
    node->SetDefaultNodeAttributeIndex(1);

    FbxSkeleton* skeleton = FbxSkeleton::Create(scene, "skeleton");
    EXPECT_EQ(node->SetNodeAttribute(skeleton), b);
    EXPECT_FALSE(Alive(a));
    EXPECT_TRUE(Alive(b));
    EXPECT_EQ(b->GetNodeCount(), 0);
    // The other node keeps its attribute.
    ASSERT_TRUE(Alive(shared));
    EXPECT_EQ(other->GetNodeAttribute(), shared);
    EXPECT_EQ(node->GetNodeAttributeCount(), 1);
    EXPECT_EQ(node->GetSkeleton(), skeleton);
    EXPECT_EQ(skeleton->GetNode(), node);

    EXPECT_EQ(node->SetNodeAttribute(nullptr), skeleton);
    EXPECT_EQ(node->GetNodeAttributeCount(), 0);
    EXPECT_EQ(node->GetDefaultNodeAttributeIndex(), -1);
    EXPECT_EQ(node->GetNodeAttribute(), nullptr);
}

TEST_F(FbxNodeTest, RemovingAttributesKeepsTheDefaultOnTheSameAttribute) {
    FbxNull* a = FbxNull::Create(scene, "a");
    FbxNull* b = FbxNull::Create(scene, "b");
    FbxNull* c = FbxNull::Create(scene, "c");
    node->AddNodeAttribute(a);
    node->AddNodeAttribute(b);
    node->AddNodeAttribute(c);
    node->SetDefaultNodeAttributeIndex(2);
    EXPECT_EQ(node->RemoveNodeAttribute(a), 0);
    EXPECT_EQ(node->GetNodeAttribute(), c);
    EXPECT_EQ(node->GetNodeAttributeIndex(c), 1);
    EXPECT_EQ(node->RemoveNodeAttribute(c), 1);
    EXPECT_EQ(node->GetNodeAttribute(), b);
    EXPECT_EQ(node->RemoveNodeAttribute(b), 0);
    EXPECT_EQ(node->GetDefaultNodeAttributeIndex(), -1);
    EXPECT_TRUE(Alive(a) && Alive(b) && Alive(c));
}

TEST_F(FbxNodeTest, FailuresGiveTheirResultsAndStatusMessages) {
    FbxNull* attached = FbxNull::Create(scene, "attached");
    FbxNull* stranger = FbxNull::Create(scene, "stranger");
    node->AddNodeAttribute(attached);

    FbxStatus status;
    EXPECT_EQ(node->GetNodeAttributeIndex(stranger, &status), -1);
    EXPECT_EQ(status.GetCode(), FbxStatus::eFailure);
    EXPECT_STREQ(status.GetErrorString(), "Cannot find node attribute");
    status.Clear();
    EXPECT_EQ(node->RemoveNodeAttribute(stranger, &status), -1);
    EXPECT_STREQ(status.GetErrorString(), "Cannot find node attribute");
    status.Clear();
    EXPECT_EQ(node->RemoveNodeAttribute(nullptr, &status), -1);
    EXPECT_STREQ(status.GetErrorString(), "Cannot find node attribute");
    EXPECT_EQ(node->GetNodeAttributeIndex(nullptr), -1);
    EXPECT_EQ(node->RemoveNodeAttribute(stranger), -1);

    for (int bad : {-1, 1, 1000}) {
        status.Clear();
        EXPECT_FALSE(node->SetDefaultNodeAttributeIndex(bad, &status));
        EXPECT_EQ(status.GetCode(), FbxStatus::eIndexOutOfRange);
        EXPECT_FALSE(node->SetDefaultNodeAttributeIndex(bad));
    }
    EXPECT_EQ(node->GetDefaultNodeAttributeIndex(), 0);
    EXPECT_EQ(node->GetNodeAttributeByIndex(1), nullptr);
    EXPECT_EQ(node->GetNodeAttributeByIndex(-1), nullptr);
    EXPECT_EQ(node->GetMaterial(0), nullptr);

    // A default index that a file set out of range gives no attribute.
    node->DefaultAttributeIndex().Set(FbxInt(5));
    EXPECT_EQ(node->GetNodeAttribute(), nullptr);
    EXPECT_EQ(node->GetSkeleton(), nullptr);
    EXPECT_EQ(node->GetMesh(), nullptr);
}

TEST_F(FbxNodeTest, MaterialsAreTheSourceMaterialsInConnectionOrder) {
    FbxSurfacePhong* first = FbxSurfacePhong::Create(scene, "first");
    FbxSurfaceMaterial* second = FbxSurfaceMaterial::Create(scene, "second");
    node->ConnectSrcObject(first);
    node->AddNodeAttribute(FbxMesh::Create(scene, "mesh"));
    node->ConnectSrcObject(second);
    EXPECT_EQ(node->GetMaterialCount(), 2);
    EXPECT_EQ(node->GetMaterial(0), first);
    EXPECT_EQ(node->GetMaterial(1), second);
    EXPECT_EQ(node->GetMaterial(2), nullptr);
}

TEST_F(FbxNodeTest, PivotSetsReadDefaultsUntilWrittenAndSetZeroFeedsTheTransform) {
    EXPECT_TRUE(node->IsPivotSetUnset(FbxNode::eSourcePivot));
    EXPECT_EQ(&node->GetPivotSet(FbxNode::eSourcePivot), &FbxPivotSet::Empty());
    expectVector(node->GetGeometricScaling(FbxNode::eSourcePivot), 1, 1, 1);
    expectVector(node->GetGeometricScaling(FbxNode::eDestinationPivot), 1, 1, 1);
    expectVector(node->GetRotationPivot(FbxNode::eSourcePivot), 0, 0, 0);
    expectVector(node->GetGeometricScaling(static_cast<FbxNode::EPivotSet>(7)), 1, 1, 1);

    node->SetRotationPivot(FbxNode::eDestinationPivot, FbxVector4(1, 2, 3));
    expectVector(node->GetRotationPivot(FbxNode::eDestinationPivot), 1, 2, 3);
    expectVector(node->GetRotationPivot(FbxNode::eSourcePivot), 0, 0, 0);
    EXPECT_FALSE(node->GetTransform().HasRotationPivot());

    node->SetRotationPivot(FbxNode::eSourcePivot, FbxVector4(4, 5, 6));
    node->SetScalingOffset(FbxNode::eSourcePivot, FbxVector4(0, 0, 0));
    node->SetPreRotation(FbxNode::eSourcePivot, FbxVector4(30, 0, 0));
    node->SetGeometricScaling(FbxNode::eSourcePivot, FbxVector4(2, 2, 2));
    EXPECT_FALSE(node->IsPivotSetUnset(FbxNode::eSourcePivot));
    const TransformRecord& transform = node->GetTransform();
    EXPECT_TRUE(transform.HasRotationPivot());
    expectVector(transform.rotationPivot, 4, 5, 6);
    EXPECT_FALSE(transform.HasScalingOffset());
    EXPECT_TRUE(transform.rotationSpace.HasPreMatrix());
    EXPECT_EQ(transform.rotationSpace.preMatrix, RotationXYZ(FbxVector4(30, 0, 0)));
    EXPECT_FALSE(transform.rotationSpace.HasPostMatrix());
    expectVector(node->GetGeometricScaling(FbxNode::eSourcePivot), 2, 2, 2);
    expectVector(node->GetScalingPivot(FbxNode::eSourcePivot), 0, 0, 0);

    // Back to zero clears the flags.
    node->SetRotationPivot(FbxNode::eSourcePivot, FbxVector4(0, 0, 0));
    node->SetPreRotation(FbxNode::eSourcePivot, FbxVector4(0, 0, 0));
    EXPECT_FALSE(transform.HasRotationPivot());
    EXPECT_FALSE(transform.rotationSpace.HasPreMatrix());
    EXPECT_TRUE(transform.rotationSpace.preMatrix.IsIdentity());
}

TEST_F(FbxNodeTest, UpdateFromPropertiesFillsPivotSetZeroAndTheTransform) {
    node->GeometricTranslation().Set(FbxDouble3(1, 2, 3));
    node->RotationPivot().Set(FbxDouble3(0, 5, 0));
    node->PostRotation().Set(FbxDouble3(0, 0, 45));
    node->RotationOrder().Set(FbxInt(5));
    node->RotationSpaceForLimitOnly().Set(true);
    expectVector(node->GetGeometricTranslation(FbxNode::eSourcePivot), 0, 0, 0);

    node->UpdatePivotsAndLimitsFromProperties();
    expectVector(node->GetGeometricTranslation(FbxNode::eSourcePivot), 1, 2, 3);
    expectVector(node->GetRotationPivot(FbxNode::eSourcePivot), 0, 5, 0);
    expectVector(node->GetGeometricScaling(FbxNode::eSourcePivot), 1, 1, 1);
    expectVector(node->GetGeometricTranslation(FbxNode::eDestinationPivot), 0, 0, 0);
    EXPECT_EQ(node->GetRotationOrder(FbxNode::eSourcePivot), 5);
    EXPECT_TRUE(node->GetPivotSet(FbxNode::eSourcePivot).rotationSpaceForLimitOnly);

    const TransformRecord& transform = node->GetTransform();
    EXPECT_EQ(transform.rotationSpace.rotationOrder, eEulerZYX);
    EXPECT_TRUE(transform.rotationSpaceForLimitOnly);
    EXPECT_EQ(transform.flags, static_cast<uint32_t>(TransformRecord::eRotationPivot));
    EXPECT_EQ(transform.rotationSpace.flags, static_cast<uint32_t>(RotationSpaceRecord::ePostMatrix));
    EXPECT_EQ(transform.rotationSpace.postMatrix, RotationXYZ(FbxVector4(0, 0, 45)));
}

TEST_F(FbxNodeTest, UpdateFromPropertiesRewritesTheLimits) {
    node->UpdatePivotsAndLimitsFromProperties();
    const TransformRecord& transform = node->GetTransform();
    EXPECT_EQ(transform.scalingLimits.mask, 0);
    expectVector(transform.scalingLimits.max, 1, 1, 1);
    // A node with nothing but defaults keeps sharing the empty set.
    EXPECT_EQ(&node->GetPivotSet(FbxNode::eSourcePivot), &FbxPivotSet::Empty());
    EXPECT_FALSE(node->IsPivotSetUnset(FbxNode::eSourcePivot));

    node->RotationActive().Set(true);
    node->RotationMinX().Set(true);
    node->RotationMaxZ().Set(true);
    node->RotationMin().Set(FbxDouble3(-10, -20, -30));
    node->RotationMax().Set(FbxDouble3(10, 20, 30));
    node->TranslationActive().Set(true);
    node->TranslationMaxY().Set(true);
    node->TranslationMax().Set(FbxDouble3(0, 7, 0));
    node->UpdatePivotsAndLimitsFromProperties();
    EXPECT_EQ(transform.rotationLimits.mask, LimitRecord::eActive | LimitRecord::eMinX | LimitRecord::eMaxZ);
    EXPECT_TRUE(transform.rotationLimits.GetActive());
    EXPECT_TRUE(transform.rotationLimits.GetMinActive(0));
    EXPECT_FALSE(transform.rotationLimits.GetMinActive(1));
    EXPECT_TRUE(transform.rotationLimits.GetMaxActive(2));
    expectVector(transform.rotationLimits.min, -10, -20, -30);
    expectVector(transform.rotationLimits.max, 10, 20, 30);
    EXPECT_EQ(transform.translationLimits.mask, LimitRecord::eActive | LimitRecord::eMaxY);
    expectVector(transform.translationLimits.max, 0, 7, 0);

    node->RotationActive().Set(false);
    node->UpdatePivotsAndLimitsFromProperties();
    EXPECT_FALSE(transform.rotationLimits.GetActive());
    EXPECT_TRUE(transform.translationLimits.GetActive());
}

TEST_F(FbxNodeTest, ClonesAndCopiesTakeThePivotsAlong) {
    node->SetRotationPivot(FbxNode::eSourcePivot, FbxVector4(1, 2, 3));
    node->SetGeometricScaling(FbxNode::eDestinationPivot, FbxVector4(2, 2, 2));
    node->SetCullingType(FbxNode::eCullingOnCW);
    auto* clone = static_cast<FbxNode*>(node->Clone(scene));
    ASSERT_NE(clone, nullptr);
    expectVector(clone->GetRotationPivot(FbxNode::eSourcePivot), 1, 2, 3);
    expectVector(clone->GetGeometricScaling(FbxNode::eDestinationPivot), 2, 2, 2);
    EXPECT_TRUE(clone->GetTransform().HasRotationPivot());
    EXPECT_EQ(clone->GetCullingType(), FbxNode::eCullingOnCW);
    // The sets are the clone's own.
    node->SetRotationPivot(FbxNode::eSourcePivot, FbxVector4(0, 0, 0));
    expectVector(clone->GetRotationPivot(FbxNode::eSourcePivot), 1, 2, 3);

    EXPECT_FALSE(clone->CopyFrom(*scene));

    FbxSkeleton* bone = FbxSkeleton::Create(scene, "bone");
    bone->SetSkeletonType(FbxSkeleton::eLimbNode);
    EXPECT_EQ(static_cast<FbxSkeleton*>(bone->Clone())->GetSkeletonType(), FbxSkeleton::eLimbNode);
}

}  // namespace
