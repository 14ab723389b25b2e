#include "fbx/model/fbx_surface_phong.h"

KIVA_FBX_OBJECT_IMPLEMENT(FbxSurfacePhong)

int FbxSurfacePhong::sIds[FbxSurfacePhong::eCount] = {};

FbxSurfacePhong::FbxSurfacePhong(FbxManager& manager, const char* name) : ParentClass(manager, name) {}

void FbxSurfacePhong::ConstructProperties(bool forceSet) {
    ParentClass::ConstructProperties(forceSet);
    if (!ClassId.NeedsPropertyDeclaration()) return;
    FbxProperty root = ClassId.GetRootClassProperty();
    FbxProperty(root.GetPage(), sShadingModelId).Set(FbxString("Phong"), false);
    constexpr uint32_t anim = FbxPropertyFlags::eAnimatable;
    sIds[eSpecular] = FbxProperty::Declare(root, sSpecular, FbxColor3DT, FbxDouble3(0.2, 0.2, 0.2), anim).GetId();
    sIds[eSpecularFactor] = FbxProperty::Declare(root, sSpecularFactor, FbxDoubleDT, 1.0, anim).GetId();
    sIds[eShininess] = FbxProperty::Declare(root, sShininess, FbxDoubleDT, 20.0, anim).GetId();
    sIds[eReflection] = FbxProperty::Declare(root, sReflection, FbxColor3DT, FbxDouble3(0, 0, 0), anim).GetId();
    sIds[eReflectionFactor] = FbxProperty::Declare(root, sReflectionFactor, FbxDoubleDT, 1.0, anim).GetId();
}
