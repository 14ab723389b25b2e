#pragma once

#include "fbx/model/fbx_amatrix.h"
#include "fbx/model/fbx_quaternion.h"
#include "fbx/model/fbx_rotation_order.h"
#include "fbx/model/fbx_vector4.h"

// Conversions between Euler angles (degrees), rotation matrices and
// quaternions. R_x(a) turns +Y towards +Z, R_y(a) turns +Z towards +X and
// R_z(a) turns +X towards +Y. Orders are FbxRotationOrder values; a value
// that is no order reads as Euler XYZ. Matrices returned hold the rotation in
// the upper 3 by 3 block and are the identity elsewhere. Angle results fill
// x, y and z and leave the fourth element 0. Nothing here allocates.

// R_z(e.z) * R_y(e.y) * R_x(e.x): X first, then Y, then Z, about fixed axes.
FbxAMatrix RotationXYZ(const FbxVector4& e);

// The inverse of RotationXYZ. Near the gimbal lock (the X axis turned onto
// +-Z) z is 0 and x takes the rest of the turn.
FbxVector4 AnglesXYZ(const FbxAMatrix& m);

// R_c(r) * R_b(q) * R_a(p) for an Euler order with axes a, b, c: p is the
// angle about the first axis, q about the second, r about the third. The
// spheric order reads as Euler XYZ here.
FbxAMatrix OrderedRotation(double p, double q, double r, int order);

// The inverse of OrderedRotation: (p, q, r) in x, y, z, in the sequence of the
// order's axes. At the gimbal lock r is 0 and p takes the rest.
FbxVector4 OrderedAngles(const FbxAMatrix& m, int order);

// The rotation of the angles e (about X, Y, Z in x, y, z) in the given order.
FbxAMatrix RotationFromAngles(const FbxVector4& e, int order);

// The inverse of RotationFromAngles: angles about X, Y and Z in x, y, z.
FbxVector4 AnglesFromRotation(const FbxAMatrix& m, int order);

// The rotation of q after division by its squared length; a quaternion of
// length 0 gives the identity.
FbxAMatrix MatrixFromQuaternion(const FbxQuaternion& q);

// The quaternion of the rotation in the upper 3 by 3 block of m.
FbxQuaternion QuaternionFromMatrix(const FbxAMatrix& m);
