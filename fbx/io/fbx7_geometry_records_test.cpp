// Geometry, deformer, pose, material, texture and video records built byte
// by byte: the mapping and reference modes Blender does not write, and bad
// records, which give defaults or are dropped.
#include <gtest/gtest.h>
#include <unistd.h>

#include <climits>
#include <filesystem>
#include <fstream>
#include <functional>
#include <string>
#include <vector>

#include "fbx/io/fbx_binary_builder_testing.h"
#include "fbx/io/fbx_importer.h"
#include "fbx/io/fbx_io_settings.h"
#include "fbx/model/fbx_cluster.h"
#include "fbx/model/fbx_file_texture.h"
#include "fbx/model/fbx_layered_texture.h"
#include "fbx/model/fbx_manager.h"
#include "fbx/model/fbx_mesh.h"
#include "fbx/model/fbx_node.h"
#include "fbx/model/fbx_pose.h"
#include "fbx/model/fbx_scene.h"
#include "fbx/model/fbx_skin.h"
#include "fbx/model/fbx_surface_phong.h"
#include "fbx/model/fbx_video.h"

namespace {

namespace fs = std::filesystem;
using Bytes = std::vector<uint8_t>;
using Build = std::function<void(FbxBinaryBuilder&)>;
using EType = FbxLayerElement::EType;

FbxBinaryBuilder& object(FbxBinaryBuilder& b, const char* word, int64_t id, const char* name, const char* subclass) {
    return b.Begin(word).Long(id).ObjectName(name, word).String(subclass);
}

FbxBinaryBuilder& field(FbxBinaryBuilder& b, const char* name) { return b.Begin(name); }

void connect(FbxBinaryBuilder& b, int64_t source, int64_t destination) {
    b.Begin("C").String("OO").Long(source).Long(destination).End();
}

// A layer element record: its index, version, name, mapping and reference
// words, then what `data` writes.
void element(FbxBinaryBuilder& b, const char* word, int version, const char* name, const char* mapping,
             const char* reference, const Build& data) {
    b.Begin(word).Int(0);
    field(b, "Version").Int(version).End();
    field(b, "Name").String(name).End();
    field(b, "MappingInformationType").String(mapping).End();
    field(b, "ReferenceInformationType").String(reference).End();
    data(b);
    b.End();
}

// A "Layer" record naming (type, typed index) pairs.
void layer(FbxBinaryBuilder& b, int index, std::initializer_list<std::pair<const char*, int>> elements) {
    b.Begin("Layer").Int(index);
    field(b, "Version").Int(100).End();
    for (const auto& [type, typed] : elements) {
        b.Begin("LayerElement");
        field(b, "Type").String(type).End();
        field(b, "TypedIndex").Int(typed).End();
        b.End();
    }
    b.End();
}

Bytes sceneFile(const Build& objects, const Build& connections = nullptr) {
    FbxBinaryBuilder b(7400);
    b.Begin("Definitions");
    for (const char* word :
         {"Model", "Geometry", "Deformer", "Pose", "Material", "Texture", "Video", "LayeredTexture"}) {
        b.Begin("ObjectType").String(word);
        field(b, "Count").Int(1).End();
        b.End();
    }
    b.End();
    b.Begin("Objects");
    objects(b);
    b.EmptyBlock();
    b.End();
    b.Begin("Connections");
    if (connections) connections(b);
    b.EmptyBlock();
    b.End();
    return b.Finish();
}

class GeometryRecords : public ::testing::Test {
protected:
    void SetUp() override {
        dir = fs::temp_directory_path() / ("kiva_geometry_records_" + std::to_string(getpid()));
        fs::create_directories(dir);
        manager = FbxManager::Create();
        settings = FbxIOSettings::Create(manager, "IOSRoot");
        manager->SetIOSettings(settings);
        scene = FbxScene::Create(manager, "scene");
    }
    void TearDown() override {
        manager->Destroy();
        fs::remove_all(dir);
    }
    void Import(const Bytes& bytes) {
        std::string path = (dir / "scene.fbx").string();
        std::ofstream(path, std::ios::binary).write(reinterpret_cast<const char*>(bytes.data()), bytes.size());
        FbxImporter* importer = FbxImporter::Create(manager, "");
        ASSERT_TRUE(importer->Initialize(path.c_str(), -1, settings) && importer->Import(scene))
            << importer->GetStatus().GetErrorString();
    }
    template <class T>
    T* Find(const char* name) const {
        return FbxCast<T>(scene->FindSrcObject(FbxCriteria::ObjectType(T::ClassId), name));
    }

