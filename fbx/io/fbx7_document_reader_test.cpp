#include "fbx/io/fbx7_document_reader.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <string>
#include <vector>

#include "fbx/io/fbx_binary_builder_testing.h"
#include "fbx/io/fbx_importer.h"
#include "fbx/io/fbx_io_settings.h"
#include "fbx/model/fbx_anim_curve.h"
#include "fbx/model/fbx_anim_curve_node.h"
#include "fbx/model/fbx_anim_layer.h"
#include "fbx/model/fbx_anim_stack.h"
#include "fbx/model/fbx_cluster.h"
#include "fbx/model/fbx_document_info.h"
#include "fbx/model/fbx_file_texture.h"
#include "fbx/model/fbx_global_settings.h"
#include "fbx/model/fbx_manager.h"
#include "fbx/model/fbx_mesh.h"
#include "fbx/model/fbx_node.h"
#include "fbx/model/fbx_null.h"
#include "fbx/model/fbx_pose.h"
#include "fbx/model/fbx_scene.h"
#include "fbx/model/fbx_skeleton.h"
#include "fbx/model/fbx_skin.h"
#include "fbx/model/fbx_surface_phong.h"
#include "fbx/model/fbx_video.h"

namespace {

namespace fs = std::filesystem;
using Bytes = std::vector<uint8_t>;

// --- Building files -------------------------------------------------------

void definitions(FbxBinaryBuilder& b, std::initializer_list<const char*> words) {
    b.Begin("Definitions");
    b.Begin("Version").Int(100).End();
    for (const char* word : words) {
        b.Begin("ObjectType").String(word);
        b.Begin("Count").Int(1).End();
        b.End();
    }
    b.End();
}

// Begins an object record; the caller adds its block and ends it.
FbxBinaryBuilder& object(FbxBinaryBuilder& b, const char* word, int64_t id, const char* name, const char* subclass) {
    return b.Begin(word).Long(id).ObjectName(name, word).String(subclass);
}

void leaf(FbxBinaryBuilder& b, const char* word, int64_t id, const char* name, const char* subclass) {
    object(b, word, id, name, subclass).End();
}

void property3(FbxBinaryBuilder& b, const char* name, const char* type, double x, double y, double z) {
    b.Begin("P").String(name).String(type).String("").String("A").Double(x).Double(y).Double(z).End();
}

void connect(FbxBinaryBuilder& b, const char* kind, int64_t source, int64_t destination) {
    b.Begin("C").String(kind).Long(source).Long(destination).End();
}

// A file of the given sections: `objects` writes inside "Objects",
// `connections` inside "Connections".
Bytes sceneFile(std::initializer_list<const char*> words, const std::function<void(FbxBinaryBuilder&)>& objects,
                const std::function<void(FbxBinaryBuilder&)>& connections) {
    FbxBinaryBuilder b(7400);
    b.Begin("Creator").String("kiva test").End();
    b.Begin("Documents");
    b.Begin("Count").Int(1).End();
    b.Begin("Document").Long(1000).String("FileScene").String("Scene");
    b.Begin("RootNode").Long(0).End();
    b.End();
    b.End();
    definitions(b, words);
    b.Begin("Objects");
    if (objects) objects(b);
    b.EmptyBlock();
    b.End();
    b.Begin("Connections");
    if (connections) connections(b);
    b.EmptyBlock();
    b.End();
    return b.Finish();
}

class DocumentReader : public ::testing::Test {
protected:
    void SetUp() override {
        dir = fs::temp_directory_path() / ("kiva_docreader_test_" + std::to_string(getpid()));
        fs::create_directories(dir);
        manager = FbxManager::Create();
        settings = FbxIOSettings::Create(manager, "IOSRoot");
        manager->SetIOSettings(settings);
        importer = FbxImporter::Create(manager, "");
        scene = FbxScene::Create(manager, "myScene");
    }
    void TearDown() override {
        manager->Destroy();
        fs::remove_all(dir);
    }

    std::string Write(const std::string& name, const Bytes& bytes) {
        std::string path = (dir / name).string();
        std::ofstream(path, std::ios::binary).write(reinterpret_cast<const char*>(bytes.data()), bytes.size());
        return path;
    }
    // Imports the bytes into `scene`; false when the file does not open or
    // the read fails.
    bool Import(const Bytes& bytes, const std::string& name = "scene.fbx") {
        std::string path = Write(name, bytes);
        if (!importer->Initialize(path.c_str(), -1, settings)) return false;
        return importer->Import(scene);
    }
    bool ImportBlender(const char* name) {
        std::string path = std::string(KIVA_SOURCE_DIR) + "/testdata/fbx/blender/" + name + ".fbx";
        return importer->Initialize(path.c_str(), -1, settings) && importer->Import(scene);
    }
    std::string Message() const { return importer->GetStatus().GetErrorString(); }

