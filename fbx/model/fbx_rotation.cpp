#include "fbx/model/fbx_rotation.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr double kRadiansPerDegree = 0.017453292519943295;
constexpr double kDegreesPerRadian = 57.29577951308232;
// Half a degree in radians, for half-angle quaternions.
constexpr double kHalfRadiansPerDegree = 0.008726646259971648;
// Twice the degrees per radian, for angles taken back from half angles.
constexpr double kDoubleDegreesPerRadian = 114.59155902616465;
// Below these the first axis counts as turned onto the third (gimbal lock).
constexpr double kGimbalLimitXYZ = 1.9073486328125e-6;
constexpr double kGimbalLimitOrdered = 3.552713678800501e-15;
// At or below this cosine the X axis points backwards and the spheric form
// has no unique direction to turn through.
constexpr double kSphericBackLimit = -0.9999999999;
constexpr double kSphericProductLimit = 1e-10;

bool IsOddOrder(int order) { return order == eEulerXZY || order == eEulerYXZ || order == eEulerZYX; }

// m = R_axis(angle) * m on the upper block: each row, as a row vector, is
// turned about the axis.
void TurnRows(FbxAMatrix& m, int axis, double degrees) {
    const double a = degrees * kRadiansPerDegree;
    const double c = std::cos(a), s = std::sin(a);
    const int j = (axis + 1) % 3, k = (axis + 2) % 3;
    for (int r = 0; r < 3; ++r) {
        const double vj = m[r][j], vk = m[r][k];
        m[r][j] = vj * c - vk * s;
        m[r][k] = vj * s + vk * c;
    }
}

double ClampUnit(double v) { return std::clamp(v, -1.0, 1.0); }

}  // namespace

FbxAMatrix RotationXYZ(const FbxVector4& e) {
    const double x = e[0] * kRadiansPerDegree, y = e[1] * kRadiansPerDegree, z = e[2] * kRadiansPerDegree;
    const double cx = std::cos(x), sx = std::sin(x);
    const double cy = std::cos(y), sy = std::sin(y);
    const double cz = std::cos(z), sz = std::sin(z);
    FbxAMatrix m;
    m[0][0] = cz * cy;
    m[0][1] = sz * cy;
    m[0][2] = -sy;
    m[1][0] = sx * sy * cz - sz * cx;
    m[1][1] = sx * sy * sz + cz * cx;
    m[1][2] = cy * sx;
    m[2][0] = cx * sy * cz + sz * sx;
    m[2][1] = cx * sy * sz - cz * sx;
    m[2][2] = cy * cx;
    return m;
}

FbxVector4 AnglesXYZ(const FbxAMatrix& m) {
    const double r = std::sqrt(m[0][0] * m[0][0] + m[0][1] * m[0][1]);
    if (r > kGimbalLimitXYZ) {
        return {std::atan2(m[1][2], m[2][2]) * kDegreesPerRadian, std::atan2(-m[0][2], r) * kDegreesPerRadian,
                std::atan2(m[0][1], m[0][0]) * kDegreesPerRadian};
    }
    return {std::atan2(-m[2][1], m[1][1]) * kDegreesPerRadian, std::atan2(-m[0][2], r) * kDegreesPerRadian, 0.0};
}

FbxAMatrix OrderedRotation(double p, double q, double r, int order) {
    const FbxRotationAxes axes = RotationOrderAxes(order);
    FbxAMatrix m;
    TurnRows(m, axes.first, p);
    TurnRows(m, axes.second, q);
    TurnRows(m, axes.third, r);
    return m;
}

FbxVector4 OrderedAngles(const FbxAMatrix& m, int order) {
    const FbxRotationAxes axes = RotationOrderAxes(order);
    const int i = axes.first, j = axes.second, k = axes.third;
    const double t = std::sqrt(m[i][i] * m[i][i] + m[i][j] * m[i][j]);
    double p, q, r;
    if (t > kGimbalLimitOrdered) {
        p = std::atan2(m[j][k], m[k][k]);
        q = std::atan2(-m[i][k], t);
        r = std::atan2(m[i][j], m[i][i]);
    } else {
        p = std::atan2(-m[k][j], m[j][j]);
        q = std::atan2(-m[i][k], t);
        r = 0.0;
    }
    // The formulas read an even cycle of axes; an odd one is its mirror
    // image, whose angles turn the other way.
    if (IsOddOrder(order)) {
        p = -p;
        q = -q;
        r = -r;
    }
    return {p * kDegreesPerRadian, q * kDegreesPerRadian, r * kDegreesPerRadian};
}

