#include "fbx/io/fbx_importer.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "fbx/io/fbx_binary_builder_testing.h"
#include "fbx/io/fbx_io_events.h"
#include "fbx/io/fbx_io_plugin_registry.h"
#include "fbx/io/fbx_io_settings.h"
#include "fbx/io/fbx_numeric_locale.h"
#include "fbx/io/fbx_reader.h"
#include "fbx/model/fbx_manager.h"
#include "fbx/model/fbx_scene.h"
#include "qe/scratch_dir_testing.h"

namespace {

using Bytes = std::vector<uint8_t>;

class Importer : public ::testing::Test {
protected:
    void SetUp() override {
        manager = FbxManager::Create();
        settings = FbxIOSettings::Create(manager, "IOSRoot");
        manager->SetIOSettings(settings);
        importer = FbxImporter::Create(manager, "");
        ASSERT_NE(importer, nullptr);
    }
    void TearDown() override { manager->Destroy(); }

    std::string Write(const std::string& name, const Bytes& bytes) {
        return dir.write(name, std::string(bytes.begin(), bytes.end()));
    }
    static Bytes Minimal(uint32_t version) {
        FbxBinaryBuilder b(version);
        b.Begin("Creator").String("test").End();
        return b.Finish();
    }
    static std::string Blender(const char* name) {
        return std::string(KIVA_SOURCE_DIR) + "/testdata/fbx/blender/" + name + ".fbx";
    }
    std::string Message() const { return importer->GetStatus().GetErrorString(); }

