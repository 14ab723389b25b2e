#pragma once

#include "fbx/model/fbx_object.h"

// A scene's axis system, unit and time settings.
class FbxGlobalSettings : public FbxObject {
    KIVA_FBX_OBJECT_DECLARE(FbxGlobalSettings, FbxObject)
};
