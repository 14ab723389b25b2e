#include "fbx/model/fbx_quaternion.h"

#include <gtest/gtest.h>

#include <cmath>

namespace {

// The turn by `degrees` about the unit axis (x, y, z).
FbxQuaternion Turn(double x, double y, double z, double degrees) {
    const double h = degrees * 3.141592653589793 / 360.0, s = std::sin(h);
    return {x * s, y * s, z * s, std::cos(h)};
}

void ExpectQuaternion(const FbxQuaternion& q, const FbxQuaternion& expected) {
    for (int i = 0; i < 4; ++i) EXPECT_NEAR(q[i], expected[i], 1e-12) << "element " << i;
}

}  // namespace

TEST(FbxQuaternion, ProductComposesTurnsAndPowerScalesTheAngle) {
    EXPECT_EQ(FbxQuaternion(1, 0, 0, 0) * FbxQuaternion(0, 1, 0, 0), FbxQuaternion(0, 0, 1, 0));
    ExpectQuaternion(Turn(0, 0, 1, 30) * Turn(0, 0, 1, 50), Turn(0, 0, 1, 80));

    EXPECT_EQ(QuaternionPower(FbxQuaternion(), 0.37), FbxQuaternion());
    ExpectQuaternion(QuaternionPower(Turn(0, 1, 0, 60), 0.5), Turn(0, 1, 0, 30));
    ExpectQuaternion(QuaternionPower(Turn(0.6, 0, 0.8, 100), 2.0), Turn(0.6, 0, 0.8, 200));
    // Slightly too long a quaternion still gives numbers.
    const FbxQuaternion p = QuaternionPower(FbxQuaternion(1e-9, 0, 0, 1.0000001), 0.5);
    for (int i = 0; i < 4; ++i) EXPECT_TRUE(std::isfinite(p[i]));

    FbxQuaternion zero(0, 0, 0, 0);
    zero.Normalize();
    EXPECT_EQ(zero, FbxQuaternion());
}

TEST(FbxQuaternion, SlerpRunsFromTheFirstToTheSecondTheShortWay) {
    const FbxQuaternion a = Turn(0, 0, 1, 10), b = Turn(0.6, 0.8, 0, 70);
    ExpectQuaternion(QuaternionSlerp(a, b, 0.0), a);
    ExpectQuaternion(QuaternionSlerp(a, b, 1.0), b);
    ExpectQuaternion(QuaternionSlerp(FbxQuaternion(), Turn(0, 0, 1, 90), 0.5), Turn(0, 0, 1, 45));
    // The same rotation with the other sign: b itself at w = 1, and the way
    // stays the short one.
    ExpectQuaternion(QuaternionSlerp(a, -b, 1.0), b);
    ExpectQuaternion(QuaternionSlerp(FbxQuaternion(), -Turn(0, 0, 1, 90), 0.5), Turn(0, 0, 1, 45));
}

TEST(FbxQuaternion, SlerpOfOppositeQuaternions) {
    // The identity and its negative: nothing to turn, the second comes out.
    EXPECT_EQ(QuaternionSlerp(FbxQuaternion(), FbxQuaternion(0, 0, 0, -1), 0.3), FbxQuaternion(0, 0, 0, -1));
    // Others go through the quaternion at right angles to the first.
    const FbxQuaternion a(1, 0, 0, 0);
    ExpectQuaternion(QuaternionSlerp(a, -a, 0.0), a);
    ExpectQuaternion(QuaternionSlerp(a, -a, 0.5), FbxQuaternion(0, 1, 0, 0));
    // The way blends q1 with (-y, x, -w, z): unit length all along, q1 at
    // the start.
    const FbxQuaternion c = Turn(0.6, 0, 0.8, 120);
    ExpectQuaternion(QuaternionSlerp(c, -c, 0.0), c);
    const double s = std::sin(0.25 * 3.141592653589793);
    ExpectQuaternion(QuaternionSlerp(c, -c, 0.25),
                     FbxQuaternion(s * c[0] - s * c[1], s * c[1] + s * c[0], s * c[2] - s * c[3], s * c[3] + s * c[2]));
    for (double w : {0.1, 0.25, 0.5, 0.9}) EXPECT_NEAR(QuaternionSlerp(c, -c, w).Length(), 1.0, 1e-12) << w;
}
