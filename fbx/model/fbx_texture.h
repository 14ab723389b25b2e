#pragma once

#include "fbx/model/fbx_object.h"

// Base of the textures: how an image is placed on a surface.
class FbxTexture : public FbxObject {
    KIVA_FBX_OBJECT_DECLARE(FbxTexture, FbxObject)

public:
    enum EAlphaSource { eNone = 0, eRGBIntensity = 1, eBlack = 2 };

    // "TextureTypeUse", "Texture alpha", "CurrentMappingType", "WrapModeU",
    // "WrapModeV", "UVSwap", "PremultiplyAlpha", "Translation", "Rotation",
    // "Scaling", "TextureRotationPivot", "TextureScalingPivot",
    // "CurrentTextureBlendMode" and "UVSet" are properties of every texture.
    FbxPropertyT<FbxDouble> Alpha() const { return GetPropertyById(sAlpha); }
    FbxPropertyT<FbxString> UVSet() const { return GetPropertyById(sUVSet); }

    // What the records of older files set beside the properties.
    void SetTranslation(double u, double v) {
        translation_[0] = u;
        translation_[1] = v;
    }
    double GetTranslationU() const { return translation_[0]; }
    double GetTranslationV() const { return translation_[1]; }
    void SetScale(double u, double v) {
        scale_[0] = u;
        scale_[1] = v;
    }
    double GetScaleU() const { return scale_[0]; }
    double GetScaleV() const { return scale_[1]; }
    void SetAlphaSource(EAlphaSource source) { alphaSource_ = source; }
    EAlphaSource GetAlphaSource() const { return alphaSource_; }
    // Top, left, right and bottom crop in texels.
    void SetCropping(int top, int left, int right, int bottom);
    int GetCroppingTop() const { return cropping_[0]; }
    int GetCroppingLeft() const { return cropping_[1]; }
    int GetCroppingRight() const { return cropping_[2]; }
    int GetCroppingBottom() const { return cropping_[3]; }

    bool CopyFrom(const FbxObject& other) override;

protected:
    void Construct(const FbxObject* from) override;
    void ConstructProperties(bool forceSet) override;

private:
    void CopyTextureValues(const FbxTexture& other);

    static int sAlpha;
    static int sUVSet;

    double translation_[2] = {0.0, 0.0};
    double scale_[2] = {1.0, 1.0};
    EAlphaSource alphaSource_ = eNone;
    int cropping_[4] = {0, 0, 0, 0};
};
