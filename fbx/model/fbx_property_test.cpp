#include "fbx/model/fbx_property.h"

#include <gtest/gtest.h>

#include "fbx/model/fbx_manager.h"
#include "fbx/model/fbx_model_testing.h"
#include "fbx/model/fbx_property_page.h"

// Counts the notifications it hears, and refuses changes to "Count".
class FbxNotifiedObject : public FbxTestObject {
    KIVA_FBX_OBJECT_DECLARE(FbxNotifiedObject, FbxTestObject)

public:
    int requests = 0;
    int done = 0;

    bool PropertyNotify(EPropertyNotifyType type, const FbxProperty& property) override {
        if (type == ePropertySetRequest) {
            ++requests;
            return std::string(property.GetName()) != "Count";
        }
        ++done;
        return true;
    }
};
KIVA_FBX_OBJECT_IMPLEMENT(FbxNotifiedObject)
FbxNotifiedObject::FbxNotifiedObject(FbxManager& manager, const char* name) : ParentClass(manager, name) {}

namespace {

class FbxPropertyTest : public ::testing::Test {
protected:
    void SetUp() override {
        manager = FbxManager::Create();
        RegisterTestClasses(manager);
        a = FbxTestObject::Create(manager, "a");
        b = FbxTestObject::Create(manager, "b");
    }
    void TearDown() override { manager->Destroy(); }

    static int OwnEntries(const FbxObject* object) { return object->GetPropertyPage()->EntryCount(); }

