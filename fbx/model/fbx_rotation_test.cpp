#include "fbx/model/fbx_rotation.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>

namespace {

// An independent 3 by 3 model of the conventions: rows are the images of the
// axes, and in Mul(a, b) b acts first.
using Mat3 = std::array<std::array<double, 3>, 3>;

Mat3 Axis(int axis, double degrees) {
    const double a = degrees * 3.14159265358979323846 / 180.0, c = std::cos(a), s = std::sin(a);
    switch (axis) {
    case 0:
        return {{{1, 0, 0}, {0, c, s}, {0, -s, c}}};  // +Y towards +Z
    case 1:
        return {{{c, 0, -s}, {0, 1, 0}, {s, 0, c}}};  // +Z towards +X
    default:
        return {{{c, s, 0}, {-s, c, 0}, {0, 0, 1}}};  // +X towards +Y
    }
}

Mat3 Mul(const Mat3& a, const Mat3& b) {
    Mat3 m{};
    for (int i = 0; i < 3; ++i)
        for (int c = 0; c < 3; ++c)
            for (int k = 0; k < 3; ++k) m[i][c] += b[i][k] * a[k][c];
    return m;
}

// Turns about axes[0] by p first, then axes[1] by q, then axes[2] by r.
Mat3 Turns(const int axes[3], double p, double q, double r) {
    return Mul(Axis(axes[2], r), Mul(Axis(axes[1], q), Axis(axes[0], p)));
}

struct Order {
    int value;
    int axes[3];
};

const Order kEulerOrders[] = {{0, {0, 1, 2}}, {2, {0, 2, 1}}, {4, {1, 2, 0}},
                              {6, {1, 0, 2}}, {8, {2, 0, 1}}, {10, {2, 1, 0}}};

void ExpectBlock(const FbxAMatrix& m, const Mat3& expected, double tolerance = 1e-12) {
    for (int r = 0; r < 3; ++r)
        for (int c = 0; c < 3; ++c) EXPECT_NEAR(m[r][c], expected[r][c], tolerance) << "row " << r << " col " << c;
    for (int c = 0; c < 3; ++c) EXPECT_TRUE(m[3][c] == 0.0 && m[c][3] == 0.0);
    EXPECT_EQ(m[3][3], 1.0);
}

Mat3 Block(const FbxAMatrix& m) {
    return {{{m[0][0], m[0][1], m[0][2]}, {m[1][0], m[1][1], m[1][2]}, {m[2][0], m[2][1], m[2][2]}}};
}

void ExpectAngles(const FbxVector4& v, double x, double y, double z) {
    EXPECT_NEAR(v[0], x, 1e-9);
    EXPECT_NEAR(v[1], y, 1e-9);
    EXPECT_NEAR(v[2], z, 1e-9);
    EXPECT_EQ(v[3], 0.0);
}

}  // namespace

TEST(Rotation, EulerMatricesMatchProductsOfAxisTurnsInEveryOrder) {
    const int xyz[3] = {0, 1, 2}, zyx[3] = {2, 1, 0};
    ExpectBlock(RotationXYZ(FbxVector4(10, 20, 30)), Turns(xyz, 10, 20, 30));
    // "Euler ZYX" turns about Z first: R_x(10) * R_y(20) * R_z(30).
    ExpectBlock(RotationFromAngles(FbxVector4(10, 20, 30), eEulerZYX), Turns(zyx, 30, 20, 10));
    for (const Order& o : kEulerOrders) {
        SCOPED_TRACE(o.value);
        const double e[3] = {10, -20, 130};
        ExpectBlock(RotationFromAngles(FbxVector4(e[0], e[1], e[2]), o.value),
                    Turns(o.axes, e[o.axes[0]], e[o.axes[1]], e[o.axes[2]]));
        // OrderedRotation takes the angles in the sequence of the axes.
        ExpectBlock(OrderedRotation(-35.0, 120.0, 250.0, o.value), Turns(o.axes, -35.0, 120.0, 250.0));
    }
    // A value that names no order reads as XYZ.
    ExpectBlock(RotationFromAngles(FbxVector4(10, 20, 30), 3), Turns(xyz, 10, 20, 30));
}

TEST(Rotation, AnglesComeBackThroughEveryEulerOrderBelowNinetyDegrees) {
    const double samples[] = {-89.5, -60.0, -17.25, 0.0, 5.0, 45.0, 89.5};
    for (const Order& o : kEulerOrders)
        for (double a : samples)
            for (double b : samples)
                for (double c : samples) {
                    SCOPED_TRACE(testing::Message() << o.value << ": " << a << ", " << b << ", " << c);
                    ExpectAngles(AnglesFromRotation(RotationFromAngles(FbxVector4(a, b, c), o.value), o.value), a, b,
                                 c);
                    ExpectAngles(OrderedAngles(OrderedRotation(a, b, c, o.value), o.value), a, b, c);
                }
}

