#include "fbx/io/fbx_property_records.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "fbx/io/fbx_binary_builder_testing.h"
#include "fbx/io/fbx_field_stream.h"
#include "fbx/io/fbx_memory_file_testing.h"
#include "fbx/io/fbx_template_map.h"
#include "fbx/model/fbx_manager.h"
#include "fbx/model/fbx_model_testing.h"
#include "fbx/model/fbx_property_page.h"

namespace {

using Bytes = std::vector<uint8_t>;

// A stream over built bytes, opened in FBX 7 mode at its first section.
class Opened {
public:
    explicit Opened(const Bytes& bytes) : file_(bytes) {
        stream.SetFbx7Mode(true);
        ok = stream.OpenStream(&file_, nullptr, true);
    }
    FbxMemoryFile file_;
    FbxFieldStream stream;
    bool ok = false;
};

// Starts a "P" record: name, two type words and flags.
FbxBinaryBuilder& P(FbxBinaryBuilder& b, const char* name, const char* word1, const char* word2, const char* flags) {
    return b.Begin("P").String(name).String(word1).String(word2).String(flags);
}

class PropertyRecords : public ::testing::Test {
protected:
    void SetUp() override {
        manager = FbxManager::Create();
        RegisterTestClasses(manager);
        object = FbxTestObject::Create(manager, "object");
    }
    void TearDown() override { manager->Destroy(); }

    // Reads the "Properties70" that `build` writes (at the top level) onto
    // the object.
    template <class F>
    void Read(F build, FbxObject* target = nullptr) {
        FbxBinaryBuilder b;
        b.Begin("Properties70");
        build(b);
        b.End();
        Opened o(b.Finish());
        ASSERT_TRUE(o.ok);
        EXPECT_TRUE(FbxReadProperties70(o.stream, target ? *target : *object, status));
        EXPECT_EQ(o.stream.Depth(), 0);
    }