    FbxManager* manager = nullptr;
    FbxTestObject* a = nullptr;
    FbxTestObject* b = nullptr;
};

TEST_F(FbxPropertyTest, ObjectsShareClassDefaultsAndKeepOnlyTheirChanges) {
    EXPECT_EQ(a->FindProperty("Number").Get<double>(), 1.5);
    EXPECT_EQ(OwnEntries(a), 0);

    EXPECT_TRUE(a->FindProperty("Number").Set(4.0));
    EXPECT_EQ(a->FindProperty("Number").Get<double>(), 4.0);
    EXPECT_EQ(b->FindProperty("Number").Get<double>(), 1.5);
    EXPECT_EQ(OwnEntries(a), 1);
    EXPECT_EQ(OwnEntries(b), 0);

    // A later change of the class default shows on untouched objects only.
    FbxProperty classNumber = FbxTestObject::ClassId.GetRootClassProperty().Find("Number");
    ASSERT_TRUE(classNumber.IsValid());
    classNumber.Set(9.0, false);
    EXPECT_EQ(b->FindProperty("Number").Get<double>(), 9.0);
    EXPECT_EQ(a->FindProperty("Number").Get<double>(), 4.0);
    FbxTestObject* c = FbxTestObject::Create(manager, "c");
    EXPECT_EQ(c->Number().Get<double>(), 9.0);

    // Subclasses stand on the base class's page and add their own.
    FbxTestDerived* d = FbxTestDerived::Create(manager, "d");
    EXPECT_EQ(d->FindProperty("Number").Get<double>(), 9.0);
    EXPECT_EQ(d->FindProperty("Extra").Get<int>(), 7);
    EXPECT_FALSE(a->FindProperty("Extra").IsValid());
    EXPECT_EQ(OwnEntries(d), 0);
}

TEST_F(FbxPropertyTest, ClassDefaultsGoWithTheLastInstance) {
    FbxTestObject::ClassId.GetRootClassProperty().Find("Number").Set(9.0, false);
    EXPECT_EQ(a->Number().Get<double>(), 9.0);
    a->Destroy();
    EXPECT_EQ(b->Number().Get<double>(), 9.0);
    b->Destroy();
    EXPECT_EQ(FbxTestObject::ClassId.GetInstanceCount(), 0);
    EXPECT_EQ(FbxTestObject::ClassId.GetRootPage(), nullptr);
    FbxTestObject* fresh = FbxTestObject::Create(manager, "fresh");
    EXPECT_EQ(fresh->Number().Get<double>(), 1.5);
    EXPECT_EQ(fresh->FindProperty("Number", FbxDoubleDT), fresh->Number());
    EXPECT_FALSE(fresh->FindProperty("Number", FbxIntDT).IsValid());
}

TEST_F(FbxPropertyTest, SetWithCheckKeepsDefaultValuesOffThePage) {
    FbxProperty number = a->FindProperty("Number");
    EXPECT_TRUE(number.Set(1.5));
    EXPECT_EQ(OwnEntries(a), 0);
    EXPECT_EQ(number.ValueOwner(), FbxProperty::eInheritedValue);

    // A value given in another type is compared after conversion.
    EXPECT_TRUE(number.Set(FbxString("1.5")));
    EXPECT_EQ(OwnEntries(a), 0);

    number.Set(2.0);
    EXPECT_EQ(number.ValueOwner(), FbxProperty::eOwnValue);
    // Back to the default: the own value goes.
    number.Set(1.5);
    EXPECT_EQ(OwnEntries(a), 0);
    EXPECT_EQ(number.Get<double>(), 1.5);

    // Without the check the value is stored even when equal.
    number.Set(1.5, false);
    EXPECT_EQ(OwnEntries(a), 1);
    EXPECT_EQ(number.ValueOwner(), FbxProperty::eOwnValue);
}

TEST_F(FbxPropertyTest, FlagsAreInheritedAndOverriddenPerObject) {
    FbxProperty color = a->FindProperty("Color");
    EXPECT_TRUE(color.GetFlag(FbxPropertyFlags::eAnimatable));
    EXPECT_EQ(color.GetFlags(), static_cast<uint32_t>(FbxPropertyFlags::eAnimatable));

    color.SetFlag(FbxPropertyFlags::eAnimatable, false);
    color.SetFlag(FbxPropertyFlags::eHidden, true);
    EXPECT_EQ(color.GetFlags(), static_cast<uint32_t>(FbxPropertyFlags::eHidden));
    EXPECT_TRUE(b->FindProperty("Color").GetFlag(FbxPropertyFlags::eAnimatable));
    EXPECT_FALSE(b->FindProperty("Color").GetFlag(FbxPropertyFlags::eHidden));

    EXPECT_EQ(color.GetOwnFlagMask(), static_cast<uint32_t>(FbxPropertyFlags::eAnimatable | FbxPropertyFlags::eHidden));
    EXPECT_EQ(color.GetOwnFlagValue(), static_cast<uint32_t>(FbxPropertyFlags::eHidden));
    // Setting the bits back to what the class has drops the entry.
    color.SetFlag(FbxPropertyFlags::eAnimatable, true);
    color.SetFlag(FbxPropertyFlags::eHidden, false);
    EXPECT_EQ(OwnEntries(a), 0);
    EXPECT_EQ(color.GetFlags(), static_cast<uint32_t>(FbxPropertyFlags::eAnimatable));

    // The lock field is a group of bits.
    color.SetFlag(FbxPropertyFlags::eLockedAll, false);
    color.SetFlag(3 * FbxPropertyFlags::eLockedMember0, true);
    EXPECT_EQ(color.GetFlags() & FbxPropertyFlags::eLockedAll, 3u * FbxPropertyFlags::eLockedMember0);
}

TEST_F(FbxPropertyTest, FindFollowsPathsAndCase) {
    FbxProperty child = a->FindProperty("Group|Child", true);
    ASSERT_TRUE(child.IsValid());
    EXPECT_STREQ(child.GetName(), "Child");
    EXPECT_EQ(child.GetHierarchicalName(), "Group|Child");
    EXPECT_EQ(child.Get<double>(), 2.0);
    EXPECT_EQ(a->FindProperty("group|child", false), child);
    EXPECT_FALSE(a->FindProperty("group|child", true).IsValid());
    EXPECT_FALSE(a->FindProperty("Group|Missing").IsValid());
    EXPECT_FALSE(a->FindProperty("Missing|Child").IsValid());
    EXPECT_FALSE(a->FindProperty("Group|").IsValid());
    EXPECT_FALSE(a->FindProperty("").IsValid());
    EXPECT_FALSE(a->FindProperty(nullptr).IsValid());
    EXPECT_EQ(child.GetParent(), a->FindProperty("Group"));

    // The name cache gives the same answers, and learns new properties.
    a->BeginCreateOrFind();
    EXPECT_EQ(a->FindProperty("Group|Child"), child);
    EXPECT_EQ(a->FindProperty("group|child", false), child);
    EXPECT_FALSE(a->FindProperty("group|child", true).IsValid());
    FbxProperty made = FbxProperty::Create(a, FbxIntDT, "Dynamic");
    EXPECT_EQ(a->FindProperty("Dynamic"), made);
    a->EndCreateOrFind();
    EXPECT_EQ(a->FindProperty("Dynamic"), made);
    EXPECT_FALSE(b->FindProperty("Dynamic").IsValid());
}

TEST_F(FbxPropertyTest, ChildrenComeInIdOrderAcrossClassAndObject) {
    FbxProperty::Create(a, FbxIntDT, "Zeta");
    std::vector<std::string> names;
    for (FbxProperty p = a->GetFirstProperty(); p.IsValid(); p = a->GetNextProperty(p)) names.push_back(p.GetName());
    EXPECT_EQ(names,
              (std::vector<std::string>{"Number", "Color", "Visible", "Count", "Mode", "Text", "Group", "Zeta"}));
    EXPECT_FALSE(a->FindProperty("Group").GetChild().GetSibling().IsValid());
}

TEST_F(FbxPropertyTest, CreateFindsExistingChildrenAndAddsOthers) {
    bool found = true;
    FbxProperty made = FbxProperty::Create(a, FbxDouble3DT, "Offset", "Offset label", true, &found);
    EXPECT_FALSE(found);
    EXPECT_STREQ(made.GetLabel(), "Offset label");
    EXPECT_EQ(made.GetPropertyDataType(), FbxDouble3DT);
    EXPECT_EQ(made.Get<FbxDouble3>(), FbxDouble3(0, 0, 0));

    // An existing name is returned whatever type was asked for.
    FbxProperty again = FbxProperty::Create(a, FbxStringDT, "Number", "", true, &found);
    EXPECT_TRUE(found);
    EXPECT_EQ(again, a->FindProperty("Number"));
    EXPECT_EQ(again.GetPropertyDataType(), FbxDoubleDT);

    FbxProperty nested = FbxProperty::Create(a->FindProperty("Group"), FbxBoolDT, "Flag");
    EXPECT_EQ(a->FindProperty("Group|Flag"), nested);
    EXPECT_FALSE(FbxProperty::Create(FbxProperty(), FbxBoolDT, "x").IsValid());
    EXPECT_FALSE(FbxProperty::Create(a, FbxDataType(), "x").IsValid());
    EXPECT_FALSE(FbxProperty::Create(static_cast<FbxObject*>(nullptr), FbxBoolDT, "x").IsValid());
}

TEST_F(FbxPropertyTest, GetAndSetConvertBetweenBaseTypes) {
    FbxProperty color = a->FindProperty("Color");
    EXPECT_EQ(color.Get<FbxString>(), "0.5,0.5,0.5");
    EXPECT_TRUE(color.Set(FbxString("1, 2.25, -3")));
    EXPECT_EQ(color.Get<FbxDouble3>(), FbxDouble3(1, 2.25, -3));
    EXPECT_EQ(color.Get<FbxDouble4>(), FbxDouble4(1, 2.25, -3, 0));
    // A double3 is no single number.
    double d = 7.0;
    EXPECT_FALSE(color.Get(d));
    EXPECT_EQ(d, 7.0);
    EXPECT_FALSE(color.Set(FbxString("1,2")));
    EXPECT_EQ(color.Get<FbxDouble3>(), FbxDouble3(1, 2.25, -3));

    FbxProperty text = a->FindProperty("Text");
    EXPECT_FALSE(text.Get(d));
    EXPECT_TRUE(text.Set(FbxString("2.5")));
    EXPECT_EQ(text.Get<double>(), 2.5);
    EXPECT_EQ(text.Get<int>(), 2);
    text.Set("plain text");
    EXPECT_EQ(text.Get<FbxString>(), "plain text");

    FbxPropertyT<FbxDouble3> typed = color;
    EXPECT_TRUE(typed.Set(FbxDouble3(7, 8, 9)));
    EXPECT_EQ(typed.Get(), FbxDouble3(7, 8, 9));
    EXPECT_EQ(FbxPropertyT<double>().Get(), 0.0);

    FbxProperty visible = a->FindProperty("Visible");
    EXPECT_EQ(visible.Get<FbxString>(), "true");
    EXPECT_TRUE(visible.Set(FbxString("false")));
    EXPECT_FALSE(visible.Get<bool>());
    EXPECT_TRUE(visible.Set(2));
    EXPECT_TRUE(visible.Get<bool>());

    FbxProperty count = a->FindProperty("Count");
    EXPECT_TRUE(count.Set(1e30));
    EXPECT_EQ(count.Get<int>(), 2147483647);
    EXPECT_TRUE(count.Set(-7.9));
    EXPECT_EQ(count.Get<int>(), -7);
    EXPECT_FALSE(count.Set(FbxString("seven")));
    EXPECT_EQ(count.Get<int>(), -7);
    EXPECT_TRUE(count.Set(FbxTime(42)));
    EXPECT_EQ(count.Get<FbxTime>(), FbxTime(42));
    FbxDouble4x4 m;
    EXPECT_FALSE(count.Set(m));

    // A compound has no value.
    FbxProperty group = a->FindProperty("Group");
    EXPECT_FALSE(group.Set(1.0));
    EXPECT_FALSE(group.Get(d));
}

TEST_F(FbxPropertyTest, LimitsAndEnumItemsAreCopiedBeforeAnObjectChangesThem) {
    FbxProperty mode = a->FindProperty("Mode");
    EXPECT_EQ(mode.GetEnumCount(), 3);
    EXPECT_STREQ(mode.GetEnumValue(1), "On");
    EXPECT_STREQ(mode.GetEnumValue(3), "");
    EXPECT_STREQ(mode.GetEnumValue(-1), "");
    EXPECT_EQ(mode.Get<int>(), 1);
    EXPECT_EQ(mode.AddEnumValue("Extra"), 3);
    EXPECT_EQ(mode.GetEnumCount(), 4);
    EXPECT_EQ(b->FindProperty("Mode").GetEnumCount(), 3);
    EXPECT_EQ(a->FindProperty("Number").AddEnumValue("x"), -1);

    FbxProperty count = a->FindProperty("Count");
    EXPECT_FALSE(count.HasMinLimit());
    count.SetMinLimit(-1.0);
    count.SetMaxLimit(10.0);
    EXPECT_TRUE(count.HasMinLimit());
    EXPECT_EQ(count.GetMinLimit(), -1.0);
    EXPECT_EQ(count.GetMaxLimit(), 10.0);
    EXPECT_FALSE(b->FindProperty("Count").HasMaxLimit());

    count.SetLabel("How many");
    EXPECT_STREQ(count.GetLabel(), "How many");
    EXPECT_STREQ(b->FindProperty("Count").GetLabel(), "");
}

TEST_F(FbxPropertyTest, CopyValueSharesUntilWrittenAndConvertsAcrossTypes) {
    FbxProperty from = a->FindProperty("Color");
    from.Set(FbxDouble3(1, 2, 3));
    FbxProperty to = b->FindProperty("Color");
    EXPECT_TRUE(to.CopyValue(from));
    EXPECT_EQ(to.Get<FbxDouble3>(), FbxDouble3(1, 2, 3));
    from.Set(FbxDouble3(4, 5, 6));
    EXPECT_EQ(to.Get<FbxDouble3>(), FbxDouble3(1, 2, 3));

    EXPECT_TRUE(b->FindProperty("Text").CopyValue(from));
    EXPECT_EQ(b->FindProperty("Text").Get<FbxString>(), "4,5,6");
    EXPECT_FALSE(b->FindProperty("Number").CopyValue(from));
    EXPECT_FALSE(to.CopyValue(FbxProperty()));

    // Deep ownership: a value on an object page counts as own, a class
    // default does not.
    EXPECT_EQ(to.ValueOwner(true), FbxProperty::eOwnValue);
    EXPECT_EQ(b->FindProperty("Count").ValueOwner(true), FbxProperty::eInheritedValue);
    EXPECT_EQ(b->FindProperty("Group").ValueOwner(true), FbxProperty::eNoValue);
}

TEST_F(FbxPropertyTest, InvalidHandlesDoNothing) {
    FbxProperty invalid;
    FbxProperty unknownId(a->GetPropertyPage(), 999);
    for (FbxProperty p : {invalid, unknownId}) {
        EXPECT_FALSE(p.IsValid());
        EXPECT_STREQ(p.GetName(), "");
        EXPECT_STREQ(p.GetLabel(), "");
        EXPECT_FALSE(p.SetLabel("x"));
        EXPECT_FALSE(p.GetPropertyDataType().Valid());
        EXPECT_EQ(p.GetFlags(), 0u);
        EXPECT_FALSE(p.SetFlag(2, true));
        EXPECT_FALSE(p.Set(1.0));
        double d = 3.0;
        EXPECT_FALSE(p.Get(d));
        EXPECT_EQ(d, 3.0);
        EXPECT_FALSE(p.GetParent().IsValid());
        EXPECT_FALSE(p.GetChild().IsValid());
        EXPECT_FALSE(p.GetSibling().IsValid());
        EXPECT_FALSE(p.Find("Number").IsValid());
        EXPECT_FALSE(p.SetMinLimit(1));
        EXPECT_EQ(p.AddEnumValue("x"), -1);
        EXPECT_EQ(p.GetEnumCount(), 0);
        EXPECT_EQ(p.ValueOwner(), FbxProperty::eNoValue);
        EXPECT_FALSE(p.ConnectSrcObject(b));
        EXPECT_FALSE(p.ConnectDstObject(b));
        EXPECT_FALSE(p.ConnectSrcProperty(b->GetRootProperty()));
        EXPECT_EQ(p.GetSrcObjectCount(), 0);
        EXPECT_EQ(p.GetSrcObject(0), nullptr);
        EXPECT_EQ(p.GetDstObject(0), nullptr);
        EXPECT_FALSE(p.GetSrcProperty(0).IsValid());
        EXPECT_FALSE(p.DisconnectSrcObject(b));
        EXPECT_FALSE(p.MoveSrcObject(0, 1));
        EXPECT_EQ(p.GetConnectionPoint(), nullptr);
        p.BeginCreateOrFind();
        p.EndCreateOrFind();
    }
    EXPECT_FALSE(a->GetPropertyById(-1).IsValid());
    EXPECT_FALSE(a->ConnectSrcObject(nullptr));
    EXPECT_EQ(a->GetSrcObject(-1), nullptr);
    EXPECT_EQ(a->GetSrcObject(5), nullptr);
}

TEST_F(FbxPropertyTest, PropertyNotifyHearsAndCanRefuseChanges) {
    FbxNotifiedObject::ClassId =
        manager->RegisterRuntimeClass("FbxNotifiedObject", FbxTestObject::ClassId, &FbxNotifiedObject::Allocate);
    auto* object = FbxNotifiedObject::Create(manager, "n");
    object->FindProperty("Number").Set(3.0);
    EXPECT_EQ(object->requests, 0);  // flag 1 is off

    object->SetFlag(FbxObject::eNotifyPropertyChanges, true);
    EXPECT_TRUE(object->FindProperty("Number").Set(5.0));
    EXPECT_EQ(object->requests, 1);
    EXPECT_EQ(object->done, 1);
    EXPECT_FALSE(object->FindProperty("Count").Set(5));
    EXPECT_EQ(object->FindProperty("Count").Get<int>(), 3);
    EXPECT_EQ(object->done, 1);
}

}  // namespace
