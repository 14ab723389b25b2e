#include "fbx/io/fbx7_document_reader.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "fbx/io/fbx_importer.h"
#include "fbx/io/fbx_io_settings.h"
#include "fbx/io/fbx_test_scenes_testing.h"
#include "fbx/model/fbx_anim_curve.h"
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
#include "qe/scratch_dir_testing.h"

namespace {

using Bytes = std::vector<uint8_t>;
using Names = std::vector<std::string>;

constexpr char kCycle[] = "File is corrupted (or invalid): its connections form a cycle";

class DocumentReader : public ::testing::Test {
protected:
    void SetUp() override {
        manager = FbxManager::Create();
        settings = FbxIOSettings::Create(manager, "IOSRoot");
        manager->SetIOSettings(settings);
        importer = FbxImporter::Create(manager, "");
        scene = FbxScene::Create(manager, "myScene");
    }
    void TearDown() override { manager->Destroy(); }

    // Imports the bytes into `scene`; false when the file does not open or
    // the read fails.
    bool Import(const Bytes& bytes, const std::string& name = "scene.fbx") {
        std::string path = dir.write(name, std::string(bytes.begin(), bytes.end()));
        return importer->Initialize(path.c_str(), -1, settings) && importer->Import(scene);
    }
    bool ImportBlender(const char* name) {
        std::string path = std::string(KIVA_SOURCE_DIR) + "/testdata/fbx/blender/" + name + ".fbx";
        return importer->Initialize(path.c_str(), -1, settings) && importer->Import(scene);
    }
    std::string Message() const { return importer->GetStatus().GetErrorString(); }

    FbxNode* Node(const char* name) const {
        return static_cast<FbxNode*>(scene->FindSrcObject(FbxCriteria::ObjectType(FbxNode::ClassId), name));
    }
    FbxObject* Object(const char* name) const { return scene->FindSrcObject(FbxCriteria(), name); }
    template <class T>
    int Count() const {
        return scene->GetSrcObjectCount<T>();
    }
    static Names ChildNames(const FbxNode* node) {
        Names names;
        for (int i = 0; i < node->GetChildCount(); ++i) names.emplace_back(node->GetChild(i)->GetName());
        return names;
    }

