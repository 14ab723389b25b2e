// Files exported by Blender (testdata/fbx/geometry, see its README), read
// with the geometry records and checked against what Blender itself said
// about each scene: the NAME.facts file written beside NAME.fbx.
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <map>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "fbx/io/fbx_importer.h"
#include "fbx/io/fbx_io_settings.h"
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

namespace fs = std::filesystem;
using Words = std::vector<std::string>;

std::string geometryFile(const std::string& name) {
    return std::string(KIVA_SOURCE_DIR) + "/testdata/fbx/geometry/" + name;
}

// "key: word word ..." lines.
std::map<std::string, Words> readFacts(const std::string& name) {
    std::map<std::string, Words> facts;
    std::ifstream in(geometryFile(name + ".facts"));
    std::string line;
    while (std::getline(in, line)) {
        size_t colon = line.find(": ");
        if (colon == std::string::npos) colon = line.size() - 1;
        std::istringstream words(line.substr(colon + 1));
        Words& values = facts[line.substr(0, colon)];
        for (std::string w; words >> w;) values.push_back(w);
    }
    return facts;
}

std::vector<double> numbers(const Words& words) {
    std::vector<double> v;
    for (const std::string& w : words) v.push_back(std::stod(w));
    return v;
}

class BlenderGeometry : public ::testing::Test {
protected:
    void SetUp() override {
        manager = FbxManager::Create();
        settings = FbxIOSettings::Create(manager, "IOSRoot");
        manager->SetIOSettings(settings);
        settings->SetBoolProp(FbxIOPath::kExtractEmbeddedData, false);
    }
    void TearDown() override { manager->Destroy(); }

    // Imports NAME.fbx (from `path` when given) and reads NAME.facts.
    void Load(const std::string& name, const std::string& path = "") {
        facts = readFacts(name);
        ASSERT_FALSE(facts.empty()) << name;
        FbxImporter* importer = FbxImporter::Create(manager, "");
        std::string file = path.empty() ? geometryFile(name + ".fbx") : path;
        scene = FbxScene::Create(manager, name.c_str());
        ASSERT_TRUE(importer->Initialize(file.c_str(), -1, settings) && importer->Import(scene))
            << importer->GetStatus().GetErrorString();
        node = static_cast<FbxNode*>(
            scene->FindSrcObject(FbxCriteria::ObjectType(FbxNode::ClassId), facts["mesh"].at(0).c_str()));
        ASSERT_NE(node, nullptr);
        mesh = node->GetMesh();
        ASSERT_NE(mesh, nullptr);
        EXPECT_EQ(mesh->GetName(), facts["mesh"].at(1));
    }

    // The facts that every file has: counts, polygon sizes, UV sets,
    // materials, control points and the corners listed.
    void CheckMesh() {
        EXPECT_EQ(mesh->GetControlPointsCount(), std::stoi(facts["controlPoints"].at(0)));
        ASSERT_EQ(mesh->GetPolygonCount(), std::stoi(facts["polygons"].at(0)));
        EXPECT_EQ(mesh->GetPolygonVertexCount(), std::stoi(facts["polygonVertices"].at(0)));
        for (int p = 0; p < mesh->GetPolygonCount(); ++p)
            EXPECT_EQ(mesh->GetPolygonSize(p), std::stoi(facts["polygonSizes"].at(static_cast<size_t>(p)))) << p;
        std::vector<FbxString> uvSets;
        mesh->GetUVSetNames(uvSets);
        EXPECT_EQ(uvSets, facts["uvSets"]);
        Words materials;
        for (int i = 0; i < node->GetMaterialCount(); ++i) materials.emplace_back(node->GetMaterial(i)->GetName());
        EXPECT_EQ(materials, facts["materials"]);
        if (materials.size() > 1) {
            const FbxLayerElementMaterial* element = mesh->GetElementMaterial(0);
            ASSERT_NE(element, nullptr);
            EXPECT_EQ(element->GetMappingMode(), FbxLayerElement::eByPolygon);
            const Words& expected = facts["materialIndices"];
            ASSERT_EQ(element->GetIndexArray().GetCount(), static_cast<int>(expected.size()));
            for (int p = 0; p < mesh->GetPolygonCount(); ++p)
                EXPECT_EQ(element->GetIndexArray().GetAt(p), std::stoi(expected[static_cast<size_t>(p)])) << p;
        }
        for (const auto& [key, values] : facts) {
            std::istringstream in(key);
            std::string what;
            int a = -1, b = -1;
            in >> what >> a >> b;
            bool vector = what == "controlPoint" || what == "normal" || what == "uv";
            std::vector<double> v = vector ? numbers(values) : std::vector<double>{};
            if (what == "controlPoint") {
                FbxVector4 point = mesh->GetControlPointAt(a);
                for (int i = 0; i < 3; ++i) EXPECT_NEAR(point[i], v[static_cast<size_t>(i)], 1e-5) << key;
            } else if (what == "corner") {
                EXPECT_EQ(mesh->GetPolygonVertex(a, b), std::stoi(values.at(0))) << key;
            } else if (what == "normal") {
                FbxVector4 normal;
                ASSERT_TRUE(mesh->GetPolygonVertexNormal(a, b, normal)) << key;
                for (int i = 0; i < 3; ++i) EXPECT_NEAR(normal[i], v[static_cast<size_t>(i)], 1e-5) << key;
            } else if (what == "uv") {
                FbxVector2 uv;
                bool unmapped = true;
                ASSERT_TRUE(mesh->GetPolygonVertexUV(a, b, "UVMap", uv, unmapped)) << key;
                EXPECT_FALSE(unmapped);
                EXPECT_NEAR(uv[0], v[0], 1e-5) << key;
                EXPECT_NEAR(uv[1], v[1], 1e-5) << key;
            }
        }
    }

