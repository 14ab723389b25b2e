#pragma once

#include "fbx/model/fbx_amatrix.h"

class FbxGlobalSettings;
class FbxScene;

// A coordinate convention: which axis points up, which to the front and
// which is the third ("coord") axis, each with a sign. Axes are 0 for X, 1
// for Y and 2 for Z; signs are +1 or -1.
class FbxAxisSystem {
public:
    enum EUpVector { eXAxis = 1, eYAxis = 2, eZAxis = 3 };
    enum EFrontVector { eParityEven = 1, eParityOdd = 2 };
    enum ECoordSystem { eRightHanded = 0, eLeftHanded = 1 };

    struct AxisDef {
        int axis = 0;
        int sign = 1;
        bool operator==(const AxisDef&) const = default;
    };

    // `up` names the up axis (1 X, 2 Y, 3 Z; negated for a negative sign).
    // `front` picks the front axis among the two others in ascending order
    // (1 the first, 2 the second; negated for a negative sign); the coord
    // axis is the one left, with the sign that makes the system right- or
    // left-handed as `coordSystem` says. FbxAxisSystem(3, -2, 0) is up +Z,
    // front -Y, coord +X.
    FbxAxisSystem(int up, int front, int coordSystem);
    FbxAxisSystem(AxisDef up, AxisDef front, AxisDef coord) : mUp(up), mFront(front), mCoord(coord) {}

    // The system the global settings hold.
    static FbxAxisSystem FromSettings(const FbxGlobalSettings& settings);
    // Writes the six numbers to the settings.
    void ToSettings(FbxGlobalSettings& settings) const;

    const AxisDef& Up() const { return mUp; }
    const AxisDef& Front() const { return mFront; }
    const AxisDef& Coord() const { return mCoord; }

    bool operator==(const FbxAxisSystem&) const = default;

    // The matrix that takes a vector given in `from` coordinates to the
    // same vector in this system's coordinates: a signed permutation.
    FbxAMatrix ConversionMatrixFrom(const FbxAxisSystem& from) const;

    // Brings the scene from the axis system of its global settings to this
    // one. Only the direct children of the root node change (their
    // translation, its curves, their pre-rotation, rotation offset and
    // translation limits), together with what records global positions:
    // cameras' positions, skin cluster matrices and global pose entries.
    // Geometry stays as it is. A scene already in this system, or null, is
    // left alone.
    void ConvertScene(FbxScene* scene) const;

private:
    // Each row holds the coord, up and front vector of the system.
    FbxAMatrix BasisMatrix() const;

    AxisDef mUp;
    AxisDef mFront;
    AxisDef mCoord;
};