    FbxManager* manager = nullptr;
    FbxTestObject* object = nullptr;
    FbxStatus status;
};

TEST(FbxPropertyFlags, LettersGiveTheirBitsAndMemberFields) {
    // "L3" is lock field 3; "M" with nothing behind it is mute field 15.
    EXPECT_EQ(FbxParsePropertyFlags("AU+HL3M"), 2u | 16u | 4u | 32u | 3u * 128u | 15u * 2048u);
    EXPECT_EQ(FbxParsePropertyFlags("LaMe"), 10u * 128u | 14u * 2048u);
    // Any other character gives 15 and is taken as the field's.
    EXPECT_EQ(FbxParsePropertyFlags("LzA"), 15u * 128u | 2u);
    EXPECT_EQ(FbxParsePropertyFlags(nullptr), 0u);
}

TEST_F(PropertyRecords, FlagsFollowTheFileOnTheObjectOnly) {
    Read([](FbxBinaryBuilder& b) { P(b, "Custom", "double", "Number", "AU+HL3M").Double(2.5).End(); });
    FbxProperty p = object->FindProperty("Custom");
    ASSERT_TRUE(p.IsValid());
    EXPECT_EQ(p.GetFlags(), 2u | 16u | 4u | 32u | 8u | 3u * 128u | 15u * 2048u);
    EXPECT_EQ(p.GetPropertyDataType(), FbxDoubleDT);
    EXPECT_DOUBLE_EQ(p.Get<FbxDouble>(), 2.5);

    // "Color" is animatable on the class; the file clears that and locks it.
    Read([](FbxBinaryBuilder& b) {
        P(b, "Color", "ColorRGB", "Color", "L1").Double(0.5).Double(0.5).Double(0.5).End();
    });
    FbxProperty color = object->FindProperty("Color");
    EXPECT_FALSE(color.GetFlag(FbxPropertyFlags::eAnimatable));
    EXPECT_EQ(color.GetFlags() & FbxPropertyFlags::eLockedAll, 128u);
    EXPECT_FALSE(color.GetFlag(FbxPropertyFlags::eImported));
    FbxTestObject* other = FbxTestObject::Create(manager, "other");
    EXPECT_TRUE(other->FindProperty("Color").GetFlag(FbxPropertyFlags::eAnimatable));
}

TEST_F(PropertyRecords, AValueEqualToTheClassDefaultLeavesNoEntry) {
    Read([](FbxBinaryBuilder& b) {
        P(b, "Number", "double", "Number", "").Double(1.5).End();
        P(b, "Count", "int", "Integer", "").Int(3).End();
        P(b, "Text", "KString", "", "").String("hello").End();
        P(b, "Color", "ColorRGB", "Color", "A").Double(0.5).Double(0.5).Double(0.5).End();
    });
    EXPECT_EQ(object->GetPropertyPage()->EntryCount(), 0);
    EXPECT_EQ(object->FindProperty("Number").ValueOwner(), FbxProperty::eInheritedValue);

    Read([](FbxBinaryBuilder& b) { P(b, "Number", "double", "Number", "").Double(4.0).End(); });
    EXPECT_EQ(object->FindProperty("Number").ValueOwner(), FbxProperty::eOwnValue);
    EXPECT_DOUBLE_EQ(object->FindProperty("Number").Get<FbxDouble>(), 4.0);
}

TEST_F(PropertyRecords, UnknownTypesAreSkippedAndTheNextRecordIsRead) {
    Read([](FbxBinaryBuilder& b) {
        P(b, "Strange", "NoSuchType", "", "").Int(1).End();
        P(b, "Stranger", "NoSuchType", "AlsoNot", "").Int(1).End();
        P(b, "Count", "int", "Integer", "").Int(9).End();
        // The second word wins when it is known, else the first counts.
        P(b, "Known", "Number", "NoSuchType", "").Double(6.0).End();
        P(b, "Vec", "NoSuchType", "Vector3D", "").Double(1).Double(2).Double(3).End();
    });
    EXPECT_FALSE(object->FindProperty("Strange").IsValid());
    EXPECT_FALSE(object->FindProperty("Stranger").IsValid());
    EXPECT_EQ(object->FindProperty("Count").Get<FbxInt>(), 9);
    EXPECT_EQ(object->FindProperty("Known").GetPropertyDataType(), FbxDoubleDT);
    EXPECT_EQ(object->FindProperty("Vec").Get<FbxDouble3>(), FbxDouble3(1, 2, 3));
    EXPECT_FALSE(status.Error());
}

TEST_F(PropertyRecords, PathNamesNeedTheirParent) {
    Read([](FbxBinaryBuilder& b) {
        P(b, "Group|Child", "double", "Number", "").Double(4.0).End();
        P(b, "Group|Fresh", "int", "Integer", "").Int(5).End();
    });
    EXPECT_DOUBLE_EQ(object->FindProperty("Group|Child").Get<FbxDouble>(), 4.0);
    FbxProperty fresh = object->FindProperty("Group|Fresh");
    ASSERT_TRUE(fresh.IsValid());
    EXPECT_EQ(fresh.GetParent(), object->FindProperty("Group"));
    EXPECT_TRUE(fresh.GetFlag(FbxPropertyFlags::eImported));

    // An object without "Group" skips the record and reads on.
    FbxWideObject* wide = FbxWideObject::Create(manager, "wide");
    Read(
        [](FbxBinaryBuilder& b) {
            P(b, "Group|Child", "double", "Number", "").Double(4.0).End();
            P(b, "Group|", "double", "Number", "").Double(4.0).End();
            P(b, "|Child", "double", "Number", "").Double(4.0).End();
            P(b, "P0", "double", "Number", "").Double(-1.0).End();
        },
        wide);
    EXPECT_FALSE(wide->FindProperty("Group").IsValid());
    EXPECT_EQ(wide->GetPropertyPage()->EntryCount(), 1);
    EXPECT_FALSE(wide->FindProperty("Group|Child").IsValid());
    EXPECT_DOUBLE_EQ(wide->Property(0).Get<FbxDouble>(), -1.0);
}

TEST_F(PropertyRecords, EveryBaseTypeReadsItsValue) {
    Read([](FbxBinaryBuilder& b) {
        P(b, "byte", "Byte", "", "").Byte(-5).End();
        P(b, "ushort", "UShort", "", "").Short(static_cast<int16_t>(60000)).End();
        P(b, "uint", "UInteger", "", "").Int(static_cast<int32_t>(4000000000u)).End();
        P(b, "ulong", "ULongLong", "", "").Long(int64_t(1) << 62).End();
        P(b, "half", "HalfFloat", "", "").Float(0.5f).End();
        P(b, "bool", "bool", "", "").Int(1).End();
        P(b, "enum", "enum", "", "").Int(2).End();
        P(b, "float", "float", "", "").Float(1.25f).End();
        P(b, "v2", "Vector2D", "", "").Double(1).Double(2).End();
        b.Begin("P").String("m").String("matrix4x4").String("").String("");
        for (int i = 0; i < 16; ++i) b.Double(i);
        b.End();
        P(b, "string", "KString", "", "").String("text").End();
        P(b, "ticks", "KTime", "Time", "").Long(FbxTime::kTicksPerSecond * 3).End();
        P(b, "seconds", "KTime", "Time", "").Double(2.0).End();
        P(b, "distance", "Distance", "", "").Float(10.0f).String("cm").End();
        P(b, "when", "DateTime", "", "").String("2026-11-22 10:20:30:400").End();
        P(b, "never", "DateTime", "", "").String("").End();
        P(b, "compound", "Compound", "", "").End();
    });
    auto get = [this](const char* name) { return object->FindProperty(name); };
    EXPECT_EQ(get("byte").Get<FbxChar>(), -5);
    EXPECT_EQ(get("ushort").Get<FbxUShort>(), 60000);
    EXPECT_EQ(get("uint").Get<FbxUInt>(), 4000000000u);
    EXPECT_EQ(get("ulong").Get<FbxULongLong>(), uint64_t(1) << 62);
    EXPECT_FLOAT_EQ(get("half").Get<FbxHalfFloat>().Value(), 0.5f);
    EXPECT_TRUE(get("bool").Get<FbxBool>());
    EXPECT_EQ(get("enum").GetPropertyDataType(), FbxEnumDT);
    EXPECT_EQ(get("enum").Get<FbxInt>(), 2);
    EXPECT_FLOAT_EQ(get("float").Get<FbxFloat>(), 1.25f);
    EXPECT_EQ(get("v2").Get<FbxDouble2>(), FbxDouble2(1, 2));
    EXPECT_DOUBLE_EQ(get("m").Get<FbxDouble4x4>().At(1, 2), 6.0);
    EXPECT_EQ(get("string").Get<FbxString>(), "text");
    EXPECT_EQ(get("ticks").Get<FbxTime>().Get(), FbxTime::kTicksPerSecond * 3);
    EXPECT_EQ(get("seconds").Get<FbxTime>().Get(), FbxTime::kTicksPerSecond * 2);
    EXPECT_EQ(get("distance").Get<FbxDistance>().unit, "cm");
    EXPECT_EQ(get("when").Get<FbxDateTime>().millisecond, 400);
    EXPECT_EQ(get("never").Get<FbxDateTime>(), FbxDateTime());
    EXPECT_TRUE(get("compound").IsValid());
    EXPECT_FALSE(status.Error());
}

TEST_F(PropertyRecords, BlobsAreJoinedFromTheirChunksAndBadChunksAreReported) {
    Bytes first = {1, 2, 3, 4, 5, 6};
    Bytes second = {7, 8, 9, 10, 11, 12};
    Read([&](FbxBinaryBuilder& b) {
        P(b, "blob", "Blob", "", "").Int(10);
        b.Begin("BinaryData").Raw(first).End();
        b.Begin("BinaryData").Raw(second).End();
        b.End();
        // Two chunks in one field, and more than the size asks for.
        P(b, "packed", "Blob", "", "").Int(3);
        b.Begin("BinaryData").Raw(Bytes{1, 2}).Raw(Bytes{3, 4}).End();
        b.End();
        // A size larger than what comes: what came is kept.
        P(b, "short", "Blob", "", "").Int(100);
        b.Begin("BinaryData").Raw(Bytes{9}).End();
        b.End();
    });
    EXPECT_EQ(object->FindProperty("blob").Get<FbxBlob>().bytes, (Bytes{1, 2, 3, 4, 5, 6, 7, 8, 9, 10}));
    EXPECT_EQ(object->FindProperty("packed").Get<FbxBlob>().bytes, (Bytes{1, 2, 3}));
    EXPECT_EQ(object->FindProperty("short").Get<FbxBlob>().bytes, (Bytes{9}));
    EXPECT_FALSE(status.Error());

    // A chunk that does not decode reports and keeps the old value.
    Read([](FbxBinaryBuilder& b) {
        P(b, "blob", "Blob", "", "").Int(4);
        b.Begin("BinaryData").Int(77).End();
        b.End();
        P(b, "Count", "int", "Integer", "").Int(11).End();
    });
    EXPECT_EQ(status.GetCode(), FbxStatus::eFailure);
    EXPECT_STREQ(status.GetErrorString(), "Error decoding binary data chunk");
    EXPECT_EQ(object->FindProperty("blob").Get<FbxBlob>().bytes, (Bytes{1, 2, 3, 4, 5, 6, 7, 8, 9, 10}));
    EXPECT_EQ(object->FindProperty("Count").Get<FbxInt>(), 11);
}

TEST_F(PropertyRecords, UserPropertiesBringLimitsAndEnumItems) {
    Read([](FbxBinaryBuilder& b) {
        P(b, "level", "int", "Integer", "U").Int(5).Int(0).Int(10).End();
        P(b, "weight", "double", "Number", "AU").Double(0.5).Double(-1.0).Double(1.0).End();
        P(b, "choice", "enum", "", "U").Int(1).String("Off~On~Auto").End();
        P(b, "empty", "enum", "", "U").Int(0).String("").End();
        // Vectors have no limits: the record ends after the value.
        P(b, "place", "Vector3D", "Vector", "U").Double(1).Double(2).Double(3).End();
    });
    FbxProperty level = object->FindProperty("level");
    EXPECT_EQ(level.Get<FbxInt>(), 5);
    EXPECT_DOUBLE_EQ(level.GetMinLimit(), 0.0);
    EXPECT_DOUBLE_EQ(level.GetMaxLimit(), 10.0);
    FbxProperty weight = object->FindProperty("weight");
    EXPECT_DOUBLE_EQ(weight.GetMinLimit(), -1.0);
    EXPECT_DOUBLE_EQ(weight.GetMaxLimit(), 1.0);
    FbxProperty choice = object->FindProperty("choice");
    ASSERT_EQ(choice.GetEnumCount(), 3);
    EXPECT_STREQ(choice.GetEnumValue(2), "Auto");
    EXPECT_EQ(choice.Get<FbxInt>(), 1);
    EXPECT_EQ(object->FindProperty("empty").GetEnumCount(), 0);
    EXPECT_EQ(object->FindProperty("place").Get<FbxDouble3>(), FbxDouble3(1, 2, 3));
}

TEST_F(PropertyRecords, MalformedRecordsReadAsFarAsTheyGo) {
    Read([](FbxBinaryBuilder& b) {
        b.Begin("P").End();                                        // no values at all
        b.Begin("P").String("OnlyName").End();                     // no type
        P(b, "Number", "double", "Number", "").End();              // no value: 0
        P(b, "Count", "int", "Integer", "").String("nine").End();  // wrong code
        P(b, "v3", "Vector", "", "").Double(1).End();              // too few values
    });
    EXPECT_FALSE(object->FindProperty("OnlyName").IsValid());
    EXPECT_DOUBLE_EQ(object->FindProperty("Number").Get<FbxDouble>(), 0.0);
    EXPECT_EQ(object->FindProperty("v3").Get<FbxDouble3>(), FbxDouble3(1, 0, 0));

    // A "Properties70" without a block does nothing.
    int entries = object->GetPropertyPage()->EntryCount();
    FbxBinaryBuilder b;
    b.Begin("Other").Int(1).End();
    b.Begin("Properties70").Int(1).End();  // no block
    Opened o(b.Finish());
    ASSERT_TRUE(o.ok);
    EXPECT_TRUE(FbxReadProperties70(o.stream, *object, status));
    EXPECT_EQ(object->GetPropertyPage()->EntryCount(), entries);
    EXPECT_EQ(o.stream.Depth(), 0);
}

// --- Definitions and templates ---

class Templates : public PropertyRecords {
protected:
    // Template objects are not the manager's: they go before it.
    void TearDown() override {
        templates.Clear();
        PropertyRecords::TearDown();
    }
    // Reads "Definitions" from the built bytes.
    template <class F>
    void ReadDefinitions(F build) {
        FbxBinaryBuilder b;
        b.Begin("Definitions");
        b.Begin("Version").Int(100).End();
        build(b);
        b.End();
        Opened o(b.Finish());
        ASSERT_TRUE(o.ok);
        EXPECT_TRUE(FbxReadDefinitions(o.stream, *manager, types, templates, status));
        EXPECT_EQ(o.stream.Depth(), 0);
    }
    // An "ObjectType" with one template whose records `build` writes.
    template <class F>
    static void ObjectType(FbxBinaryBuilder& b, const char* word, const char* className, F build) {
        b.Begin("ObjectType").String(word);
        b.Begin("Count").Int(1).End();
        b.Begin("PropertyTemplate").String(className);
        b.Begin("Properties70");
        build(b);
        b.End();
        b.End();
        b.End();
    }