    FbxManager* manager = nullptr;
    FbxIOSettings* settings = nullptr;
    FbxScene* scene = nullptr;
    FbxNode* node = nullptr;
    FbxMesh* mesh = nullptr;
    std::map<std::string, Words> facts;
};

TEST_F(BlenderGeometry, FlatCubeFaceMaterialsAndNgonsMatchBlender) {
    for (const char* name : {"flat_cube", "face_materials", "ngons"}) {
        SCOPED_TRACE(name);
        Load(name);
        CheckMesh();
    }
    // The painted cube's materials keep Blender's diffuse colours.
    for (int i = 0; i < node->GetMaterialCount(); ++i) {
        auto* material = FbxCast<FbxSurfaceLambert>(node->GetMaterial(i));
        ASSERT_NE(material, nullptr);
        std::vector<double> expected = numbers(facts["diffuse " + std::string(material->GetName())]);
        if (expected.empty()) continue;
        FbxDouble3 diffuse = material->Diffuse().Get();
        for (int c = 0; c < 3; ++c) EXPECT_NEAR(diffuse[c], expected[static_cast<size_t>(c)], 1e-6);
    }
}

TEST_F(BlenderGeometry, SmoothSphereSharesTangentsExceptAtItsUvSeam) {
    Load("uv_sphere");
    CheckMesh();
    const FbxLayerElementUV* uvs = mesh->GetElementUV(0);
    ASSERT_NE(uvs, nullptr);

    ASSERT_TRUE(mesh->GenerateTangentsData("UVMap"));
    const FbxLayerElementTangent* tangents = mesh->GetElementTangent(0);
    ASSERT_NE(tangents, nullptr);
    ASSERT_EQ(tangents->GetDirectArray().GetCount(), mesh->GetPolygonVertexCount());
    // The tangents of the corners at each control point with each UV index.
    std::map<std::pair<int, int>, std::set<std::vector<double>>> tangentsAt;
    std::map<int, std::set<std::vector<double>>> tangentsOfPoint;
    std::map<int, std::set<int>> uvIndicesAt;
    for (int p = 0; p < mesh->GetPolygonCount(); ++p)
        for (int k = 0; k < mesh->GetPolygonSize(p); ++k) {
            FbxVector4 t = tangents->GetDirectArray().GetAt(mesh->GetPolygonVertexIndex(p) + k);
            FbxVector4 n;
            ASSERT_TRUE(mesh->GetPolygonVertexNormal(p, k, n));
            EXPECT_NEAR(t.Length(), 1.0, 1e-9);
            EXPECT_NEAR(t.DotProduct(n), 0.0, 1e-6);
            int point = mesh->GetPolygonVertex(p, k);
            int uvIndex = -1;
            ASSERT_TRUE(mesh->ResolveElementIndex(*uvs, p, k, uvIndex));
            tangentsAt[{point, uvIndex}].insert({t[0], t[1], t[2], t[3]});
            tangentsOfPoint[point].insert({t[0], t[1], t[2], t[3]});
            uvIndicesAt[point].insert(uvIndex);
        }
    // Smooth normals: corners that share a UV share one tangent.
    for (const auto& [place, set] : tangentsAt) EXPECT_EQ(set.size(), 1u) << place.first;
    // Blender's seam is where the file's UV indices part, and away from the
    // equator the two sides keep tangents of their own.
    std::set<int> seam;
    for (const std::string& v : facts["seamControlPoints"]) seam.insert(std::stoi(v));
    int split = 0;
    for (const auto& [point, indices] : uvIndicesAt) {
        EXPECT_EQ(seam.count(point) == 1, indices.size() > 1) << point;
        split += seam.count(point) == 1 && tangentsOfPoint[point].size() > 1;
    }
    EXPECT_GE(split, 4);
}

