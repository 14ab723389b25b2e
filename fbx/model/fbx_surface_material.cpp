#include "fbx/model/fbx_surface_material.h"

KIVA_FBX_OBJECT_IMPLEMENT(FbxSurfaceMaterial)

int FbxSurfaceMaterial::sShadingModelId = -1;
int FbxSurfaceMaterial::sMultiLayerId = -1;

FbxSurfaceMaterial::FbxSurfaceMaterial(FbxManager& manager, const char* name) : ParentClass(manager, name) {}

void FbxSurfaceMaterial::ConstructProperties(bool forceSet) {
    ParentClass::ConstructProperties(forceSet);
    if (!ClassId.NeedsPropertyDeclaration()) return;
    FbxProperty root = ClassId.GetRootClassProperty();
    sShadingModelId = FbxProperty::Declare(root, sShadingModel, FbxStringDT, FbxString("Unknown")).GetId();
    sMultiLayerId = FbxProperty::Declare(root, sMultiLayer, FbxBoolDT, false).GetId();
}
