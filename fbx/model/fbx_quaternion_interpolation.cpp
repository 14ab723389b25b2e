#include "fbx/model/fbx_quaternion_interpolation.h"

#include <cmath>
#include <limits>

#include "fbx/model/fbx_amatrix.h"
#include "fbx/model/fbx_quaternion.h"
#include "fbx/model/fbx_rotation.h"

namespace {

constexpr double kEpsilon = 2.220446049250313e-16;
constexpr double kTicks = static_cast<double>(FbxTime::kTicksPerSecond);

FbxLongLong saturatedAdd(FbxLongLong a, FbxLongLong b) {
    FbxLongLong r;
    if (__builtin_add_overflow(a, b, &r))
        return b > 0 ? std::numeric_limits<FbxLongLong>::max() : std::numeric_limits<FbxLongLong>::min();
    return r;
}

FbxLongLong saturatedSub(FbxLongLong a, FbxLongLong b) {
    FbxLongLong r;
    if (__builtin_sub_overflow(a, b, &r))
        return b < 0 ? std::numeric_limits<FbxLongLong>::max() : std::numeric_limits<FbxLongLong>::min();
    return r;
}

double seconds(FbxLongLong from, FbxLongLong to) {
    return (static_cast<double>(to) - static_cast<double>(from)) / kTicks;
}

double evaluate(const FbxRotationChannel& c, FbxLongLong t) {
    return c.curve ? c.curve->Evaluate(t) : static_cast<float>(c.value);
}

FbxQuaternion lerp(const FbxQuaternion& a, const FbxQuaternion& b, double u) { return a * (1.0 - u) + b * u; }

FbxQuaternion splineSlerp(const FbxQuaternion& a, const FbxQuaternion& b, double u) {
    double d = a.DotProduct(b), s = 1.0;
    if (d < 0.0) {
        d = -d;
        s = -1.0;
    }
    if (1.0 - d > kEpsilon) {
        double x = std::acos(d), sx = std::sin(x);
        return a * (std::sin((1.0 - u) * x) / sx) + b * (s * std::sin(x * u) / sx);
    }
    return a * (1.0 - u) + b * (s * u);
}

template <class Blend>
FbxQuaternion bezier(const FbxQuaternion& p0, const FbxQuaternion& p1, const FbxQuaternion& p2, const FbxQuaternion& p3,
                     double u, Blend blend) {
    FbxQuaternion a = blend(p0, p1, u), b = blend(p1, p2, u), c = blend(p2, p3, u);
    FbxQuaternion d = blend(a, b, u), e = blend(b, c, u);
    return blend(d, e, u);
}

// p mirrored through q.
FbxQuaternion doubled(const FbxQuaternion& p, const FbxQuaternion& q) { return q * (2.0 * p.DotProduct(q)) - p; }

FbxQuaternion controlPoint(const FbxQuaternion& a, const FbxQuaternion& b, const FbxQuaternion& c, bool first) {
    FbxQuaternion t = doubled(a, b) + c;
    t.Normalize();
    if (!first) t = doubled(t, b);
    return splineSlerp(b, t, 0.3333333333333333);
}

FbxQuaternion quaternionOfAngles(const FbxAMatrix& baseInverse, double x, double y, double z) {
    FbxAMatrix m;
    m.SetR(FbxVector4(x, y, z));
    return (baseInverse * m).GetQ();
}

// The time of key `index` of a channel, or -1 for a channel with no key there.
FbxLongLong keyTime(const FbxRotationChannel& c, int index) {
    return c.curve && index >= 0 && index < c.curve->KeyGetCount() ? c.curve->KeyGetTime(index) : -1;
}

struct Segment {
    const FbxRotationChannel* c;  // the three channels
    int i, j;                     // keys of channel 0
    int iy, jy, iz, jz;           // keys of channels 1 and 2 near the time
    FbxLongLong t1, t2;
    double d0, d1, d2;
    FbxQuaternion q0, q1, q2, q3;
    FbxAMatrix baseInverse;
};

// The tangent curve of mode 1 for a cubic key.
FbxQuaternion classicTangentCurve(const Segment& s, double u) {
    const KFCurve& cx = *s.c[0].curve;
    FbxQuaternion D0 = s.q1 - s.q0, D1 = s.q2 - s.q1, D2 = s.q3 - s.q2;
    if (s.d0 > 0.0) D0 = D0 * (1.0 / s.d0);
    if (s.d1 > 0.0) D1 = D1 * (1.0 / s.d1);
    if (s.d2 > 0.0) D2 = D2 * (1.0 / s.d2);
    const int sideKeys[3][2] = {{s.i, s.j}, {s.iy, s.jy}, {s.iz, s.jz}};

    FbxQuaternion P1;
    uint32_t word = cx.KeyGetTangentMode(s.i);
    if (word == KFCurve::eTangentTCB) {
        double t = cx.KeyGetDataFloat(s.i, 0), c = cx.KeyGetDataFloat(s.i, 1), b = cx.KeyGetDataFloat(s.i, 2);
        FbxQuaternion a = D1 * ((1.0 - b) * (1.0 - c));
        FbxQuaternion bb = s.d0 > 0.0 ? D0 * ((1.0 + b) * (1.0 + c)) : a;
        P1 = s.q1 + (a + bb) * ((1.0 - t) / 2.0 * s.d1 / 3.0);
    } else if (word & KFCurve::eTangentAuto) {
        double m = cx.RightBias(s.i);
        for (int k = 1; k < 3; ++k) {
            int key = sideKeys[k][0];
            if (key > 0 && keyTime(s.c[k], key) == s.t1) m += s.c[k].curve->RightBias(key);
        }
        m /= 3.0;
        FbxQuaternion R;
        for (int e = 0; e < 4; ++e) R[e] = KFCurve::BiasedSlope(m, D0[e], D1[e], true);
        P1 = s.q1 + R * (s.d1 / 3.0);
    } else {
        double r[3];
        r[0] = cx.RightControl(s.i);
        for (int k = 1; k < 3; ++k) {
            int key = sideKeys[k][0];
            r[k] = keyTime(s.c[k], key) == s.t1 ? s.c[k].curve->RightControl(key)
                                                : evaluate(s.c[k], s.t1 + (s.t2 - s.t1) / 3);
        }
        P1 = quaternionOfAngles(s.baseInverse, r[0], r[1], r[2]);
    }

    FbxQuaternion P2;
    word = cx.KeyGetTangentMode(s.j);
    if (word == KFCurve::eTangentTCB) {
        double t = cx.KeyGetDataFloat(s.j, 0), c = cx.KeyGetDataFloat(s.j, 1), b = cx.KeyGetDataFloat(s.j, 2);
        FbxQuaternion a = D1 * ((1.0 - c) * (1.0 + b));
        FbxQuaternion bb = s.d2 > 0.0 ? D2 * ((1.0 + c) * (1.0 - b)) : a;
        P2 = s.q2 - (a + bb) * ((1.0 - t) / 2.0 * s.d1 / 3.0);
    } else if (word & KFCurve::eTangentAuto) {
        double bx = cx.LeftBias(s.j), m = bx;
        for (int k = 1; k < 3; ++k) {
            int key = sideKeys[k][1];
            const KFCurve* curve = s.c[k].curve;
            bool there = curve && key < curve->KeyGetCount() - 1 && keyTime(s.c[k], key) == s.t2;
            m += there ? curve->LeftBias(key) : bx;
        }
        m /= 3.0;
        FbxQuaternion L;
        for (int e = 0; e < 4; ++e) L[e] = KFCurve::BiasedSlope(m, D1[e], D2[e], false);
        P2 = s.q2 - L * (s.d1 / 3.0);
    } else {
        double l[3];
        l[0] = cx.LeftControl(s.j);
        for (int k = 1; k < 3; ++k) {
            int key = sideKeys[k][1];
            l[k] = keyTime(s.c[k], key) == s.t2 ? s.c[k].curve->LeftControl(key)
                                                : evaluate(s.c[k], s.t2 - (s.t2 - s.t1) / 3);
        }
        P2 = quaternionOfAngles(s.baseInverse, l[0], l[1], l[2]);
    }

    FbxQuaternion P3 = s.q2;
    if (P1.DotProduct(s.q1) < 0.0) P1 = -P1;
    if (P2.DotProduct(P1) < 0.0) P2 = -P2;
    if (P3.DotProduct(P2) < 0.0) P3 = -P3;
    return bezier(s.q1, P1, P2, P3, u, lerp);
}

int floorIndex(double k) { return std::isfinite(k) ? static_cast<int>(std::floor(k)) : -1; }
int ceilIndex(double k) { return std::isfinite(k) ? static_cast<int>(std::ceil(k)) : -1; }

}  // namespace

