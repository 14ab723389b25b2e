#pragma once

// Two doubles: a texture coordinate (u, v). Both are 0 on construction.
class FbxVector2 {
public:
    FbxVector2() = default;
    FbxVector2(double x, double y) : mData{x, y} {}

    double& operator[](int i) { return mData[i]; }
    double operator[](int i) const { return mData[i]; }
    double* Buffer() { return mData; }
    const double* Buffer() const { return mData; }

    bool operator==(const FbxVector2& v) const { return mData[0] == v.mData[0] && mData[1] == v.mData[1]; }
    bool operator!=(const FbxVector2& v) const { return !(*this == v); }

private:
    double mData[2] = {0.0, 0.0};
};