    ScratchDir dir;
    FbxManager* manager = nullptr;
    FbxIOSettings* settings = nullptr;
    FbxImporter* importer = nullptr;
};

TEST_F(Importer, FilesOfMajorSevenOpenAndOthersAreUnexpected) {
    for (uint32_t version : {7300u, 7400u, 7500u}) {
        std::string path = Write("v" + std::to_string(version) + ".fbx", Minimal(version));
        ASSERT_TRUE(importer->Initialize(path.c_str(), -1, settings)) << version << ": " << Message();
        int major, minor, revision;
        importer->GetFileVersion(major, minor, revision);
        EXPECT_EQ(major, 7);
        EXPECT_EQ(minor, static_cast<int>(version / 100 % 10));
        EXPECT_EQ(revision, 0);
        EXPECT_FALSE(importer->GetStatus().Error());
        EXPECT_TRUE(importer->IsFBX());
        ASSERT_NE(importer->GetHeaderInfo(), nullptr);
        EXPECT_EQ(importer->GetHeaderInfo()->fileVersion, version);
    }
    std::vector<std::string> refused = {
        Write("v8000.fbx", Minimal(8000)),
        Write("v6100.fbx", Minimal(6100)),
        Write("text.fbx", Bytes{'n', 'o', 't', ' ', 'f', 'b', 'x', '\n'}),
        dir.file("missing.fbx"),
    };
    for (const std::string& path : refused) {
        EXPECT_FALSE(importer->Initialize(path.c_str(), -1, settings)) << path;
        EXPECT_EQ(importer->GetStatus().GetCode(), FbxStatus::eFailure) << path;
        EXPECT_EQ(Message(), "Unexpected file type") << path;
        EXPECT_EQ(importer->GetReader(), nullptr);
        int major, minor, revision;
        importer->GetFileVersion(major, minor, revision);
        EXPECT_EQ(major, 0);
        EXPECT_EQ(importer->GetHeaderInfo(), nullptr);
    }
}

TEST_F(Importer, AnEmptyNameIsUninitializedAndImportFailsTheSameWay) {
    EXPECT_FALSE(importer->Initialize("", -1, settings));
    EXPECT_EQ(Message(), "Uninitialized filename");
    EXPECT_EQ(importer->GetStatus().GetCode(), FbxStatus::eFailure);
    EXPECT_FALSE(importer->Initialize(nullptr, -1, settings));
    EXPECT_EQ(Message(), "Uninitialized filename");

    FbxScene* scene = FbxScene::Create(manager, "myScene");
    EXPECT_FALSE(importer->Import(scene));
    EXPECT_EQ(Message(), "Uninitialized filename");

    std::string bad = Write("bad.fbx", Minimal(8000));
    EXPECT_FALSE(importer->Initialize(bad.c_str(), -1, settings));
    EXPECT_FALSE(importer->Import(scene));
    EXPECT_EQ(Message(), "Unexpected file type");
}

TEST_F(Importer, ExtensionsCompareWithoutCaseAndUnknownOnesGoToTheNativeReader) {
    FbxIOPluginRegistry& registry = FbxIOPluginRegistry::Of(manager);
    int native = registry.GetNativeReaderFormat();
    for (const char* name : {"scene.FBX", "scene.fbx", "scene.dat", "noextension"})
        EXPECT_EQ(registry.FindReaderFormat(name), native) << name;
    std::string upper = Write("scene.FBX", Minimal(7400));
    EXPECT_TRUE(importer->Initialize(upper.c_str(), -1, settings)) << Message();
    EXPECT_EQ(importer->GetFileFormat(), native);
    std::string garbage = Write("garbage.bin", Bytes(64, 0x55));
    EXPECT_FALSE(importer->Initialize(garbage.c_str(), -1, settings));
    EXPECT_EQ(Message(), "Unexpected file type");
}

// A user plug-in with two formats, the second one an FBX format.
const char* kUserExtensions[] = {"abc", "FBX", nullptr};
const char* kUserDescriptions[] = {"Abc (*.abc)", "Own FBX", nullptr};
bool kUserFbx = true;
void* userInfo(int request, int index) {
    if (request == FbxIOPluginRegistry::kExtensionsRequest) return kUserExtensions;
    if (request == FbxIOPluginRegistry::kDescriptionsRequest) return kUserDescriptions;
    if (request == FbxIOPluginRegistry::kFbxFlagRequest && index == 1) return &kUserFbx;
    return nullptr;
}
FbxReader* userCreate(FbxManager&, FbxImporter&, int, int) { return nullptr; }

TEST(FbxIOPluginRegistry, UserPluginsAppendOrReplaceByExtension) {
    FbxIOPluginRegistry registry;
    EXPECT_EQ(registry.RegisterReader(&userCreate, &userInfo), 0);
    ASSERT_EQ(registry.GetReaderFormatCount(), 2);
    EXPECT_EQ(registry.GetNativeReaderFormat(), 1);  // the first FBX format

    // With override the "FBX" format replaces the native "fbx" entry.
    FbxIOPluginRegistry replaced = FbxIOPluginRegistry::Of(nullptr);
    int count = replaced.GetReaderFormatCount();
    EXPECT_EQ(replaced.RegisterReader(&userCreate, &userInfo, true), count);
    EXPECT_EQ(replaced.GetReaderFormatCount(), count + 1);
    EXPECT_EQ(replaced.GetReaderEntry(0)->extension, "FBX");
    EXPECT_TRUE(replaced.GetReaderEntry(0)->fromUserPlugin);
}

TEST_F(Importer, BlenderFilesOpenWithTheirHeaderAxesCountsAndTake) {
    ASSERT_TRUE(importer->Initialize(Blender("skinned_armature").c_str(), -1, settings)) << Message();
    const FbxHeaderInfo* header = importer->GetHeaderInfo();
    ASSERT_NE(header, nullptr);
    EXPECT_EQ(header->fileVersion, 7400u);
    EXPECT_EQ(header->creator, "Blender (stable FBX IO) - 3.4.1 - 4.37.1");
    // The exporter wrote Y up, Z front, X coord, in units of one.
    ASSERT_TRUE(importer->HasAxisInfo());
    const FbxAxisInfo& axis = importer->GetAxisInfo();
    EXPECT_EQ(axis.upAxis, 1);
    EXPECT_EQ(axis.frontAxis, 2);
    EXPECT_EQ(axis.coordAxis, 0);
    EXPECT_DOUBLE_EQ(axis.unitScaleFactor, 1.0);
    EXPECT_EQ(importer->GetStatistics().GetCount("Model"), 6);
    EXPECT_EQ(importer->GetProgress().GetTotal(), static_cast<float>(importer->GetStatistics().GetTotal()));

    FbxScene* scene = FbxScene::Create(manager, "myScene");
    importer->Import(scene);
    // Frames 1 to 20 at 24 frames per second.
    ASSERT_EQ(importer->GetTakeCount(), 1);
    EXPECT_EQ(importer->GetTakeInfo(0)->localTimeSpan.stop.Get(), FbxTime::kTicksPerSecond * 20 / 24);
    EXPECT_NE(importer->GetDocumentInfo(), nullptr);
}

// A file with global settings, takes, models and a device.
Bytes OptionsFile(uint32_t version, const char* current, bool templateName) {
    FbxBinaryBuilder b(version);
    auto globalSettings = [&b]() {
        b.Begin("GlobalSettings");
        b.Begin("Version").Int(1000).End();
        b.Begin("Properties70");
        b.Begin("P").String("UpAxis").String("int").String("Integer").String("").Int(2).End();
        b.Begin("P").String("UpAxisSign").String("int").String("Integer").String("").Int(-1).End();
        b.Begin("P").String("UnitScaleFactor").String("double").String("Number").String("").Double(100.0).End();
        b.Begin("P").String("TimeMode").String("enum").String("").String("").Int(6).End();
        b.End();
        b.End();
    };
    if (version / 100 != 70) globalSettings();
    b.Begin("Objects");
    if (version / 100 == 70) globalSettings();
    b.Begin("Model").Long(1).ObjectName(templateName ? "a:~fbxexport~" : "a", "Model").String("Null").End();
    b.Begin("Model").Long(2).ObjectName("b", "Model").String("Null").End();
    b.Begin("Device").Long(3).End();
    b.End();
    b.Begin("Takes");
    b.Begin("Current").String(current).End();
    b.Begin("Take").String("A");
    b.Begin("Comments").String("first").End();
    b.Begin("LocalTime").Long(10).Long(20).End();
    b.Begin("ReferenceTime").Long(5).Long(25).End();
    b.End();
    b.Begin("Take").String("B");
    b.Begin("LocalTime").Long(30).Long(40).End();
    b.End();
    b.End();
    return b.Finish();
}

TEST_F(Importer, OptionsGiveCountsTakesAndTheTemplateMark) {
    std::string path = Write("options.fbx", OptionsFile(7400, "B", true));
    ASSERT_TRUE(importer->Initialize(path.c_str(), -1, settings)) << Message();
    EXPECT_EQ(importer->GetAxisInfo().upAxis, 2);
    EXPECT_EQ(importer->GetAxisInfo().upAxisSign, -1);
    EXPECT_DOUBLE_EQ(importer->GetAxisInfo().unitScaleFactor, 100.0);
    EXPECT_EQ(importer->GetFrameRateMode(), 6);
    FbxScene* scene = FbxScene::Create(manager, "myScene");
    importer->Import(scene);
    EXPECT_EQ(settings->GetIntProp(FbxIOPath::kModelCount, -1), 2);
    EXPECT_EQ(settings->GetIntProp(FbxIOPath::kDeviceCount, -1), 1);
    EXPECT_TRUE(settings->GetBoolProp(FbxIOPath::kTemplate, false));
    EXPECT_FALSE(settings->GetBoolProp(FbxIOPath::kPasswordEnable, true));
    ASSERT_EQ(importer->GetTakeCount(), 2);
    EXPECT_STREQ(importer->GetActiveTakeName(), "B");
    const FbxTakeInfo* a = importer->GetTakeInfo(0);
    EXPECT_EQ(a->name, "A");
    EXPECT_EQ(a->description, "first");
    EXPECT_TRUE(a->select);
    EXPECT_EQ(a->localTimeSpan, (FbxTimeSpan{FbxTime(10), FbxTime(20)}));
    EXPECT_EQ(a->referenceTimeSpan, (FbxTimeSpan{FbxTime(5), FbxTime(25)}));
    EXPECT_EQ(importer->GetTakeInfo(1)->localTimeSpan, (FbxTimeSpan{FbxTime(30), FbxTime(40)}));

    // A current take that is not there falls back to the first one; files
    // of 7.0 keep their global settings among the objects.
    FbxIOSettings* fresh = FbxIOSettings::Create(manager, "IOSRoot");
    std::string old = Write("old.fbx", OptionsFile(7000, "Missing", false));
    ASSERT_TRUE(importer->Initialize(old.c_str(), -1, fresh)) << Message();
    EXPECT_EQ(importer->GetFrameRateMode(), 6);
    importer->Import(scene);
    EXPECT_STREQ(importer->GetActiveTakeName(), "A");
    EXPECT_EQ(fresh->GetStringProp(FbxIOPath::kCurrentTakeName, ""), "A");
    EXPECT_FALSE(fresh->GetBoolProp(FbxIOPath::kTemplate, true));
}

TEST_F(Importer, ImportSendsItsEventAndRestoresTheNumericLocale) {
    std::string path = Blender("textured_cube");
    ASSERT_TRUE(importer->Initialize(path.c_str(), -1, settings));
    std::vector<std::string> events;
    FbxDocument* seen = nullptr;
    int handle = FbxIOEvents::Add(manager, [&](const FbxIOEvent& e) {
        events.push_back(e.type);
        seen = e.document;
    });
    locale_t mine = newlocale(LC_ALL_MASK, "C.UTF-8", (locale_t)0);
    if (mine == (locale_t)0) mine = newlocale(LC_ALL_MASK, "POSIX", (locale_t)0);
    locale_t before = uselocale(mine);
    FbxScene* scene = FbxScene::Create(manager, "myScene");
    bool ok = importer->Import(scene);
    EXPECT_EQ(uselocale((locale_t)0), mine);
    uselocale(before);
    freelocale(mine);
    FbxIOEvents::Remove(handle);
    ASSERT_FALSE(events.empty());
    EXPECT_EQ(events.front(), "FbxEventPreImport");
    EXPECT_EQ(seen, scene);
    if (ok) {
        EXPECT_EQ(events.back(), "FbxEventPostImport");
    } else {
        EXPECT_TRUE(importer->GetStatus().Error());
    }
}

TEST_F(Importer, ImportFailuresFollowTheStatusRules) {
    std::string path = Blender("textured_cube");
    ASSERT_TRUE(importer->Initialize(path.c_str(), -1, settings));
    EXPECT_FALSE(importer->Import(nullptr));
    EXPECT_EQ(Message(), "Invalid document handle");
    EXPECT_EQ(importer->GetStatus().GetCode(), FbxStatus::eFailure);

    // A file whose section does not open still initializes; the read fails.
    FbxBinaryBuilder b(7400);
    b.Begin("Creator").String("test").End();
    b.SectionIdentity();
    std::string corrupt = Write("corrupt.fbx", b.Finish());
    ASSERT_TRUE(importer->Initialize(corrupt.c_str(), -1, settings)) << Message();
    EXPECT_FALSE(importer->GetStatus().Error());
    FbxScene* scene = FbxScene::Create(manager, "myScene");
    EXPECT_FALSE(importer->Import(scene));
    EXPECT_EQ(Message(), "File is corrupted (or invalid)");
}

TEST_F(Importer, OwnSettingsAndDocumentInfoGoWithTheImporter) {
    std::string path = Blender("empties_hierarchy");
    int before = manager->GetObjectCount();
    FbxImporter* own = FbxImporter::Create(manager, "own");
    ASSERT_TRUE(own->Initialize(path.c_str(), -1, nullptr)) << own->GetStatus().GetErrorString();
    ASSERT_NE(own->GetIOSettings(), nullptr);
    EXPECT_STREQ(own->GetIOSettings()->GetName(), "IOSRoot");
    EXPECT_NE(own->GetIOSettings(), settings);
    FbxScene* scene = FbxScene::Create(manager, "myScene");
    own->Import(scene);
    own->Destroy();
    scene->Destroy();
    EXPECT_EQ(manager->GetObjectCount(), before);
    // An importer left alive goes with the manager.
    FbxImporter* left = FbxImporter::Create(manager, "left");
    left->Initialize(path.c_str(), -1, nullptr);
    left->Import(FbxScene::Create(manager, "other"));
}

}  // namespace