    fs::path dir;
    FbxManager* manager = nullptr;
    FbxIOSettings* settings = nullptr;
    FbxScene* scene = nullptr;
};

TEST_F(GeometryRecords, PolygonsControlPointsAndEdgesTakeWhatTheArraysHold) {
    Import(sceneFile([](FbxBinaryBuilder& b) {
        object(b, "Geometry", 1, "Two", "Mesh");
        // Seven values: two points, one value left over.
        field(b, "Vertices").DoubleArray({0, 1, 2, 3, 4, 5, 6}, FbxArrayEncoding::eZlib).End();
        field(b, "PolygonVertexIndex").IntArray({0, 1, -3, 3, 4, -6}).End();
        field(b, "Edges").IntArray({0, 2, 4}).End();
        field(b, "PreviewDivisionLevels").Int(3).End();  // ignored without "Smoothness"
        b.End();
        object(b, "Geometry", 2, "Odd", "Mesh");
        field(b, "Vertices").IntArray({1, 2, 3}).End();  // not doubles: no points
        field(b, "PolygonVertexIndex").IntArray({7, 8, INT_MIN, 5, 6}).End();
        field(b, "Smoothness").Int(2).End();
        field(b, "PreviewDivisionLevels").Int(-4).End();
        field(b, "RenderDivisionLevels").Int(2).End();
        field(b, "PreserveBorders").Int(1).End();
        b.End();
    }));
    FbxMesh* two = Find<FbxMesh>("Two");
    ASSERT_NE(two, nullptr);
    ASSERT_EQ(two->GetControlPointsCount(), 2);
    EXPECT_EQ(two->GetControlPointAt(1), FbxVector4(3, 4, 5, 0));
    EXPECT_EQ(two->GetControlPointAt(2), FbxVector4());
    ASSERT_EQ(two->GetPolygonCount(), 2);
    EXPECT_TRUE(two->IsTriangleMesh());
    EXPECT_EQ(two->GetPolygonVertexIndex(1), 3);
    EXPECT_EQ(two->GetPolygonVertex(1, 2), 5);
    EXPECT_EQ(two->GetPolygonVertex(1, 3), -1);
    EXPECT_EQ(two->GetMeshEdgeCount(), 3);
    EXPECT_EQ(two->GetPreviewDivisionLevels(), 0);

    FbxMesh* odd = Find<FbxMesh>("Odd");
    ASSERT_NE(odd, nullptr);
    EXPECT_EQ(odd->GetControlPointsCount(), 0);
    // Indices are kept as they stand; the lowest value ends its polygon, and
    // the last polygon stays open.
    ASSERT_EQ(odd->GetPolygonCount(), 2);
    EXPECT_EQ(odd->GetPolygonVertex(0, 2), 2147483646);
    EXPECT_EQ(odd->GetPolygonSize(1), 2);
    EXPECT_FALSE(odd->IsTriangleMesh());
    EXPECT_EQ(odd->GetSmoothness(), 2u);
    EXPECT_EQ(odd->GetPreviewDivisionLevels(), 0);
    EXPECT_EQ(odd->GetRenderDivisionLevels(), 2);
    EXPECT_TRUE(odd->GetPreserveBorders());
    EXPECT_EQ(odd->GetControlPointAt(7), FbxVector4());
}

// A triangle and a quad over five control points.
void fivePointMesh(FbxBinaryBuilder& b, const char* name, int64_t id) {
    object(b, "Geometry", id, name, "Mesh");
    field(b, "Vertices").DoubleArray({0, 0, 0, 1, 0, 0, 0, 1, 0, 2, 0, 0, 2, 1, 0}).End();
    field(b, "PolygonVertexIndex").IntArray({0, 1, -3, 1, 3, 4, -3}).End();
}

TEST_F(GeometryRecords, MappingAndReferenceModesFindEachCornersValue) {
    Import(sceneFile([](FbxBinaryBuilder& b) {
        fivePointMesh(b, "Modes", 1);
        // By control point, direct, with a W per normal (version 102).
        element(b, "LayerElementNormal", 102, "", "ByVertice", "Direct", [](FbxBinaryBuilder& b) {
            std::vector<double> normals;
            for (int i = 0; i < 5; ++i) normals.insert(normals.end(), {0, 0, double(i)});
            field(b, "Normals").DoubleArray(normals).End();
            field(b, "NormalsW").DoubleArray({1, 2, 3, 4, 5}).End();
        });
        // By polygon through the index array; W is not read before 102.
        element(b, "LayerElementNormal", 101, "", "ByPolygon", "Index", [](FbxBinaryBuilder& b) {
            field(b, "Normals").DoubleArray({1, 0, 0, 0, 1, 0, 0, 0, 1, 7}).End();
            field(b, "NormalsW").DoubleArray({9, 9, 9}).End();
            field(b, "NormalsIndex").IntArray({2, 0}).End();
        });
        element(b, "LayerElementNormal", 101, "", "AllSame", "Direct", [](FbxBinaryBuilder& b) {
            field(b, "Normals").DoubleArray({0, 1, 0}).End();
        });
        // UVs by polygon vertex through an index with a hole and a stray.
        element(b, "LayerElementUV", 101, "UVSet::first", "ByPolygonVertex", "IndexToDirect", [](FbxBinaryBuilder& b) {
            field(b, "UV").DoubleArray({0.25, 0.5, 1, 1, 9}).End();
            field(b, "UVIndex").IntArray({0, 1, -1, 0, 5, 1}).End();
        });
        // "Index" reads no UV index nor colour index.
        element(b, "LayerElementNormalMapUV", 101, "second", "ByVertice", "Index", [](FbxBinaryBuilder& b) {
            field(b, "UV").DoubleArray({0, 0}).End();
            field(b, "UVIndex").IntArray({0, 0, 0, 0, 0}).End();
        });
        element(b, "LayerElementUV", 100, "unnamed", "ByVertice", "Direct", [](FbxBinaryBuilder& b) {
            field(b, "UV").DoubleArray({0, 0, 1, 1}).End();
        });
        element(b, "LayerElementColor", 101, "", "ByPolygon", "Index", [](FbxBinaryBuilder& b) {
            field(b, "Colors").DoubleArray({1, 0, 0, 1, 0, 1}).End();
            field(b, "ColorIndex").IntArray({0, 0}).End();
        });
        layer(b, 0, {{"LayerElementNormal", 0}, {"LayerElementUV", 0}, {"LayerElementColor", 0}});
        layer(b, 1, {{"LayerElementNormal", 1}, {"LayerElementNormalMapUV", 0}, {"LayerElementUV", 1}});
        layer(b, 2, {{"LayerElementNormal", 2}});
        b.End();
    }));
    FbxMesh* mesh = Find<FbxMesh>("Modes");
    ASSERT_NE(mesh, nullptr);
    ASSERT_EQ(mesh->GetLayerCount(), 3);
    FbxVector4 normal;
    ASSERT_TRUE(mesh->GetPolygonVertexNormal(1, 1, normal));
    EXPECT_EQ(normal, FbxVector4(0, 0, 3, 4));  // control point 3, with its W

    const FbxLayerElementNormal* byPolygon = mesh->GetElementNormal(1);
    ASSERT_EQ(byPolygon->GetDirectArray().GetCount(), 3);  // whole triples only
    int index = -1;
    ASSERT_TRUE(mesh->ResolveElementIndex(*byPolygon, 0, 2, index));
    EXPECT_EQ(index, 2);
    EXPECT_EQ(byPolygon->GetDirectArray().GetAt(index), FbxVector4(0, 0, 1, 0));
    EXPECT_FALSE(mesh->ResolveElementIndex(*mesh->GetElementNormal(2), 0, 0, index));  // all same
    EXPECT_FALSE(mesh->ResolveElementIndex(*byPolygon, 0, 3, index));                  // no such corner
    EXPECT_FALSE(mesh->ResolveElementIndex(*byPolygon, 2, 0, index));                  // no such polygon

    std::vector<FbxString> names;
    mesh->GetUVSetNames(names);
    // Layer by layer, channel by channel; version 100 reads no name.
    EXPECT_EQ(names, (std::vector<FbxString>{"first", "", "second"}));
    FbxVector2 uv(7, 7);
    bool unmapped = false;
    ASSERT_TRUE(mesh->GetPolygonVertexUV(0, 1, "first", uv, unmapped));
    EXPECT_EQ(uv, FbxVector2(1, 1));
    EXPECT_TRUE(mesh->GetPolygonVertexUV(0, 2, "first", uv, unmapped));
    EXPECT_TRUE(unmapped);
    EXPECT_FALSE(mesh->GetPolygonVertexUV(1, 1, "first", uv, unmapped));  // index 5 is past the values
    EXPECT_FALSE(mesh->GetPolygonVertexUV(1, 3, "first", uv, unmapped));  // index array too short
    EXPECT_FALSE(mesh->GetPolygonVertexUV(0, 0, "none", uv, unmapped));
    EXPECT_EQ(uv, FbxVector2(1, 1));
    const FbxLayerElementUV* second = mesh->GetLayer(1)->GetUVs(FbxLayerElement::eTextureNormalMap);
    ASSERT_NE(second, nullptr);
    EXPECT_EQ(second->GetIndexArray().GetCount(), 0);
    EXPECT_FALSE(mesh->GetPolygonVertexUV(0, 0, "second", uv, unmapped));  // "Index" without indices
    const FbxLayerElementVertexColor* colors = mesh->GetElementVertexColor(0);
    ASSERT_NE(colors, nullptr);
    EXPECT_EQ(colors->GetDirectArray().GetCount(), 1);
    EXPECT_EQ(colors->GetIndexArray().GetCount(), 0);
    EXPECT_EQ(colors->GetDirectArray().GetAt(0), FbxColor(1, 0, 0, 1));
}

TEST_F(GeometryRecords, LayerRecordsPlaceOnlyWhatTheyNameAndMayAddOneLayer) {
    Import(sceneFile([](FbxBinaryBuilder& b) {
        fivePointMesh(b, "Layers", 1);
        element(b, "LayerElementNormal", 101, "", "ByVertice", "Direct", [](FbxBinaryBuilder& b) {
            field(b, "Normals").DoubleArray({0, 0, 1}).End();
        });
        b.Begin("LayerElementSmoothing").Int(0).End();  // no block: empty, but counted
        element(b, "LayerElementSmoothing", 101, "", "ByPolygon", "Direct", [](FbxBinaryBuilder& b) {
            field(b, "Smoothing").BoolArray({true, false}).End();
        });
        element(b, "LayerElementSmoothing", 102, "", "ByEdge", "Direct", [](FbxBinaryBuilder& b) {
            field(b, "Smoothing").IntArray({4, 5, 6}).End();
        });
        element(b, "LayerElementVisibility", 101, "", "ByEdge", "Direct", [](FbxBinaryBuilder& b) {
            field(b, "Visibility").BoolArray({true, false, true}).End();
        });
        element(b, "LayerElementEdgeCrease", 101, "", "ByEdge", "Direct",
                [](FbxBinaryBuilder& b) { field(b, "EdgeCrease").DoubleArray({0.5}).End(); });
        element(b, "LayerElementUserData", 101, "", "ByVertice", "Direct", [](FbxBinaryBuilder& b) {
            b.Begin("UserDataArray").Int(0);
            field(b, "UserDataType").String("Float").End();
            field(b, "UserDataName").String("heat").End();
            field(b, "UserData").FloatArray({1.5f, 2.5f}).End();
            b.End();
        });
        layer(b, 0,
              {{"LayerElementSmoothing", 2},
               {"LayerElementMaterial", 0},
               {"LayerElementTexture", 0},
               {"LayerElementVisibility", 3},  // out of range
               {"LayerElementEdgeCrease", 0},
               {"LayerElementUserData", 0}});
        layer(b, 1, {{"LayerElementSmoothing", 1}});
        layer(b, 5, {{"LayerElementSmoothing", 0}});  // skips layers: not stored
        b.End();
    }));
    FbxMesh* mesh = Find<FbxMesh>("Layers");
    ASSERT_NE(mesh, nullptr);
    ASSERT_EQ(mesh->GetLayerCount(), 2);
    // The normals belong to the mesh but to no layer.
    EXPECT_EQ(mesh->GetElementNormal(0), nullptr);
    EXPECT_EQ(mesh->GetLayerElementCount(), 9);
    const FbxLayer* first = mesh->GetLayer(0);
    ASSERT_NE(first->GetSmoothing(), nullptr);
    EXPECT_EQ(first->GetSmoothing()->GetDirectArray().GetAt(2), 6);
    const FbxLayerElementSmoothing* old = mesh->GetLayer(1)->GetSmoothing();
    ASSERT_NE(old, nullptr);
    EXPECT_EQ(old->GetDirectArray().GetCount(), 2);
    EXPECT_EQ(old->GetDirectArray().GetAt(0), 1);
    EXPECT_EQ(old->GetDirectArray().GetAt(1), 0);
    // A named material or texture element that the file lacks is made for
    // the whole mesh.
    ASSERT_NE(first->GetMaterials(), nullptr);
    EXPECT_EQ(first->GetMaterials()->GetMappingMode(), FbxLayerElement::eAllSame);
    ASSERT_NE(first->GetTextures(FbxLayerElement::eTextureDiffuse), nullptr);
    EXPECT_EQ(first->GetTextures(FbxLayerElement::eTextureDiffuse)->GetMappingMode(), FbxLayerElement::eAllSame);
    EXPECT_EQ(first->GetVisibility(), nullptr);
    ASSERT_NE(first->GetEdgeCrease(), nullptr);
    EXPECT_EQ(first->GetEdgeCrease()->GetDirectArray().GetAt(0), 0.5);
    const FbxLayerElementUserData* user = first->GetUserData();
    ASSERT_NE(user, nullptr);
    ASSERT_EQ(user->GetColumnCount(), 1);
    EXPECT_EQ(user->GetColumn(0)->name, "heat");
    EXPECT_EQ(user->GetColumn(0)->values.GetCount(), 2);
}

TEST_F(GeometryRecords, BadArraysGiveEmptyElementsAndNoHugeAllocations) {
    Import(sceneFile([](FbxBinaryBuilder& b) {
        object(b, "Geometry", 1, "Bad", "Mesh");
        // A count far beyond what a few compressed bytes can hold.
        std::vector<uint8_t> tiny = FbxBinaryBuilder::Deflate("\0\0\0\0\0\0\0\0", 8);
        field(b, "Vertices").ArrayWithHeader('d', 0x40000000, 1, tiny).End();
        // Raw data shorter than its count.
        field(b, "PolygonVertexIndex").ArrayWithHeader('i', 100, 0, std::vector<uint8_t>(12, 0)).End();
        element(b, "LayerElementNormal", 101, "", "ByPolygonVertex", "IndexToDirect", [](FbxBinaryBuilder& b) {
            field(b, "Normals").IntArray({1, 2, 3}).End();  // wrong type
            field(b, "NormalsIndex").DoubleArray({0}).End();
        });
        element(b, "LayerElementMaterial", 101, "", "AllSame", "IndexToDirect",
                [](FbxBinaryBuilder& b) { field(b, "Materials").IntArray({4}).End(); });
        layer(b, 0, {{"LayerElementNormal", 0}, {"LayerElementMaterial", 0}});
        b.End();
    }));
    FbxMesh* mesh = Find<FbxMesh>("Bad");
    ASSERT_NE(mesh, nullptr);
    EXPECT_EQ(mesh->GetControlPointsCount(), 0);
    EXPECT_EQ(mesh->GetPolygonCount(), 0);
    ASSERT_NE(mesh->GetElementNormal(0), nullptr);
    EXPECT_EQ(mesh->GetElementNormal(0)->GetDirectArray().GetCount(), 0);
    EXPECT_EQ(mesh->GetElementNormal(0)->GetIndexArray().GetCount(), 0);
    const FbxLayerElementMaterial* materials = mesh->GetElementMaterial(0);
    ASSERT_NE(materials, nullptr);
    EXPECT_EQ(materials->GetMappingMode(), FbxLayerElement::eAllSame);
    ASSERT_EQ(materials->GetIndexArray().GetCount(), 1);
    EXPECT_EQ(materials->GetIndexArray().GetAt(0), 4);
    EXPECT_FALSE(mesh->GenerateTangentsData("none"));
}

TEST_F(GeometryRecords, ClustersAndSkinsKeepIndicesWeightsAndBindMatrices) {
    std::vector<double> link(16, 0.0);
    for (int i = 0; i < 4; ++i) link[static_cast<size_t>(i * 5)] = 2.0;
    link[12] = 10.0;                                                       // translation x
    std::vector<double> transform = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0};  // 12 values: the last row is 0
    Import(sceneFile(
        [&](FbxBinaryBuilder& b) {
            object(b, "Model", 10, "Bone", "LimbNode").End();
            fivePointMesh(b, "Skinned", 1);
            b.End();
            object(b, "Deformer", 2, "Skin", "Skin");
            field(b, "Version").Int(101).End();
            field(b, "Link_DeformAcuracy").Double(25.0).End();
            field(b, "SkinningType").String("Blend").End();
            field(b, "Indexes").IntArray({1, 3}).End();
            field(b, "BlendWeights").DoubleArray({0.25, 0.75, 0.5}).End();
            b.End();
            object(b, "Deformer", 3, "Cluster", "Cluster");
            field(b, "Mode").String("Total1").End();
            field(b, "UserData").String("id").String("data").End();
            field(b, "Indexes").IntArray({0, 2, 4}, FbxArrayEncoding::eZlib).End();
            field(b, "Weights").DoubleArray({0.5}).End();
            field(b, "Transform").DoubleArray(transform).End();
            field(b, "TransformLink").DoubleArray(link).End();
            b.Begin("AssociateModel");
            field(b, "Transform").DoubleArray(link).End();
            b.End();
            b.End();
            object(b, "Deformer", 4, "Bare", "Cluster");
            field(b, "Mode").String("Sideways").End();
            field(b, "Indexes").IntArray({1}).End();
            field(b, "Weights").IntArray({1}).End();  // wrong type: weight 0
            field(b, "TransformParent").DoubleArray({3}).End();
            b.End();
            object(b, "Deformer", 5, "OldSkin", "Skin");
            field(b, "SkinningType").String("Blend").End();  // version 100 stops before it
            b.End();
        },
        [](FbxBinaryBuilder& b) {
            connect(b, 10, 3);
            connect(b, 3, 2);
            connect(b, 4, 2);
            connect(b, 2, 1);
        }));
    FbxMesh* mesh = Find<FbxMesh>("Skinned");
    ASSERT_NE(mesh, nullptr);
    auto* skin = static_cast<FbxSkin*>(mesh->GetDeformer(0, FbxDeformer::eSkin));
    ASSERT_NE(skin, nullptr);
    EXPECT_EQ(skin->GetGeometry(), mesh);
    EXPECT_EQ(skin->GetDeformAccuracy(), 25.0);
    EXPECT_EQ(skin->GetSkinningType(), FbxSkin::eBlend);
    ASSERT_EQ(skin->GetControlPointIndicesCount(), 2);
    EXPECT_EQ(skin->GetControlPointBlendWeights()[1], 0.75);
    EXPECT_EQ(Find<FbxSkin>("OldSkin")->GetSkinningType(), FbxSkin::eRigid);

