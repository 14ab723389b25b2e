#pragma once

#include <array>

#include "scene/matrix4.h"

// Splits the upper 3 by 3 part of `m` into a rotation `q` and a symmetric
// scale and shear `s`, with multiply(q, s) giving it back (`s` acts first).
// A mirrored transform gives a reflection in `q`.
void polarDecompose(const Matrix4& m, Matrix4& q, Matrix4& s);

// The quaternion x, y, z, w of the rotation in the upper 3 by 3 part of `q`.
std::array<float, 4> toQuaternion(const Matrix4& q);