    FbxNode* Node(const char* name) const {
        return static_cast<FbxNode*>(scene->FindSrcObject(FbxCriteria::ObjectType(FbxNode::ClassId), name));
    }
    template <class T>
    int Count() const {
        return scene->GetSrcObjectCount<T>();
    }
    static std::vector<std::string> ChildNames(const FbxNode* node) {
        std::vector<std::string> names;
        for (int i = 0; i < node->GetChildCount(); ++i) names.emplace_back(node->GetChild(i)->GetName());
        return names;
    }

    fs::path dir;
    FbxManager* manager = nullptr;
    FbxIOSettings* settings = nullptr;
    FbxImporter* importer = nullptr;
    FbxScene* scene = nullptr;
};

// --- Files written by Blender -----------------------------------------------

TEST_F(DocumentReader, BlenderEmptiesKeepTheirHierarchyTransformsAndUserProperties) {
    ASSERT_TRUE(ImportBlender("empties_hierarchy")) << Message();
    EXPECT_STREQ(scene->GetName(), "EmptiesScene");
    FbxNode* root = scene->GetRootNode();
    EXPECT_EQ(ChildNames(root), std::vector<std::string>{"Top"});
    FbxNode* top = Node("Top");
    ASSERT_NE(top, nullptr);
    EXPECT_EQ(ChildNames(top), (std::vector<std::string>{"Middle", "Sibling"}));
    EXPECT_EQ(ChildNames(Node("Middle")), std::vector<std::string>{"Bottom"});
    for (const char* name : {"Top", "Middle", "Sibling", "Bottom"}) {
        FbxNode* node = Node(name);
        ASSERT_NE(node, nullptr) << name;
        EXPECT_NE(FbxCast<FbxNull>(node->GetNodeAttribute()), nullptr) << name;
    }
    // Child transforms are Blender's local values.
    FbxNode* bottom = Node("Bottom");
    FbxDouble3 t = bottom->LclTranslation().Get();
    FbxDouble3 r = bottom->LclRotation().Get();
    FbxDouble3 s = bottom->LclScaling().Get();
    EXPECT_NEAR(t[0], 0.5, 1e-5);
    EXPECT_NEAR(t[2], -1.0, 1e-5);
    EXPECT_NEAR(r[1], 30.0, 1e-5);
    EXPECT_NEAR(s[1], 0.5, 1e-5);
    EXPECT_NEAR(s[2], 3.0, 1e-5);
    EXPECT_NEAR(Node("Middle")->LclRotation().Get()[0], 45.0, 1e-5);
    EXPECT_EQ(bottom->FindProperty("kiva_tag").Get<FbxString>(), "leaf node");
    EXPECT_DOUBLE_EQ(bottom->FindProperty("kiva_weight").Get<FbxDouble>(), 2.5);
    EXPECT_EQ(bottom->FindProperty("kiva_count").Get<FbxInt>(), 7);

    FbxGlobalSettings* global = scene->GetGlobalSettings();
    ASSERT_NE(global, nullptr);
    EXPECT_EQ(global->UpAxis().Get(), 1);
    EXPECT_DOUBLE_EQ(global->UnitScaleFactor().Get(), 1.0);
    EXPECT_DOUBLE_EQ(global->CustomFrameRate().Get(), 24.0);
    EXPECT_EQ(global->TimeMode().Get(), 11);
}

TEST_F(DocumentReader, BlenderMaterialsStandOnTheirNodesInConnectionOrder) {
    ASSERT_TRUE(ImportBlender("multi_material")) << Message();
    FbxNode* strip = Node("MultiMaterialStrip");
    ASSERT_NE(strip, nullptr);
    EXPECT_EQ(strip->GetParent(), scene->GetRootNode());
    ASSERT_NE(strip->GetMesh(), nullptr);
    EXPECT_STREQ(strip->GetMesh()->GetName(), "MultiMaterialStripMesh");
    ASSERT_EQ(strip->GetMaterialCount(), 3);
    EXPECT_STREQ(strip->GetMaterial(0)->GetName(), "Red");
    EXPECT_STREQ(strip->GetMaterial(1)->GetName(), "Green");
    EXPECT_STREQ(strip->GetMaterial(2)->GetName(), "Blue");
    EXPECT_NE(FbxCast<FbxSurfacePhong>(strip->GetMaterial(0)), nullptr);
}

TEST_F(DocumentReader, BlenderTextureConnectsToTheMaterialProperty) {
    ASSERT_TRUE(ImportBlender("textured_cube")) << Message();
    FbxNode* cube = Node("TexturedCube");
    ASSERT_NE(cube, nullptr);
    ASSERT_EQ(cube->GetMaterialCount(), 1);
    FbxSurfaceMaterial* material = cube->GetMaterial(0);
    EXPECT_STREQ(material->GetName(), "CheckerMaterial");
    FbxProperty diffuse = material->FindProperty("DiffuseColor");
    ASSERT_TRUE(diffuse.IsValid());
    ASSERT_EQ(diffuse.GetSrcObjectCount(), 1);
    FbxFileTexture* texture = FbxCast<FbxFileTexture>(diffuse.GetSrcObject(0));
    ASSERT_NE(texture, nullptr);
    EXPECT_STREQ(texture->GetName(), "base_color_texture");
    ASSERT_EQ(texture->GetSrcObjectCount<FbxVideo>(), 1);
    EXPECT_STREQ(texture->GetSrcObject<FbxVideo>()->GetName(), "checker.png");
}

TEST_F(DocumentReader, BlenderRigHasItsBonesSkinPoseAndAnimationObjects) {
    ASSERT_TRUE(ImportBlender("skinned_armature")) << Message();
    FbxNode* rig = Node("Rig");
    ASSERT_NE(rig, nullptr);
    EXPECT_NE(FbxCast<FbxNull>(rig->GetNodeAttribute()), nullptr);
    // Blender parents the mesh to the armature object, but its exporter
    // connects the mesh's model to the scene's root.
    EXPECT_EQ(ChildNames(rig), std::vector<std::string>{"Root"});
    EXPECT_STREQ(Node("SkinnedColumn")->GetParent()->GetName(), "RootNode");
    const char* chain[] = {"Root", "Spine", "Neck", "Head"};
    for (int i = 0; i < 4; ++i) {
        FbxNode* bone = Node(chain[i]);
        ASSERT_NE(bone, nullptr) << chain[i];
        EXPECT_STREQ(bone->GetParent()->GetName(), i == 0 ? "Rig" : chain[i - 1]);
        FbxSkeleton* skeleton = bone->GetSkeleton();
        ASSERT_NE(skeleton, nullptr) << chain[i];
        EXPECT_EQ(skeleton->GetSkeletonType(), FbxSkeleton::eLimbNode);
    }
    FbxNode* column = Node("SkinnedColumn");
    ASSERT_NE(column->GetMesh(), nullptr);
    ASSERT_EQ(column->GetMaterialCount(), 1);
    EXPECT_STREQ(column->GetMaterial(0)->GetName(), "SkinMaterial");
    EXPECT_EQ(Count<FbxSkin>(), 1);
    EXPECT_EQ(Count<FbxCluster>(), 4);
    EXPECT_EQ(column->GetMesh()->GetSrcObjectCount<FbxSkin>(), 1);
    EXPECT_EQ(Count<FbxPose>(), 1);
    EXPECT_EQ(Count<FbxAnimStack>(), 1);
    EXPECT_EQ(Count<FbxAnimLayer>(), 1);
    EXPECT_EQ(Count<FbxAnimCurveNode>(), 15);
    EXPECT_EQ(Count<FbxAnimCurve>(), 45);
}

// --- Sections and passes ----------------------------------------------------------

TEST_F(DocumentReader, WithoutDefinitionsNoObjectIsRead) {
    FbxBinaryBuilder b(7400);
    b.Begin("Objects");
    object(b, "Model", 10, "Lost", "Null").EmptyBlock().End();
    b.End();
    b.Begin("Connections");
    connect(b, "OO", 10, 0);
    b.End();
    ASSERT_TRUE(Import(b.Finish())) << Message();
    EXPECT_EQ(Count<FbxNode>(), 1);  // the root node alone
    EXPECT_EQ(scene->GetRootNode()->GetChildCount(), 0);
    EXPECT_STREQ(scene->GetName(), "myScene");  // no "Documents": the name stays
}

TEST_F(DocumentReader, ObjectsOfATypeMissingFromDefinitionsAreNotRead) {
    Bytes bytes = sceneFile(
        {"Model"},
        [](FbxBinaryBuilder& b) {
            leaf(b, "Model", 10, "Kept", "Null");
            leaf(b, "NodeAttribute", 11, "Dropped", "Null");
        },
        [](FbxBinaryBuilder& b) {
            connect(b, "OO", 10, 0);
            connect(b, "OO", 11, 10);
        });
    ASSERT_TRUE(Import(bytes)) << Message();
    EXPECT_STREQ(scene->GetName(), "FileScene");
    ASSERT_NE(Node("Kept"), nullptr);
    EXPECT_EQ(Node("Kept")->GetNodeAttributeCount(), 0);
    EXPECT_EQ(Count<FbxNull>(), 0);
}

TEST_F(DocumentReader, DocumentsWithCountZeroFailTheRead) {
    FbxBinaryBuilder b(7400);
    b.Begin("Documents");
    b.Begin("Count").Int(0).End();
    b.End();
    EXPECT_FALSE(Import(b.Finish()));
    EXPECT_EQ(Message(), "File is corrupted (or invalid)");
    EXPECT_EQ(importer->GetStatus().GetCode(), FbxStatus::eFailure);
}

TEST_F(DocumentReader, ConnectionsComeAfterAllObjectsWhateverTheirOrder) {
    // The geometry comes before the model that uses it, and the child model
    // before its parent; "OO" to id 0 attaches under the scene's root.
    Bytes bytes = sceneFile(
        {"Geometry", "Model"},
        [](FbxBinaryBuilder& b) {
            leaf(b, "Geometry", 20, "Shape", "Mesh");
            leaf(b, "Model", 11, "Child", "Mesh");
            leaf(b, "Model", 10, "Parent", "Null");
        },
        [](FbxBinaryBuilder& b) {
            connect(b, "OO", 10, 0);
            connect(b, "OO", 11, 10);
            connect(b, "OO", 20, 11);
        });
    ASSERT_TRUE(Import(bytes)) << Message();
    EXPECT_EQ(ChildNames(scene->GetRootNode()), std::vector<std::string>{"Parent"});
    EXPECT_EQ(ChildNames(Node("Parent")), std::vector<std::string>{"Child"});
    FbxNode* child = Node("Child");
    ASSERT_EQ(child->GetNodeAttributeCount(), 1);
    EXPECT_STREQ(child->GetNodeAttributeByIndex(0)->GetName(), "Shape");
    EXPECT_NE(FbxCast<FbxMesh>(child->GetNodeAttributeByIndex(0)), nullptr);
    // Every object is a source of the document beside its connections.
    EXPECT_TRUE(scene->IsConnectedSrcObject(child));
    EXPECT_EQ(Count<FbxMesh>(), 1);
}

TEST_F(DocumentReader, OnlyMaterialsAndTexturesConnectTwiceToTheSameDestination) {
    Bytes bytes = sceneFile(
        {"Model", "Geometry", "Material", "Texture", "LayeredTexture"},
        [](FbxBinaryBuilder& b) {
            leaf(b, "Model", 10, "Node", "Mesh");
            leaf(b, "Geometry", 20, "Mesh", "Mesh");
            leaf(b, "Material", 30, "Paint", "");
            leaf(b, "Texture", 40, "Picture", "");
            leaf(b, "LayeredTexture", 50, "Layers", "");
        },
        [](FbxBinaryBuilder& b) {
            connect(b, "OO", 10, 0);
            connect(b, "OO", 20, 10);
            connect(b, "OO", 20, 10);
            connect(b, "OO", 30, 10);
            connect(b, "OO", 30, 10);
            connect(b, "OO", 40, 50);
            connect(b, "OD", 40, 50);
            connect(b, "OO", 10, 0);
        });
    ASSERT_TRUE(Import(bytes)) << Message();
    FbxNode* node = Node("Node");
    EXPECT_EQ(node->GetNodeAttributeCount(), 1);
    EXPECT_EQ(node->GetMaterialCount(), 2);
    EXPECT_EQ(node->GetMaterial(0), node->GetMaterial(1));
    EXPECT_EQ(scene->GetRootNode()->GetChildCount(), 1);
    FbxObject* layers = scene->FindSrcObject(FbxCriteria(), "Layers");
    ASSERT_NE(layers, nullptr);
    EXPECT_EQ(layers->GetSrcObjectCount(), 2);
}

TEST_F(DocumentReader, PropertyConnectionsNeedBothEndsAndUnknownKindsAreIgnored) {
    Bytes bytes = sceneFile(
        {"Model", "Material", "Texture"},
        [](FbxBinaryBuilder& b) {
            object(b, "Model", 10, "Node", "Null");
            b.Begin("Properties70");
            b.Begin("P")
                .String("Speed")
                .String("double")
                .String("Number")
                .String("AU")
                .Double(1.0)
                .Double(0.0)
                .Double(9.0)
                .End();
            b.End();
            b.End();
            object(b, "Material", 30, "Paint", "");
            b.Begin("Properties70");
            property3(b, "DiffuseColor", "Color", 1, 1, 1);
            property3(b, "SpecularColor", "Color", 1, 1, 1);
            b.Begin("P").String("DiffuseFactor").String("double").String("Number").String("A").Double(0.5).End();
            b.End();
            b.End();
            leaf(b, "Texture", 40, "Picture", "");
        },
        [](FbxBinaryBuilder& b) {
            connect(b, "OO", 10, 0);
            b.Begin("C").String("OP").Long(40).Long(30).String("DiffuseColor").End();
            b.Begin("C").String("OP").Long(40).Long(30).String("DiffuseColor").End();
            b.Begin("C").String("OP").Long(40).Long(30).String("NoSuchColor").End();
            b.Begin("C").String("PP").Long(10).String("Speed").Long(30).String("DiffuseFactor").End();
            b.Begin("C").String("PP").Long(10).String("Missing").Long(30).String("DiffuseFactor").End();
            b.Begin("C").String("PO").Long(10).String("Visibility").Long(30).End();
            b.Begin("C").String("EP").Long(30).String("SpecularColor").End();
            b.Begin("C").String("XX").Long(40).Long(10).End();
            b.Begin("C").String("OO").Long(40).Long(999).End();
            b.Begin("C").String("OO").Long(999).Long(10).End();
        });
    ASSERT_TRUE(Import(bytes)) << Message();
    EXPECT_FALSE(importer->GetStatus().Error());
    FbxObject* paint = scene->FindSrcObject(FbxCriteria(), "Paint");
    FbxNode* node = Node("Node");
    ASSERT_NE(paint, nullptr);
    FbxProperty diffuse = paint->FindProperty("DiffuseColor");
    ASSERT_TRUE(diffuse.IsValid());
    EXPECT_EQ(diffuse.GetSrcObjectCount(), 1);
    FbxProperty factor = paint->FindProperty("DiffuseFactor");
    ASSERT_EQ(factor.GetSrcPropertyCount(), 1);
    EXPECT_EQ(factor.GetSrcProperty(0), node->FindProperty("Speed"));
    EXPECT_EQ(paint->GetRootProperty().GetSrcPropertyCount(), 1);
    EXPECT_EQ(paint->FindProperty("SpecularColor").GetSrcObject(0), scene);
    // "XX" and the unknown ids made nothing.
    EXPECT_EQ(node->GetSrcObjectCount(), 0);
    EXPECT_EQ(node->GetDstObjectCount(), 2);  // the scene and the root node
}

// --- Records ----------------------------------------------------------------------

TEST_F(DocumentReader, ModelAndAttributeRecordsReadTheirOwnFields) {
    Bytes bytes = sceneFile(
        {"Model", "NodeAttribute"},
        [](FbxBinaryBuilder& b) {
            object(b, "Model", 10, "Old", "LimbNode");
            b.Begin("Version").Int(200).End();
            b.Begin("Shading").Char('W').End();
            b.Begin("Culling").String("CullingOnCW").End();
            b.Begin("PostTargetRotation").Double(1).Double(2).Double(3).End();
            b.Begin("Properties70");
            property3(b, "Lcl Translation", "Lcl Translation", 4, 5, 6);
            b.Begin("P").String("InheritType").String("enum").String("").String("").Int(2).End();
            b.Begin("P").String("DefaultAttributeIndex").String("int").String("Integer").String("").Int(0).End();
            b.End();
            b.End();
            object(b, "Model", 11, "New", "Null");
            b.Begin("Version").Int(232).End();
            b.Begin("Shading").Char('Q').End();
            b.End();
            object(b, "NodeAttribute", 20, "Bone", "LimbNode");
            b.Begin("Size").Double(0.25).End();
            b.End();
            object(b, "NodeAttribute", 21, "Limb", "Limb");
            b.Begin("LimbLength").Double(3.5).End();
            b.Begin("Properties");
            b.Begin("Size").Double(7).End();
            b.Begin("Color").Double(0.1).Double(0.2).Double(0.3).End();
            b.End();
            b.End();
            object(b, "NodeAttribute", 22, "Place", "Null");
            b.Begin("Properties");
            b.Begin("Size").Double(42).End();
            b.End();
            b.End();
            leaf(b, "NodeAttribute", 23, "Odd", "SomethingNew");
        },
        [](FbxBinaryBuilder& b) {
            connect(b, "OO", 11, 0);
            connect(b, "OO", 10, 11);
            connect(b, "OO", 20, 10);
        });
    ASSERT_TRUE(Import(bytes)) << Message();
    FbxNode* old = Node("Old");
    FbxNode* fresh = Node("New");
    ASSERT_NE(old, nullptr);
    EXPECT_TRUE(old->IsOldVersion());
    EXPECT_FALSE(fresh->IsOldVersion());
    EXPECT_EQ(old->GetShadingMode(), FbxNode::eWireFrame);
    EXPECT_EQ(fresh->GetShadingMode(), FbxNode::eHardShading);
    EXPECT_EQ(old->GetCullingType(), FbxNode::eCullingOnCW);
    EXPECT_DOUBLE_EQ(old->GetPostTargetRotation()[2], 3.0);
    EXPECT_DOUBLE_EQ(old->LclTranslation().Get()[1], 5.0);
    // An old bone under a node without a skeleton inherits as type 1.
    EXPECT_EQ(old->InheritType().Get(), FbxNode::eInheritRSrs);

    FbxSkeleton* bone = old->GetSkeleton();
    ASSERT_NE(bone, nullptr);
    EXPECT_EQ(bone->GetSkeletonType(), FbxSkeleton::eLimbNode);
    EXPECT_DOUBLE_EQ(bone->Size().Get(), 25.0);
    auto* limb = static_cast<FbxSkeleton*>(scene->FindSrcObject(FbxCriteria(), "Limb"));
    ASSERT_NE(FbxCast<FbxSkeleton>(limb), nullptr);
    EXPECT_EQ(limb->GetSkeletonType(), FbxSkeleton::eLimb);
    EXPECT_DOUBLE_EQ(limb->LimbLength().Get(), 3.5);
    EXPECT_DOUBLE_EQ(limb->Size().Get(), 7.0);
    EXPECT_DOUBLE_EQ(limb->GetLimbNodeColor()[1], 0.2);
    auto* place = FbxCast<FbxNull>(scene->FindSrcObject(FbxCriteria(), "Place"));
    ASSERT_NE(place, nullptr);
    EXPECT_DOUBLE_EQ(place->Size().Get(), 42.0);

    // A kind only the file knows survives as an object of a class made for it.
    FbxObject* odd = scene->FindSrcObject(FbxCriteria(), "Odd");
    ASSERT_NE(odd, nullptr);
    EXPECT_STREQ(odd->GetClassId().GetFbxFileTypeName(), "NodeAttribute");
    EXPECT_STREQ(odd->GetClassId().GetFbxFileSubTypeName(), "SomethingNew");
    EXPECT_EQ(manager->FindFileClass("NodeAttribute", "SomethingNew"), odd->GetClassId());
    EXPECT_TRUE(odd->Is<FbxNodeAttribute>());
}

TEST_F(DocumentReader, TemplatesGiveDefaultsThatTheObjectsOwnValuesOverride) {
    FbxBinaryBuilder b(7400);
    b.Begin("Definitions");
    b.Begin("ObjectType").String("Model");
    b.Begin("Count").Int(2).End();
    b.Begin("PropertyTemplate").String("FbxNode");
    b.Begin("Properties70");
    property3(b, "Lcl Scaling", "Lcl Scaling", 2, 2, 2);
    b.End();
    b.End();
    b.End();
    b.End();
    b.Begin("Objects");
    leaf(b, "Model", 10, "Plain", "Null");
    object(b, "Model", 11, "Own", "Null");
    b.Begin("Properties70");
    property3(b, "Lcl Scaling", "Lcl Scaling", 3, 3, 3);
    b.End();
    b.End();
    b.End();
    ASSERT_TRUE(Import(b.Finish())) << Message();
    EXPECT_DOUBLE_EQ(Node("Plain")->LclScaling().Get()[0], 2.0);
    EXPECT_DOUBLE_EQ(Node("Own")->LclScaling().Get()[0], 3.0);
}

// --- Bad input -------------------------------------------------------------------

TEST_F(DocumentReader, DuplicateIdsGarbageAndUncreatableClassesAreSkipped) {
    // A class whose objects cannot be made.
    manager->RegisterRuntimeClass("KivaBrokenClass", FbxObject::ClassId, nullptr, "Broken", "Widget");
    Bytes bytes = sceneFile(
        {"Model", "Broken", "Material"},
        [](FbxBinaryBuilder& b) {
            leaf(b, "Model", 10, "First", "Null");
            leaf(b, "Model", 10, "Second", "Null");
            // Values of the wrong codes read as 0 and "".
            b.Begin("Model").String("not an id").Int(5).Double(1.0).End();
            leaf(b, "Broken", 30, "Nothing", "Widget");
            leaf(b, "Material", 40, "Paint", "");
            leaf(b, "Material", 40, "PaintAgain", "");
            leaf(b, "Model", 50, "Last", "Null");
        },
        [](FbxBinaryBuilder& b) {
            connect(b, "OO", 10, 0);
            connect(b, "OO", 30, 0);
            connect(b, "OO", 50, 0);
            connect(b, "OO", 40, 50);
        });
    ASSERT_TRUE(Import(bytes)) << Message();
    EXPECT_EQ(ChildNames(scene->GetRootNode()), (std::vector<std::string>{"First", "Last"}));
    ASSERT_NE(Node("Second"), nullptr);  // made and kept, but its id is taken
    EXPECT_EQ(Node("Second")->GetParent(), nullptr);
    EXPECT_EQ(Count<FbxNode>(), 5);          // root, First, Second, the garbage one, Last
    EXPECT_EQ(Count<FbxSurfacePhong>(), 1);  // a material of a known id is skipped
    EXPECT_EQ(Node("Last")->GetMaterialCount(), 1);
}

TEST_F(DocumentReader, ConnectionsThatWouldCloseACycleOfNodesAreDropped) {
    Bytes bytes = sceneFile(
        {"Model"},
        [](FbxBinaryBuilder& b) {
            leaf(b, "Model", 10, "A", "Null");
            leaf(b, "Model", 11, "B", "Null");
            leaf(b, "Model", 12, "C", "Null");
            leaf(b, "Model", 13, "D", "Null");
        },
        [](FbxBinaryBuilder& b) {
            connect(b, "OO", 10, 0);
            connect(b, "OO", 11, 10);
            connect(b, "OO", 12, 0);
            connect(b, "OO", 13, 11);
            connect(b, "OO", 13, 12);  // a second parent is fine
            connect(b, "OO", 10, 13);  // A under its own grandchild
            connect(b, "OO", 12, 13);  // C under D, whose second parent is C
            connect(b, "OO", 0, 11);   // the root under a node
            connect(b, "OO", 11, 11);
        });
    ASSERT_TRUE(Import(bytes)) << Message();
    EXPECT_EQ(ChildNames(scene->GetRootNode()), (std::vector<std::string>{"A", "C"}));
    EXPECT_EQ(ChildNames(Node("D")), std::vector<std::string>{});
    EXPECT_EQ(Node("D")->GetDstObjectCount<FbxNode>(), 2);
    EXPECT_EQ(Node("B")->GetChildCount(), 1);
    EXPECT_EQ(scene->GetRootNode()->GetParent(), nullptr);
}

TEST_F(DocumentReader, TruncatedAndDamagedFilesFailOrGiveAPartialDocumentAndNeverCrash) {
    std::ifstream in(std::string(KIVA_SOURCE_DIR) + "/testdata/fbx/blender/skinned_armature.fbx", std::ios::binary);
    Bytes whole((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    ASSERT_GT(whole.size(), 1000u);
    auto tryImport = [&](const Bytes& bytes, const std::string& name) {
        FbxScene* kept = scene;
        scene = FbxScene::Create(manager, "partial");
        bool ok = Import(bytes, name);
        if (!ok) {
            EXPECT_TRUE(importer->GetStatus().Error()) << name;
        }
        EXPECT_NE(scene->GetRootNode(), nullptr) << name;
        scene->Destroy();
        scene = kept;
        return ok;
    };
    // Cut anywhere: only a file that lost no more than its footer reads.
    for (size_t cut = 100; cut < whole.size(); cut += 1499) {
        EXPECT_FALSE(tryImport(Bytes(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(cut)), "cut.fbx"));
        // A cut inside the header leaves no file of a known version.
        EXPECT_TRUE(Message() == "File is corrupted (or invalid)" || Message() == "Unexpected file type")
            << cut << ": " << Message();
    }
    EXPECT_TRUE(tryImport(Bytes(whole.begin(), whole.end() - 20), "short.fbx")) << Message();
    // Damaged bytes anywhere behind the header.
    for (size_t at = 100; at + 4 < whole.size(); at += 331) {
        Bytes damaged = whole;
        for (size_t k = 0; k < 4; ++k) damaged[at + k] = static_cast<uint8_t>(0xFF - k * 0x31);
        tryImport(damaged, "damaged.fbx");
    }
}

TEST_F(DocumentReader, PasswordUnresolvedReferencesAndEmbeddedFiles) {
    // A file with a node id needs the matching password.
    FbxBinaryBuilder locked(7400);
    locked.Begin("NodeId").String("secret").End();
    Bytes lockedBytes = locked.Finish();
    EXPECT_FALSE(Import(lockedBytes, "locked.fbx"));
    EXPECT_EQ(Message(), "Wrong password");
    EXPECT_EQ(importer->GetStatus().GetCode(), FbxStatus::ePasswordError);
    settings->SetStringProp(FbxIOPath::kPassword, "secret");
    EXPECT_TRUE(Import(lockedBytes, "locked.fbx")) << Message();

    // An external reference that no document resolves is reported; the
    // read goes on. Embedded files go into the media folder beside the file.
    FbxBinaryBuilder b(7400);
    b.Begin("References");
    b.Begin("Reference").String("Ref").String("External");
    b.Begin("Object").String("Elsewhere").End();
    b.End();
    b.Begin("FilePathUrl").String("/nowhere/other.fbx").End();
    b.End();
    definitions(b, {"Texture"});
    b.Begin("Objects");
    object(b, "Texture", 40, "Picture", "");
    b.Begin("Properties70");
    b.Begin("P").String("FileName").String("KString").String("").String("").String("textures/pic.png").End();
    b.End();
    b.End();
    b.End();
    b.Begin("Embedding");
    b.Begin("File");
    b.Begin("Filename").String("textures/pic.png").End();
    b.Begin("Content").Raw(Bytes{1, 2, 3, 4}).End();
    b.Begin("Consumers");
    b.Begin("Consumer").Long(40).String("FileName").Int(0).End();
    b.End();
    b.End();
    // Content in chunks, cut to the total size; a chunk short of it leaves
    // no file.
    b.Begin("File");
    b.Begin("Filename").String("chunks.bin").End();
    b.Begin("Content").Int(5);
    b.Begin("BinaryData").Raw(Bytes{1, 2, 3}).Raw(Bytes{4, 5, 6}).End();
    b.End();
    b.End();
    b.Begin("File");
    b.Begin("Filename").String("short.bin").End();
    b.Begin("Content").Int(9);
    b.Begin("BinaryData").Raw(Bytes{1, 2}).End();
    b.End();
    b.End();
    b.End();
    ASSERT_TRUE(Import(b.Finish(), "media.fbx")) << Message();
    EXPECT_EQ(fs::file_size(dir / "media.fbm" / "chunks.bin"), 5u);
    EXPECT_FALSE(fs::exists(dir / "media.fbm" / "short.bin"));
    EXPECT_EQ(Message(), "Unresolved external references");
    fs::path extracted = dir / "media.fbm" / "pic.png";
    EXPECT_EQ(fs::file_size(extracted), 4u);
    FbxObject* picture = scene->FindSrcObject(FbxCriteria(), "Picture");
    ASSERT_NE(picture, nullptr);
    // The consumer's entry now names the extracted file.
    EXPECT_EQ(picture->FindProperty("FileName").Get<FbxString>(), extracted.string());
    FbxDocumentInfo* info = FbxGetDocumentInfo(scene);
    ASSERT_NE(info, nullptr);
    EXPECT_EQ(info->FindProperty("DocumentEmbeddedUrl").Get<FbxString>(), (dir / "media.fbm").string());
}

TEST_F(DocumentReader, ProgressCountsObjectsAndReadsAreRepeatable) {
    ASSERT_TRUE(ImportBlender("empties_hierarchy")) << Message();
    EXPECT_GE(importer->GetProgress().GetCurrent(), 8.0f);  // four nodes and their attributes
    int objects = scene->GetSrcObjectCount();
    // A second import into the same scene replaces what the first one made.
    ASSERT_TRUE(ImportBlender("empties_hierarchy")) << Message();
    EXPECT_EQ(scene->GetSrcObjectCount(), objects);
    EXPECT_EQ(ChildNames(scene->GetRootNode()), std::vector<std::string>{"Top"});
}

}  // namespace
