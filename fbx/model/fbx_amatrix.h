#pragma once

#include "fbx/model/fbx_quaternion.h"
#include "fbx/model/fbx_vector4.h"

// An affine transform as 4 by 4 doubles. Rows 0, 1 and 2 are the images of
// the X, Y and Z axes and row 3 is the translation; the fourth column stays
// (0, 0, 0, 1). Element (row r, column c) lies at r * 4 + c in Buffer().
// In a * b, b acts first: a point goes through b and then through a. Angles
// are Euler angles in degrees in XYZ order (X turns first, all about fixed
// axes). A fresh matrix is the identity.
class FbxAMatrix {
public:
    FbxAMatrix() = default;
    // The matrix of SetTRS(t, r, s).
    FbxAMatrix(const FbxVector4& t, const FbxVector4& r, const FbxVector4& s) { SetTRS(t, r, s); }

    // Row access: m[r][c].
    double* operator[](int row) { return mData[row]; }
    const double* operator[](int row) const { return mData[row]; }
    double Get(int row, int column) const { return mData[row][column]; }
    void Set(int row, int column, double value) { mData[row][column] = value; }
    FbxVector4 GetRow(int row) const;
    void SetRow(int row, const FbxVector4& v);
    FbxVector4 GetColumn(int column) const;

    // The sixteen elements row after row.
    const double* Buffer() const { return &mData[0][0]; }

    void SetIdentity();
    bool IsIdentity(double threshold = 1e-12) const;

    // Row 3. SetT leaves the fourth element of row 3 alone.
    FbxVector4 GetT() const;
    void SetT(const FbxVector4& t);
    // The Euler XYZ angles of the rotation left when the scale is divided
    // out. A row of length 0 stays 0 rather than being divided.
    FbxVector4 GetR() const;
    // The row lengths, all three negated when the axes are mirrored (the
    // determinant of the upper block is negative).
    FbxVector4 GetS() const;
    FbxQuaternion GetQ() const;

    // Scales first, turns next, moves last. Shear is lost.
    void SetTRS(const FbxVector4& t, const FbxVector4& r, const FbxVector4& s);
    void SetR(const FbxVector4& r);
    void SetS(const FbxVector4& s);
    void SetQ(const FbxQuaternion& q);

    // The point p moved by the matrix; the fourth element of p is kept.
    FbxVector4 MultT(const FbxVector4& p) const;

    // The affine inverse. A matrix whose upper 3 by 3 block is singular (or
    // not finite) gives the identity.
    FbxAMatrix Inverse() const;

    // The product in which m acts first. Only the affine part takes part.
    FbxAMatrix operator*(const FbxAMatrix& m) const;
    FbxAMatrix& operator*=(const FbxAMatrix& m) { return *this = *this * m; }

    bool operator==(const FbxAMatrix& m) const;
    bool operator!=(const FbxAMatrix& m) const { return !(*this == m); }

private:
    double mData[4][4] = {{1.0, 0.0, 0.0, 0.0}, {0.0, 1.0, 0.0, 0.0}, {0.0, 0.0, 1.0, 0.0}, {0.0, 0.0, 0.0, 1.0}};
};