    ScratchDir dir;
    FbxManager* manager = nullptr;
    FbxIOSettings* settings = nullptr;
    FbxImporter* importer = nullptr;
    FbxScene* scene = nullptr;
};

// --- Files written by Blender -----------------------------------------------

TEST_F(DocumentReader, BlenderEmptiesKeepTheirHierarchyTransformsAndUserProperties) {
    ASSERT_TRUE(ImportBlender("empties_hierarchy")) << Message();
    EXPECT_STREQ(scene->GetName(), "EmptiesScene");
    EXPECT_EQ(ChildNames(scene->GetRootNode()), Names{"Top"});
    EXPECT_EQ(ChildNames(Node("Top")), (Names{"Middle", "Sibling"}));
    EXPECT_EQ(ChildNames(Node("Middle")), Names{"Bottom"});
    for (const char* name : {"Top", "Middle", "Sibling", "Bottom"})
        EXPECT_NE(FbxCast<FbxNull>(Node(name)->GetNodeAttribute()), nullptr) << name;
    // Child transforms are Blender's local values.
    FbxNode* bottom = Node("Bottom");
    EXPECT_NEAR(bottom->LclTranslation().Get()[0], 0.5, 1e-5);
    EXPECT_NEAR(bottom->LclRotation().Get()[1], 30.0, 1e-5);
    EXPECT_NEAR(bottom->LclScaling().Get()[2], 3.0, 1e-5);
    EXPECT_NEAR(Node("Middle")->LclRotation().Get()[0], 45.0, 1e-5);
    EXPECT_EQ(bottom->FindProperty("kiva_tag").Get<FbxString>(), "leaf node");
    EXPECT_DOUBLE_EQ(bottom->FindProperty("kiva_weight").Get<FbxDouble>(), 2.5);
    EXPECT_EQ(bottom->FindProperty("kiva_count").Get<FbxInt>(), 7);
    FbxGlobalSettings* global = scene->GetGlobalSettings();
    EXPECT_EQ(global->UpAxis().Get(), 1);
    EXPECT_DOUBLE_EQ(global->CustomFrameRate().Get(), 24.0);
    EXPECT_EQ(global->TimeMode().Get(), 11);
}

TEST_F(DocumentReader, BlenderTextureFeedsTheMaterialProperty) {
    // (The materials of multi_material in their order: fbxdump's test.)
    ASSERT_TRUE(ImportBlender("textured_cube")) << Message();
    FbxProperty diffuse = Node("TexturedCube")->GetMaterial(0)->FindProperty("DiffuseColor");
    ASSERT_EQ(diffuse.GetSrcObjectCount(), 1);
    FbxFileTexture* texture = FbxCast<FbxFileTexture>(diffuse.GetSrcObject(0));
    ASSERT_NE(texture, nullptr);
    ASSERT_EQ(texture->GetSrcObjectCount<FbxVideo>(), 1);
    EXPECT_STREQ(texture->GetSrcObject<FbxVideo>()->GetName(), "checker.png");
}

TEST_F(DocumentReader, BlenderRigHasItsBonesSkinPoseAndAnimationObjects) {
    ASSERT_TRUE(ImportBlender("skinned_armature")) << Message();
    // Blender parents the mesh to the armature object, but its exporter
    // connects the mesh's model to the scene's root.
    EXPECT_EQ(ChildNames(Node("Rig")), Names{"Root"});
    EXPECT_STREQ(Node("SkinnedColumn")->GetParent()->GetName(), "RootNode");
    const char* chain[] = {"Root", "Spine", "Neck", "Head"};
    for (int i = 0; i < 4; ++i) {
        FbxNode* bone = Node(chain[i]);
        EXPECT_STREQ(bone->GetParent()->GetName(), i == 0 ? "Rig" : chain[i - 1]);
        ASSERT_NE(bone->GetSkeleton(), nullptr) << chain[i];
        EXPECT_EQ(bone->GetSkeleton()->GetSkeletonType(), FbxSkeleton::eLimbNode);
    }
    EXPECT_EQ(Node("SkinnedColumn")->GetMesh()->GetSrcObjectCount<FbxSkin>(), 1);
    EXPECT_EQ(Count<FbxCluster>(), 4);
    EXPECT_EQ(Count<FbxPose>(), 1);
    EXPECT_EQ(Count<FbxAnimStack>(), 1);
    EXPECT_EQ(Count<FbxAnimCurve>(), 45);
}

// --- Sections and connections ------------------------------------------------

TEST_F(DocumentReader, OnlyObjectsOfDefinedTypesAreRead) {
    FbxBinaryBuilder b(7400);
    b.Begin("Objects");
    beginObject(b, "Model", 10, "Lost", "Null").EmptyBlock().End();
    b.End();
    ASSERT_TRUE(Import(b.Finish())) << Message();
    EXPECT_EQ(Count<FbxNode>(), 1);             // the root node alone
    EXPECT_STREQ(scene->GetName(), "myScene");  // no "Documents": the name stays

    Bytes bytes = sceneFile(
        {"Model"},
        [](FbxBinaryBuilder& b) {
            writeObject(b, "Model", 10, "Kept", "Null");
            writeObject(b, "NodeAttribute", 11, "Dropped", "Null");
        },
        [](FbxBinaryBuilder& b) {
            writeConnection(b, "OO", 10, 0);
            writeConnection(b, "OO", 11, 10);
        });
    ASSERT_TRUE(Import(bytes)) << Message();
    EXPECT_STREQ(scene->GetName(), "FileScene");
    EXPECT_EQ(Node("Kept")->GetNodeAttributeCount(), 0);
    EXPECT_EQ(Count<FbxNull>(), 0);

    FbxBinaryBuilder count(7400);
    count.Begin("Documents").Begin("Count").Int(0).End().End();
    EXPECT_FALSE(Import(count.Finish()));
    EXPECT_EQ(Message(), "File is corrupted (or invalid)");
}

TEST_F(DocumentReader, ConnectionsComeAfterAllObjectsAndGiveTheFirstAttributeByDefault) {
    // The geometry comes before the model that uses it, the child before its
    // parent; "OO" to id 0 attaches under the scene's root. No model says
    // "DefaultAttributeIndex": the first attribute connected is the default.
    Bytes bytes = sceneFile(
        {"Geometry", "Model", "NodeAttribute"},
        [](FbxBinaryBuilder& b) {
            writeObject(b, "Geometry", 20, "Shape", "Mesh");
            writeObject(b, "NodeAttribute", 21, "Bone", "LimbNode");
            writeObject(b, "NodeAttribute", 22, "Marker", "Null");
            writeObject(b, "Model", 11, "Child", "Mesh");
            writeObject(b, "Model", 10, "Parent", "LimbNode");
        },
        [](FbxBinaryBuilder& b) {
            writeConnection(b, "OO", 10, 0);
            writeConnection(b, "OO", 11, 10);
            writeConnection(b, "OO", 20, 11);
            writeConnection(b, "OO", 21, 10);
            writeConnection(b, "OO", 22, 10);
        });
    ASSERT_TRUE(Import(bytes)) << Message();
    EXPECT_EQ(ChildNames(scene->GetRootNode()), Names{"Parent"});
    EXPECT_EQ(ChildNames(Node("Parent")), Names{"Child"});
    FbxNode* child = Node("Child");
    EXPECT_EQ(child->GetDefaultNodeAttributeIndex(), 0);
    ASSERT_NE(child->GetMesh(), nullptr);
    EXPECT_STREQ(child->GetNodeAttribute()->GetName(), "Shape");
    ASSERT_NE(Node("Parent")->GetSkeleton(), nullptr);
    EXPECT_STREQ(Node("Parent")->GetSkeleton()->GetName(), "Bone");
    // Every object is a source of the document beside its connections.
    EXPECT_TRUE(scene->IsConnectedSrcObject(child));
}

TEST_F(DocumentReader, OnlyMaterialsAndTexturesConnectTwiceToTheSameDestination) {
    Bytes bytes = sceneFile(
        {"Model", "Geometry", "Material", "Texture", "LayeredTexture"},
        [](FbxBinaryBuilder& b) {
            writeObject(b, "Model", 10, "Node", "Mesh");
            writeObject(b, "Geometry", 20, "Mesh", "Mesh");
            writeObject(b, "Material", 30, "Paint", "");
            writeObject(b, "Texture", 40, "Picture", "");
            writeObject(b, "LayeredTexture", 50, "Layers", "");
        },
        [](FbxBinaryBuilder& b) {
            for (int i = 0; i < 2; ++i) {
                writeConnection(b, "OO", 10, 0);
                writeConnection(b, "OO", 20, 10);
                writeConnection(b, "OO", 30, 10);
                writeConnection(b, i ? "OD" : "OO", 40, 50);
            }
        });
    ASSERT_TRUE(Import(bytes)) << Message();
    FbxNode* node = Node("Node");
    EXPECT_EQ(node->GetNodeAttributeCount(), 1);
    EXPECT_EQ(node->GetMaterialCount(), 2);
    EXPECT_EQ(scene->GetRootNode()->GetChildCount(), 1);
    EXPECT_EQ(Object("Layers")->GetSrcObjectCount(), 2);
}

TEST_F(DocumentReader, PropertyConnectionsNeedBothEndsAndUnknownKindsAreIgnored) {
    Bytes bytes = sceneFile(
        {"Model", "Material", "Texture"},
        [](FbxBinaryBuilder& b) {
            beginObject(b, "Model", 10, "Node", "Null").Begin("Properties70");
            b.Begin("P").String("Speed").String("double").String("Number").String("A").Double(1.0).End();
            b.End().End();
            beginObject(b, "Material", 30, "Paint", "").Begin("Properties70");
            writeProperty3(b, "DiffuseColor", "Color", 1, 1, 1);
            writeProperty3(b, "SpecularColor", "Color", 1, 1, 1);
            b.Begin("P").String("DiffuseFactor").String("double").String("Number").String("A").Double(0.5).End();
            b.End().End();
            writeObject(b, "Texture", 40, "Picture", "");
        },
        [](FbxBinaryBuilder& b) {
            writeConnection(b, "OO", 10, 0);
            for (const char* property : {"DiffuseColor", "DiffuseColor", "NoSuchColor"})
                b.Begin("C").String("OP").Long(40).Long(30).String(property).End();
            b.Begin("C").String("PP").Long(10).String("Speed").Long(30).String("DiffuseFactor").End();
            b.Begin("C").String("PP").Long(10).String("Missing").Long(30).String("DiffuseFactor").End();
            b.Begin("C").String("PO").Long(10).String("Visibility").Long(30).End();
            b.Begin("C").String("EP").Long(30).String("SpecularColor").End();
            writeConnection(b, "XX", 40, 10);
            writeConnection(b, "OO", 40, 999);
            writeConnection(b, "OO", 999, 10);
        });
    ASSERT_TRUE(Import(bytes)) << Message();
    EXPECT_FALSE(importer->GetStatus().Error());
    FbxObject* paint = Object("Paint");
    FbxNode* node = Node("Node");
    EXPECT_EQ(paint->FindProperty("DiffuseColor").GetSrcObjectCount(), 1);
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
            beginObject(b, "Model", 10, "Old", "LimbNode");
            b.Begin("Version").Int(200).End();
            b.Begin("Shading").Char('W').End();
            b.Begin("Culling").String("CullingOnCW").End();
            b.Begin("PostTargetRotation").Double(1).Double(2).Double(3).End();
            b.Begin("Properties70");
            writeProperty3(b, "Lcl Translation", "Lcl Translation", 4, 5, 6);
            b.Begin("P").String("InheritType").String("enum").String("").String("").Int(2).End();
            b.End();
            b.End();
            beginObject(b, "Model", 11, "New", "Null");
            b.Begin("Version").Int(232).End();
            b.Begin("Shading").Char('Q').End();
            b.End();
            beginObject(b, "NodeAttribute", 20, "Bone", "LimbNode");
            b.Begin("Size").Double(0.25).End();
            b.End();
            beginObject(b, "NodeAttribute", 21, "Limb", "Limb");
            b.Begin("LimbLength").Double(3.5).End();
            b.Begin("Properties").Begin("Size").Double(7).End();
            b.Begin("Color").Double(0.1).Double(0.2).Double(0.3).End().End();
            b.End();
            beginObject(b, "NodeAttribute", 22, "Place", "Null");
            b.Begin("Properties").Begin("Size").Double(42).End().End();
            b.End();
            writeObject(b, "NodeAttribute", 23, "Odd", "SomethingNew");
        },
        [](FbxBinaryBuilder& b) {
            writeConnection(b, "OO", 11, 0);
            writeConnection(b, "OO", 10, 11);
            writeConnection(b, "OO", 20, 10);
        });
    ASSERT_TRUE(Import(bytes)) << Message();
    FbxNode* old = Node("Old");
    EXPECT_TRUE(old->IsOldVersion());
    EXPECT_FALSE(Node("New")->IsOldVersion());
    EXPECT_EQ(old->GetShadingMode(), FbxNode::eWireFrame);
    EXPECT_EQ(Node("New")->GetShadingMode(), FbxNode::eHardShading);
    EXPECT_EQ(old->GetCullingType(), FbxNode::eCullingOnCW);
    EXPECT_DOUBLE_EQ(old->GetPostTargetRotation()[2], 3.0);
    EXPECT_DOUBLE_EQ(old->LclTranslation().Get()[1], 5.0);
    // An old bone under a node without a skeleton inherits as type 1.
    EXPECT_EQ(old->InheritType().Get(), FbxNode::eInheritRSrs);
    ASSERT_NE(old->GetSkeleton(), nullptr);
    EXPECT_DOUBLE_EQ(old->GetSkeleton()->Size().Get(), 25.0);
    auto* limb = FbxCast<FbxSkeleton>(Object("Limb"));
    ASSERT_NE(limb, nullptr);
    EXPECT_EQ(limb->GetSkeletonType(), FbxSkeleton::eLimb);
    EXPECT_DOUBLE_EQ(limb->LimbLength().Get(), 3.5);
    EXPECT_DOUBLE_EQ(limb->Size().Get(), 7.0);
    EXPECT_DOUBLE_EQ(limb->GetLimbNodeColor()[1], 0.2);
    EXPECT_DOUBLE_EQ(FbxCast<FbxNull>(Object("Place"))->Size().Get(), 42.0);
    // A kind only the file knows survives as an object of a class made for it.
    FbxObject* odd = Object("Odd");
    EXPECT_EQ(manager->FindFileClass("NodeAttribute", "SomethingNew"), odd->GetClassId());
    EXPECT_TRUE(odd->Is<FbxNodeAttribute>());
}

