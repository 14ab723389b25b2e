#include "fbx/model/fbx_connection_point.h"

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

#include "fbx/model/fbx_collection.h"
#include "fbx/model/fbx_manager.h"
#include "fbx/model/fbx_mesh.h"
#include "fbx/model/fbx_model_testing.h"
#include "fbx/model/fbx_node.h"
#include "fbx/model/fbx_null.h"
#include "fbx/model/fbx_surface_phong.h"

// Records the events it hears and refuses connections while `refuse` is on.
class FbxListeningObject : public FbxObject {
    KIVA_FBX_OBJECT_DECLARE(FbxListeningObject, FbxObject)

public:
    bool refuse = false;
    std::vector<FbxConnectEvent::EType> events;

    bool ConnectNotify(const FbxConnectEvent& event) override {
        events.push_back(event.type);
        bool request =
            event.type == FbxConnectEvent::eConnectRequest || event.type == FbxConnectEvent::eDisconnectRequest;
        return !(refuse && request);
    }
};
KIVA_FBX_OBJECT_IMPLEMENT(FbxListeningObject)
FbxListeningObject::FbxListeningObject(FbxManager& manager, const char* name) : ParentClass(manager, name) {}

namespace {

class FbxConnectionTest : public ::testing::Test {
protected:
    void SetUp() override { manager = FbxManager::Create(); }
    void TearDown() override { manager->Destroy(); }

    static std::vector<std::string> Names(const FbxObject* object, const FbxCriteria& criteria) {
        std::vector<std::string> names;
        for (int i = 0; i < object->GetSrcObjectCount(criteria); ++i)
            names.push_back(object->GetSrcObject(criteria, i)->GetName());
        return names;
    }