    ASSERT_EQ(skin->GetClusterCount(), 2);
    FbxCluster* cluster = skin->GetCluster(0);
    ASSERT_NE(cluster->GetLink(), nullptr);
    EXPECT_STREQ(cluster->GetLink()->GetName(), "Bone");
    EXPECT_EQ(cluster->GetLinkMode(), FbxCluster::eTotalOne);
    EXPECT_STREQ(cluster->GetUserData(), "data");
    ASSERT_EQ(cluster->GetControlPointIndicesCount(), 3);
    EXPECT_EQ(cluster->GetControlPointIndices()[2], 4);
    EXPECT_EQ(cluster->GetControlPointWeights()[0], 0.5);
    EXPECT_EQ(cluster->GetControlPointWeights()[2], 0.0);
    // The stored transform is the file's times the link's, whose last row
    // was missing in the file's.
    FbxMatrix expected;
    expected.SetValues(transform.data(), 12);
    FbxMatrix linkMatrix;
    linkMatrix.SetValues(link.data(), 16);
    expected = linkMatrix * expected;
    EXPECT_EQ(cluster->GetTransform(), expected);
    EXPECT_EQ(cluster->GetTransform().Get(3, 3), 0.0);
    EXPECT_EQ(cluster->GetTransformLink(), linkMatrix);
    EXPECT_EQ(cluster->GetTransformAssociateModel(), linkMatrix * linkMatrix);
    FbxAMatrix affine;
    EXPECT_EQ(cluster->GetTransformLinkMatrix(affine).GetT(), FbxVector4(10, 0, 0, 1));
    EXPECT_FALSE(cluster->IsTransformParentSet());