    std::vector<FbxString> types;
    FbxTemplateMap templates;
};

TEST_F(Templates, ATemplateChangesDefaultsOfItsFileOnlyAndTheFileValuesWin) {
    int objectsBefore = manager->GetObjectCount();
    ReadDefinitions([](FbxBinaryBuilder& b) {
        ObjectType(b, "TestObject", "FbxTestObject", [](FbxBinaryBuilder& b) {
            P(b, "Number", "double", "Number", "").Double(7.0).End();
            P(b, "Count", "int", "Integer", "H").Int(3).End();
            P(b, "Extra", "int", "Integer", "U").Int(1).Int(0).Int(5).End();
        });
    });
    ASSERT_EQ(types, std::vector<FbxString>{"TestObject"});
    ASSERT_EQ(templates.Count(), 1);
    FbxObject* tmpl = templates.Find(FbxTestObject::ClassId);
    ASSERT_NE(tmpl, nullptr);
    EXPECT_STREQ(tmpl->GetName(), "FbxTestObject_TemplateObject");
    // Templates stay out of the manager's list and have no connections.
    EXPECT_EQ(manager->GetObjectCount(), objectsBefore);
    EXPECT_EQ(tmpl->GetDstObjectCount(), 0);

    FbxTestObject* fromFile = FbxTestObject::Create(manager, "fromFile");
    templates.Apply(*fromFile);
    EXPECT_DOUBLE_EQ(fromFile->FindProperty("Number").Get<FbxDouble>(), 7.0);
    EXPECT_TRUE(fromFile->FindProperty("Count").GetFlag(FbxPropertyFlags::eHidden));
    FbxProperty extra = fromFile->FindProperty("Extra");
    ASSERT_TRUE(extra.IsValid());
    EXPECT_EQ(extra.Get<FbxInt>(), 1);
    EXPECT_TRUE(extra.GetFlag(FbxPropertyFlags::eUserDefined));
    // Untouched properties still come from the class.
    EXPECT_EQ(fromFile->FindProperty("Text").ValueOwner(), FbxProperty::eInheritedValue);

    // The class page stays: an object without the template has the default.
    FbxTestObject* plain = FbxTestObject::Create(manager, "plain");
    EXPECT_DOUBLE_EQ(plain->FindProperty("Number").Get<FbxDouble>(), 1.5);
    EXPECT_FALSE(plain->FindProperty("Count").GetFlag(FbxPropertyFlags::eHidden));
    EXPECT_FALSE(plain->FindProperty("Extra").IsValid());

    // The object's own records are read after the template and win.
    Read([](FbxBinaryBuilder& b) { P(b, "Number", "double", "Number", "").Double(3.0).End(); }, fromFile);
    EXPECT_DOUBLE_EQ(fromFile->FindProperty("Number").Get<FbxDouble>(), 3.0);

    // A value the object set already is not replaced by the template.
    FbxTestObject* own = FbxTestObject::Create(manager, "own");
    own->FindProperty("Number").Set(FbxDouble(9.0));
    templates.Apply(*own);
    EXPECT_DOUBLE_EQ(own->FindProperty("Number").Get<FbxDouble>(), 9.0);
}

TEST_F(Templates, RepeatedWordsUnknownClassesAndSubclassesGetNoTemplate) {
    ReadDefinitions([](FbxBinaryBuilder& b) {
        for (double value : {7.0, 9.0})
            ObjectType(b, "TestObject", "FbxTestObject",
                       [value](FbxBinaryBuilder& b) { P(b, "Number", "double", "Number", "").Double(value).End(); });
        ObjectType(b, "Character", "FbxNoSuchClass",
                   [](FbxBinaryBuilder& b) { P(b, "Number", "double", "Number", "").Double(9.0).End(); });
        b.Begin("ObjectType").String("GlobalSettings").Begin("Count").Int(1).End().End();
    });
    EXPECT_EQ(types, (std::vector<FbxString>{"TestObject", "Constraint", "GlobalSettings"}));
    ASSERT_EQ(templates.Count(), 1);
    EXPECT_DOUBLE_EQ(templates.Find(FbxTestObject::ClassId)->FindProperty("Number").Get<FbxDouble>(), 7.0);
    // A base class's template does nothing for a subclass.
    FbxTestDerived* derived = FbxTestDerived::Create(manager, "derived");
    templates.Apply(*derived);
    EXPECT_DOUBLE_EQ(derived->FindProperty("Number").Get<FbxDouble>(), 1.5);
    EXPECT_EQ(derived->GetPropertyPage()->EntryCount(), 0);
}

}  // namespace
