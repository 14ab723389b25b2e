#include "fbx/model/fbx_surface_lambert.h"

KIVA_FBX_OBJECT_IMPLEMENT(FbxSurfaceLambert)

int FbxSurfaceLambert::sIds[FbxSurfaceLambert::eCount] = {};

FbxSurfaceLambert::FbxSurfaceLambert(FbxManager& manager, const char* name) : ParentClass(manager, name) {}

void FbxSurfaceLambert::ConstructProperties(bool forceSet) {
    ParentClass::ConstructProperties(forceSet);
    if (!ClassId.NeedsPropertyDeclaration()) return;
    FbxProperty root = ClassId.GetRootClassProperty();
    FbxProperty(root.GetPage(), sShadingModelId).Set(FbxString("Lambert"), false);
    auto color = [&](const char* name, double v) {
        return FbxProperty::Declare(root, name, FbxColor3DT, FbxDouble3(v, v, v), FbxPropertyFlags::eAnimatable)
            .GetId();
    };
    auto vector = [&](const char* name) {
        return FbxProperty::Declare(root, name, FbxDouble3DT, FbxDouble3(0, 0, 0), FbxPropertyFlags::eAnimatable)
            .GetId();
    };
    auto factor = [&](const char* name, double v) {
        return FbxProperty::Declare(root, name, FbxDoubleDT, v, FbxPropertyFlags::eAnimatable).GetId();
    };
    sIds[eEmissive] = color(sEmissive, 0.0);
    sIds[eEmissiveFactor] = factor(sEmissiveFactor, 1.0);
    sIds[eAmbient] = color(sAmbient, 0.2);
    sIds[eAmbientFactor] = factor(sAmbientFactor, 1.0);
    sIds[eDiffuse] = color(sDiffuse, 0.8);
    sIds[eDiffuseFactor] = factor(sDiffuseFactor, 1.0);
    sIds[eBump] = vector(sBump);
    sIds[eNormalMap] = vector(sNormalMap);
    sIds[eBumpFactor] = factor(sBumpFactor, 1.0);
    sIds[eTransparentColor] = color(sTransparentColor, 0.0);
    sIds[eTransparencyFactor] = factor(sTransparencyFactor, 0.0);
    sIds[eDisplacementColor] = color(sDisplacementColor, 0.0);
    sIds[eDisplacementFactor] = factor(sDisplacementFactor, 1.0);
    sIds[eVectorDisplacementColor] = color(sVectorDisplacementColor, 0.0);
    sIds[eVectorDisplacementFactor] = factor(sVectorDisplacementFactor, 1.0);
}
