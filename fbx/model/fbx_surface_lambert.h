#pragma once

#include "fbx/model/fbx_surface_material.h"

// A Lambert surface material: emissive, ambient and diffuse colours with
// their factors, bump and normal map, transparency and displacement.
class FbxSurfaceLambert : public FbxSurfaceMaterial {
    KIVA_FBX_OBJECT_DECLARE(FbxSurfaceLambert, FbxSurfaceMaterial)

public:
    FbxPropertyT<FbxDouble3> Emissive() const { return GetPropertyById(sIds[eEmissive]); }
    FbxPropertyT<FbxDouble> EmissiveFactor() const { return GetPropertyById(sIds[eEmissiveFactor]); }
    FbxPropertyT<FbxDouble3> Ambient() const { return GetPropertyById(sIds[eAmbient]); }
    FbxPropertyT<FbxDouble> AmbientFactor() const { return GetPropertyById(sIds[eAmbientFactor]); }
    FbxPropertyT<FbxDouble3> Diffuse() const { return GetPropertyById(sIds[eDiffuse]); }
    FbxPropertyT<FbxDouble> DiffuseFactor() const { return GetPropertyById(sIds[eDiffuseFactor]); }
    FbxPropertyT<FbxDouble3> Bump() const { return GetPropertyById(sIds[eBump]); }
    FbxPropertyT<FbxDouble3> NormalMap() const { return GetPropertyById(sIds[eNormalMap]); }
    FbxPropertyT<FbxDouble> BumpFactor() const { return GetPropertyById(sIds[eBumpFactor]); }
    FbxPropertyT<FbxDouble3> TransparentColor() const { return GetPropertyById(sIds[eTransparentColor]); }
    FbxPropertyT<FbxDouble> TransparencyFactor() const { return GetPropertyById(sIds[eTransparencyFactor]); }
    FbxPropertyT<FbxDouble3> DisplacementColor() const { return GetPropertyById(sIds[eDisplacementColor]); }
    FbxPropertyT<FbxDouble> DisplacementFactor() const { return GetPropertyById(sIds[eDisplacementFactor]); }
    FbxPropertyT<FbxDouble3> VectorDisplacementColor() const { return GetPropertyById(sIds[eVectorDisplacementColor]); }
    FbxPropertyT<FbxDouble> VectorDisplacementFactor() const {
        return GetPropertyById(sIds[eVectorDisplacementFactor]);
    }

protected:
    void ConstructProperties(bool forceSet) override;

private:
    enum {
        eEmissive,
        eEmissiveFactor,
        eAmbient,
        eAmbientFactor,
        eDiffuse,
        eDiffuseFactor,
        eBump,
        eNormalMap,
        eBumpFactor,
        eTransparentColor,
        eTransparencyFactor,
        eDisplacementColor,
        eDisplacementFactor,
        eVectorDisplacementColor,
        eVectorDisplacementFactor,
        eCount
    };
    static int sIds[eCount];
};