    FbxCluster* bare = skin->GetCluster(1);
    EXPECT_EQ(bare->GetLink(), nullptr);
    EXPECT_EQ(bare->GetLinkMode(), FbxCluster::eNormalize);
    ASSERT_EQ(bare->GetControlPointIndicesCount(), 1);
    EXPECT_EQ(bare->GetControlPointWeights()[0], 0.0);
    EXPECT_TRUE(bare->IsTransformParentSet());
    EXPECT_EQ(bare->GetTransformParentMatrix(affine).GetS(), FbxVector4(3, 0, 0));
}

TEST_F(GeometryRecords, PosesKeepTheEntriesOfKnownNodes) {
    Import(sceneFile([](FbxBinaryBuilder& b) {
        object(b, "Model", 10, "A", "Null").End();
        object(b, "Model", 11, "B", "Null").End();
        object(b, "Material", 12, "NotANode", "").End();
        auto entry = [&](int64_t id, std::vector<double> matrix, int local) {
            b.Begin("PoseNode");
            field(b, "Node").Long(id).End();
            if (!matrix.empty()) field(b, "Matrix").DoubleArray(matrix).End();
            field(b, "Local").Int(local).End();
            b.End();
        };
        for (const char* kind : {"BindPose", "RestPose"}) {
            object(b, "Pose", kind[0] == 'B' ? 20 : 21, kind, kind);
            field(b, "NbPoseNodes").Int(9).End();
            entry(10, {}, 1);
            entry(99, {1}, 0);
            entry(12, {1}, 0);
            entry(11, {4, 0, 0, 0, 0, 4}, 1);
            b.End();
        }
    }));
    FbxPose* bind = Find<FbxPose>("BindPose");
    FbxPose* rest = Find<FbxPose>("RestPose");
    ASSERT_NE(bind, nullptr);
    ASSERT_NE(rest, nullptr);
    EXPECT_TRUE(bind->IsBindPose());
    EXPECT_TRUE(rest->IsRestPose());
    ASSERT_EQ(bind->GetCount(), 2);
    EXPECT_STREQ(bind->GetNode(0)->GetName(), "A");
    EXPECT_EQ(bind->GetMatrix(0), FbxMatrix());
    EXPECT_FALSE(bind->IsLocalMatrix(0));
    EXPECT_STREQ(bind->GetNode(1)->GetName(), "B");
    EXPECT_EQ(bind->GetMatrix(1).Get(1, 1), 4.0);
    EXPECT_EQ(bind->GetMatrix(1).Get(2, 2), 0.0);
    EXPECT_TRUE(rest->IsLocalMatrix(0));
    EXPECT_TRUE(rest->IsLocalMatrix(1));
}

