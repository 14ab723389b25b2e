#include "fbx/model/fbx_geometry_converter.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>
#include <vector>

#include "fbx/model/fbx_layer.h"
#include "fbx/model/fbx_manager.h"
#include "fbx/model/fbx_mesh.h"
#include "fbx/model/fbx_node.h"
#include "fbx/model/fbx_scene.h"
#include "fbx/model/fbx_skin.h"

namespace {

using Polygon = std::vector<FbxVector4>;

FbxVector4 Newell(const Polygon& corners) {
    FbxVector4 n;
    for (size_t i = 0; i < corners.size(); ++i) {
        const FbxVector4 &a = corners[i], &b = corners[(i + 1) % corners.size()];
        n[0] += (a[1] - b[1]) * (a[2] + b[2]);
        n[1] += (a[2] - b[2]) * (a[0] + b[0]);
        n[2] += (a[0] - b[0]) * (a[1] + b[1]);
    }
    return n;
}

// The shapes to triangulate, each with the number of triangles it must give
// (-1: any).
struct Case {
    Polygon corners;
    int triangles;
};

std::vector<Case> Cases() {
    std::vector<Case> cases;
    cases.push_back({{{0, 0, 0}, {2, 0, 0}, {2, 1, 0}, {1, 1, 0}, {1, 2, 0}, {0, 2, 0}}, 4});  // L
    Polygon star;  // five tips, in the plane y = 5 facing -Y
    for (int i = 0; i < 10; ++i) {
        const double a = std::numbers::pi * i / 5, r = i % 2 ? 0.4 : 1.0;
        star.push_back({r * std::cos(a), 5, r * std::sin(a)});
    }
    cases.push_back({star, 8});
    cases.push_back({{{0, 0, 0}, {1, 0, 0}, {2, 0, 0}, {2, 1, 0}, {0, 1, 0}}, 3});  // collinear corners
    cases.push_back({{{0, 0, 0}, {1, 0, 0}, {1, 1, 0.2}, {0, 1, 0}}, 2});           // not planar
    cases.push_back(
        {{{0, 0, 3}, {1, 0, 3}, {1, 0, 3}, {1, 1, 3}, {0, 1, 3}}, 3});   // repeated corner: one triangle of no area
    cases.push_back({{{0, 0, 0}, {1, 1, 1}, {2, 2, 2}, {3, 3, 3}}, 0});  // on one line
    cases.push_back({{{0, 0, 0}, {4, 0, 0}, {4, 2, 0}, {2, -1, 0}, {0, 2, 0}, {1, 1, 0}}, -1});  // crossing
    cases.push_back({{{0, 0, 0}, {1, 0, 0}, {0, 1, 0}}, 1});
    Polygon circle;
    for (int i = 0; i < 1000; ++i)
        circle.push_back({std::cos(2 * std::numbers::pi * i / 1000), std::sin(2 * std::numbers::pi * i / 1000), 0});
    cases.push_back({circle, 998});
    return cases;
}

class GeometryConverter : public ::testing::Test {
protected:
    void SetUp() override {
        manager = FbxManager::Create();
        scene = FbxScene::Create(manager, "Scene");
    }
    void TearDown() override { manager->Destroy(); }

    // A mesh of the polygons, each corner its own control point unless a
    // polygon repeats a position, with a normal per corner that names its
    // control point and polygon, an indexed UV per corner that names its
    // control point, and a material per polygon.
    FbxMesh* Mesh(const std::vector<Case>& cases) {
        FbxMesh* mesh = FbxMesh::Create(scene, "mesh");
        std::vector<FbxVector4> points;
        std::vector<std::vector<int>> indices;
        for (const Case& c : cases) {
            std::vector<int>& polygon = indices.emplace_back();
            for (size_t i = 0; i < c.corners.size(); ++i) {
                if (i > 0 && c.corners[i] == c.corners[i - 1]) {
                    polygon.push_back(polygon.back());
                    continue;
                }
                polygon.push_back(static_cast<int>(points.size()));
                points.push_back(c.corners[i]);
            }
        }
        mesh->InitControlPoints(static_cast<int>(points.size()));
        for (size_t i = 0; i < points.size(); ++i) mesh->SetControlPointAt(points[i], static_cast<int>(i));
        FbxLayer* layer = mesh->GetLayer(mesh->CreateLayer());
        auto* normals = FbxLayerElementNormal::Create(mesh, "");
        normals->SetMappingMode(FbxLayerElement::eByPolygonVertex);
        layer->SetNormals(normals);
        auto* uvs = FbxLayerElementUV::Create(mesh, "uv");
        uvs->SetMappingMode(FbxLayerElement::eByPolygonVertex);
        uvs->SetReferenceMode(FbxLayerElement::eIndexToDirect);
        layer->SetUVs(uvs);
        for (size_t i = 0; i < points.size(); ++i) uvs->GetDirectArray().Add(FbxVector2(static_cast<double>(i), 0.5));
        auto* materials = FbxLayerElementMaterial::Create(mesh, "");
        materials->SetMappingMode(FbxLayerElement::eByPolygon);
        materials->SetReferenceMode(FbxLayerElement::eIndexToDirect);
        layer->SetMaterials(materials);
        for (size_t p = 0; p < indices.size(); ++p) {
            mesh->BeginPolygon(static_cast<int>(p));
            for (int v : indices[p]) {
                mesh->AddPolygon(v);
                normals->GetDirectArray().Add(FbxVector4(v, static_cast<double>(p), 0));
                uvs->GetIndexArray().Add(v);
            }
            mesh->EndPolygon();
        }
        return mesh;
    }

