#pragma once

#include "fbx/model/fbx_object.h"
#include "fbx/model/fbx_time.h"

// A scene's axis system, unit and time settings. One per scene, made with
// it under the name "GlobalSettings".
class FbxGlobalSettings : public FbxObject {
    KIVA_FBX_OBJECT_DECLARE(FbxGlobalSettings, FbxObject)

public:
    // The properties, in the order of their creation.
    enum EProperty {
        eUpAxis,                   // integer 1
        eUpAxisSign,               // integer 1
        eFrontAxis,                // integer 2
        eFrontAxisSign,            // integer 1
        eCoordAxis,                // integer 0
        eCoordAxisSign,            // integer 1
        eOriginalUpAxis,           // integer -1
        eOriginalUpAxisSign,       // integer 1
        eUnitScaleFactor,          // double 1.0
        eOriginalUnitScaleFactor,  // double 1.0
        eAmbientColor,             // colour black
        eDefaultCamera,            // string "Producer Perspective"
        eTimeMode,                 // enum 0, "Default" ... "TimeModeCount"
        eTimeProtocol,             // enum 2, "SMPTE", "FrameCount", "DefaultProtocol"
        eSnapOnFrameMode,          // enum 0, "NoSnap" ... "SnapAndPlayOnFrame"
        eTimeSpanStart,            // time 0
        eTimeSpanStop,             // time one second
        eCustomFrameRate,          // double -1.0
        eTimeMarker,               // compound, parent of the markers
        eCurrentTimeMarker,        // integer -1
        ePropertyCount
    };

    FbxProperty GetProperty(EProperty which) const;

    FbxPropertyT<FbxInt> UpAxis() const { return GetProperty(eUpAxis); }
    FbxPropertyT<FbxInt> UpAxisSign() const { return GetProperty(eUpAxisSign); }
    FbxPropertyT<FbxInt> FrontAxis() const { return GetProperty(eFrontAxis); }
    FbxPropertyT<FbxInt> FrontAxisSign() const { return GetProperty(eFrontAxisSign); }
    FbxPropertyT<FbxInt> CoordAxis() const { return GetProperty(eCoordAxis); }
    FbxPropertyT<FbxInt> CoordAxisSign() const { return GetProperty(eCoordAxisSign); }
    FbxPropertyT<FbxInt> OriginalUpAxis() const { return GetProperty(eOriginalUpAxis); }
    FbxPropertyT<FbxInt> OriginalUpAxisSign() const { return GetProperty(eOriginalUpAxisSign); }
    FbxPropertyT<FbxDouble> UnitScaleFactor() const { return GetProperty(eUnitScaleFactor); }
    FbxPropertyT<FbxDouble> OriginalUnitScaleFactor() const { return GetProperty(eOriginalUnitScaleFactor); }
    FbxPropertyT<FbxDouble3> AmbientColor() const { return GetProperty(eAmbientColor); }
    FbxPropertyT<FbxString> DefaultCamera() const { return GetProperty(eDefaultCamera); }
    FbxPropertyT<FbxEnum> TimeMode() const { return GetProperty(eTimeMode); }
    FbxPropertyT<FbxEnum> TimeProtocol() const { return GetProperty(eTimeProtocol); }
    FbxPropertyT<FbxEnum> SnapOnFrameMode() const { return GetProperty(eSnapOnFrameMode); }
    FbxPropertyT<FbxTime> TimeSpanStart() const { return GetProperty(eTimeSpanStart); }
    FbxPropertyT<FbxTime> TimeSpanStop() const { return GetProperty(eTimeSpanStop); }
    FbxPropertyT<FbxDouble> CustomFrameRate() const { return GetProperty(eCustomFrameRate); }
    FbxProperty TimeMarker() const { return GetProperty(eTimeMarker); }
    FbxPropertyT<FbxInt> CurrentTimeMarker() const { return GetProperty(eCurrentTimeMarker); }

protected:
    void ConstructProperties(bool forceSet) override;

private:
    static int sIds[ePropertyCount];
};
