#pragma once

#include "fbx/model/fbx_string.h"

#include <cstdint>

// What a file's "FBXHeaderExtension" says about the file: filled by the
// field stream when it opens a file and handed on by the importer.
struct FbxHeaderInfo {
    uint32_t fileVersion = 0;
    int headerVersion = 0;
    FbxString currentCameraName;
    FbxString cameraResolutionMode;
    int cameraResolutionW = 0;
    int cameraResolutionH = 0;
    bool hasTimeStamp = false;
    int year = 0;
    int month = 0;
    int day = 0;
    int hour = 0;
    int minute = 0;
    int second = 0;
    int millisecond = 0;
    FbxString creator;
    bool flagPLE = false;
    bool flagIOPlugin = false;
};
