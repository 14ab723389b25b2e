#include "fbx/model/fbx_model_testing.h"

#include <string>

KIVA_FBX_OBJECT_IMPLEMENT(FbxTestObject)
KIVA_FBX_OBJECT_IMPLEMENT(FbxTestDerived)
KIVA_FBX_OBJECT_IMPLEMENT(FbxWideObject)

int FbxTestObject::sNumber = -1;
int FbxWideObject::sIds[FbxWideObject::kPropertyCount] = {};

FbxTestObject::FbxTestObject(FbxManager& manager, const char* name) : ParentClass(manager, name) {}

void FbxTestObject::ConstructProperties(bool forceSet) {
    ParentClass::ConstructProperties(forceSet);
    if (!ClassId.NeedsPropertyDeclaration()) return;
    FbxProperty root = ClassId.GetRootClassProperty();
    sNumber = FbxProperty::Declare(root, "Number", FbxDoubleDT, 1.5).GetId();
    FbxProperty::Declare(root, "Color", FbxColor3DT, FbxDouble3(0.5, 0.5, 0.5), FbxPropertyFlags::eAnimatable);
    FbxProperty::Declare(root, "Visible", FbxBoolDT, true);
    FbxProperty::Declare(root, "Count", FbxIntDT, 3);
    FbxProperty mode = FbxProperty::Declare(root, "Mode", FbxEnumDT, 1);
    mode.AddEnumValue("Off");
    mode.AddEnumValue("On");
    mode.AddEnumValue("Auto");
    FbxProperty::Declare(root, "Text", FbxStringDT, FbxString("hello"));
    FbxProperty group = FbxProperty::Create(root, FbxCompoundDT, "Group");
    FbxProperty::Declare(group, "Child", FbxDoubleDT, 2.0);
}

FbxTestDerived::FbxTestDerived(FbxManager& manager, const char* name) : ParentClass(manager, name) {}

void FbxTestDerived::ConstructProperties(bool forceSet) {
    ParentClass::ConstructProperties(forceSet);
    if (!ClassId.NeedsPropertyDeclaration()) return;
    FbxProperty::Declare(ClassId.GetRootClassProperty(), "Extra", FbxIntDT, 7);
}

FbxWideObject::FbxWideObject(FbxManager& manager, const char* name) : ParentClass(manager, name) {}

void FbxWideObject::ConstructProperties(bool forceSet) {
    ParentClass::ConstructProperties(forceSet);
    if (!ClassId.NeedsPropertyDeclaration()) return;
    FbxProperty root = ClassId.GetRootClassProperty();
    for (int i = 0; i < kPropertyCount; ++i) {
        std::string name = "P" + std::to_string(i);
        FbxProperty p;
        switch (i % 4) {
        case 0:
            p = FbxProperty::Declare(root, name.c_str(), FbxDoubleDT, 1.0 * i);
            break;
        case 1:
            p = FbxProperty::Declare(root, name.c_str(), FbxDouble3DT, FbxDouble3(i, i, i));
            break;
        case 2:
            p = FbxProperty::Declare(root, name.c_str(), FbxBoolDT, true);
            break;
        default:
            p = FbxProperty::Declare(root, name.c_str(), FbxIntDT, i);
            break;
        }
        sIds[i] = p.GetId();
    }
}

void RegisterTestClasses(FbxManager* manager) {
    if (!manager->FindClass("FbxTestObject").IsValid()) {
        FbxTestObject::ClassId = manager->RegisterRuntimeClass("FbxTestObject", FbxObject::ClassId,
                                                               &FbxTestObject::Allocate, "TestObject", "", "Test::");
        FbxTestDerived::ClassId = manager->RegisterRuntimeClass("FbxTestDerived", FbxTestObject::ClassId,
                                                                &FbxTestDerived::Allocate, "TestObject", "Derived");
        FbxWideObject::ClassId =
            manager->RegisterRuntimeClass("FbxWideObject", FbxObject::ClassId, &FbxWideObject::Allocate);
    }
}
