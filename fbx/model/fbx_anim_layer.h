#pragma once

#include "fbx/model/fbx_collection.h"

// One layer of an animation stack: a collection of curve nodes, blended
// over the layers below it by its mode and weight.
class FbxAnimLayer : public FbxCollection {
    KIVA_FBX_OBJECT_DECLARE(FbxAnimLayer, FbxCollection)

public:
    // Values of "BlendMode".
    enum EBlendMode { eBlendAdditive = 0, eBlendOverride = 1, eBlendOverridePassthrough = 2 };
    // Values of "RotationAccumulationMode".
    enum ERotationAccumulationMode { eRotationByLayer = 0, eRotationByChannel = 1 };
    // Values of "ScaleAccumulationMode".
    enum EScaleAccumulationMode { eScaleMultiply = 0, eScaleAdditive = 1 };

    // "Weight" (animatable, percent, 100), "Mute", "Solo", "Lock", "Color"
    // (0.8, 0.8, 0.8), "BlendMode", "RotationAccumulationMode",
    // "ScaleAccumulationMode" (all 0) and "BlendModeBypass" (a bit per data
    // type number).
    FbxPropertyT<FbxDouble> Weight() const { return FbxProperty(GetPropertyPage(), sIds[eWeight]); }
    FbxPropertyT<FbxBool> Mute() const { return FbxProperty(GetPropertyPage(), sIds[eMute]); }
    FbxPropertyT<FbxBool> Solo() const { return FbxProperty(GetPropertyPage(), sIds[eSolo]); }
    FbxPropertyT<FbxBool> Lock() const { return FbxProperty(GetPropertyPage(), sIds[eLock]); }
    FbxPropertyT<FbxDouble3> Color() const { return FbxProperty(GetPropertyPage(), sIds[eColor]); }
    FbxPropertyT<FbxInt> BlendMode() const { return FbxProperty(GetPropertyPage(), sIds[eBlendMode]); }
    FbxPropertyT<FbxInt> RotationAccumulationMode() const {
        return FbxProperty(GetPropertyPage(), sIds[eRotationAccumulation]);
    }
    FbxPropertyT<FbxInt> ScaleAccumulationMode() const {
        return FbxProperty(GetPropertyPage(), sIds[eScaleAccumulation]);
    }
    FbxPropertyT<FbxULongLong> BlendModeBypass() const { return FbxProperty(GetPropertyPage(), sIds[eBypass]); }

    // Whether properties of the data type number `type` (1 to 23) always
    // blend as an override; false for any other number.
    bool GetBlendModeBypass(int type) const;
    // Sets the bit of `type` (1 to 23); 24 sets or clears all bits below it.
    // Other numbers do nothing.
    void SetBlendModeBypass(int type, bool on);

protected:
    void ConstructProperties(bool forceSet) override;

private:
    enum EId {
        eWeight,
        eMute,
        eSolo,
        eLock,
        eColor,
        eBlendMode,
        eRotationAccumulation,
        eScaleAccumulation,
        eBypass,
        eIdCount
    };
    static int sIds[eIdCount];
};
