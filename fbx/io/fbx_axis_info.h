#pragma once

// A file's axis system and unit as its global settings state them: axes by
// index (0 X, 1 Y, 2 Z) with signs, and the size of one unit in
// centimetres. The defaults are those of a file that states nothing.
struct FbxAxisInfo {
    int upAxis = 1;
    int upAxisSign = 1;
    int frontAxis = 2;
    int frontAxisSign = 1;
    int coordAxis = 0;
    int coordAxisSign = 1;
    double unitScaleFactor = 1.0;
};
