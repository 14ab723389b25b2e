#pragma once

#include <cmath>

// Four doubles: a point or direction (x, y, z, w), or three Euler angles or
// scale factors in x, y, z. All four are 0 on construction; the fourth is 0
// unless given, and the operations that fill only three leave it at 0.
class FbxVector4 {
public:
    FbxVector4() = default;
    FbxVector4(double x, double y, double z, double w = 0.0) : mData{x, y, z, w} {}

    double& operator[](int i) { return mData[i]; }
    double operator[](int i) const { return mData[i]; }

    void Set(double x, double y, double z, double w = 0.0) {
        mData[0] = x;
        mData[1] = y;
        mData[2] = z;
        mData[3] = w;
    }

    double* Buffer() { return mData; }
    const double* Buffer() const { return mData; }

    // The arithmetic works on all four elements.
    FbxVector4 operator+(const FbxVector4& v) const {
        return {mData[0] + v.mData[0], mData[1] + v.mData[1], mData[2] + v.mData[2], mData[3] + v.mData[3]};
    }
    FbxVector4 operator-(const FbxVector4& v) const {
        return {mData[0] - v.mData[0], mData[1] - v.mData[1], mData[2] - v.mData[2], mData[3] - v.mData[3]};
    }
    FbxVector4 operator-() const { return {-mData[0], -mData[1], -mData[2], -mData[3]}; }
    FbxVector4 operator*(double f) const { return {mData[0] * f, mData[1] * f, mData[2] * f, mData[3] * f}; }

    bool operator==(const FbxVector4& v) const {
        return mData[0] == v.mData[0] && mData[1] == v.mData[1] && mData[2] == v.mData[2] && mData[3] == v.mData[3];
    }
    bool operator!=(const FbxVector4& v) const { return !(*this == v); }

    // The three-element forms: the fourth element takes no part.
    double DotProduct(const FbxVector4& v) const {
        return mData[0] * v.mData[0] + mData[1] * v.mData[1] + mData[2] * v.mData[2];
    }
    FbxVector4 CrossProduct(const FbxVector4& v) const {
        return {mData[1] * v.mData[2] - mData[2] * v.mData[1], mData[2] * v.mData[0] - mData[0] * v.mData[2],
                mData[0] * v.mData[1] - mData[1] * v.mData[0]};
    }
    double Length() const { return std::sqrt(DotProduct(*this)); }

private:
    double mData[4] = {0.0, 0.0, 0.0, 0.0};
};
