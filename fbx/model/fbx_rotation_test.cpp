#include "fbx/model/fbx_rotation.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>

namespace {

// An independent 3 by 3 model of the conventions: rows are the images of the
// axes, and in Mul(a, b) b acts first.
using Mat3 = std::array<std::array<double, 3>, 3>;

constexpr double kPi = 3.14159265358979323846;

Mat3 Axis(int axis, double degrees) {
    const double a = degrees * kPi / 180.0, c = std::cos(a), s = std::sin(a);
    switch (axis) {
    case 0: return {{{1, 0, 0}, {0, c, s}, {0, -s, c}}};  // +Y towards +Z
    case 1: return {{{c, 0, -s}, {0, 1, 0}, {s, 0, c}}};  // +Z towards +X
    default: return {{{c, s, 0}, {-s, c, 0}, {0, 0, 1}}}; // +X towards +Y
    }
}

Mat3 Mul(const Mat3& a, const Mat3& b) {
    Mat3 m{};
    for (int i = 0; i < 3; ++i)
        for (int c = 0; c < 3; ++c)
            for (int k = 0; k < 3; ++k) m[i][c] += b[i][k] * a[k][c];
    return m;
}

struct Order {
    int value;
    int axes[3];
};

const Order kEulerOrders[] = {{0, {0, 1, 2}}, {2, {0, 2, 1}}, {4, {1, 2, 0}},
                              {6, {1, 0, 2}}, {8, {2, 0, 1}}, {10, {2, 1, 0}}};

// The rotation turning about axes[0] by angle[axes[0]] first, and so on.
Mat3 Euler(const Order& o, const double angles[3]) {
    return Mul(Axis(o.axes[2], angles[o.axes[2]]),
               Mul(Axis(o.axes[1], angles[o.axes[1]]), Axis(o.axes[0], angles[o.axes[0]])));
}

void ExpectBlock(const FbxAMatrix& m, const Mat3& expected, double tolerance = 1e-12) {
    for (int r = 0; r < 3; ++r)
        for (int c = 0; c < 3; ++c) EXPECT_NEAR(m[r][c], expected[r][c], tolerance) << "row " << r << " col " << c;
    for (int c = 0; c < 3; ++c) {
        EXPECT_EQ(m[3][c], 0.0);
        EXPECT_EQ(m[c][3], 0.0);
    }
    EXPECT_EQ(m[3][3], 1.0);
}

void ExpectAngles(const FbxVector4& v, double x, double y, double z, double tolerance = 1e-9) {
    EXPECT_NEAR(v[0], x, tolerance);
    EXPECT_NEAR(v[1], y, tolerance);
    EXPECT_NEAR(v[2], z, tolerance);
    EXPECT_EQ(v[3], 0.0);
}

bool AllFinite(const FbxVector4& v) {
    return std::isfinite(v[0]) && std::isfinite(v[1]) && std::isfinite(v[2]) && std::isfinite(v[3]);
}

const double kAngleSamples[] = {-89.5, -60.0, -17.25, 0.0, 5.0, 45.0, 73.0, 89.5};

} // namespace

TEST(Rotation, EulerMatricesMatchProductsOfAxisTurnsInEveryOrder) {
    const double e[3] = {10.0, 20.0, 30.0};
    ExpectBlock(RotationXYZ(FbxVector4(10, 20, 30)), Mul(Axis(2, 30), Mul(Axis(1, 20), Axis(0, 10))));
    // "Euler ZYX" turns about Z first: R_x(10) * R_y(20) * R_z(30).
    ExpectBlock(RotationFromAngles(FbxVector4(10, 20, 30), eEulerZYX), Mul(Axis(0, 10), Mul(Axis(1, 20), Axis(2, 30))));

    for (const Order& o : kEulerOrders) {
        SCOPED_TRACE(o.value);
        ExpectBlock(RotationFromAngles(FbxVector4(e[0], e[1], e[2]), o.value), Euler(o, e));
        // OrderedRotation takes the angles in the sequence of the axes.
        ExpectBlock(OrderedRotation(-35.0, 120.0, 250.0, o.value),
                    Mul(Axis(o.axes[2], 250.0), Mul(Axis(o.axes[1], 120.0), Axis(o.axes[0], -35.0))));
    }
    // A value that names no order reads as XYZ.
    ExpectBlock(RotationFromAngles(FbxVector4(10, 20, 30), 3), Euler(kEulerOrders[0], e));
}

TEST(Rotation, AnglesComeBackThroughEveryEulerOrderBelowNinetyDegrees) {
    for (const Order& o : kEulerOrders) {
        for (double a : kAngleSamples)
            for (double b : kAngleSamples)
                for (double c : kAngleSamples) {
                    SCOPED_TRACE(testing::Message() << o.value << ": " << a << ", " << b << ", " << c);
                    const FbxAMatrix m = RotationFromAngles(FbxVector4(a, b, c), o.value);
                    ExpectAngles(AnglesFromRotation(m, o.value), a, b, c);
                    ExpectAngles(OrderedAngles(OrderedRotation(a, b, c, o.value), o.value), a, b, c);
                }
    }
}