bool EvaluateQuaternionInterpolation(int mode, const FbxRotationChannel channels[3], FbxTime time, double values[3]) {
    if (mode < 1 || mode > 4) return false;
    const KFCurve* cx = channels[0].curve;
    if (!cx || cx->KeyGetCount() < 2) return false;
    int n = cx->KeyGetCount();
    double k = cx->TimeToIndex(time.Get());
    // Curves whose keys are far outside the time range give indices that
    // are no int: they are read apart.
    if (!(k >= 0.0 && k <= n - 1)) return false;
    Segment s;
    s.c = channels;
    s.i = floorIndex(k);
    s.j = ceilIndex(k);
    if (s.i == s.j) return false;
    double ky = channels[1].curve ? channels[1].curve->TimeToIndex(time.Get()) : -1.0;
    double kz = channels[2].curve ? channels[2].curve->TimeToIndex(time.Get()) : -1.0;
    s.iy = floorIndex(ky);
    s.jy = ceilIndex(ky);
    s.iz = floorIndex(kz);
    s.jz = ceilIndex(kz);

    uint32_t interpolation = cx->KeyGetInterpolation(s.i);
    bool constant = interpolation == KFCurve::eInterpolationConstant;
    if (mode == 1 && interpolation != KFCurve::eInterpolationLinear && interpolation != KFCurve::eInterpolationCubic)
        return false;

    s.t1 = cx->KeyGetTime(s.i);
    s.t2 = cx->KeyGetTime(s.j);
    FbxLongLong step = saturatedSub(s.t2, s.t1);
    bool hasBefore = s.i > 0, hasAfter = s.j + 1 < n;
    FbxLongLong t0 = hasBefore ? cx->KeyGetTime(s.i - 1) : saturatedSub(s.t1, step);
    FbxLongLong t3 = hasAfter ? cx->KeyGetTime(s.j + 1) : saturatedAdd(s.t2, step);
    s.d0 = seconds(t0, s.t1);
    s.d1 = seconds(s.t1, s.t2);
    s.d2 = seconds(s.t2, t3);

    const FbxLongLong times[4] = {t0, s.t1, s.t2, t3};
    FbxAMatrix m[4];
    for (int n2 = 0; n2 < 4; ++n2)
        m[n2] = RotationXYZ(FbxVector4(evaluate(channels[0], times[n2]), evaluate(channels[1], times[n2]),
                                       evaluate(channels[2], times[n2])));
    FbxAMatrix base = m[1];
    s.baseInverse = base.Inverse();
    for (FbxAMatrix& mn : m) mn = s.baseInverse * mn;
    if (mode == 1) {
        if (!hasBefore) m[0] = m[2].Inverse();
        if (!hasAfter) m[3] = m[2] * m[2];
    }
    s.q0 = m[0].GetQ();
    s.q1 = m[1].GetQ();
    s.q2 = m[2].GetQ();
    s.q3 = m[3].GetQ();
    if (s.q0.DotProduct(s.q1) < 0.0) s.q1 = -s.q1;
    if (s.q1.DotProduct(s.q2) < 0.0) s.q2 = -s.q2;
    if (s.q3.DotProduct(s.q2) < 0.0) s.q3 = -s.q3;

    double u = k - s.i;
    FbxQuaternion q;
    switch (mode) {
    case 1:
        q = interpolation == KFCurve::eInterpolationLinear ? lerp(s.q1, s.q2, u) : classicTangentCurve(s, u);
        break;
    case 2:
        q = splineSlerp(s.q1, s.q2, u);
        break;
    default:
        if (mode == 4 && constant) {
            q = (cx->KeyGetFlags(s.i) & KFCurve::eConstantNext) ? s.q2 : s.q1;
        } else {
            FbxQuaternion a = controlPoint(s.q0, s.q1, s.q2, true);
            FbxQuaternion b = controlPoint(s.q1, s.q2, s.q3, false);
            q = bezier(s.q1, a, b, s.q2, u, splineSlerp);
        }
        break;
    }
    FbxAMatrix rotation;
    rotation.SetQ(q);
    FbxVector4 angles = AnglesXYZ(base * rotation);
    for (int e = 0; e < 3; ++e) values[e] = angles[e];
    return true;
}
