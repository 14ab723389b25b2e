#include "scene/polar_decomposition.h"

#include <gtest/gtest.h>

#include <cmath>

#include "fbx/model/fbx_amatrix.h"
#include "fbx/model/fbx_vector4.h"

namespace {

Matrix4 transform(FbxVector4 t, FbxVector4 r, FbxVector4 s) { return toMatrix4(FbxAMatrix(t, r, s)); }

float det3(const Matrix4& m) {
    return m[0] * (m[5] * m[10] - m[9] * m[6]) - m[4] * (m[1] * m[10] - m[9] * m[2]) +
           m[8] * (m[1] * m[6] - m[5] * m[2]);
}

// q is orthonormal, s symmetric without translation, and q after s gives
// the 3 by 3 part of m back.
void expectPolar(const Matrix4& m, const Matrix4& q, const Matrix4& s, float tolerance = 1e-5f) {
    for (int r = 0; r < 3; ++r)
        for (int c = 0; c < 3; ++c) {
            float dot = 0.0f;
            for (int k = 0; k < 3; ++k) dot += q[r * 4 + k] * q[c * 4 + k];  // columns r and c
            EXPECT_NEAR(dot, r == c ? 1.0f : 0.0f, tolerance) << "q columns " << r << ", " << c;
            EXPECT_EQ(s[c * 4 + r], s[r * 4 + c]) << "s not symmetric at " << r << ", " << c;
        }
    EXPECT_EQ(s[12], 0.0f);
    EXPECT_EQ(s[13], 0.0f);
    EXPECT_EQ(s[14], 0.0f);
    const Matrix4 back = multiply(q, s);
    for (int r = 0; r < 3; ++r)
        for (int c = 0; c < 3; ++c) EXPECT_NEAR(back[c * 4 + r], m[c * 4 + r], tolerance) << r << ", " << c;
}

// The rotation of a unit quaternion, as a Matrix4 (column vectors).
Matrix4 rotationOf(const std::array<float, 4>& v) {
    const float x = v[0], y = v[1], z = v[2], w = v[3];
    Matrix4 m{};
    m[0] = 1 - 2 * (y * y + z * z);
    m[1] = 2 * (x * y + z * w);
    m[2] = 2 * (x * z - y * w);
    m[4] = 2 * (x * y - z * w);
    m[5] = 1 - 2 * (x * x + z * z);
    m[6] = 2 * (y * z + x * w);
    m[8] = 2 * (x * z + y * w);
    m[9] = 2 * (y * z - x * w);
    m[10] = 1 - 2 * (x * x + y * y);
    m[15] = 1;
    return m;
}

TEST(PolarDecompose, SplitsRotationFromNonUniformScaleAndShear) {
    // Rotation after a non-uniform scale: q is the rotation, s the scale.
    const Matrix4 m = transform({4, 5, 6}, {30, -45, 60}, {2, 0.5, 3});
    Matrix4 q, s;
    polarDecompose(m, q, s);
    expectPolar(m, q, s);
    const Matrix4 rotation = transform({}, {30, -45, 60}, {1, 1, 1});
    for (int r = 0; r < 3; ++r)
        for (int c = 0; c < 3; ++c) EXPECT_NEAR(q[c * 4 + r], rotation[c * 4 + r], 1e-5f);
    EXPECT_NEAR(s[0], 2.0f, 1e-5f);
    EXPECT_NEAR(s[5], 0.5f, 1e-5f);
    EXPECT_NEAR(s[10], 3.0f, 1e-5f);
    EXPECT_NEAR(det3(q), 1.0f, 1e-5f);

    // A scale along turned axes (a shear of the bone's frame): q is still a
    // pure rotation, s symmetric with off-diagonal elements.
    const Matrix4 sheared =
        multiply(transform({}, {10, 20, 30}, {1, 1, 1}),
                 multiply(transform({}, {0, 0, 45}, {3, 1, 1}), transform({}, {0, 0, -45}, {1, 1, 1})));
    polarDecompose(sheared, q, s);
    expectPolar(sheared, q, s);
    EXPECT_NEAR(det3(q), 1.0f, 1e-5f);
    EXPECT_NEAR(s[1], 1.0f, 1e-5f);  // (3 - 1) / 2 from the 45 degree turn
    const std::array<float, 4> quaternion = toQuaternion(q);
    const Matrix4 again = rotationOf(quaternion);
    for (int i : {0, 1, 2, 4, 5, 6, 8, 9, 10}) EXPECT_NEAR(again[i], q[i], 1e-5f) << i;
}

TEST(PolarDecompose, MirrorStaysInTheOrthogonalFactor) {
    const Matrix4 m = transform({}, {0, 0, 90}, {-1, 2, 3});
    Matrix4 q, s;
    polarDecompose(m, q, s);
    expectPolar(m, q, s);
    EXPECT_NEAR(det3(q), -1.0f, 1e-5f);
    // The scale stays positive.
    EXPECT_NEAR(s[0], 1.0f, 1e-5f);
    EXPECT_NEAR(s[5], 2.0f, 1e-5f);
    EXPECT_NEAR(s[10], 3.0f, 1e-5f);
}

TEST(PolarDecompose, SingularTransformsGiveARotation) {
    Matrix4 q, s;
    for (const Matrix4& m : {transform({1, 2, 3}, {20, 30, 40}, {0, 2, 1}),  // flat
                             transform({}, {20, 30, 40}, {0, 0, 5}),         // a line
                             Matrix4{}}) {
        polarDecompose(m, q, s);
        expectPolar(m, q, s);
        EXPECT_NEAR(det3(q), 1.0f, 1e-5f);
    }
    // Nothing at all: the identity.
    EXPECT_EQ(q[0], 1.0f);
    EXPECT_EQ(q[5], 1.0f);
    EXPECT_EQ(q[10], 1.0f);
    // Bad values end the iteration too.
    Matrix4 broken = transform({}, {0, 0, 0}, {1, 1, 1});
    broken[0] = NAN;
    polarDecompose(broken, q, s);
}

TEST(ToQuaternion, EveryBranchGivesTheRotationBack) {
    // Rotations whose trace is positive, and half turns about axes near x,
    // y and z, which take the three other branches.
    const FbxVector4 angles[] = {{0, 0, 0},    {30, 40, 50}, {180, 0, 0},  {0, 180, 0},    {0, 0, 180},
                                 {170, 10, 5}, {10, 175, 0}, {5, 10, 178}, {-120, 60, 100}};
    for (const FbxVector4& euler : angles) {
        const Matrix4 q = transform({}, euler, {1, 1, 1});
        const std::array<float, 4> v = toQuaternion(q);
        EXPECT_NEAR(v[0] * v[0] + v[1] * v[1] + v[2] * v[2] + v[3] * v[3], 1.0f, 1e-5f);
        const Matrix4 back = rotationOf(v);
        for (int i : {0, 1, 2, 4, 5, 6, 8, 9, 10})
            EXPECT_NEAR(back[i], q[i], 1e-5f) << euler[0] << " " << euler[1] << " " << euler[2] << " @" << i;
    }
    // The sign falls as the branch gives it: the largest part is positive.
    const std::array<float, 4> halfX = toQuaternion(transform({}, {180, 0, 0}, {1, 1, 1}));
    EXPECT_NEAR(halfX[0], 1.0f, 1e-6f);
    const std::array<float, 4> halfZ = toQuaternion(transform({}, {0, 0, 180}, {1, 1, 1}));
    EXPECT_NEAR(halfZ[2], 1.0f, 1e-6f);
    const std::array<float, 4> identity = toQuaternion(transform({}, {}, {1, 1, 1}));
    EXPECT_EQ(identity, (std::array<float, 4>{0, 0, 0, 1}));
}

}  // namespace
