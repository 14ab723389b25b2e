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

    FbxProperty UpAxis() const { return GetProperty(eUpAxis); }
    FbxProperty UpAxisSign() const { return GetProperty(eUpAxisSign); }
    FbxProperty FrontAxis() const { return GetProperty(eFrontAxis); }
    FbxProperty FrontAxisSign() const { return GetProperty(eFrontAxisSign); }
    FbxProperty CoordAxis() const { return GetProperty(eCoordAxis); }
    FbxProperty CoordAxisSign() const { return GetProperty(eCoordAxisSign); }
    FbxProperty OriginalUpAxis() const { return GetProperty(eOriginalUpAxis); }
    FbxProperty OriginalUpAxisSign() const { return GetProperty(eOriginalUpAxisSign); }
    FbxProperty UnitScaleFactor() const { return GetProperty(eUnitScaleFactor); }
    FbxProperty OriginalUnitScaleFactor() const { return GetProperty(eOriginalUnitScaleFactor); }
    FbxProperty AmbientColor() const { return GetProperty(eAmbientColor); }
    FbxProperty DefaultCamera() const { return GetProperty(eDefaultCamera); }
    FbxProperty TimeMode() const { return GetProperty(eTimeMode); }
    FbxProperty TimeProtocol() const { return GetProperty(eTimeProtocol); }
    FbxProperty SnapOnFrameMode() const { return GetProperty(eSnapOnFrameMode); }
    FbxProperty TimeSpanStart() const { return GetProperty(eTimeSpanStart); }
    FbxProperty TimeSpanStop() const { return GetProperty(eTimeSpanStop); }
    FbxProperty CustomFrameRate() const { return GetProperty(eCustomFrameRate); }
    FbxProperty TimeMarker() const { return GetProperty(eTimeMarker); }
    FbxProperty CurrentTimeMarker() const { return GetProperty(eCurrentTimeMarker); }

protected:
    void ConstructProperties(bool forceSet) override;

private:
    static int sIds[ePropertyCount];
};
