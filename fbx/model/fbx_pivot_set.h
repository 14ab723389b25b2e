#pragma once

#include <cstdint>

#include "fbx/model/fbx_vector4.h"

// One set of a node's pivot values. Each vector is optional: one that was
// never written reads as (0, 0, 0), geometric scaling as (1, 1, 1).
// Vectors hold x, y, z; the fourth element is 0.
class FbxPivotSet {
public:
    enum EVector {
        eRotationOffset,
        eRotationPivot,
        ePreRotation,
        ePostRotation,
        eScalingOffset,
        eScalingPivot,
        eGeometricTranslation,
        eGeometricRotation,
        eGeometricScaling,
        eVectorCount
    };

    // The empty set that nodes without a set of their own read.
    static const FbxPivotSet& Empty();

    bool Has(EVector which) const { return (present_ & (1u << which)) != 0; }
    // The stored vector, or the default when none was written.
    const FbxVector4& Get(EVector which) const;
    void Set(EVector which, const FbxVector4& v);
    // The default of a vector: (1, 1, 1) for geometric scaling, else 0.
    static const FbxVector4& Default(EVector which);

    // "RotationOrder" value, 0 to 6.
    int rotationOrder = 0;
    bool rotationSpaceForLimitOnly = false;
    // "QuaternionInterpolate" value, 0 to 4.
    int quaternionInterpolate = 0;
    int pivotState = 0;

private:
    FbxVector4 values_[eVectorCount];
    uint32_t present_ = 0;
};