TEST_F(BlenderGeometry, SkinKeepsBlenderWeightsWithUpToSixInfluences) {
    Load("skinned");
    CheckMesh();
    ASSERT_EQ(mesh->GetDeformerCount(FbxDeformer::eSkin), 1);
    auto* skin = static_cast<FbxSkin*>(mesh->GetDeformer(0, FbxDeformer::eSkin));
    const Words& bones = facts["bones"];
    ASSERT_EQ(skin->GetClusterCount(), static_cast<int>(bones.size()));
    std::vector<int> influences(static_cast<size_t>(mesh->GetControlPointsCount()));
    std::vector<double> sums(influences.size());
    for (int i = 0; i < skin->GetClusterCount(); ++i) {
        FbxCluster* cluster = skin->GetCluster(i);
        ASSERT_NE(cluster->GetLink(), nullptr);
        std::string bone = cluster->GetLink()->GetName();
        SCOPED_TRACE(bone);
        std::vector<double> indices = numbers(facts["group " + bone + " indices"]);
        std::vector<double> weights = numbers(facts["group " + bone + " weights"]);
        ASSERT_EQ(cluster->GetControlPointIndicesCount(), static_cast<int>(indices.size()));
        for (size_t k = 0; k < indices.size(); ++k) {
            int index = cluster->GetControlPointIndices()[k];
            EXPECT_EQ(index, static_cast<int>(indices[k]));
            EXPECT_NEAR(cluster->GetControlPointWeights()[k], weights[k], 1e-6);
            ++influences.at(static_cast<size_t>(index));
            sums.at(static_cast<size_t>(index)) += cluster->GetControlPointWeights()[k];
        }
    }
    EXPECT_EQ(*std::max_element(influences.begin(), influences.end()), std::stoi(facts["maxInfluences"].at(0)));
    for (int v : {0, 5, 11})
        EXPECT_NEAR(sums[static_cast<size_t>(v)], std::stod(facts["vertex " + std::to_string(v) + " weightSum"].at(0)),
                    1e-6);
    // The bind pose holds the mesh's node and every bone.
    ASSERT_EQ(scene->GetPoseCount(), 1);
    FbxPose* pose = scene->GetPose(0);
    EXPECT_TRUE(pose->IsBindPose());
    EXPECT_GE(pose->Find(node), 0);
    for (const std::string& bone : bones)
        EXPECT_GE(pose->Find(static_cast<FbxNode*>(
                      scene->FindSrcObject(FbxCriteria::ObjectType(FbxNode::ClassId), bone.c_str()))),
                  0)
            << bone;
}

TEST_F(BlenderGeometry, MaterialTexturesAndEmbeddedImagesReachTheirProperties) {
    // Blender's base colour, normal map and specular level arrive on these
    // properties of a Phong material.
    const char* properties[] = {FbxSurfaceMaterial::sDiffuse, FbxSurfaceMaterial::sNormalMap,
                                FbxSurfaceMaterial::sSpecularFactor};
    auto checkTextures = [&]() {
        auto* material = FbxCast<FbxSurfacePhong>(node->GetMaterial(0));
        ASSERT_NE(material, nullptr);
        const Words& images = facts["images"];
        for (size_t i = 0; i < images.size(); ++i) {
            FbxProperty p = material->FindProperty(properties[i]);
            ASSERT_EQ(p.GetSrcObjectCount(), 1) << properties[i];
            auto* texture = FbxCast<FbxFileTexture>(p.GetSrcObject(0));
            ASSERT_NE(texture, nullptr);
            EXPECT_EQ(fs::path(texture->GetRelativeFileName()).filename(), images[i]);
            ASSERT_EQ(texture->GetSrcObjectCount<FbxVideo>(), 1);
        }
    };
    Load("textured_material");
    CheckMesh();
    checkTextures();

    // Embedded images: their sizes with extraction off; with it on, the
    // files beside a copy of the FBX file, which the videos then name.
    Load("embedded_texture");
    checkTextures();
    for (int i = 0; i < scene->GetSrcObjectCount<FbxVideo>(); ++i) {
        FbxVideo* video = scene->GetSrcObject<FbxVideo>(i);
        EXPECT_EQ(video->GetEmbeddedContentSize(), std::stoi(facts["image " + std::string(video->GetName())].at(0)));
    }
    fs::path dir = fs::temp_directory_path() / ("kiva_geometry_blender_" + std::to_string(getpid()));
    fs::create_directories(dir);
    fs::copy_file(geometryFile("embedded_texture.fbx"), dir / "copy.fbx");
    settings->SetBoolProp(FbxIOPath::kExtractEmbeddedData, true);
    Load("embedded_texture", (dir / "copy.fbx").string());
    for (int i = 0; i < scene->GetSrcObjectCount<FbxVideo>(); ++i) {
        FbxVideo* video = scene->GetSrcObject<FbxVideo>(i);
        fs::path extracted = dir / "copy.fbm" / video->GetName();
        EXPECT_EQ(video->GetFileName(), extracted.string());
        EXPECT_EQ(fs::file_size(extracted),
                  static_cast<uintmax_t>(std::stoi(facts["image " + std::string(video->GetName())].at(0))));
    }
    fs::remove_all(dir);
}

}  // namespace