TEST(Rotation, GimbalLockPutsTheWholeTurnIntoTheFirstAngle) {
    // X turned onto -Z or +Z: only x - z or x + z is determined; z is 0.
    ExpectAngles(AnglesXYZ(RotationXYZ(FbxVector4(30, 90, 10))), 20.0, 90.0, 0.0);
    ExpectAngles(AnglesXYZ(RotationXYZ(FbxVector4(30, -90, 10))), 40.0, -90.0, 0.0);

    for (const Order& o : kEulerOrders) {
        SCOPED_TRACE(o.value);
        for (double middle : {90.0, -90.0}) {
            const FbxAMatrix locked = OrderedRotation(25.0, middle, 40.0, o.value);
            const FbxVector4 v = OrderedAngles(locked, o.value);
            EXPECT_EQ(v[2], 0.0);
            EXPECT_NEAR(v[1], middle, 1e-9);
            ExpectBlock(OrderedRotation(v[0], v[1], v[2], o.value), Block(locked));
        }
    }
}

TEST(Rotation, SphericAnglesTurnAboutSingleAxesAndComeBack) {
    ExpectBlock(RotationFromAngles(FbxVector4(40, 0, 0), eSphericXYZ), Axis(0, 40));
    ExpectBlock(RotationFromAngles(FbxVector4(0, 40, 0), eSphericXYZ), Axis(1, 40));
    ExpectBlock(RotationFromAngles(FbxVector4(0, 0, -40), eSphericXYZ), Axis(2, -40));

    for (double a : {-60.0, 0.0, 35.0})
        for (double b : {-50.0, 0.0, 20.0})
            for (double c : {-30.0, 0.0, 70.0}) {
                SCOPED_TRACE(testing::Message() << a << ", " << b << ", " << c);
                const FbxAMatrix m = RotationFromAngles(FbxVector4(a, b, c), eSphericXYZ);
                ExpectBlock(RotationFromAngles(AnglesFromRotation(m, eSphericXYZ), eSphericXYZ), Block(m), 1e-9);
            }
    // X turned backwards has no single shortest way round.
    ExpectAngles(AnglesFromRotation(RotationXYZ(FbxVector4(0, 0, 180)), eSphericXYZ), 180, 180, 180);
}

TEST(Rotation, QuaternionsAndMatricesAgree) {
    const double h = 50.0 * 3.14159265358979323846 / 360.0, s = std::sin(h), c = std::cos(h);
    ExpectBlock(MatrixFromQuaternion(FbxQuaternion(s, 0, 0, c)), Axis(0, 50));
    ExpectBlock(MatrixFromQuaternion(FbxQuaternion(0, s, 0, c)), Axis(1, 50));
    // The length does not matter; length 0 is no rotation.
    ExpectBlock(MatrixFromQuaternion(FbxQuaternion(0, 0, 3 * s, 3 * c)), Axis(2, 50));
    EXPECT_TRUE(MatrixFromQuaternion(FbxQuaternion(0, 0, 0, 0)).IsIdentity(0.0));

    // The quaternion product composes like the matrix product.
    const FbxQuaternion a = QuaternionFromMatrix(RotationXYZ(FbxVector4(10, 80, -30)));
    const FbxQuaternion b = QuaternionFromMatrix(RotationXYZ(FbxVector4(-120, 5, 60)));
    ExpectBlock(MatrixFromQuaternion(a * b), Block(MatrixFromQuaternion(a) * MatrixFromQuaternion(b)));

    // Back from matrices on every branch: positive trace and each largest
    // diagonal element.
    for (const FbxVector4& e : {FbxVector4(10, 20, 30), FbxVector4(179, 0, 0), FbxVector4(0, 180, 0),
                                FbxVector4(0, 0, 179), FbxVector4(170, 10, -175)}) {
        const FbxAMatrix m = RotationXYZ(e);
        const FbxQuaternion q = QuaternionFromMatrix(m);
        EXPECT_NEAR(q.Length(), 1.0, 1e-12);
        ExpectBlock(MatrixFromQuaternion(q), Block(m));
    }
}

TEST(Rotation, DegenerateMatricesGiveFiniteAngles) {
    FbxAMatrix sheared = RotationXYZ(FbxVector4(30, 40, 50)), scaled, zero, flat;
    sheared[0][1] += 0.7;
    sheared[2][0] *= 3.0;
    scaled.SetS(FbxVector4(2.5, 2.5, 2.5));
    scaled = scaled * RotationXYZ(FbxVector4(-20, 60, 100));
    zero.SetS(FbxVector4(0, 0, 0));
    flat.SetRow(0, FbxVector4(0, 1.5, 0));  // X onto Y, beyond unit length

    const auto finite = [](const FbxVector4& v) { return std::isfinite(v[0] + v[1] + v[2] + v[3]); };
    for (const FbxAMatrix* m : {&sheared, &scaled, &zero, &flat}) {
        for (int order = 0; order <= 12; order += 2) {
            EXPECT_TRUE(finite(AnglesFromRotation(*m, order))) << order;
            EXPECT_TRUE(finite(OrderedAngles(*m, order))) << order;
        }
        const FbxQuaternion q = QuaternionFromMatrix(*m);
        EXPECT_TRUE(std::isfinite(q[0] + q[1] + q[2] + q[3]));
    }
    ExpectAngles(AnglesXYZ(zero), 0, 0, 0);
}
