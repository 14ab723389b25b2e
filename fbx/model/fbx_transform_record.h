#pragma once

#include <cstdint>

#include "fbx/model/fbx_amatrix.h"
#include "fbx/model/fbx_rotation_order.h"
#include "fbx/model/fbx_vector4.h"

// The limits of one transform channel (translation, rotation or scaling):
// an active flag, per-axis flags for a minimum and a maximum, and the two
// bounds. Only x, y and z of the bounds take part.
struct LimitRecord {
    enum EMaskBit : uint8_t {
        eActive = 1,
        eMinX = 2,
        eMinY = 4,
        eMinZ = 8,
        eMaxX = 16,
        eMaxY = 32,
        eMaxZ = 64,
        eAxisBits = 126,
    };

    uint8_t mask = 0;
    FbxVector4 min;
    FbxVector4 max;

    bool GetActive() const { return (mask & eActive) != 0; }
    void SetActive(bool on) { SetBit(eActive, on); }
    // Axis 0, 1 or 2; other axes read as unset and are not written.
    bool GetMinActive(int axis) const { return axis >= 0 && axis < 3 && (mask & (eMinX << axis)) != 0; }
    bool GetMaxActive(int axis) const { return axis >= 0 && axis < 3 && (mask & (eMaxX << axis)) != 0; }
    void SetMinActive(int axis, bool on) {
        if (axis >= 0 && axis < 3) SetBit(static_cast<uint8_t>(eMinX << axis), on);
    }
    void SetMaxActive(int axis, bool on) {
        if (axis >= 0 && axis < 3) SetBit(static_cast<uint8_t>(eMaxX << axis), on);
    }
    void SetBit(uint8_t bit, bool on) {
        mask = on ? static_cast<uint8_t>(mask | bit) : static_cast<uint8_t>(mask & ~bit);
    }

    // Same mask and same x, y, z of both bounds.
    bool SameAs(const LimitRecord& other) const;
};

// The node's pre- and post-rotation as matrices, and its rotation order.
// The two matrices are always built in XYZ order, whatever the node's order.
struct RotationSpaceRecord {
    enum EFlag : uint32_t { ePreMatrix = 1, ePostMatrix = 2 };

    uint32_t flags = 0;
    FbxAMatrix preMatrix;
    FbxAMatrix postMatrix;
    int rotationOrder = eEulerXYZ;  // record value: twice "RotationOrder"

    bool HasPreMatrix() const { return (flags & ePreMatrix) != 0; }
    bool HasPostMatrix() const { return (flags & ePostMatrix) != 0; }
    // The matrix of the angles; angles (0, 0, 0) clear the flag and leave
    // the identity.
    void SetPreRotation(const FbxVector4& angles);
    void SetPostRotation(const FbxVector4& angles);
};

// A node's own copy of its current pivot values and of its limits, so that
// evaluation reads no property for them.
struct TransformRecord {
    enum EFlag : uint32_t {
        eRotationOffset = 1,
        eRotationPivot = 2,
        eScalingOffset = 4,
        eScalingPivot = 8,
    };

    uint32_t flags = 0;
    uint32_t inheritType = 0;  // 0 "RrSs", 1 "RSrs", 2 "Rrs"
    FbxVector4 rotationOffset;
    FbxVector4 rotationPivot;
    FbxVector4 scalingOffset;
    FbxVector4 scalingPivot;
    LimitRecord translationLimits;
    LimitRecord rotationLimits;
    LimitRecord scalingLimits;
    bool rotationSpaceForLimitOnly = false;
    RotationSpaceRecord rotationSpace;

    bool HasRotationOffset() const { return (flags & eRotationOffset) != 0; }
    bool HasRotationPivot() const { return (flags & eRotationPivot) != 0; }
    bool HasScalingOffset() const { return (flags & eScalingOffset) != 0; }
    bool HasScalingPivot() const { return (flags & eScalingPivot) != 0; }
    // Each setter stores x, y, z (w 0) and sets its flag, or clears it for
    // (0, 0, 0).
    void SetRotationOffset(const FbxVector4& v) { SetVector(rotationOffset, eRotationOffset, v); }
    void SetRotationPivot(const FbxVector4& v) { SetVector(rotationPivot, eRotationPivot, v); }
    void SetScalingOffset(const FbxVector4& v) { SetVector(scalingOffset, eScalingOffset, v); }
    void SetScalingPivot(const FbxVector4& v) { SetVector(scalingPivot, eScalingPivot, v); }

private:
    void SetVector(FbxVector4& target, uint32_t flag, const FbxVector4& v);
};
