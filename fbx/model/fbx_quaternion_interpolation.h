#pragma once

#include "fbx/model/fbx_kfcurve.h"
#include "fbx/model/fbx_time.h"

// One rotation channel for quaternion interpolation: its first curve, or its
// own value when it has none (a curve without keys).
struct FbxRotationChannel {
    const KFCurve* curve = nullptr;
    double value = 0.0;
};

// Interpolates three Euler XYZ channels (degrees) between the keys of the
// first as rotations, in a quaternion mode of "QuaternionInterpolate" (1
// "Classic", 2 "Auto", 3 "Slerp", 4 "Squad"), and writes Euler XYZ angles to
// `values`. False when the channels are to be read apart instead: fewer than
// two keys on the first channel, a time on a key or outside the keys, a
// constant segment in mode 1, or a mode out of range.
bool EvaluateQuaternionInterpolation(int mode, const FbxRotationChannel channels[3], FbxTime time, double values[3]);
