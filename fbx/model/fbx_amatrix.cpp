#include "fbx/model/fbx_amatrix.h"

#include "fbx/model/fbx_rotation.h"

#include <cmath>

namespace {

// Below this size the determinant of the upper block counts as zero.
constexpr double kSingularLimit = 2.220446049250313e-16;

}  // namespace

FbxVector4 FbxAMatrix::GetRow(int row) const { return {mData[row][0], mData[row][1], mData[row][2], mData[row][3]}; }

void FbxAMatrix::SetRow(int row, const FbxVector4& v) {
    for (int c = 0; c < 4; ++c) mData[row][c] = v[c];
}

FbxVector4 FbxAMatrix::GetColumn(int column) const {
    return {mData[0][column], mData[1][column], mData[2][column], mData[3][column]};
}

void FbxAMatrix::SetIdentity() {
    for (int r = 0; r < 4; ++r)
        for (int c = 0; c < 4; ++c) mData[r][c] = r == c ? 1.0 : 0.0;
}

bool FbxAMatrix::IsIdentity(double threshold) const {
    for (int r = 0; r < 4; ++r)
        for (int c = 0; c < 4; ++c)
            if (!(std::fabs(mData[r][c] - (r == c ? 1.0 : 0.0)) <= threshold)) return false;
    return true;
}

FbxVector4 FbxAMatrix::GetT() const { return GetRow(3); }

void FbxAMatrix::SetT(const FbxVector4& t) {
    mData[3][0] = t[0];
    mData[3][1] = t[1];
    mData[3][2] = t[2];
}

FbxVector4 FbxAMatrix::GetS() const {
    const FbxVector4 x = GetRow(0), y = GetRow(1), z = GetRow(2);
    FbxVector4 s(x.Length(), y.Length(), z.Length());
    if (x.CrossProduct(y).DotProduct(z) < 0.0) s = FbxVector4(-s[0], -s[1], -s[2]);
    return s;
}

FbxVector4 FbxAMatrix::GetR() const {
    const FbxVector4 s = GetS();
    FbxAMatrix rotation;
    for (int r = 0; r < 3; ++r) {
        // A row of length 0 carries no direction; leaving it 0 keeps the
        // angles finite instead of dividing 0 by 0.
        const double f = s[r] != 0.0 ? 1.0 / s[r] : 0.0;
        for (int c = 0; c < 3; ++c) rotation.mData[r][c] = mData[r][c] * f;
    }
    return AnglesXYZ(rotation);
}

FbxQuaternion FbxAMatrix::GetQ() const { return QuaternionFromMatrix(RotationXYZ(GetR())); }

void FbxAMatrix::SetTRS(const FbxVector4& t, const FbxVector4& r, const FbxVector4& s) {
    const FbxAMatrix rotation = RotationXYZ(r);
    for (int i = 0; i < 3; ++i) {
        for (int c = 0; c < 3; ++c) mData[i][c] = s[i] * rotation.mData[i][c];
        mData[i][3] = 0.0;
    }
    mData[3][0] = t[0];
    mData[3][1] = t[1];
    mData[3][2] = t[2];
    mData[3][3] = 1.0;
}

void FbxAMatrix::SetR(const FbxVector4& r) { SetTRS(GetT(), r, GetS()); }

void FbxAMatrix::SetS(const FbxVector4& s) { SetTRS(GetT(), GetR(), s); }

void FbxAMatrix::SetQ(const FbxQuaternion& q) {
    const FbxVector4 t = GetT();
    const FbxVector4 s = GetS();
    const FbxAMatrix rotation = MatrixFromQuaternion(q);
    for (int i = 0; i < 3; ++i) {
        for (int c = 0; c < 3; ++c) mData[i][c] = s[i] * rotation.mData[i][c];
        mData[i][3] = 0.0;
    }
    mData[3][0] = t[0];
    mData[3][1] = t[1];
    mData[3][2] = t[2];
    mData[3][3] = 1.0;
}

FbxVector4 FbxAMatrix::MultT(const FbxVector4& p) const {
    FbxVector4 result;
    for (int c = 0; c < 3; ++c) result[c] = p[0] * mData[0][c] + p[1] * mData[1][c] + p[2] * mData[2][c] + mData[3][c];
    result[3] = p[3];
    return result;
}

FbxAMatrix FbxAMatrix::Inverse() const {
    const double(&m)[4][4] = mData;
    // Cofactors of the upper block, laid out transposed: the adjugate.
    const double a00 = m[1][1] * m[2][2] - m[1][2] * m[2][1];
    const double a01 = m[0][2] * m[2][1] - m[0][1] * m[2][2];
    const double a02 = m[0][1] * m[1][2] - m[0][2] * m[1][1];
    const double a10 = m[1][2] * m[2][0] - m[1][0] * m[2][2];
    const double a11 = m[0][0] * m[2][2] - m[0][2] * m[2][0];
    const double a12 = m[0][2] * m[1][0] - m[0][0] * m[1][2];
    const double a20 = m[1][0] * m[2][1] - m[1][1] * m[2][0];
    const double a21 = m[0][1] * m[2][0] - m[0][0] * m[2][1];
    const double a22 = m[0][0] * m[1][1] - m[0][1] * m[1][0];
    const double det = m[0][0] * a00 + m[0][1] * a10 + m[0][2] * a20;

    FbxAMatrix inverse;
    // "Not above" also catches a determinant that is not a number.
    if (!(std::fabs(det) > kSingularLimit) || !std::isfinite(det)) return inverse;

    const double f = 1.0 / det;
    double(&n)[4][4] = inverse.mData;
    n[0][0] = a00 * f;
    n[0][1] = a01 * f;
    n[0][2] = a02 * f;
    n[1][0] = a10 * f;
    n[1][1] = a11 * f;
    n[1][2] = a12 * f;
    n[2][0] = a20 * f;
    n[2][1] = a21 * f;
    n[2][2] = a22 * f;
    // A point p * M + t comes back through (p' - t) * inverse(M).
    for (int c = 0; c < 3; ++c) n[3][c] = -(m[3][0] * n[0][c] + m[3][1] * n[1][c] + m[3][2] * n[2][c]);
    return inverse;
}

FbxAMatrix FbxAMatrix::operator*(const FbxAMatrix& m) const {
    const double(&a)[4][4] = mData;
    const double(&b)[4][4] = m.mData;
    FbxAMatrix product;
    double(&p)[4][4] = product.mData;
    for (int i = 0; i < 4; ++i) {
        for (int c = 0; c < 3; ++c) {
            double v = b[i][0] * a[0][c] + b[i][1] * a[1][c] + b[i][2] * a[2][c];
            if (i == 3) v += a[3][c];
            p[i][c] = v;
        }
    }
    return product;
}

bool FbxAMatrix::operator==(const FbxAMatrix& m) const {
    for (int r = 0; r < 4; ++r)
        for (int c = 0; c < 4; ++c)
            if (mData[r][c] != m.mData[r][c]) return false;
    return true;
}
