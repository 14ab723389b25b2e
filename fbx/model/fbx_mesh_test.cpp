#include "fbx/model/fbx_mesh.h"

#include <gtest/gtest.h>

#include <cmath>
#include <initializer_list>

#include "fbx/model/fbx_manager.h"

namespace {

using EType = FbxLayerElement::EType;

class MeshTest : public ::testing::Test {
protected:
    void SetUp() override {
        manager = FbxManager::Create();
        mesh = FbxMesh::Create(manager, "mesh");
    }
    void TearDown() override { manager->Destroy(); }

    void Polygon(std::initializer_list<int> corners, int material = -1) {
        mesh->BeginPolygon(material);
        for (int c : corners) mesh->AddPolygon(c);
        mesh->EndPolygon();
    }
    // Control points on the plane z = 0.
    void Points(std::initializer_list<std::pair<double, double>> points) {
        int i = 0;
        for (const auto& [x, y] : points) mesh->SetControlPointAt(FbxVector4(x, y, 0), i++);
    }
    // Normals by control point on layer 0; UVs "map" by polygon vertex,
    // through the index array, on layer 0.
    FbxLayerElementNormal* Normals(const FbxVector4& n) {
        for (int i = 0; i < mesh->GetControlPointsCount(); ++i) mesh->SetControlPointNormalAt(n, i);
        return mesh->GetElementNormal(0);
    }
    FbxLayerElementUV* Uvs(std::initializer_list<FbxVector2> values, std::initializer_list<int> indices) {
        if (mesh->GetLayerCount() == 0) mesh->CreateLayer();
        FbxLayerElementUV* uv = FbxLayerElementUV::Create(mesh, "map");
        uv->SetMappingMode(FbxLayerElement::eByPolygonVertex);
        uv->SetReferenceMode(FbxLayerElement::eIndexToDirect);
        for (const FbxVector2& v : values) uv->GetDirectArray().Add(v);
        for (int i : indices) uv->GetIndexArray().Add(i);
        mesh->GetLayer(0)->SetUVs(uv);
        return uv;
    }
    FbxVector4 Tangent(int polygon, int corner) const {
        return mesh->GetElementTangent(0)->GetDirectArray().GetAt(mesh->GetPolygonVertexIndex(polygon) + corner);
    }

