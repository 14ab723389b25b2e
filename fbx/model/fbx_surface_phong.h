#pragma once

#include "fbx/model/fbx_surface_lambert.h"

// A Phong surface material: a Lambert material with specular colour,
// shininess and reflection.
class FbxSurfacePhong : public FbxSurfaceLambert {
    KIVA_FBX_OBJECT_DECLARE(FbxSurfacePhong, FbxSurfaceLambert)

public:
    FbxPropertyT<FbxDouble3> Specular() const { return GetPropertyById(sIds[eSpecular]); }
    FbxPropertyT<FbxDouble> SpecularFactor() const { return GetPropertyById(sIds[eSpecularFactor]); }
    FbxPropertyT<FbxDouble> Shininess() const { return GetPropertyById(sIds[eShininess]); }
    FbxPropertyT<FbxDouble3> Reflection() const { return GetPropertyById(sIds[eReflection]); }
    FbxPropertyT<FbxDouble> ReflectionFactor() const { return GetPropertyById(sIds[eReflectionFactor]); }

protected:
    void ConstructProperties(bool forceSet) override;

private:
    enum { eSpecular, eSpecularFactor, eShininess, eReflection, eReflectionFactor, eCount };
    static int sIds[eCount];
};