TEST_F(GeometryRecords, MaterialsFollowTheirWordsAndOldNamesMove) {
    Import(sceneFile([](FbxBinaryBuilder& b) {
        object(b, "Material", 1, "Shiny", "");
        field(b, "ShadingModel").String("phong").End();
        field(b, "MultiLayer").Int(1).End();
        b.End();
        object(b, "Material", 2, "Matte", "Lambert");
        field(b, "ShadingModel").String("Phong").End();
        b.End();
        object(b, "Material", 3, "Toon", "");
        field(b, "ShadingModel").String("Toon").End();
        b.End();
        object(b, "Material", 4, "Old", "Phong");
        field(b, "Version").Int(101).End();
        b.Begin("Properties70");
        b.Begin("P")
            .String("Diffuse")
            .String("Vector3D")
            .String("Vector")
            .String("")
            .Double(0.1)
            .Double(0.2)
            .Double(0.3)
            .End();
        b.Begin("P").String("Opacity").String("double").String("Number").String("").Double(0.25).End();
        b.Begin("P").String("Shininess").String("double").String("Number").String("").Double(7.0).End();
        b.Begin("P").String("DiffuseFactor").String("double").String("Number").String("").Double(0.5).End();
        b.End();
        b.End();
    }));
    auto* shiny = Find<FbxSurfacePhong>("Shiny");
    ASSERT_NE(shiny, nullptr);
    EXPECT_TRUE(shiny->MultiLayer().Get());
    EXPECT_EQ(shiny->Specular().Get(), FbxDouble3(0.2, 0.2, 0.2));
    auto* matte = Find<FbxSurfaceLambert>("Matte");
    ASSERT_NE(matte, nullptr);
    EXPECT_FALSE(matte->Is<FbxSurfacePhong>());
    EXPECT_FALSE(matte->FindProperty(FbxSurfaceMaterial::sSpecular).IsValid());
    auto* toon = Find<FbxSurfaceMaterial>("Toon");
    ASSERT_NE(toon, nullptr);
    EXPECT_FALSE(toon->Is<FbxSurfaceLambert>());
    EXPECT_EQ(toon->ShadingModel().Get(), "Toon");
    auto* old = Find<FbxSurfacePhong>("Old");
    ASSERT_NE(old, nullptr);
    EXPECT_EQ(old->Diffuse().Get(), FbxDouble3(0.1, 0.2, 0.3));
    EXPECT_EQ(old->DiffuseFactor().Get(), 1.0);
    EXPECT_EQ(old->TransparencyFactor().Get(), 0.75);
    EXPECT_EQ(old->Shininess().Get(), 7.0);
}

