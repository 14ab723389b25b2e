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

TEST_F(IOSettings, PathsMayStartAtTheRootAreCaseSensitiveAndMissingOnesGiveTheDefault) {
    EXPECT_EQ(settings->GetProperty("IOSRoot|Import|AdvOptGrp|Cache|CacheSize"),
              settings->GetProperty("Import|AdvOptGrp|Cache|CacheSize"));
    EXPECT_EQ(settings->GetProperty("IOSRoot"), settings->GetRootProperty());
    EXPECT_FALSE(settings->GetProperty("import|advoptgrp|cache|cachesize").IsValid());
    EXPECT_FALSE(settings->GetProperty("").IsValid());
    EXPECT_FALSE(settings->GetProperty(nullptr).IsValid());
    EXPECT_EQ(settings->GetIntProp("IOSRoot|Import|AdvOptGrp|Cache|CacheSize", -1), 8);
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

}  // namespace