FbxAMatrix RotationFromAngles(const FbxVector4& e, int order) {
    switch (order) {
    case eEulerXZY:
    case eEulerYZX:
    case eEulerYXZ:
    case eEulerZXY:
    case eEulerZYX: {
        const FbxRotationAxes axes = RotationOrderAxes(order);
        return OrderedRotation(e[axes.first], e[axes.second], e[axes.third], order);
    }
    case eSphericXYZ: {
        const double a0 = e[0] * kHalfRadiansPerDegree, a1 = e[1] * kHalfRadiansPerDegree,
                     a2 = e[2] * kHalfRadiansPerDegree;
        const double c0 = std::cos(a0), s0 = std::sin(a0);
        const double c1 = std::cos(a1), s1 = std::sin(a1);
        const double c2 = std::cos(a2), s2 = std::sin(a2);
        const FbxQuaternion q(c1 * s0 * c2, s1 * c0 + s2 * s0, s2 * c0 - s1 * s0, c1 * c0 * c2);
        FbxAMatrix m;
        m.SetQ(q);
        return m;
    }
    default:
        return RotationXYZ(e);
    }
}

namespace {

FbxVector4 SphericAngles(const FbxAMatrix& m) {
    if (!(m[0][0] > kSphericBackLimit)) return {180.0, 180.0, 180.0};

    // The shortest turn that brings +X onto row 0, then the twist about it.
    FbxQuaternion q1(0.0, -m[0][2], m[0][1], m[0][0] + 1.0);
    q1.Normalize();
    const double p = q1[1] * q1[1] * q1[2] * q1[2];
    double f = 1.0;
    if (p > kSphericProductLimit) f = std::sqrt(0.5 / p * (1.0 - std::sqrt(std::max(0.0, 1.0 - 4.0 * p))));

    FbxVector4 e;
    e[2] = std::asin(ClampUnit(f * q1[2])) * kDoubleDegreesPerRadian;
    e[1] = std::asin(ClampUnit(f * q1[1])) * kDoubleDegreesPerRadian;

    FbxQuaternion swing = q1;
    swing.Conjugate();
    FbxQuaternion q2 = swing * m.GetQ();
    q2.Normalize();
    e[0] = std::atan2(2.0 * (q2[3] * q2[0] + q2[2] * q2[1]), 2.0 * (0.5 - q2[0] * q2[0] - q2[2] * q2[2])) *
           kDegreesPerRadian;
    return e;
}

}  // namespace

FbxVector4 AnglesFromRotation(const FbxAMatrix& m, int order) {
    switch (order) {
    case eEulerXZY:
    case eEulerYZX:
    case eEulerYXZ:
    case eEulerZXY:
    case eEulerZYX: {
        const FbxRotationAxes axes = RotationOrderAxes(order);
        const FbxVector4 v = OrderedAngles(m, order);
        FbxVector4 e;
        e[axes.first] = v[0];
        e[axes.second] = v[1];
        e[axes.third] = v[2];
        return e;
    }
    case eSphericXYZ:
        return SphericAngles(m);
    default:
        return AnglesXYZ(m);
    }
}

FbxAMatrix MatrixFromQuaternion(const FbxQuaternion& q) {
    FbxAMatrix m;
    // A quaternion of length 0 (or one so short that the scale overflows,
    // or not a number) has no rotation: the identity.
    const double n = q.SquareLength();
    if (!(n > 0.0)) return m;
    const double s = 2.0 / n;
    if (!std::isfinite(s)) return m;
    const double x = q[0], y = q[1], z = q[2], w = q[3];
    const double xx = x * x, yy = y * y, zz = z * z;
    const double xy = x * y, xz = x * z, yz = y * z;
    const double wx = w * x, wy = w * y, wz = w * z;
    m[0][0] = 1.0 - s * (yy + zz);
    m[0][1] = s * (xy + wz);
    m[0][2] = s * (xz - wy);
    m[1][0] = s * (xy - wz);
    m[1][1] = 1.0 - s * (xx + zz);
    m[1][2] = s * (yz + wx);
    m[2][0] = s * (xz + wy);
    m[2][1] = s * (yz - wx);
    m[2][2] = 1.0 - s * (xx + yy);
    return m;
}

FbxQuaternion QuaternionFromMatrix(const FbxAMatrix& m) {
    const double trace = m[0][0] + m[1][1] + m[2][2];
    if (trace > 0.0) {
        const double s = std::sqrt(trace + 1.0);
        const double f = 0.5 / s;
        return {(m[1][2] - m[2][1]) * f, (m[2][0] - m[0][2]) * f, (m[0][1] - m[1][0]) * f, s * 0.5};
    }
    // Start from the largest diagonal element, where the square root is
    // safest; 1 + m[i][i] - m[j][j] - m[k][k] is at least 1 there.
    int i = 0;
    if (m[1][1] > m[i][i]) i = 1;
    if (m[2][2] > m[i][i]) i = 2;
    const int j = (i + 1) % 3, k = (i + 2) % 3;
    const double s = std::sqrt(m[i][i] - m[j][j] - m[k][k] + 1.0);
    const double f = s != 0.0 ? 0.5 / s : 0.0;
    double v[4];
    v[i] = s * 0.5;
    v[j] = (m[i][j] + m[j][i]) * f;
    v[k] = (m[i][k] + m[k][i]) * f;
    v[3] = (m[j][k] - m[k][j]) * f;
    return {v[0], v[1], v[2], v[3]};
}