TEST_F(DocumentReader, TemplatesGiveDefaultsThatTheObjectsOwnValuesOverride) {
    FbxBinaryBuilder b(7400);
    b.Begin("Definitions").Begin("ObjectType").String("Model");
    b.Begin("PropertyTemplate").String("FbxNode").Begin("Properties70");
    writeProperty3(b, "Lcl Scaling", "Lcl Scaling", 2, 2, 2);
    b.End().End().End().End();
    b.Begin("Objects");
    writeObject(b, "Model", 10, "Plain", "Null");
    beginObject(b, "Model", 11, "Own", "Null").Begin("Properties70");
    writeProperty3(b, "Lcl Scaling", "Lcl Scaling", 3, 3, 3);
    b.End().End();
    b.End();
    ASSERT_TRUE(Import(b.Finish())) << Message();
    EXPECT_DOUBLE_EQ(Node("Plain")->LclScaling().Get()[0], 2.0);
    EXPECT_DOUBLE_EQ(Node("Own")->LclScaling().Get()[0], 3.0);
}

TEST_F(DocumentReader, ManyPropertiesOnOneObjectAndManyTypeWordsAllRead) {
    ASSERT_TRUE(Import(manyPropertiesFile(2000))) << Message();
    FbxNode* crowded = Node("Crowded");
    int found = 0;
    for (FbxProperty p = crowded->GetFirstProperty(); p.IsValid(); p = p.GetSibling())
        found += p.GetFlag(FbxPropertyFlags::eUserDefined) ? 1 : 0;
    EXPECT_EQ(found, 2000);
    FbxProperty last = crowded->FindProperty(("p" + std::to_string(1999u * 2654435761u) + "_1999").c_str());
    EXPECT_DOUBLE_EQ(last.Get<FbxDouble>(), 1999.0);
    EXPECT_DOUBLE_EQ(last.GetMaxLimit(), 1.0);

    ASSERT_TRUE(Import(manyTypeWordsFile(2000))) << Message();
    EXPECT_NE(Object("Only"), nullptr);
}

