#include "fbx/model/fbx_manager.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "fbx/model/fbx_cluster.h"
#include "fbx/model/fbx_connection_point.h"
#include "fbx/model/fbx_further_classes.h"
#include "fbx/model/fbx_library.h"
#include "fbx/model/fbx_mesh.h"
#include "fbx/model/fbx_model_testing.h"
#include "fbx/model/fbx_node.h"
#include "fbx/model/fbx_null.h"
#include "fbx/model/fbx_scene.h"
#include "fbx/model/fbx_skeleton.h"
#include "fbx/model/fbx_skin.h"
#include "fbx/model/fbx_surface_phong.h"

namespace {

class FbxManagerTest : public ::testing::Test {
protected:
    void SetUp() override { manager = FbxManager::Create(); }
    void TearDown() override { manager->Destroy(); }

    FbxManager* manager = nullptr;
};

TEST_F(FbxManagerTest, ClassesAreFoundByNameAndByFileWords) {
    EXPECT_EQ(manager->FindClass("FbxMesh"), FbxMesh::ClassId);
    EXPECT_FALSE(manager->FindClass("FbxNoSuchClass").IsValid());
    EXPECT_FALSE(manager->FindClass(nullptr).IsValid());

    EXPECT_EQ(manager->FindFileClass("Geometry", "Mesh"), FbxMesh::ClassId);
    EXPECT_EQ(manager->FindFileClass("Model", ""), FbxNode::ClassId);
    EXPECT_EQ(manager->FindFileClass("NodeAttribute", "Null"), FbxNull::ClassId);
    // Lambert and Phong share the words of the base class, which came first.
    EXPECT_EQ(manager->FindFileClass("Material", ""), FbxSurfaceMaterial::ClassId);
    // An empty subtype matches only an empty subtype, and back.
    EXPECT_FALSE(manager->FindFileClass("Material", "Phong").IsValid());
    EXPECT_FALSE(manager->FindFileClass("Geometry", "Nothing").IsValid());
    EXPECT_FALSE(manager->FindFileClass("Unknown", "").IsValid());
    EXPECT_FALSE(manager->FindFileClass(nullptr, nullptr).IsValid());

    EXPECT_TRUE(FbxMesh::ClassId.Is(FbxNodeAttribute::ClassId));
    EXPECT_FALSE(FbxNodeAttribute::ClassId.Is(FbxMesh::ClassId));
    EXPECT_TRUE(FbxMesh::ClassId.Is(FbxMesh::ClassId));
    EXPECT_FALSE(FbxClassId().Is(FbxObject::ClassId));
    EXPECT_EQ(FbxSurfacePhong::ClassId.GetParent(), FbxSurfaceLambert::ClassId);

    // Empty words are taken from the nearest ancestor on request.
    EXPECT_STREQ(FbxSkeleton::ClassId.GetFbxFileTypeName(), "");
    EXPECT_STREQ(FbxSkeleton::ClassId.GetFbxFileTypeName(true), "NodeAttribute");
    EXPECT_STREQ(FbxMesh::ClassId.GetObjectTypePrefix(), "Geometry::");
    EXPECT_STREQ(FbxMesh::ClassId.GetFbxFileSubTypeName(), "Mesh");
    EXPECT_STREQ(FbxClassId().GetName(), "");
    EXPECT_STREQ(FbxClassId().GetFbxFileTypeName(true), "");
}

TEST_F(FbxManagerTest, ObjectsAreMadeByClassAndListedByKind) {
    int objectsBefore = manager->GetObjectCount();
    EXPECT_EQ(manager->DocumentCount(), 3);  // the library documents
    EXPECT_STREQ(manager->GetRootLibrary()->GetName(), "Fbx Libraries");
    EXPECT_STREQ(manager->GetUserLibraries()->GetName(), "Fbx User   Libraries");
    EXPECT_TRUE(manager->GetSystemLibraries()->GetFlag(FbxObject::eSystemFlag));
    EXPECT_EQ(manager->GetSystemLibraries()->GetOwnerDocument(), manager->GetRootLibrary());

    FbxScene* scene = FbxScene::Create(manager, "Scene");
    FbxNode* node = FbxNode::Create(scene, "Cube");
    ASSERT_NE(node, nullptr);
    EXPECT_EQ(node->GetClassId(), FbxNode::ClassId);
    EXPECT_EQ(manager->DocumentCount(), 4);
    EXPECT_EQ(manager->DocumentAt(3), scene);
    EXPECT_EQ(manager->DocumentAt(4), nullptr);
    EXPECT_EQ(manager->DocumentAt(-1), nullptr);
    // The scene comes with its root node and settings.
    EXPECT_EQ(manager->GetObjectCount(), objectsBefore + 3);
    EXPECT_EQ(scene->GetSrcObject(2), node);
    EXPECT_EQ(node->GetFlags(), 0x24u);
    EXPECT_NE(node->GetUniqueID(), scene->GetUniqueID());

    // By class id, with and without a constructor.
    FbxObject* made = manager->CreateObject(manager->FindClass("FbxMesh"), "m");
    ASSERT_NE(made, nullptr);
    EXPECT_TRUE(made->Is<FbxMesh>());
    EXPECT_EQ(manager->CreateObject(FbxClassId(), "x"), nullptr);
    EXPECT_EQ(manager->CreateObject(manager->FindClass("FbxAnimCurveBase"), "x"), nullptr);
    EXPECT_EQ(FbxNode::Create(static_cast<FbxObject*>(nullptr), "x"), nullptr);
    EXPECT_EQ(FbxNode::Create(static_cast<FbxManager*>(nullptr), "x"), nullptr);

    EXPECT_EQ(FbxCast<FbxNode>(made), nullptr);
    EXPECT_EQ(FbxCast<FbxGeometry>(made), made);
}

TEST_F(FbxManagerTest, NamesPrefixesAndNameSpaces) {
    FbxNode* node = FbxNode::Create(manager, "Cube");
    EXPECT_STREQ(node->GetName(), "Cube");
    EXPECT_STREQ(node->GetInitialName(), "Cube");
    EXPECT_EQ(node->GetNameWithPrefix(), "Model::Cube");
    node->SetName("Box");
    EXPECT_STREQ(node->GetName(), "Box");
    EXPECT_STREQ(node->GetInitialName(), "Cube");
    node->SetInitialName("Crate");
    EXPECT_STREQ(node->GetName(), "Crate");
    EXPECT_STREQ(node->GetInitialName(), "Crate");
    node->SetName(nullptr);
    EXPECT_STREQ(node->GetName(), "");

    FbxMesh* mesh = FbxMesh::Create(manager, "Shape");
    EXPECT_EQ(mesh->GetNameWithPrefix(), "Geometry::Shape");  // inherited prefix

    EXPECT_EQ(FbxObject::StripPrefix("Model::Cube"), "Cube");
    EXPECT_EQ(FbxObject::StripPrefix("Cube"), "Cube");
    EXPECT_EQ(FbxObject::StripPrefix("A::B::C"), "B::C");
    EXPECT_EQ(FbxObject::StripPrefix(nullptr), "");

    EXPECT_TRUE(node->GetNameSpaceArray(':').empty());
    node->SetNameSpace("a:b");
    EXPECT_EQ(node->GetNameSpaceArray(':'), (std::vector<FbxString>{"b", "a"}));
    node->SetNameSpace("outer::inner");
    EXPECT_EQ(node->GetNameSpaceArray(':'), (std::vector<FbxString>{"inner", "", "outer"}));
}

TEST_F(FbxManagerTest, UserDataIsReplacedByIdAndAbsentIdsGiveNull) {
    FbxObject* object = FbxObject::Create(manager, "o");
    int a = 1, b = 2;
    EXPECT_EQ(object->GetUserDataPtr(7), nullptr);
    object->SetUserDataPtr(7, &a);
    object->SetUserDataPtr(9, &b);
    EXPECT_EQ(object->GetUserDataPtr(7), &a);
    object->SetUserDataPtr(7, &b);
    EXPECT_EQ(object->GetUserDataPtr(7), &b);
    EXPECT_EQ(object->GetUserDataPtr(9), &b);
    EXPECT_EQ(object->GetUserDataPtr(8), nullptr);
}

TEST_F(FbxManagerTest, DocumentsAreFoundThroughDestinations) {
    FbxScene* scene = FbxScene::Create(manager, "Scene");
    FbxDocument* outer = FbxDocument::Create(manager, "Outer");
    outer->ConnectSrcObject(scene);
    FbxNode* node = FbxNode::Create(scene, "n");
    FbxObject* loose = FbxObject::Create(manager, "loose");

    EXPECT_EQ(node->GetScene(), scene);
    EXPECT_EQ(node->GetOwnerDocument(), scene);
    EXPECT_EQ(node->GetDocument(), outer);
    EXPECT_EQ(scene->GetDocument(), outer);
    EXPECT_EQ(outer->GetDocument(), outer);
    EXPECT_EQ(loose->GetDocument(), nullptr);
    EXPECT_EQ(loose->GetScene(), nullptr);

    // A cycle of documents does not hang the walk.
    scene->ConnectSrcObject(outer);
    EXPECT_NE(node->GetDocument(), nullptr);
}

TEST_F(FbxManagerTest, DestroyFollowsOwnership) {
    FbxNode* first = FbxNode::Create(manager, "first");
    FbxNode* second = FbxNode::Create(manager, "second");
    FbxNull* shared = FbxNull::Create(manager, "shared");
    first->ConnectSrcObject(shared);
    second->ConnectSrcObject(shared);
    FbxObject* plain = FbxObject::Create(manager, "plain");
    first->ConnectSrcObject(plain);

    int count = manager->GetObjectCount();
    // The attribute is used by two nodes: it survives the first, and a
    // source that no rule gives to a node stays too.
    first->Destroy();
    EXPECT_EQ(manager->GetObjectCount(), count - 1);
    EXPECT_EQ(shared->GetDstObjectCount(), 1);
    EXPECT_EQ(plain->GetDstObjectCount(), 0);
    // Now it has one node left, which owns it.
    second->Destroy();
    EXPECT_EQ(manager->GetObjectCount(), count - 3);

    // A skin owns its clusters; a plain object owns its sources only when
    // destroyed recursively.
    FbxSkin* skin = FbxSkin::Create(manager, "skin");
    FbxCluster::Create(skin, "c0");
    FbxCluster::Create(skin, "c1");
    FbxObject* holder = FbxObject::Create(manager, "holder");
    FbxObject::Create(holder, "kept");
    FbxObject* other = FbxObject::Create(manager, "other");
    FbxObject::Create(other, "gone");
    count = manager->GetObjectCount();
    skin->Destroy();
    EXPECT_EQ(manager->GetObjectCount(), count - 3);
    holder->Destroy();
    EXPECT_EQ(manager->GetObjectCount(), count - 4);
    other->Destroy(true);
    EXPECT_EQ(manager->GetObjectCount(), count - 6);
}

TEST_F(FbxManagerTest, SceneDestructionTakesItsSourcesAlong) {
    int count = manager->GetObjectCount();
    FbxScene* scene = FbxScene::Create(manager, "Scene");
    FbxNode* root = FbxNode::Create(scene, "root");
    for (int i = 0; i < 5; ++i) {
        FbxNode* child = FbxNode::Create(scene, "child");
        root->ConnectSrcObject(child);
        FbxMesh* mesh = FbxMesh::Create(scene, "mesh");
        child->ConnectSrcObject(mesh);
        // Cycles of connections are no trouble.
        mesh->ConnectSrcObject(child);
    }
    FbxObject* outside = FbxObject::Create(manager, "outside");
    root->ConnectSrcObject(outside);
    EXPECT_EQ(manager->GetObjectCount(), count + 14);  // with root node and settings
    scene->Destroy();
    EXPECT_EQ(manager->GetObjectCount(), count + 1);
    EXPECT_EQ(manager->DocumentCount(), 3);
    EXPECT_EQ(outside->GetDstObjectCount(), 0);
}

TEST_F(FbxManagerTest, ManagerDestroysWhatIsLeft) {
    // Objects connected every which way, documents among them; the fixture
    // destroys the manager, and the sanitizers check that all is freed.
    FbxScene* scene = FbxScene::Create(manager, "Scene");
    std::vector<FbxObject*> objects;
    for (int i = 0; i < 50; ++i) objects.push_back(FbxNode::Create(scene, "n"));
    for (int i = 1; i < 50; ++i) objects[static_cast<size_t>(i)]->ConnectSrcObject(objects[static_cast<size_t>(i - 1)]);
    objects[0]->ConnectSrcObject(objects[49]);
    FbxDocument* document = FbxDocument::Create(manager, "doc");
    document->ConnectSrcObject(scene);
    objects[10]->GetRootProperty().ConnectSrcProperty(objects[20]->GetRootProperty());
    FbxObject* sink = FbxObject::Create(manager, "sink");
    sink->GetRootProperty().SetConnectionPointType(FbxConnectionPoint::eDefault | FbxConnectionPoint::eOneWay);
    for (FbxObject* o : objects) sink->ConnectSrcObject(o);
    FbxProperty dynamic = FbxProperty::Create(sink, FbxDoubleDT, "Weight");
    dynamic.ConnectSrcObject(objects[3]);
    dynamic.ConnectDstProperty(objects[4]->GetRootProperty());
    // Views on long lists, which the teardown must empty too.
    EXPECT_EQ(sink->GetSrcObjectCount(FbxCriteria::ObjectType(FbxNode::ClassId)), 50);
    EXPECT_EQ(scene->GetSrcObjectCount(FbxCriteria::ObjectType(FbxNode::ClassId)), 51);  // and the root node
    EXPECT_GT(manager->GetObjectCount(), 49);
}

TEST(FbxManagerLifetime, TablesAreSharedAndReleasedByTheLastManager) {
    FbxManager* first = FbxManager::Create();
    FbxClassId node = FbxNode::ClassId;
    FbxManager* second = FbxManager::Create();
    EXPECT_EQ(FbxNode::ClassId, node);
    EXPECT_EQ(FbxManager::LiveManagerCount(), 2);
    FbxDataType made = second->CreateDataType("MyType", FbxDoubleDT);
    EXPECT_EQ(first->DataTypeFromName("MyType"), made);
    first->Destroy();
    EXPECT_TRUE(FbxNode::ClassId.IsValid());
    second->Destroy();
    EXPECT_EQ(FbxManager::LiveManagerCount(), 0);
    EXPECT_FALSE(FbxNode::ClassId.IsValid());
    EXPECT_FALSE(FbxDataTypeTable::FromName("MyType").Valid());
    // Fixed data types outlive the tables.
    EXPECT_EQ(FbxDataTypeTable::FromName("Vector"), FbxDouble3DT);
}

TEST_F(FbxManagerTest, CopyFromAndCloneTakeOverNamesFlagsAndValues) {
    RegisterTestClasses(manager);
    FbxTestObject* source = FbxTestObject::Create(manager, "source");
    source->Number().Set(4.0);
    source->SetFlag(FbxObject::eSelected, true);
    source->SetNameSpace("ns");

    FbxTestObject* copy = FbxTestObject::Create(manager, "copy");
    EXPECT_TRUE(copy->CopyFrom(*source));
    EXPECT_STREQ(copy->GetName(), "source");
    EXPECT_STREQ(copy->GetNameSpace(), "ns");
    EXPECT_TRUE(copy->GetSelected());
    EXPECT_EQ(copy->Number().Get<double>(), 4.0);
    // The copies are independent.
    copy->Number().Set(5.0);
    EXPECT_EQ(source->Number().Get<double>(), 4.0);

    FbxObject* other = FbxObject::Create(manager, "other");
    EXPECT_FALSE(other->CopyFrom(*source));

    FbxObject* holder = FbxObject::Create(manager, "holder");
    auto* clone = static_cast<FbxTestObject*>(source->Clone(holder));
    ASSERT_NE(clone, nullptr);
    EXPECT_EQ(clone->GetClassId(), FbxTestObject::ClassId);
    EXPECT_EQ(clone->Number().Get<double>(), 4.0);
    EXPECT_TRUE(clone->GetSelected());
    EXPECT_EQ(holder->GetSrcObject(0), clone);
}

TEST_F(FbxManagerTest, ReferenceIsSetOnlyBetweenConnectedObjects) {
    FbxObject* a = FbxObject::Create(manager, "a");
    FbxObject* b = FbxObject::Create(manager, "b");
    EXPECT_FALSE(a->SetReferenceTo(b));
    EXPECT_EQ(a->GetReferenceTo(), nullptr);
    a->ConnectDstObject(b);
    EXPECT_TRUE(a->SetReferenceTo(b));
    EXPECT_EQ(a->GetReferenceTo(), b);
}

}  // namespace
