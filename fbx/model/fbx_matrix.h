#pragma once

#include "fbx/model/fbx_amatrix.h"

// A general 4 by 4 matrix of doubles, row after row, as files store bind
// matrices; unlike FbxAMatrix it keeps all sixteen values, shear and fourth
// column included. Products follow FbxAMatrix: in a * b, b acts first, so
// that element [r][c] of a * b is the sum over j of b[r][j] * a[j][c]. A
// fresh matrix is the identity.
class FbxMatrix {
public:
    FbxMatrix() = default;
    // Takes all sixteen values of the affine matrix.
    explicit FbxMatrix(const FbxAMatrix& m);

    double Get(int row, int column) const { return mData[row][column]; }
    void Set(int row, int column, double value) { mData[row][column] = value; }
    double* operator[](int row) { return mData[row]; }
    const double* operator[](int row) const { return mData[row]; }
    const double* Buffer() const { return &mData[0][0]; }
    // Copies the first `count` values (at most 16) row after row, and sets
    // the rest to 0.
    void SetValues(const double* values, int count);

    // The matrix's translation, rotation and scaling as an FbxAMatrix:
    // shear and the fourth column do not come back.
    FbxAMatrix ToAffine() const;

    FbxMatrix operator*(const FbxMatrix& m) const;
    bool operator==(const FbxMatrix& m) const;
    bool operator!=(const FbxMatrix& m) const { return !(*this == m); }

private:
    double mData[4][4] = {{1.0, 0.0, 0.0, 0.0}, {0.0, 1.0, 0.0, 0.0}, {0.0, 0.0, 1.0, 0.0}, {0.0, 0.0, 0.0, 1.0}};
};
