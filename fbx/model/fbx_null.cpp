#include "fbx/model/fbx_null.h"

KIVA_FBX_OBJECT_IMPLEMENT(FbxNull)

int FbxNull::sSize = -1;
int FbxNull::sLook = -1;

FbxNull::FbxNull(FbxManager& manager, const char* name) : ParentClass(manager, name) {}

void FbxNull::ConstructProperties(bool forceSet) {
    ParentClass::ConstructProperties(forceSet);
    if (!ClassId.NeedsPropertyDeclaration()) return;
    FbxProperty root = ClassId.GetRootClassProperty();
    sSize = FbxProperty::Declare(root, "Size", FbxDoubleDT, 100.0).GetId();
    FbxProperty look = FbxProperty::Declare(root, "Look", FbxEnumDT, FbxEnum(eCross));
    look.AddEnumValue("None");
    look.AddEnumValue("Cross");
    sLook = look.GetId();
}
