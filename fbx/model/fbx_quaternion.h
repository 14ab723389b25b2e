#pragma once

#include <cmath>

// A rotation as a quaternion (x, y, z, w), w being the real part; the identity
// (0, 0, 0, 1) on construction. The product is the Hamilton product, so the
// rotation of a * b turns by b first and by a next, like the matrix product.
class FbxQuaternion {
public:
    FbxQuaternion() = default;
    FbxQuaternion(double x, double y, double z, double w) : mData{x, y, z, w} {}

    double& operator[](int i) { return mData[i]; }
    double operator[](int i) const { return mData[i]; }

    void Set(double x, double y, double z, double w) {
        mData[0] = x;
        mData[1] = y;
        mData[2] = z;
        mData[3] = w;
    }

    const double* Buffer() const { return mData; }

    FbxQuaternion operator*(const FbxQuaternion& q) const {
        const double ax = mData[0], ay = mData[1], az = mData[2], aw = mData[3];
        const double bx = q.mData[0], by = q.mData[1], bz = q.mData[2], bw = q.mData[3];
        return {aw * bx + ax * bw + ay * bz - az * by, aw * by - ax * bz + ay * bw + az * bx,
                aw * bz + ax * by - ay * bx + az * bw, aw * bw - ax * bx - ay * by - az * bz};
    }
    FbxQuaternion operator+(const FbxQuaternion& q) const {
        return {mData[0] + q.mData[0], mData[1] + q.mData[1], mData[2] + q.mData[2], mData[3] + q.mData[3]};
    }
    FbxQuaternion operator-(const FbxQuaternion& q) const {
        return {mData[0] - q.mData[0], mData[1] - q.mData[1], mData[2] - q.mData[2], mData[3] - q.mData[3]};
    }
    FbxQuaternion operator-() const { return {-mData[0], -mData[1], -mData[2], -mData[3]}; }
    FbxQuaternion operator*(double f) const { return {mData[0] * f, mData[1] * f, mData[2] * f, mData[3] * f}; }

    bool operator==(const FbxQuaternion& q) const {
        return mData[0] == q.mData[0] && mData[1] == q.mData[1] && mData[2] == q.mData[2] && mData[3] == q.mData[3];
    }
    bool operator!=(const FbxQuaternion& q) const { return !(*this == q); }

    // The four-element dot product.
    double DotProduct(const FbxQuaternion& q) const {
        return mData[0] * q.mData[0] + mData[1] * q.mData[1] + mData[2] * q.mData[2] + mData[3] * q.mData[3];
    }
    double SquareLength() const { return DotProduct(*this); }
    double Length() const { return std::sqrt(SquareLength()); }

    // Brings the quaternion to length 1. One of length 0 (or not finite)
    // becomes the identity, so that the result always is a rotation.
    void Normalize();
    void Conjugate() {
        mData[0] = -mData[0];
        mData[1] = -mData[1];
        mData[2] = -mData[2];
    }

private:
    double mData[4] = {0.0, 0.0, 0.0, 1.0};
};

// The rotation q taken w times: the axis stays and the angle is multiplied by
// w. The identity, and any quaternion whose w is 1 or not a number, stays.
FbxQuaternion QuaternionPower(const FbxQuaternion& q, double w);

// The spherical blend from q1 (w = 0) to q2 (w = 1) along the shorter arc. Two
// quaternions that face each other exactly have no arc between them; they
// turn through the quaternion at right angles to q1.
FbxQuaternion QuaternionSlerp(const FbxQuaternion& q1, const FbxQuaternion& q2, double w);