// --- Bad input -------------------------------------------------------------------

TEST_F(DocumentReader, DuplicateIdsGarbageAndUncreatableClassesAreSkipped) {
    // A class whose objects cannot be made.
    manager->RegisterRuntimeClass("KivaBrokenClass", FbxObject::ClassId, nullptr, "Broken", "Widget");
    Bytes bytes = sceneFile(
        {"Model", "Broken", "Material"},
        [](FbxBinaryBuilder& b) {
            writeObject(b, "Model", 10, "First", "Null");
            writeObject(b, "Model", 10, "Second", "Null");
            // Values of the wrong codes read as 0 and "".
            b.Begin("Model").String("not an id").Int(5).Double(1.0).End();
            writeObject(b, "Broken", 30, "Nothing", "Widget");
            writeObject(b, "Material", 40, "Paint", "");
            writeObject(b, "Material", 40, "PaintAgain", "");
            writeObject(b, "Model", 50, "Last", "Null");
        },
        [](FbxBinaryBuilder& b) {
            writeConnection(b, "OO", 10, 0);
            writeConnection(b, "OO", 30, 0);
            writeConnection(b, "OO", 50, 0);
            writeConnection(b, "OO", 40, 50);
        });
    ASSERT_TRUE(Import(bytes)) << Message();
    EXPECT_EQ(ChildNames(scene->GetRootNode()), (Names{"First", "Last"}));
    EXPECT_EQ(Node("Second")->GetParent(), nullptr);  // made and kept, but its id is taken
    EXPECT_EQ(Count<FbxNode>(), 5);                   // root, First, Second, the garbage one, Last
    EXPECT_EQ(Count<FbxSurfacePhong>(), 1);           // a material of a known id is skipped
    EXPECT_EQ(Node("Last")->GetMaterialCount(), 1);
}