TEST(Rotation, GimbalLockPutsTheWholeTurnIntoTheFirstAngle) {
    // X turned onto -Z: only x - z is determined, and z comes back as 0.
    const FbxAMatrix m = RotationXYZ(FbxVector4(30, 90, 10));
    const FbxVector4 e = AnglesXYZ(m);
    ExpectAngles(e, 20.0, 90.0, 0.0);
    ExpectBlock(RotationXYZ(e), Mul(Axis(2, 10), Mul(Axis(1, 90), Axis(0, 30))));

    ExpectAngles(AnglesXYZ(RotationXYZ(FbxVector4(30, -90, 10))), 40.0, -90.0, 0.0);

    for (const Order& o : kEulerOrders) {
        SCOPED_TRACE(o.value);
        for (double middle : {90.0, -90.0}) {
            const FbxAMatrix locked = OrderedRotation(25.0, middle, 40.0, o.value);
            const FbxVector4 v = OrderedAngles(locked, o.value);
            EXPECT_EQ(v[2], 0.0);
            EXPECT_NEAR(v[1], middle, 1e-9);
            // The angles found give the same rotation back.
            const FbxAMatrix again = OrderedRotation(v[0], v[1], v[2], o.value);
            for (int r = 0; r < 3; ++r)
                for (int c = 0; c < 3; ++c) EXPECT_NEAR(again[r][c], locked[r][c], 1e-12);
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
                const FbxVector4 e = AnglesFromRotation(m, eSphericXYZ);
                const FbxAMatrix again = RotationFromAngles(e, eSphericXYZ);
                for (int r = 0; r < 3; ++r)
                    for (int col = 0; col < 3; ++col) EXPECT_NEAR(again[r][col], m[r][col], 1e-9);
            }

    // X turned backwards has no single shortest way round.
    ExpectAngles(AnglesFromRotation(RotationXYZ(FbxVector4(0, 0, 180)), eSphericXYZ), 180, 180, 180);
}

TEST(Rotation, QuaternionsAndMatricesAgree) {
    const double h = 50.0 * kPi / 360.0;
    ExpectBlock(MatrixFromQuaternion(FbxQuaternion(std::sin(h), 0, 0, std::cos(h))), Axis(0, 50));
    ExpectBlock(MatrixFromQuaternion(FbxQuaternion(0, std::sin(h), 0, std::cos(h))), Axis(1, 50));
    ExpectBlock(MatrixFromQuaternion(FbxQuaternion(0, 0, std::sin(h), std::cos(h))), Axis(2, 50));
    // The length does not matter; length 0 is no rotation.
    ExpectBlock(MatrixFromQuaternion(FbxQuaternion(0, 0, 3 * std::sin(h), 3 * std::cos(h))), Axis(2, 50));
    EXPECT_TRUE(MatrixFromQuaternion(FbxQuaternion(0, 0, 0, 0)).IsIdentity(0.0));

    // The quaternion product composes like the matrix product.
    const FbxQuaternion a = QuaternionFromMatrix(RotationXYZ(FbxVector4(10, 80, -30)));
    const FbxQuaternion b = QuaternionFromMatrix(RotationXYZ(FbxVector4(-120, 5, 60)));
    const FbxAMatrix ab = MatrixFromQuaternion(a) * MatrixFromQuaternion(b);
    const FbxAMatrix product = MatrixFromQuaternion(a * b);
    for (int r = 0; r < 3; ++r)
        for (int c = 0; c < 3; ++c) EXPECT_NEAR(product[r][c], ab[r][c], 1e-12);

    // Back from matrices on every branch: positive trace and each largest
    // diagonal element.
    const FbxVector4 samples[] = {{10, 20, 30}, {179, 0, 0}, {0, 179, 0}, {0, 0, 179}, {170, 10, -175}, {0, 180, 0}};
    for (const FbxVector4& e : samples) {
        const FbxAMatrix m = RotationXYZ(e);
        const FbxQuaternion q = QuaternionFromMatrix(m);
        EXPECT_NEAR(q.Length(), 1.0, 1e-12);
        const FbxAMatrix again = MatrixFromQuaternion(q);
        for (int r = 0; r < 3; ++r)
            for (int c = 0; c < 3; ++c) EXPECT_NEAR(again[r][c], m[r][c], 1e-12);
    }
}

TEST(Rotation, DegenerateMatricesGiveFiniteAngles) {
    FbxAMatrix sheared = RotationXYZ(FbxVector4(30, 40, 50));
    sheared[0][1] += 0.7;
    sheared[2][0] *= 3.0;
    FbxAMatrix scaled;
    for (int r = 0; r < 3; ++r)
        for (int c = 0; c < 3; ++c) scaled[r][c] = 2.5 * RotationXYZ(FbxVector4(-20, 60, 100))[r][c];
    FbxAMatrix zero;
    for (int r = 0; r < 3; ++r) zero[r][r] = 0.0;
    FbxAMatrix flat; // X onto Y, beyond unit length
    flat[0][0] = 0.0;
    flat[0][1] = 1.5;
    flat[0][2] = 0.0;

    for (const FbxAMatrix* m : {&sheared, &scaled, &zero, &flat}) {
        EXPECT_TRUE(AllFinite(AnglesXYZ(*m)));
        for (int order = 0; order <= 12; order += 2) {
            EXPECT_TRUE(AllFinite(AnglesFromRotation(*m, order))) << order;
            EXPECT_TRUE(AllFinite(OrderedAngles(*m, order))) << order;
        }
        const FbxQuaternion q = QuaternionFromMatrix(*m);
        EXPECT_TRUE(std::isfinite(q[0]) && std::isfinite(q[1]) && std::isfinite(q[2]) && std::isfinite(q[3]));
    }
    ExpectAngles(AnglesXYZ(zero), 0, 0, 0);
}
