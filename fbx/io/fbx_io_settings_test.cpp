#include "fbx/io/fbx_io_settings.h"

#include <gtest/gtest.h>

#include "fbx/model/fbx_manager.h"
#include "fbx/model/fbx_property_page.h"

namespace {

class IOSettings : public ::testing::Test {
protected:
    void SetUp() override {
        manager = FbxManager::Create();
        settings = FbxIOSettings::Create(manager, "IOSRoot");
        ASSERT_NE(settings, nullptr);
    }
    void TearDown() override { manager->Destroy(); }

    FbxManager* manager = nullptr;
    FbxIOSettings* settings = nullptr;
};

TEST_F(IOSettings, EveryOptionOfTheReadPathHasItsDefault) {
    struct BoolOption {
        const char* path;
        bool value;
    };
    const BoolOption bools[] = {
        {FbxIOPath::kModel, true},
        {FbxIOPath::kTexture, true},
        {FbxIOPath::kMaterial, true},
        {FbxIOPath::kLink, true},
        {FbxIOPath::kShape, true},
        {FbxIOPath::kGobo, true},
        {FbxIOPath::kAnimation, true},
        {FbxIOPath::kCharacter, true},
        {FbxIOPath::kGlobalSettings, true},
        {FbxIOPath::kPivot, true},
        {FbxIOPath::kMergeLayerAndTimewarp, false},
        {FbxIOPath::kTemplate, false},
        {FbxIOPath::kConstraint, true},
        {FbxIOPath::kExtractEmbeddedData, true},
        {FbxIOPath::kPasswordEnable, false},
    };
    for (const BoolOption& option : bools) {
        FbxProperty p = settings->GetProperty(option.path);
        ASSERT_TRUE(p.IsValid()) << option.path;
        EXPECT_EQ(p.GetPropertyDataType(), FbxBoolDT) << option.path;
        // The opposite default proves that the stored value is read.
        EXPECT_EQ(settings->GetBoolProp(option.path, !option.value), option.value) << option.path;
    }
    for (const char* path : {FbxIOPath::kModelCount, FbxIOPath::kDeviceCount, FbxIOPath::kCharacterCount,
                             FbxIOPath::kActorCount, FbxIOPath::kConstraintCount, FbxIOPath::kMediaCount}) {
        EXPECT_EQ(settings->GetProperty(path).GetPropertyDataType(), FbxIntDT) << path;
        EXPECT_EQ(settings->GetIntProp(path, -1), 0) << path;
    }
    for (const char* path : {FbxIOPath::kPassword, FbxIOPath::kCurrentTakeName, FbxIOPath::kEmbeddedMediaFolder}) {
        EXPECT_EQ(settings->GetProperty(path).GetPropertyDataType(), FbxStringDT) << path;
        EXPECT_EQ(settings->GetStringProp(path, "x"), "") << path;
    }
    EXPECT_EQ(settings->GetIntProp(FbxIOPath::kCacheSize, -1), 8);
    EXPECT_EQ(settings->GetIntProp("Import|PlugInGrp|PlugInUIWidth", -1), 500);
    EXPECT_EQ(settings->GetIntProp("Import|PlugInGrp|PlugInUIYpos", -1), 100);
    EXPECT_TRUE(settings->GetProperty("Export|PlugInGrp").IsValid());
}

TEST_F(IOSettings, PathsMayStartAtTheRootAndAreCaseSensitive) {
    EXPECT_EQ(settings->GetProperty("IOSRoot|Import|AdvOptGrp|Cache|CacheSize"),
              settings->GetProperty("Import|AdvOptGrp|Cache|CacheSize"));
    EXPECT_EQ(settings->GetProperty("IOSRoot"), settings->GetRootProperty());
    EXPECT_FALSE(settings->GetProperty("import|advoptgrp|cache|cachesize").IsValid());
    EXPECT_FALSE(settings->GetProperty("").IsValid());
    EXPECT_FALSE(settings->GetProperty(nullptr).IsValid());
    EXPECT_EQ(settings->GetIntProp("IOSRoot|Import|AdvOptGrp|Cache|CacheSize", -1), 8);
}

TEST_F(IOSettings, MissingOptionsGiveTheDefaultAndCannotBeSet) {
    EXPECT_TRUE(settings->GetBoolProp("Import|NoSuchOption", true));
    EXPECT_EQ(settings->GetIntProp("Import|NoSuchOption", 42), 42);
    EXPECT_DOUBLE_EQ(settings->GetDoubleProp("NoSuch", 2.5), 2.5);
    EXPECT_EQ(settings->GetStringProp("NoSuch", "fallback"), "fallback");
    EXPECT_EQ(settings->GetEnumProp("NoSuch", 3), 3);
    EXPECT_FALSE(settings->SetBoolProp("Import|NoSuchOption", true));
    EXPECT_FALSE(settings->SetStringProp("NoSuch", "x"));
    EXPECT_FALSE(settings->GetProperty("Import|NoSuchOption").IsValid());
}

TEST_F(IOSettings, ValuesSetOnOneObjectStayOnIt) {
    FbxIOSettings* other = FbxIOSettings::Create(manager, "IOSRoot");
    // The built-in tree lives on the class: a fresh object holds nothing.
    EXPECT_EQ(other->GetPropertyPage()->EntryCount(), 0);

    EXPECT_TRUE(settings->SetBoolProp(FbxIOPath::kAnimation, false));
    EXPECT_TRUE(settings->SetIntProp(FbxIOPath::kCacheSize, 64));
    EXPECT_TRUE(settings->SetStringProp(FbxIOPath::kPassword, "secret"));
    EXPECT_FALSE(settings->GetBoolProp(FbxIOPath::kAnimation, true));
    EXPECT_EQ(settings->GetIntProp(FbxIOPath::kCacheSize, 0), 64);
    EXPECT_DOUBLE_EQ(settings->GetDoubleProp(FbxIOPath::kCacheSize, 0.0), 64.0);
    EXPECT_EQ(settings->GetStringProp(FbxIOPath::kPassword, ""), "secret");

    EXPECT_TRUE(other->GetBoolProp(FbxIOPath::kAnimation, false));
    EXPECT_EQ(other->GetIntProp(FbxIOPath::kCacheSize, 0), 8);
}

TEST_F(IOSettings, GroupsAndOptionsCarryTheirFlags) {
    FbxProperty fbx = settings->GetProperty(FbxIOPath::kFbxGroup);
    EXPECT_TRUE(fbx.GetFlag(FbxIOSettings::eGroup));
    EXPECT_EQ(fbx.GetPropertyDataType(), FbxStringDT);
    EXPECT_FALSE(settings->GetProperty(FbxIOPath::kTexture).GetFlag(FbxIOSettings::eGroup));

    FbxProperty group = settings->AddGroup(settings->GetRootProperty(), "Mine", "My options");
    EXPECT_TRUE(group.GetFlag(FbxIOSettings::eGroup));
    FbxProperty shown = settings->AddOption(group, "Shown", FbxIntDT, "Shown", FbxInt(4));
    EXPECT_EQ(
        shown.GetFlags() & (FbxIOSettings::eNotShown | FbxIOSettings::eNotStored | FbxIOSettings::eNotSavedInPreset),
        0u);
    FbxProperty hidden =
        settings->AddOption(group, "Hidden", FbxDoubleDT, "Hidden", FbxDouble(0.5), false, false, false);
    EXPECT_TRUE(hidden.GetFlag(FbxIOSettings::eNotShown));
    EXPECT_TRUE(hidden.GetFlag(FbxIOSettings::eNotStored));
    EXPECT_TRUE(hidden.GetFlag(FbxIOSettings::eNotSavedInPreset));
    EXPECT_EQ(settings->GetIntProp("IOSRoot|Mine|Shown", 0), 4);
    EXPECT_DOUBLE_EQ(settings->GetDoubleProp("Mine|Hidden", 0.0), 0.5);
    // Adding again finds the existing option and keeps its value.
    settings->SetIntProp("Mine|Shown", 9);
    settings->AddOption(group, "Shown", FbxIntDT, "Shown", FbxInt(4));
    EXPECT_EQ(settings->GetIntProp("Mine|Shown", 0), 9);
}

}  // namespace
