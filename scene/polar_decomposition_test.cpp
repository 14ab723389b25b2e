#include "scene/polar_decomposition.h"

#include <gtest/gtest.h>

#include "fbx/model/fbx_amatrix.h"
#include "fbx/model/fbx_vector4.h"

namespace {

constexpr int kUpper[] = {0, 1, 2, 4, 5, 6, 8, 9, 10};

Matrix4 transform(FbxVector4 r, FbxVector4 s, FbxVector4 t = {}) { return toMatrix4(FbxAMatrix(t, r, s)); }

float det3(const Matrix4& m) {
    return m[0] * (m[5] * m[10] - m[9] * m[6]) - m[4] * (m[1] * m[10] - m[9] * m[2]) +
           m[8] * (m[1] * m[6] - m[5] * m[2]);
}

// Splits m and checks the parts: q orthonormal with determinant `det`, s
// symmetric without translation, and q after s giving m's 3 by 3 part back.
std::pair<Matrix4, Matrix4> expectPolar(const Matrix4& m, float det) {
    Matrix4 q, s;
    polarDecompose(m, q, s);
    Matrix4 qt = q;
    for (int i : kUpper) qt[i] = q[(i % 4) * 4 + i / 4];
    const Matrix4 qtq = multiply(qt, q), back = multiply(q, s);
    for (int i : kUpper) {
        EXPECT_NEAR(qtq[i], i % 5 == 0 ? 1.0f : 0.0f, 1e-5f) << i;
        EXPECT_NEAR(back[i], m[i], 1e-5f) << i;
        EXPECT_EQ(s[i], s[(i % 4) * 4 + i / 4]) << i;
    }
    EXPECT_NEAR(det3(q), det, 1e-5f);
    EXPECT_EQ(s[12] + s[13] + s[14], 0.0f);
    return {q, s};
}

TEST(PolarDecompose, RotationApartFromScaleShearAndMirror) {
    // A non-uniform scale: q is the rotation alone, s the scale.
    auto [q, s] = expectPolar(transform({30, -45, 60}, {2, 0.5, 3}, {4, 5, 6}), 1.0f);
    const Matrix4 rotation = transform({30, -45, 60}, {1, 1, 1});
    for (int i : kUpper) EXPECT_NEAR(q[i], rotation[i], 1e-5f) << i;
    EXPECT_NEAR(s[0] * s[5] * s[10], 3.0f, 1e-5f);
    EXPECT_NEAR(s[5], 0.5f, 1e-6f);
    // A scale along turned axes: s gets off-diagonal elements.
    const Matrix4 stretch = multiply(transform({0, 0, 45}, {3, 1, 1}), transform({0, 0, -45}, {1, 1, 1}));
    std::tie(q, s) = expectPolar(multiply(transform({10, 20, 30}, {1, 1, 1}), stretch), 1.0f);
    EXPECT_NEAR(s[1], 1.0f, 1e-5f);
    // A mirror stays in q; the scale stays positive.
    std::tie(q, s) = expectPolar(transform({0, 0, 90}, {-1, 2, 3}), -1.0f);
    EXPECT_NEAR(s[0], 1.0f, 1e-5f);
    // Singular transforms (flat, a line, nothing) give a rotation.
    expectPolar(transform({20, 30, 40}, {0, 2, 1}), 1.0f);
    expectPolar(transform({20, 30, 40}, {0, 0, 5}), 1.0f);
    std::tie(q, s) = expectPolar(Matrix4{}, 1.0f);
    EXPECT_EQ(q, identityMatrix4());
    // Not a number ends the iteration too.
    Matrix4 broken = identityMatrix4();
    broken[0] = NAN;
    polarDecompose(broken, q, s);
}

TEST(ToQuaternion, EveryBranchGivesTheRotationBack) {
    // Positive traces, and half turns about axes near x, y and z for the
    // three other branches.
    const FbxVector4 angles[] = {{0, 0, 0},    {30, 40, 50}, {180, 0, 0},  {0, 180, 0},    {0, 0, 180},
                                 {170, 10, 5}, {10, 175, 0}, {5, 10, 178}, {-120, 60, 100}};
    for (const FbxVector4& euler : angles) {
        const Matrix4 q = transform(euler, {1, 1, 1});
        const auto [x, y, z, w] = toQuaternion(q);
        const float back[] = {1 - 2 * (y * y + z * z), 2 * (x * y + z * w),     2 * (x * z - y * w),
                              2 * (x * y - z * w),     1 - 2 * (x * x + z * z), 2 * (y * z + x * w),
                              2 * (x * z + y * w),     2 * (y * z - x * w),     1 - 2 * (x * x + y * y)};
        for (int k = 0; k < 9; ++k) EXPECT_NEAR(back[k], q[kUpper[k]], 1e-5f) << euler[0] << " " << euler[1];
    }
    // The sign falls as the branch gives it: the largest part positive.
    EXPECT_NEAR(toQuaternion(transform({180, 0, 0}, {1, 1, 1}))[0], 1.0f, 1e-6f);
    EXPECT_NEAR(toQuaternion(transform({0, 0, 180}, {1, 1, 1}))[2], 1.0f, 1e-6f);
    EXPECT_EQ(toQuaternion(identityMatrix4()), (std::array<float, 4>{0, 0, 0, 1}));
}

}  // namespace