    FbxManager* manager = nullptr;
};

TEST_F(FbxConnectionTest, FilteredViewsListSourcesInConnectionOrder) {
    FbxNode* node = FbxNode::Create(manager, "node");
    const FbxCriteria materials = FbxCriteria::ObjectType(FbxSurfaceMaterial::ClassId);
    // A view made before any connection.
    EXPECT_EQ(node->GetSrcObjectCount(materials), 0);

    node->ConnectSrcObject(FbxSurfacePhong::Create(manager, "m0"));
    node->ConnectSrcObject(FbxMesh::Create(manager, "mesh"));
    node->ConnectSrcObject(FbxNode::Create(manager, "child"));
    node->ConnectSrcObject(FbxSurfaceLambert::Create(manager, "m1"));
    node->ConnectSrcObject(FbxNull::Create(manager, "null"));
    node->ConnectSrcObject(FbxSurfaceMaterial::Create(manager, "m2"));

    EXPECT_EQ(Names(node, materials), (std::vector<std::string>{"m0", "m1", "m2"}));
    EXPECT_STREQ(node->GetSrcObject(materials, 1)->GetName(), "m1");
    EXPECT_EQ(node->GetSrcObject(materials, 3), nullptr);
    // Views made after the connections see the same order.
    EXPECT_EQ(Names(node, FbxCriteria::ObjectType(FbxNodeAttribute::ClassId)),
              (std::vector<std::string>{"mesh", "null"}));
    EXPECT_EQ(Names(node, FbxCriteria()), (std::vector<std::string>{"m0", "mesh", "child", "m1", "null", "m2"}));
    EXPECT_EQ(node->GetSrcObjectCount<FbxNode>(), 1);
    EXPECT_STREQ(node->GetSrcObject<FbxSurfaceLambert>(1)->GetName(), "m1");

    // Views stay in step with removals and moves.
    FbxObject* m1 = node->GetSrcObject(materials, 1);
    EXPECT_TRUE(node->DisconnectSrcObject(m1));
    EXPECT_EQ(Names(node, materials), (std::vector<std::string>{"m0", "m2"}));
    EXPECT_FALSE(node->DisconnectSrcObject(m1));
    EXPECT_TRUE(node->GetRootProperty().MoveSrcObject(4, 0));
    EXPECT_EQ(Names(node, materials), (std::vector<std::string>{"m2", "m0"}));
    EXPECT_EQ(Names(node, FbxCriteria()), (std::vector<std::string>{"m2", "m0", "mesh", "child", "null"}));
    EXPECT_FALSE(node->GetRootProperty().MoveSrcObject(0, 5));

    // Combined criteria: a class and a subclass give the subclass; two
    // unrelated classes pass nothing.
    FbxCriteria lambertOnly = FbxCriteria::And(materials, FbxCriteria::ObjectType(FbxSurfaceLambert::ClassId));
    EXPECT_EQ(lambertOnly, FbxCriteria::ObjectType(FbxSurfaceLambert::ClassId));
    EXPECT_EQ(Names(node, lambertOnly), (std::vector<std::string>{"m0"}));
    EXPECT_EQ(node->GetSrcObjectCount(FbxCriteria::And(materials, FbxCriteria::ObjectType(FbxNode::ClassId))), 0);
}

TEST_F(FbxConnectionTest, ConnectionsAreMirroredAndDuplicatesKept) {
    FbxNode* parent = FbxNode::Create(manager, "parent");
    FbxNode* child = FbxNode::Create(manager, "child");
    EXPECT_TRUE(parent->ConnectSrcObject(child));
    EXPECT_TRUE(parent->ConnectSrcObject(child));
    EXPECT_EQ(parent->GetSrcObjectCount(), 2);
    EXPECT_EQ(child->GetDstObjectCount(), 2);
    EXPECT_EQ(child->GetDstObject(0), parent);
    EXPECT_TRUE(parent->IsConnectedSrcObject(child));
    EXPECT_TRUE(child->IsConnectedDstObject(parent));
    EXPECT_FALSE(child->IsConnectedSrcObject(parent));

    EXPECT_TRUE(child->DisconnectDstObject(parent));
    EXPECT_EQ(parent->GetSrcObjectCount(), 1);
    EXPECT_TRUE(parent->DisconnectSrcObject(child));
    EXPECT_FALSE(parent->IsConnectedSrcObject(child));
    EXPECT_EQ(child->GetDstObjectCount(), 0);

    // The connect type gets its defaults.
    parent->ConnectSrcObject(child);
    FbxConnectionPoint* point = parent->GetRootProperty().GetConnectionPoint();
    EXPECT_EQ(point->Sources()[0].type, 6u);
    parent->ConnectSrcObject(child, 1);
    EXPECT_EQ(point->Sources()[1].type, 5u);
    parent->ConnectSrcObject(child, 8);
    EXPECT_EQ(point->Sources()[2].type, 10u);
}

TEST_F(FbxConnectionTest, PropertiesConnectToObjectsAndToEachOther) {
    RegisterTestClasses(manager);
    FbxTestObject* material = FbxTestObject::Create(manager, "material");
    FbxTestObject* texture = FbxTestObject::Create(manager, "texture");
    FbxTestObject* driver = FbxTestObject::Create(manager, "driver");
    FbxProperty color = material->FindProperty("Color");

    EXPECT_TRUE(color.ConnectSrcObject(texture));
    EXPECT_EQ(color.GetSrcObjectCount(), 1);
    EXPECT_EQ(color.GetSrcObject(0), texture);
    EXPECT_EQ(texture->GetDstObjectCount(), 0);  // the destination is a property
    EXPECT_EQ(texture->GetDstPropertyCount(), 1);
    EXPECT_EQ(texture->GetDstProperty(FbxCriteria(), 0), color);
    EXPECT_EQ(material->GetSrcObjectCount(), 0);

    EXPECT_TRUE(color.ConnectSrcProperty(driver->FindProperty("Number")));
    EXPECT_TRUE(color.IsConnectedSrcProperty(driver->FindProperty("Number")));
    EXPECT_EQ(color.GetSrcPropertyCount(), 1);
    EXPECT_EQ(color.GetSrcObjectCount(), 1);  // properties are not objects
    EXPECT_EQ(color.GetSrcProperty(0), driver->FindProperty("Number"));
    EXPECT_EQ(color.GetSrcPropertyCount(FbxCriteria::ObjectType(FbxNode::ClassId)), 0);
    EXPECT_EQ(driver->FindProperty("Number").GetDstProperty(0), color);
    EXPECT_TRUE(color.DisconnectSrcProperty(driver->FindProperty("Number")));
    EXPECT_EQ(color.GetSrcPropertyCount(), 0);

    // A property's connections live on the object's page; other objects
    // of the class are untouched.
    EXPECT_EQ(FbxTestObject::Create(manager, "other")->FindProperty("Color").GetSrcObjectCount(), 0);

    // Destroying the source undoes the connection.
    texture->Destroy();
    EXPECT_EQ(color.GetSrcObjectCount(), 0);
}

TEST_F(FbxConnectionTest, OneWayAndWrongKindPoints) {
    FbxObject* source = FbxObject::Create(manager, "source");
    FbxObject* oneWay = FbxObject::Create(manager, "oneWay");
    oneWay->GetRootProperty().SetConnectionPointType(FbxConnectionPoint::eDefault | FbxConnectionPoint::eOneWay);
    EXPECT_TRUE(oneWay->ConnectSrcObject(source));
    EXPECT_EQ(oneWay->GetSrcObject(0), source);
    EXPECT_EQ(source->GetDstObjectCount(), 0);
    FbxConnectionPoint* point = oneWay->GetRootProperty().GetConnectionPoint();
    EXPECT_TRUE(point->Sources()[0].type & FbxConnectionPoint::eConnectOneWay);
    // The hidden side is still undone when the source goes.
    source->Destroy();
    EXPECT_EQ(oneWay->GetSrcObjectCount(), 0);

    FbxObject* sinkOnly = FbxObject::Create(manager, "sinkOnly");
    FbxObject* other = FbxObject::Create(manager, "other");
    sinkOnly->GetRootProperty().SetConnectionPointType(FbxConnectionPoint::eDestination);
    EXPECT_TRUE(sinkOnly->ConnectSrcObject(other));
    EXPECT_FALSE(sinkOnly->ConnectDstObject(other));
    EXPECT_FALSE(other->ConnectSrcObject(sinkOnly));
}

TEST_F(FbxConnectionTest, ConnectionsAreFoundFromEitherEndHoweverManyOneEndHas) {
    // One shared object with more connections than its partners, both ways.
    FbxObject* shared = FbxObject::Create(manager, "shared");
    std::vector<FbxObject*> users;
    for (int i = 0; i < 40; ++i) {
        users.push_back(FbxObject::Create(manager, "user"));
        users.back()->ConnectSrcObject(shared);
        shared->ConnectSrcObject(users.back());
    }
    FbxObject* stranger = FbxObject::Create(manager, "stranger");
    FbxObject* oneWay = FbxObject::Create(manager, "oneWay");
    oneWay->GetRootProperty().SetConnectionPointType(FbxConnectionPoint::eDefault | FbxConnectionPoint::eOneWay);
    oneWay->ConnectSrcObject(shared);
    for (FbxObject* user : {users.front(), users.back()}) {
        EXPECT_TRUE(shared->IsConnectedDstObject(user));
        EXPECT_TRUE(shared->IsConnectedSrcObject(user));
    }
    EXPECT_FALSE(shared->IsConnectedDstObject(stranger));
    EXPECT_FALSE(shared->IsConnectedSrcObject(stranger));
    // A one-way connection lists no destination on the source's side.
    EXPECT_TRUE(oneWay->IsConnectedSrcObject(shared));
    EXPECT_FALSE(shared->IsConnectedDstObject(oneWay));
}

TEST_F(FbxConnectionTest, ConnectNotifyCanRefuseAndHearsEveryStep) {
    FbxListeningObject::ClassId =
        manager->RegisterRuntimeClass("FbxListeningObject", FbxObject::ClassId, &FbxListeningObject::Allocate);
    auto* listener = FbxListeningObject::Create(manager, "listener");
    FbxObject* other = FbxObject::Create(manager, "other");

    EXPECT_TRUE(listener->ConnectSrcObject(other));
    EXPECT_EQ(listener->events,
              (std::vector<FbxConnectEvent::EType>{FbxConnectEvent::eConnectRequest, FbxConnectEvent::eConnect,
                                                   FbxConnectEvent::eConnected}));
    listener->refuse = true;
    EXPECT_FALSE(listener->DisconnectSrcObject(other));
    EXPECT_TRUE(listener->IsConnectedSrcObject(other));
    EXPECT_FALSE(other->ConnectSrcObject(listener));
    EXPECT_EQ(other->GetSrcObjectCount(), 0);
    listener->refuse = false;
    EXPECT_TRUE(listener->DisconnectSrcObject(other));
}

TEST_F(FbxConnectionTest, InsertionKeepsViewsInTheirParentOrder) {
    FbxNode* node = FbxNode::Create(manager, "node");
    FbxNode* a = FbxNode::Create(manager, "a");
    FbxNode* c = FbxNode::Create(manager, "c");
    FbxNull* attribute = FbxNull::Create(manager, "attr");
    node->ConnectSrcObject(a);
    node->ConnectSrcObject(attribute);
    node->ConnectSrcObject(c);
    const FbxCriteria nodes = FbxCriteria::ObjectType(FbxNode::ClassId);
    EXPECT_EQ(Names(node, nodes), (std::vector<std::string>{"a", "c"}));

    FbxNode* b = FbxNode::Create(manager, "b");
    FbxConnectionPoint* point = node->GetRootProperty().GetConnectionPoint();
    // Before the attribute, i.e. between "a" and "c".
    EXPECT_TRUE(FbxConnectionPoint::Connect(b->GetRootProperty().GetConnectionPoint(), point, 0, 1));
    EXPECT_EQ(Names(node, nodes), (std::vector<std::string>{"a", "b", "c"}));
    EXPECT_EQ(Names(node, FbxCriteria()), (std::vector<std::string>{"a", "b", "attr", "c"}));
    EXPECT_FALSE(FbxConnectionPoint::Connect(b->GetRootProperty().GetConnectionPoint(), point, 0, 9));
    EXPECT_FALSE(FbxConnectionPoint::Connect(nullptr, point));
}

TEST_F(FbxConnectionTest, CollectionsHoldTheirMembersAsSources) {
    FbxCollection* collection = FbxCollection::Create(manager, "set");
    FbxNode* n0 = FbxNode::Create(collection, "n0");
    FbxSurfacePhong* phong = FbxSurfacePhong::Create(collection, "phong");
    FbxNode* n1 = FbxNode::Create(manager, "n1");
    EXPECT_TRUE(collection->AddMember(n1));
    EXPECT_FALSE(collection->AddMember(n1));
    EXPECT_FALSE(collection->AddMember(nullptr));
    EXPECT_EQ(collection->GetMemberCount(), 3);
    EXPECT_EQ(collection->GetMemberCount<FbxNode>(), 2);
    EXPECT_EQ(collection->GetMember<FbxNode>(1), n1);
    EXPECT_EQ(collection->GetMember(1), phong);
    EXPECT_TRUE(collection->IsMember(n0));
    EXPECT_EQ(collection->FindSrcObject(FbxCriteria(), "n1"), n1);
    EXPECT_EQ(collection->FindSrcObject(FbxCriteria(), "n1", 3), nullptr);
    EXPECT_EQ(collection->FindSrcObject(FbxCriteria(), nullptr), nullptr);

    // Removing all of one class leaves the others in their order.
    EXPECT_TRUE(collection->DisconnectAllSrcObject(FbxCriteria::ObjectType(FbxNode::ClassId)));
    EXPECT_EQ(collection->GetMemberCount(), 1);
    EXPECT_EQ(collection->GetMember(0), phong);
    EXPECT_EQ(n0->GetDstObjectCount(), 0);
    collection->Clear();
    EXPECT_EQ(collection->GetMemberCount(), 0);
    EXPECT_FALSE(collection->RemoveMember(phong));
}

TEST_F(FbxConnectionTest, ViewsMatchTheFilteredPlainListsThroughRandomChanges) {
    FbxNode* hub = FbxNode::Create(manager, "hub");
    std::vector<FbxObject*> pool;
    for (int i = 0; i < 6; ++i) {
        pool.push_back(FbxNode::Create(manager, "node"));
        pool.push_back(FbxMesh::Create(manager, "mesh"));
        pool.push_back(FbxSurfacePhong::Create(manager, "phong"));
    }
    const FbxCriteria filters[] = {FbxCriteria(), FbxCriteria::ObjectType(FbxNode::ClassId),
                                   FbxCriteria::ObjectType(FbxGeometry::ClassId),
                                   FbxCriteria::ObjectType(FbxSurfaceMaterial::ClassId)};
    FbxConnectionPoint* point = hub->GetRootProperty().GetConnectionPoint();
    // Some views exist from the start, the others are made half way.
    hub->GetSrcObjectCount(filters[1]);
    hub->GetSrcObjectCount(filters[3]);

    std::mt19937 random(1234);
    for (int step = 0; step < 2000; ++step) {
        FbxObject* object = pool[random() % pool.size()];
        int count = static_cast<int>(point->Sources().size());
        switch (random() % 4) {
        case 0:
        case 1:
            hub->ConnectSrcObject(object);
            break;
        case 2:
            hub->DisconnectSrcObject(object);
            break;
        default:
            if (count > 0)
                hub->GetRootProperty().MoveSrcObject(static_cast<int>(random() % count),
                                                     static_cast<int>(random() % count));
            break;
        }
        if (step == 1000) hub->GetSrcObjectCount(filters[2]);
        for (const FbxCriteria& filter : filters) {
            std::vector<FbxObject*> expected;
            for (const FbxConnectionPoint::Link& link : point->Sources())
                if (filter.Passes(link.point)) expected.push_back(link.point->GetOwnerObject());
            std::vector<FbxObject*> actual;
            for (int i = 0; i < hub->GetSrcObjectCount(filter); ++i) actual.push_back(hub->GetSrcObject(filter, i));
            ASSERT_EQ(actual, expected) << "step " << step;
        }
        // Each object lists the hub as often as the hub lists it.
        for (FbxObject* o : pool) {
            int asSource = 0;
            for (const FbxConnectionPoint::Link& link : point->Sources())
                if (link.point->GetOwnerObject() == o) ++asSource;
            ASSERT_EQ(o->GetDstObjectCount(), asSource);
        }
    }
}

}  // namespace