TEST_F(DocumentReader, NodesKeepTheirFirstParentSoThatDiamondsBecomeATree) {
    ASSERT_TRUE(Import(nodeDiamondsFile(3))) << Message();
    EXPECT_FALSE(importer->GetStatus().Error());
    // Each node of a layer took the first node of the layer above.
    EXPECT_EQ(ChildNames(Node("Node0")), (Names{"Node2", "Node3"}));
    EXPECT_EQ(ChildNames(Node("Node1")), Names{});
    EXPECT_EQ(Node("Node5")->GetDstObjectCount<FbxNode>(), 1);
    EXPECT_EQ(scene->GetRootNode()->GetChildCount(true), 6);
}

TEST_F(DocumentReader, ConnectionsThatCloseACycleFailTheReadAfterAllOfIt) {
    // Nodes under themselves or their children, the root under a node, two
    // documents each other's source: each link that closes a cycle is left
    // out, the rest of the file is read, and the read fails.
    EXPECT_FALSE(Import(cyclesFile()));
    EXPECT_EQ(Message(), kCycle);
    EXPECT_EQ(ChildNames(scene->GetRootNode()), Names{"Node0"});
    EXPECT_EQ(ChildNames(Node("Node0")), Names{"Node1"});
    EXPECT_EQ(ChildNames(Node("Node1")), Names{"Node2"});
    EXPECT_EQ(ChildNames(Node("Node2")), Names{});
    EXPECT_EQ(scene->GetRootNode()->GetParent(), nullptr);
    FbxDocument* other = FbxCast<FbxDocument>(Object("Document1"));
    ASSERT_NE(other, nullptr);
    EXPECT_EQ(other->GetOwnerDocument(), scene);
    EXPECT_EQ(scene->GetOwnerDocument(), nullptr);
}

