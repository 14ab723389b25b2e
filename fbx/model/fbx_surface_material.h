#pragma once

#include "fbx/model/fbx_object.h"

// A surface material: a set of properties. A texture belongs to a material
// as a source object of one of its properties, so that whether the diffuse
// colour has a texture is asked of "DiffuseColor".
class FbxSurfaceMaterial : public FbxObject {
    KIVA_FBX_OBJECT_DECLARE(FbxSurfaceMaterial, FbxObject)

public:
    // Names of the material properties of this class and its subclasses.
    static constexpr const char* sShadingModel = "ShadingModel";
    static constexpr const char* sMultiLayer = "MultiLayer";
    static constexpr const char* sEmissive = "EmissiveColor";
    static constexpr const char* sEmissiveFactor = "EmissiveFactor";
    static constexpr const char* sAmbient = "AmbientColor";
    static constexpr const char* sAmbientFactor = "AmbientFactor";
    static constexpr const char* sDiffuse = "DiffuseColor";
    static constexpr const char* sDiffuseFactor = "DiffuseFactor";
    static constexpr const char* sBump = "Bump";
    static constexpr const char* sNormalMap = "NormalMap";
    static constexpr const char* sBumpFactor = "BumpFactor";
    static constexpr const char* sTransparentColor = "TransparentColor";
    static constexpr const char* sTransparencyFactor = "TransparencyFactor";
    static constexpr const char* sDisplacementColor = "DisplacementColor";
    static constexpr const char* sDisplacementFactor = "DisplacementFactor";
    static constexpr const char* sVectorDisplacementColor = "VectorDisplacementColor";
    static constexpr const char* sVectorDisplacementFactor = "VectorDisplacementFactor";
    static constexpr const char* sSpecular = "SpecularColor";
    static constexpr const char* sSpecularFactor = "SpecularFactor";
    static constexpr const char* sShininess = "ShininessExponent";
    static constexpr const char* sReflection = "ReflectionColor";
    static constexpr const char* sReflectionFactor = "ReflectionFactor";

    // "ShadingModel" (string, "Unknown"; "Lambert" and "Phong" on those
    // classes) and "MultiLayer" (bool, false).
    FbxPropertyT<FbxString> ShadingModel() const { return GetPropertyById(sShadingModelId); }
    FbxPropertyT<FbxBool> MultiLayer() const { return GetPropertyById(sMultiLayerId); }

protected:
    void ConstructProperties(bool forceSet) override;

    static int sShadingModelId;
    static int sMultiLayerId;
};