    FbxManager* manager = nullptr;
    FbxMesh* mesh = nullptr;
};

void expectNear(const FbxVector4& a, const FbxVector4& b) {
    for (int i = 0; i < 4; ++i) EXPECT_NEAR(a[i], b[i], 1e-9) << i;
}

TEST_F(MeshTest, PolygonsAndTheirMaterialIndicesGrowTogether) {
    EXPECT_TRUE(mesh->IsTriangleMesh());  // empty
    mesh->AddPolygon(5);                  // no polygon yet: nothing
    EXPECT_EQ(mesh->GetPolygonVertexCount(), 0);
    // The first polygon with a material makes layer 0 and its element.
    Polygon({0, 1, 2}, 2);
    Polygon({2, 1, 3, 4}, 1);
    Polygon({4, 3, 5});
    ASSERT_EQ(mesh->GetLayerCount(), 1);
    const FbxLayerElementMaterial* materials = mesh->GetElementMaterial(0);
    ASSERT_NE(materials, nullptr);
    EXPECT_EQ(materials->GetMappingMode(), FbxLayerElement::eByPolygon);
    ASSERT_EQ(materials->GetIndexArray().GetCount(), 3);
    EXPECT_EQ(materials->GetIndexArray().GetAt(1), 1);
    EXPECT_EQ(materials->GetIndexArray().GetAt(2), -1);
    EXPECT_FALSE(mesh->IsTriangleMesh());
    EXPECT_EQ(mesh->GetPolygonSize(1), 4);
    EXPECT_EQ(mesh->GetPolygonVertexIndex(2), 7);
    EXPECT_EQ(mesh->GetPolygonVertex(1, 3), 4);
    for (int bad : {-1, 3}) {
        EXPECT_EQ(mesh->GetPolygonSize(bad), -1);
        EXPECT_EQ(mesh->GetPolygonVertexIndex(bad), -1);
        EXPECT_EQ(mesh->GetPolygonVertex(bad, 0), -1);
    }
    EXPECT_EQ(mesh->GetControlPointAt(99), FbxVector4());

    // A copy has its own layers and polygons.
    FbxMesh* copy = FbxMesh::Create(manager, "copy");
    ASSERT_TRUE(copy->CopyFrom(*mesh));
    mesh->ClearPolygons();
    EXPECT_EQ(copy->GetPolygonCount(), 3);
    ASSERT_NE(copy->GetElementMaterial(0), nullptr);
    EXPECT_NE(copy->GetElementMaterial(0), materials);
    EXPECT_EQ(copy->GetElementMaterial(0)->GetIndexArray().GetAt(0), 2);
}

TEST_F(MeshTest, ElementsAreCountedOverTheLayersThatHaveThem) {
    mesh->CreateLayer();
    mesh->CreateLayer();
    FbxLayerElementNormal* normals = FbxLayerElementNormal::Create(mesh, "n");
    mesh->GetLayer(1)->SetNormals(normals);
    EXPECT_EQ(mesh->GetElementNormal(0), normals);
    EXPECT_EQ(mesh->GetElementNormal(1), nullptr);
    EXPECT_EQ(mesh->GetLayer(0, FbxLayerElement::eNormal), mesh->GetLayer(1));
    EXPECT_EQ(FbxLayerElementNormal::Create(nullptr, "orphan"), nullptr);
    // Slot 6 and the diffuse channel are one; other channels only by channel.
    FbxLayerElementUV* uv = FbxLayerElementUV::Create(mesh, "uv");
    FbxLayer* layer = mesh->GetLayer(0);
    layer->SetUVs(uv, FbxLayerElement::eTextureBump);
    EXPECT_EQ(layer->GetUVs(), nullptr);
    EXPECT_EQ(layer->GetLayerElementOfType(FbxLayerElement::eTextureBump, true), uv);
    EXPECT_EQ(layer->GetLayerElementOfType(FbxLayerElement::eTextureBump, false), nullptr);
    EXPECT_FALSE(layer->SetLayerElementOfType(uv, FbxLayerElement::eNormal));
    EXPECT_TRUE(layer->SetLayerElementOfType(uv, FbxLayerElement::eUV));
    EXPECT_EQ(layer->GetUVs(FbxLayerElement::eTextureDiffuse), uv);
    EXPECT_EQ(layer->GetUVs(FbxLayerElement::eNormal), nullptr);

    // Tangents sized by polygon vertex unless the count is that of the
    // control points; a layer past the end is made.
    Points({{0, 0}, {1, 0}, {0, 1}});
    mesh->InitTangents(6, 5, "t");
    ASSERT_EQ(mesh->GetLayerCount(), 3);
    const FbxLayerElementTangent* tangents = mesh->GetLayer(2)->GetTangents();
    ASSERT_NE(tangents, nullptr);
    EXPECT_EQ(tangents->GetMappingMode(), FbxLayerElement::eByPolygonVertex);
    EXPECT_EQ(tangents->GetDirectArray().GetCount(), 6);
    mesh->InitTangents(3, 2, "t");
    EXPECT_EQ(tangents->GetMappingMode(), FbxLayerElement::eByControlPoint);
    EXPECT_EQ(tangents->GetDirectArray().GetCount(), 3);
}

TEST_F(MeshTest, TangentsOfAQuadFollowItsUvsAndAreMadeOnce) {
    Points({{0, 0}, {1, 0}, {1, 1}, {0, 1}});
    Polygon({0, 1, 2, 3});
    Uvs({{0, 0}, {1, 0}, {1, 1}, {0, 1}}, {0, 1, 2, 3});
    EXPECT_FALSE(mesh->GenerateTangentsData("map"));  // no normals yet
    EXPECT_EQ(mesh->GetElementTangent(0), nullptr);
    Normals(FbxVector4(0, 0, 1));
    EXPECT_FALSE(mesh->GenerateTangentsData("other"));
    ASSERT_TRUE(mesh->GenerateTangentsData("map"));
    const FbxLayerElementTangent* tangents = mesh->GetElementTangent(0);
    ASSERT_NE(tangents, nullptr);
    // As many corners as control points: declared by control point, filled
    // by polygon vertex all the same.
    EXPECT_EQ(tangents->GetMappingMode(), FbxLayerElement::eByControlPoint);
    EXPECT_STREQ(tangents->GetName(), "map");
    for (int k = 0; k < 4; ++k) {
        expectNear(Tangent(0, k), FbxVector4(1, 0, 0, 1));
        expectNear(mesh->GetElementBinormal(0)->GetDirectArray().GetAt(k), FbxVector4(0, 1, 0, 1));
    }
    // Without overwrite existing tangents stay.
    mesh->GetElementTangent(0)->GetDirectArray().SetAt(0, FbxVector4(9, 9, 9, 9));
    EXPECT_TRUE(mesh->GenerateTangentsData("map", false));
    EXPECT_EQ(Tangent(0, 0), FbxVector4(9, 9, 9, 9));
    EXPECT_TRUE(mesh->GenerateTangentsData("map", true));
    expectNear(Tangent(0, 0), FbxVector4(1, 0, 0, 1));
}

// Two quads over a shared edge (points 1 and 4); the second one's UVs are
// sheared, so that alone its tangent runs along (1, -1, 0).
class SharedEdge : public MeshTest {
protected:
    void Build(bool seam, bool hardEdge) {
        Points({{0, 0}, {1, 0}, {2, 0}, {0, 1}, {1, 1}, {2, 1}});
        Polygon({0, 1, 4, 3});
        Polygon({1, 2, 5, 4});
        // UV values: the first quad's corners, then the second's own.
        Uvs({{0, 0}, {1, 0}, {1, 1}, {0, 1}, {2, 1}, {2, 2}, {1, 0}, {1, 1}},
            {0, 1, 2, 3, seam ? 6 : 1, 4, 5, seam ? 7 : 2});
        FbxLayerElementNormal* normals = FbxLayerElementNormal::Create(mesh, "");
        normals->SetMappingMode(FbxLayerElement::eByPolygonVertex);
        for (int i = 0; i < 8; ++i)
            normals->GetDirectArray().Add(i >= 4 && hardEdge ? FbxVector4(0, 0.6, 0.8) : FbxVector4(0, 0, 1));
        mesh->GetLayer(0)->SetNormals(normals);
        ASSERT_TRUE(mesh->GenerateTangentsData("map"));
    }
};

TEST_F(SharedEdge, CornersThatShareNormalAndUvShareTheirTangent) {
    Build(false, false);
    const double h = std::sqrt(0.5);
    expectNear(Tangent(0, 0), FbxVector4(1, 0, 0, 1));
    expectNear(Tangent(1, 1), FbxVector4(h, -h, 0, 1));
    FbxVector4 shared = Tangent(0, 1);
    expectNear(Tangent(1, 0), shared);
    const double c = std::cos(M_PI / 8), s = std::sin(M_PI / 8);  // half way between
    expectNear(shared, FbxVector4(c, -s, 0, 1));
}

TEST_F(SharedEdge, AUvSeamOrAHardEdgeKeepsThemApart) {
    const double h = std::sqrt(0.5);
    Build(true, false);
    expectNear(Tangent(0, 1), FbxVector4(1, 0, 0, 1));
    expectNear(Tangent(1, 0), FbxVector4(h, -h, 0, 1));
    mesh->ClearPolygons();
    mesh->GetLayer(0)->SetTangents(nullptr);
    mesh->GetLayer(0)->SetUVs(nullptr);
    Build(false, true);
    expectNear(Tangent(0, 1), FbxVector4(1, 0, 0, 1));
}

TEST_F(MeshTest, DegenerateUvsAndCornersWithoutValuesGiveZeroFrames) {
    Points({{0, 0}, {1, 0}, {0, 1}, {5, 5}});
    Polygon({0, 1, 2});
    Polygon({3, 9, 1});  // control point 9 does not exist
    Uvs({{0.5, 0.5}}, {0, 0, 0, -1, -1, -1});
    Normals(FbxVector4(0, 0, 1));
    ASSERT_TRUE(mesh->GenerateTangentsData("map"));
    for (int k = 0; k < 3; ++k) {
        FbxVector4 t = Tangent(0, k);
        EXPECT_EQ(t[0], 0.0);
        EXPECT_EQ(t[1], 0.0);
        EXPECT_EQ(t[2], 0.0);
    }
    // An unmapped UV reads as (0, 0); a corner without normal resolves to
    // nothing and is no error.
    FbxVector4 normal;
    EXPECT_FALSE(mesh->GetPolygonVertexNormal(1, 1, normal));
    FbxVector2 uv(3, 3);
    bool unmapped = false;
    EXPECT_TRUE(mesh->GetPolygonVertexUV(1, 0, "map", uv, unmapped));
    EXPECT_TRUE(unmapped);
    EXPECT_EQ(uv, FbxVector2(3, 3));
}

TEST(LayerElementArray, StatusTypesAndLocks) {
    FbxLayerElementArrayTemplate<int> a;
    EXPECT_EQ(a.Add(4), 0);
    EXPECT_EQ(a.Add(5), 1);
    double d = 1.0;
    EXPECT_EQ(a.FbxLayerElementArray::Add(&d, eFbxDouble), -1);
    EXPECT_EQ(a.GetStatus(), FbxLayerElementArray::eTypeMismatch);
    EXPECT_EQ(a.FbxLayerElementArray::Find(&d, eFbxDouble), -1);
    EXPECT_EQ(a.GetStatus(), FbxLayerElementArray::eTypeMismatch);
    EXPECT_EQ(a.Find(5), 1);
    int out = 7;
    EXPECT_FALSE(a.FbxLayerElementArray::GetAt(2, &out, eFbxInt));
    EXPECT_EQ(out, 0);  // zero-filled out of range
    EXPECT_TRUE(a.SetCount(3));
    EXPECT_EQ(a.GetAt(0), 4);
    EXPECT_EQ(a.GetAt(2), 0);

    const void* reading = a.GetLocked();
    ASSERT_NE(reading, nullptr);
    EXPECT_EQ(a.GetLocked(FbxLayerElementArray::eWriteLock), nullptr);
    EXPECT_FALSE(a.SetAt(0, 1));
    EXPECT_EQ(a.GetStatus(), FbxLayerElementArray::eWriteAccessRefused);
    EXPECT_FALSE(a.SetCount(10));
    EXPECT_EQ(a.GetStatus(), FbxLayerElementArray::eLocked);
    a.Release(FbxLayerElementArray::eReadLock);
    ASSERT_NE(a.GetLocked(FbxLayerElementArray::eWriteLock), nullptr);
    EXPECT_EQ(a.GetAt(0), 0);  // reading is refused while written
    EXPECT_EQ(a.GetStatus(), FbxLayerElementArray::eReadAccessRefused);
    a.Release(FbxLayerElementArray::eWriteLock);
    EXPECT_TRUE(a.SetAt(0, 8));
    EXPECT_EQ(a.GetAt(0), 8);
    EXPECT_FALSE(a.SetAt(3, 1));
    EXPECT_EQ(a.GetStatus(), FbxLayerElementArray::eBadValue);
}

}  // namespace