TEST_F(DocumentReader, TruncatedAndDamagedFilesFailOrGiveAPartialDocumentAndNeverCrash) {
    std::string whole = readFile(std::string(KIVA_SOURCE_DIR) + "/testdata/fbx/blender/skinned_armature.fbx");
    ASSERT_GT(whole.size(), 1000u);
    auto tryImport = [&](const std::string& bytes) {
        FbxScene* kept = scene;
        scene = FbxScene::Create(manager, "partial");
        bool ok = Import(Bytes(bytes.begin(), bytes.end()));
        EXPECT_TRUE(ok || importer->GetStatus().Error());
        EXPECT_NE(scene->GetRootNode(), nullptr);
        scene->Destroy();
        scene = kept;
        return ok;
    };
    // Cut anywhere: only a file that lost no more than its footer reads.
    for (size_t cut = 100; cut < whole.size(); cut += 1499) {
        EXPECT_FALSE(tryImport(whole.substr(0, cut)));
        // A cut inside the header leaves no file of a known version.
        EXPECT_TRUE(Message() == "File is corrupted (or invalid)" || Message() == "Unexpected file type")
            << cut << ": " << Message();
    }
    EXPECT_TRUE(tryImport(whole.substr(0, whole.size() - 20))) << Message();
    for (size_t at = 100; at + 4 < whole.size(); at += 331) {
        std::string damaged = whole;
        for (size_t k = 0; k < 4; ++k) damaged[at + k] = static_cast<char>(0xFF - k * 0x31);
        tryImport(damaged);
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
    writeDefinitions(b, {"Texture"});
    b.Begin("Objects");
    beginObject(b, "Texture", 40, "Picture", "").Begin("Properties70");
    b.Begin("P").String("FileName").String("KString").String("").String("").String("textures/pic.png").End();
    b.End().End();
    b.End();
    b.Begin("Embedding");
    b.Begin("File");
    b.Begin("Filename").String("textures/pic.png").End();
    b.Begin("Content").Raw(Bytes{1, 2, 3, 4}).End();
    b.Begin("Consumers").Begin("Consumer").Long(40).String("FileName").Int(0).End().End();
    b.End();
    // Content in chunks, cut to the total size; a chunk short of it leaves
    // no file.
    b.Begin("File");
    b.Begin("Filename").String("chunks.bin").End();
    b.Begin("Content").Int(5).Begin("BinaryData").Raw(Bytes{1, 2, 3}).Raw(Bytes{4, 5, 6}).End().End();
    b.End();
    b.Begin("File");
    b.Begin("Filename").String("short.bin").End();
    b.Begin("Content").Int(9).Begin("BinaryData").Raw(Bytes{1, 2}).End().End();
    b.End();
    b.End();
    ASSERT_TRUE(Import(b.Finish(), "media.fbx")) << Message();
    EXPECT_EQ(Message(), "Unresolved external references");
    EXPECT_EQ(readFile(dir.file("media.fbm/chunks.bin")).size(), 5u);
    EXPECT_FALSE(fileExists(dir.file("media.fbm/short.bin")));
    std::string extracted = dir.file("media.fbm/pic.png");
    EXPECT_EQ(readFile(extracted).size(), 4u);
    // The consumer's entry now names the extracted file.
    EXPECT_EQ(Object("Picture")->FindProperty("FileName").Get<FbxString>(), extracted);
    FbxDocumentInfo* info = FbxGetDocumentInfo(scene);
    ASSERT_NE(info, nullptr);
    EXPECT_EQ(info->FindProperty("DocumentEmbeddedUrl").Get<FbxString>(), dir.file("media.fbm"));
}

TEST_F(DocumentReader, ProgressCountsObjectsAndReadsAreRepeatable) {
    ASSERT_TRUE(ImportBlender("empties_hierarchy")) << Message();
    EXPECT_GE(importer->GetProgress().GetCurrent(), 8.0f);  // four nodes and their attributes
    int objects = scene->GetSrcObjectCount();
    // A second import into the same scene replaces what the first one made.
    ASSERT_TRUE(ImportBlender("empties_hierarchy")) << Message();
    EXPECT_EQ(scene->GetSrcObjectCount(), objects);
    EXPECT_EQ(ChildNames(scene->GetRootNode()), Names{"Top"});
}

}  // namespace