TEST_F(GeometryRecords, TexturesVideosAndLayeredTexturesKeepTheirFilesAndEntries) {
    fs::create_directories(dir / "maps");
    std::ofstream(dir / "maps" / "pic.png") << "png";
    Bytes content{1, 2, 3, 4, 5};
    Import(sceneFile([&](FbxBinaryBuilder& b) {
        object(b, "Texture", 1, "Texture", "");
        field(b, "TextureName").String("Texture::Picture").End();
        field(b, "FileName").String("C:\\art\\pic.png").End();
        field(b, "RelativeFilename").String("maps\\pic.png").End();
        field(b, "Media").String("Video::pic").End();
        field(b, "ModelUVTranslation").Double(0.5).Double(0.25).End();
        field(b, "Texture_Alpha_Source").String("Alpha_Black").End();
        b.End();
        object(b, "Texture", 2, "Cropped", "");
        field(b, "Cropping").Int(1).Int(2).Int(3).Int(4).End();
        b.End();
        for (int64_t id : {3, 4}) {
            object(b, "Video", id, id == 3 ? "First" : "Second", "Clip");
            field(b, "Filename").String("/elsewhere/embedded.png").End();
            field(b, "RelativeFilename").String("embedded.png").End();
            field(b, "Content").Raw(content).End();
            b.End();
        }
        object(b, "LayeredTexture", 5, "Stack", "");
        field(b, "BlendModes").Int(1).Int(40).End();
        field(b, "Alphas").Double(0.5).Double(2.0).Double(0.1).End();
        b.End();
    }));
    auto* texture = Find<FbxFileTexture>("Picture");
    ASSERT_NE(texture, nullptr);
    EXPECT_STREQ(texture->GetRelativeFileName(), "maps\\pic.png");
    // The writer's path is not there: the file beside the FBX file is.
    EXPECT_EQ(texture->GetFileName(), (dir / "maps" / "pic.png").string());
    EXPECT_STREQ(texture->GetMediaName(), "pic");
    EXPECT_EQ(texture->GetTranslationV(), 0.25);
    EXPECT_EQ(texture->GetAlphaSource(), FbxTexture::eBlack);
    EXPECT_EQ(texture->GetCroppingTop(), 0);
    auto* cropped = Find<FbxFileTexture>("Cropped");
    EXPECT_EQ(cropped->GetCroppingBottom(), 4);
    EXPECT_STREQ(cropped->GetFileName(), "");

    // Both videos name one embedded file: it is written once.
    fs::path extracted = dir / "scene.fbm" / "embedded.png";
    for (const char* name : {"First", "Second"}) {
        auto* video = Find<FbxVideo>(name);
        ASSERT_NE(video, nullptr);
        EXPECT_EQ(video->GetEmbeddedContentSize(), 5);
        EXPECT_EQ(video->GetFileName(), extracted.string()) << name;
        EXPECT_STREQ(video->GetOriginalFileName(), "/elsewhere/embedded.png");
    }
    EXPECT_EQ(fs::file_size(extracted), 5u);

    auto* stack = Find<FbxLayeredTexture>("Stack");
    ASSERT_NE(stack, nullptr);
    ASSERT_EQ(stack->GetEntries().size(), 2u);
    EXPECT_EQ(stack->GetEntries()[1].blendMode, 5);
    EXPECT_EQ(stack->GetEntries()[0].alpha, 0.5);
    EXPECT_EQ(stack->GetEntries()[1].alpha, 1.0);
}

}  // namespace
