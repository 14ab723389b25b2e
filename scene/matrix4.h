#pragma once

#include "tarn/kiva_container.h"

class FbxAMatrix;

// The engine's 4 by 4 float matrix: 16 floats, transforming column vectors,
// element (row r, column c) at c * 4 + r, so the translation stands in
// elements 12, 13 and 14.
using Matrix4 = tarn::Matrix16;

Matrix4 identityMatrix4();

// Narrows each element to float, order unchanged: row r, element c of the
// document's matrix (whose rows are the images of the axes, translation in
// row 3) goes to element r * 4 + c.
Matrix4 toMatrix4(const FbxAMatrix& m);

// The product in which `b` acts first.
Matrix4 multiply(const Matrix4& a, const Matrix4& b);

// The affine inverse by cofactors of the upper 3 by 3 part: the result's
// last row (elements 3, 7, 11, 15) is (0, 0, 0, 1) whatever `m` holds there.
// A singular matrix gives infinities or NaNs; nothing checks.
Matrix4 inverse(const Matrix4& m);
