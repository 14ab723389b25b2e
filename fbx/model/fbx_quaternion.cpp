#include "fbx/model/fbx_quaternion.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr double kEpsilon = 2.220446049250313e-16;
// Below this, 1 - dot counts as no angle and 1 + dot as opposite rotations.
constexpr double kSlerpLimit = 1e-6;
constexpr double kPi = 3.141592653589793;

}  // namespace

void FbxQuaternion::Normalize() {
    const double length = Length();
    if (!(length > 0.0) || !std::isfinite(length)) {
        Set(0.0, 0.0, 0.0, 1.0);
        return;
    }
    const double f = 1.0 / length;
    for (double& v : mData) v *= f;
}

FbxQuaternion QuaternionPower(const FbxQuaternion& q, double w) {
    // The clamp keeps a quaternion slightly longer than 1 from giving NaN.
    const double x = std::acos(std::clamp(q[3], -1.0, 1.0));
    if (!(std::fabs(x) > kEpsilon)) return q;
    const double f = std::sin(x * w) / std::sin(x);
    return {q[0] * f, q[1] * f, q[2] * f, std::cos(x * w)};
}

FbxQuaternion QuaternionSlerp(const FbxQuaternion& q1, const FbxQuaternion& q2, double w) {
    double d = q1.DotProduct(q2);
    if (d + 1.0 > kSlerpLimit) {
        const bool flip = d < 0.0;
        if (flip) d = -d;
        double a, b;
        if (1.0 - d > kSlerpLimit) {
            const double x = std::acos(std::clamp(d, -1.0, 1.0));
            const double sx = std::sin(x);
            a = std::sin((1.0 - w) * x) / sx;
            b = std::sin(x * w) / sx;
        } else {
            a = 1.0 - w;
            b = w;
        }
        if (flip) b = -b;
        return q1 * a + q2 * b;
    }

    // Opposite quaternions: no plane to turn in, so the way goes through the
    // quaternion at right angles to q1, (-y, x, -w, z). The blend of the two
    // stays of unit length and starts at q1.
    if (std::fabs(q2[3] + q1[3]) < kEpsilon && std::fabs(q1[3] - 1.0) < kEpsilon && std::fabs(q1[0]) < kEpsilon &&
        std::fabs(q1[1]) < kEpsilon && std::fabs(q1[2]) < kEpsilon)
        return q2;
    const double a = std::sin((0.5 - w) * kPi);
    const double b = std::sin(w * kPi);
    return {a * q1[0] - b * q1[1], a * q1[1] + b * q1[0], a * q1[2] - b * q1[3], a * q1[3] + b * q1[2]};
}
