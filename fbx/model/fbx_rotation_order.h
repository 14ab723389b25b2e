#pragma once

// The order in which Euler angles turn, as the transform record holds it:
// twice the value of a node's "RotationOrder" property. The first axis named
// turns first. The spheric order describes a rotation by the direction of the
// X axis and a twist about it rather than by three turns.
enum FbxRotationOrder {
    eEulerXYZ = 0,
    eEulerXZY = 2,
    eEulerYZX = 4,
    eEulerYXZ = 6,
    eEulerZXY = 8,
    eEulerZYX = 10,
    eSphericXYZ = 12,
};

// The record value of a "RotationOrder" property value (0 to 6). A value
// outside that range reads as Euler XYZ.
constexpr int RotationOrderFromProperty(int propertyValue) {
    return propertyValue >= 0 && propertyValue <= 6 ? propertyValue * 2 : eEulerXYZ;
}

// The axes (0 X, 1 Y, 2 Z) of an Euler order, first to third. The spheric
// order and any value that is no order give X, Y, Z.
struct FbxRotationAxes {
    int first;
    int second;
    int third;
};

constexpr FbxRotationAxes RotationOrderAxes(int order) {
    switch (order) {
    case eEulerXZY:
        return {0, 2, 1};
    case eEulerYZX:
        return {1, 2, 0};
    case eEulerYXZ:
        return {1, 0, 2};
    case eEulerZXY:
        return {2, 0, 1};
    case eEulerZYX:
        return {2, 1, 0};
    default:
        return {0, 1, 2};
    }
}