    FbxNode* Node(FbxNodeAttribute* attribute) {
        FbxNode* node = FbxNode::Create(scene, "");
        scene->GetRootNode()->AddChild(node);
        node->AddNodeAttribute(attribute);
        return node;
    }

    FbxManager* manager = nullptr;
    FbxScene* scene = nullptr;
};

TEST_F(GeometryConverter, TrianglesCoverEachPolygonAndEveryLayerElementFollows) {
    const std::vector<Case> cases = Cases();
    FbxNode* node = Node(Mesh(cases));
    FbxGeometryConverter converter(manager);
    ASSERT_TRUE(converter.TriangulateInPlace(node));
    const FbxMesh* mesh = node->GetMesh();
    ASSERT_NE(mesh, nullptr);
    ASSERT_TRUE(mesh->IsTriangleMesh());
    const FbxLayer* layer = mesh->GetLayer(0);
    const auto& normals = layer->GetNormals()->GetDirectArray();
    const FbxLayerElementUV* uvs = layer->GetUVs();
    const auto& materials = layer->GetMaterials()->GetIndexArray();
    ASSERT_EQ(normals.GetCount(), mesh->GetPolygonVertexCount());
    ASSERT_EQ(uvs->GetIndexArray().GetCount(), mesh->GetPolygonVertexCount());
    ASSERT_EQ(materials.GetCount(), mesh->GetPolygonCount());

    std::vector<double> area(cases.size());
    std::vector<int> count(cases.size());
    for (int t = 0; t < mesh->GetPolygonCount(); ++t) {
        const int p = materials[t];
        ASSERT_GE(p, 0);
        ASSERT_LT(p, static_cast<int>(cases.size()));
        FbxVector4 c[3];
        for (int k = 0; k < 3; ++k) {
            const int corner = 3 * t + k, v = mesh->GetPolygonVertex(t, k);
            c[k] = mesh->GetControlPointAt(v);
            EXPECT_EQ(normals[corner], FbxVector4(v, p, 0)) << "triangle " << t;
            EXPECT_EQ(uvs->GetDirectArray()[uvs->GetIndexArray()[corner]][0], v);
        }
        const FbxVector4 cross = (c[1] - c[0]).CrossProduct(c[2] - c[0]);
        // Each triangle turns the way its polygon turns (a repeated corner
        // may leave a triangle of no area).
        EXPECT_GE(cross.DotProduct(Newell(cases[p].corners)), 0.0) << "triangle " << t << " of polygon " << p;
        area[p] += cross.Length() / 2;
        ++count[p];
    }
    for (size_t p = 0; p < cases.size(); ++p) {
        if (cases[p].triangles >= 0) {
            EXPECT_EQ(count[p], cases[p].triangles) << "polygon " << p;
        }
        if (p != 3 && p != 6) {  // planar and simple
            EXPECT_NEAR(area[p], Newell(cases[p].corners).Length() / 2, 1e-9) << "polygon " << p;
        }
    }
    EXPECT_GT(count[6], 0);  // the crossing hexagon never fails the mesh
}

TEST_F(GeometryConverter, NodesSharingAMeshShareTheTriangleMeshAndSkinsComeAlong) {
    FbxMesh* triangles = Mesh({Cases()[7]});
    FbxNode* plain = Node(triangles);
    FbxGeometryConverter converter(manager);
    EXPECT_TRUE(converter.TriangulateInPlace(plain));
    EXPECT_EQ(plain->GetNodeAttribute(), triangles);

    FbxMesh* quads = Mesh({Cases()[0]});
    FbxSkin* skin = FbxSkin::Create(scene, "skin");
    quads->AddDeformer(skin);
    FbxNode* first = Node(quads);
    FbxNode* second = Node(quads);
    FbxNode* other = FbxNode::Create(scene, "");
    EXPECT_TRUE(converter.TriangulateInPlace(first));
    FbxMesh* result = first->GetMesh();
    ASSERT_NE(result, nullptr);
    EXPECT_NE(result, quads);
    EXPECT_EQ(second->GetMesh(), result);
    EXPECT_EQ(second->DefaultAttributeIndex().Get(), 0);
    EXPECT_EQ(result->GetPolygonCount(), 4);
    EXPECT_EQ(result->GetDeformerCount(FbxDeformer::eSkin), 1);
    EXPECT_FALSE(converter.TriangulateInPlace(other));
    EXPECT_FALSE(converter.TriangulateInPlace(nullptr));
    EXPECT_EQ(converter.TriangulateMesh(nullptr), nullptr);
}

}  // namespace
