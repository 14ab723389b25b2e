#include "fbx/model/fbx_kfcurve.h"

#include <gtest/gtest.h>

#include <cmath>
#include <initializer_list>
#include <limits>
#include <utility>

namespace {

constexpr FbxLongLong kSecond = FbxTime::kTicksPerSecond;
constexpr uint32_t kCubic = KFCurve::eInterpolationCubic;
constexpr uint32_t kLinear = KFCurve::eInterpolationLinear;
constexpr uint32_t kConstant = KFCurve::eInterpolationConstant;

FbxLongLong at(double seconds) { return FbxTime::FromSeconds(seconds).Get(); }

// Keys (seconds, value), all with `flags`.
void fill(KFCurve& curve, std::initializer_list<std::pair<double, float>> keys, uint32_t flags) {
    for (const auto& [seconds, value] : keys) curve.KeyAdd(at(seconds), value, flags);
}

// The cubic through (0, p0) and (dt, p3) with slopes r and l at its ends.
double hermite(double p0, double p3, double r, double l, double dt, double u) {
    double u2 = u * u, u3 = u2 * u;
    return (2 * u3 - 3 * u2 + 1) * p0 + (u3 - 2 * u2 + u) * dt * r + (-2 * u3 + 3 * u2) * p3 + (u3 - u2) * dt * l;
}

TEST(FbxTime, SecondsRoundByAHundredthOfATickAndModesGiveRates) {
    EXPECT_EQ(FbxTime::FromSeconds(0.5).Get(), 23093079000);
    EXPECT_EQ(FbxTime::FromSeconds(-0.5).Get(), -23093079000);
    EXPECT_EQ(FbxTime(46186158000).GetSecondDouble(), 1.0);
    // 1/60 s is 769769300 ticks exactly; the rounding term keeps the
    // product's error from truncating it to one less.
    EXPECT_EQ(FbxTime::FromSeconds(1.0 / 60.0).Get(), 769769300);
    EXPECT_EQ(FbxTime::FromSeconds(1e300).Get(), FbxTime::kInfinite);
    EXPECT_EQ(FbxTime::FromSeconds(std::nan("")).Get(), 0);
    EXPECT_EQ(FbxTime::GetFrameRate(FbxTime::eFrames24), 24.0);
    EXPECT_EQ(FbxTime::GetFrameRate(FbxTime::eDefaultMode), 30.0);
    EXPECT_EQ(FbxTime::GetFrameRate(FbxTime::eFrames30Drop), 30.0);
    EXPECT_EQ(FbxTime::GetFrameRate(FbxTime::eCustom), 12.5);
    EXPECT_EQ(FbxTime::GetFrameRate(FbxTime::eCustom, 40.0), 40.0);
    EXPECT_EQ(FbxTime::GetFrameRate(FbxTime::eCustom, 7.0), 12.5);  // no whole tenths of a tick
    EXPECT_STREQ(FbxTime::GetModeName(FbxTime::eFrames59dot94), "Frames5994");
    EXPECT_EQ(FbxTime::FromSeconds(2.0).GetFrameCount(FbxTime::eFrames60), 120);
}

TEST(KFCurve, CurvesWithoutKeysOrWithOneKey) {
    KFCurve curve;
    curve.SetDefaultValue(4.5f);
    EXPECT_EQ(curve.Evaluate(at(-3)), 4.5f);
    EXPECT_EQ(curve.Evaluate(FbxTime::kInfinite), 4.5f);
    FbxTimeSpan span{FbxTime(7), FbxTime(8)};
    EXPECT_FALSE(curve.GetTimeInterval(span));

    fill(curve, {{1.0, 2.0f}}, kCubic | KFCurve::eTangentAuto);
    for (uint32_t mode : {KFCurve::eRepetition, KFCurve::eMirrorRepetition, KFCurve::eKeepSlope}) {
        curve.SetPreExtrapolation(mode, 3);
        curve.SetPostExtrapolation(mode, KFCurve::kUnlimitedCount);
        for (double t : {-5.0, 1.0, 1.5, 100.0}) EXPECT_EQ(curve.Evaluate(at(t)), 2.0f) << t;
    }
    EXPECT_FALSE(curve.GetTimeInterval(span));
    EXPECT_EQ(span.start, FbxTime(7));  // untouched
}

TEST(KFCurve, LinearAndConstantSegments) {
    KFCurve linear;
    fill(linear, {{0.0, 0.0f}, {1.0, 10.0f}}, kLinear);
    EXPECT_FLOAT_EQ(linear.Evaluate(at(0.25)), 2.5f);
    EXPECT_EQ(linear.Evaluate(at(-1)), 0.0f);  // constant before and after
    EXPECT_EQ(linear.Evaluate(at(2)), 10.0f);
    FbxTimeSpan span;
    ASSERT_TRUE(linear.GetTimeInterval(span));
    EXPECT_EQ(span.stop.Get(), kSecond);

    KFCurve constant;
    fill(constant, {{0.0, 1.0f}, {1.0, 5.0f}}, kConstant);
    EXPECT_EQ(constant.Evaluate(at(0.01)), 1.0f);
    constant.KeySetFlags(0, kConstant | KFCurve::eConstantNext);
    EXPECT_EQ(constant.Evaluate(at(0.01)), 5.0f);
    EXPECT_EQ(constant.Evaluate(0), 1.0f);  // on the key itself
}

TEST(KFCurve, CubicUserSlopesFollowTheHermiteCurve) {
    KFCurve curve;
    fill(curve, {{0.0, 0.0f}, {1.0, 1.0f}}, kCubic | KFCurve::eTangentUser);
    curve.KeySetSlopes(0, 0.0f, 0.0f);
    EXPECT_FLOAT_EQ(curve.Evaluate(at(0.5)), 0.5f);

    KFCurve sloped;
    fill(sloped, {{1.0, 1.0f}, {3.0, -2.0f}}, kCubic | KFCurve::eTangentUser);
    sloped.KeySetSlopes(0, 2.0f, -1.5f);
    EXPECT_EQ(sloped.KeyGetRightDerivative(0), 2.0);
    EXPECT_EQ(sloped.KeyGetLeftDerivative(1), -1.5);
    for (double u : {0.1, 0.37, 0.5, 0.9})
        EXPECT_NEAR(sloped.Evaluate(at(1 + 2 * u)), hermite(1, -2, 2, -1.5, 2, u), 1e-5) << u;
}

TEST(KFCurve, AutoTangentsBlendTheChordsByTheirBias) {
    KFCurve curve;
    const uint32_t autoFlags = kCubic | KFCurve::eTangentAuto;
    fill(curve, {{0.0, 0.0f}, {1.0, 2.0f}, {3.0, 0.0f}}, autoFlags);
    // Chords 2 and -1 around key 1: bias 0 takes their mean, +-100 one of
    // them; the end keys take their one chord.
    EXPECT_DOUBLE_EQ(curve.KeyGetRightDerivative(1), 0.5);
    EXPECT_DOUBLE_EQ(curve.KeyGetLeftDerivative(1), 0.5);
    EXPECT_DOUBLE_EQ(curve.KeyGetRightDerivative(0), 2.0);
    EXPECT_DOUBLE_EQ(curve.KeyGetLeftDerivative(2), -1.0);
    for (double u : {0.25, 0.5, 0.75})
        EXPECT_NEAR(curve.Evaluate(at(1 + 2 * u)), hermite(2, 0, 0.5, -1, 2, u), 1e-5) << u;
    curve.KeySetDataFloat(1, 0, 100.0f);  // right bias of key 1
    EXPECT_DOUBLE_EQ(curve.KeyGetRightDerivative(1), -1.0);
    curve.KeySetDataFloat(0, 1, -100.0f);  // next-left bias of key 0, for key 1
    EXPECT_DOUBLE_EQ(curve.KeyGetLeftDerivative(1), -1.0);
    EXPECT_DOUBLE_EQ(KFCurve::BiasedSlope(50.0, 2.0, -1.0, true), -0.25);
    // Beyond 500 a term pushes away from the steeper chord.
    EXPECT_DOUBLE_EQ(KFCurve::BiasedSlope(600.0, 2.0, -1.0, true), -8.5 - 40.0);

    // Clamped: a neighbour of the same value flattens both sides, or only
    // its own side when the tangent is broken.
    KFCurve clamped;
    fill(clamped, {{0.0, 1.0f}, {1.0, 1.00005f}, {2.0, 3.0f}}, autoFlags | KFCurve::eTangentGenericClamp);
    EXPECT_EQ(clamped.KeyGetRightDerivative(1), 0.0);
    EXPECT_EQ(clamped.KeyGetLeftDerivative(1), 0.0);
    clamped.KeySetFlags(1, autoFlags | KFCurve::eTangentGenericClamp | KFCurve::eTangentGenericBreak);
    clamped.KeySetFlags(0, autoFlags | KFCurve::eTangentGenericClamp | KFCurve::eTangentGenericBreak);
    EXPECT_EQ(clamped.KeyGetLeftDerivative(1), 0.0);
    EXPECT_NEAR(clamped.KeyGetRightDerivative(1), (0.00005 + 1.99995) / 2, 1e-4);

    // Time independent with no bias: the chord across the key.
    KFCurve across;
    fill(across, {{0.0, 0.0f}, {1.0, 2.0f}, {4.0, 4.0f}}, autoFlags | KFCurve::eTangentGenericTimeIndependent);
    EXPECT_DOUBLE_EQ(across.KeyGetRightDerivative(1), 1.0);
    // Progressive clamp: the smallest of three times the chords and the
    // chord across, and 0 where they change sign.
    KFCurve progressive;
    fill(progressive, {{0.0, 0.0f}, {1.0, 1.0f}, {2.0, 4.0f}, {3.0, 0.0f}},
         autoFlags | KFCurve::eTangentGenericClampProgressive);
    EXPECT_DOUBLE_EQ(progressive.KeyGetRightDerivative(1), 2.0);
    EXPECT_EQ(progressive.KeyGetRightDerivative(2), 0.0);
}

TEST(KFCurve, TCBTangents) {
    KFCurve curve;
    fill(curve, {{0.0, 0.0f}, {1.0, 2.0f}, {3.0, 0.0f}}, kCubic | KFCurve::eTangentTCB);
    for (int i = 0; i < 3; ++i) curve.KeySetTCB(i, 0.0f, 0.0f, 0.0f);
    EXPECT_DOUBLE_EQ(curve.KeyGetRightDerivative(1), 0.5);  // Catmull-Rom: the chords' mean
    EXPECT_DOUBLE_EQ(curve.KeyGetRightDerivative(0), 2.0);
    EXPECT_DOUBLE_EQ(curve.KeyGetLeftDerivative(2), -1.0);
    curve.KeySetTCB(1, 1.0f, 0.0f, 0.0f);  // full tension
    EXPECT_EQ(curve.KeyGetRightDerivative(1), 0.0);
    curve.KeySetTCB(1, 0.0f, 0.0f, 1.0f);  // full bias: the left chord
    EXPECT_DOUBLE_EQ(curve.KeyGetRightDerivative(1), 2.0);
    EXPECT_DOUBLE_EQ(curve.KeyGetLeftDerivative(1), 2.0);
}

// The parameter s at which the weighted Bezier's time reaches u, by
// bisection: a second way to the same point.
double bisect(double wr, double wl, double u) {
    auto x = [&](double s) {
        double t = 1 - s;
        return 3 * t * t * s * wr + 3 * t * s * s * (1 - wl) + s * s * s;
    };
    double lo = 0, hi = 1;
    for (int i = 0; i < 60; ++i) (x((lo + hi) / 2) < u ? lo : hi) = (lo + hi) / 2;
    return (lo + hi) / 2;
}

TEST(KFCurve, WeightedTangentsBendTheSegmentInTime) {
    KFCurve curve;
    fill(curve, {{0.0, 0.0f}, {2.0, 1.0f}}, kCubic | KFCurve::eTangentUser);
    curve.KeySetSlopes(0, 3.0f, -1.0f);
    float plain = curve.Evaluate(at(0.6));
    curve.KeySetWeights(0, 1.0 / 3.0, 1.0 / 3.0);
    EXPECT_NEAR(curve.Evaluate(at(0.6)), plain, 1e-4);  // stored as 3333

    curve.KeySetWeights(0, 0.6, 0.1);
    EXPECT_NEAR(curve.KeyGetRightWeight(0), 5999 / 9999.0, 1e-12);
    EXPECT_NEAR(curve.KeyGetNextLeftWeight(0), 1000 / 9999.0, 1e-12);
    for (double u : {0.1, 0.3, 0.5, 0.8}) {
        double wr = curve.KeyGetRightWeight(0), wl = curve.KeyGetNextLeftWeight(0);
        double s = bisect(wr, wl, u), t = 1 - s;
        double p1 = 3.0 * 2 * wr, p2 = 1 - (-1.0) * 2 * wl;
        double expected = 3 * t * t * s * p1 + 3 * t * s * s * p2 + s * s * s;
        EXPECT_NEAR(curve.Evaluate(at(2 * u)), expected, 1e-5) << u;
    }
    // A right weight needs a cubic key with a tangent of its own.
    curve.KeySetFlags(0, kCubic | KFCurve::eTangentTCB | KFCurve::eWeightedRight);
    EXPECT_NEAR(curve.KeyGetRightWeight(0), 1.0 / 3.0, 1e-7);
    curve.KeySetDataWord(0, 2, 9999);
    curve.KeySetFlags(0, kCubic | KFCurve::eTangentUser | KFCurve::eWeightedRight);
    EXPECT_EQ(curve.KeyGetRightWeight(0), 1.0);
}

TEST(KFCurve, VelocitiesAreKeptAndChangeNothing) {
    KFCurve curve;
    fill(curve, {{0.0, 0.0f}, {1.0, 3.0f}, {2.0, 1.0f}}, kCubic | KFCurve::eTangentAuto);
    float before = curve.Evaluate(at(0.4));
    curve.KeySetVelocities(0, 0.5, 0.25);
    EXPECT_EQ(curve.KeyGetDataWord(0, 3), 5000u | (2500u << 16));
    EXPECT_TRUE(curve.KeyGetFlags(0) & KFCurve::eVelocityRight);
    EXPECT_EQ(curve.Evaluate(at(0.4)), before);
}

TEST(KFCurve, ExtrapolationBeforeAndAfterTheKeys) {
    KFCurve curve;
    fill(curve, {{0.0, 0.0f}, {1.0, 4.0f}}, kLinear);
    auto value = [&](double t) { return curve.Evaluate(at(t)); };
    curve.SetPostExtrapolation(KFCurve::eRepetition, 2);
    EXPECT_FLOAT_EQ(value(1.25), value(0.25));
    EXPECT_FLOAT_EQ(value(2.5), value(0.5));
    EXPECT_EQ(value(3.5), 4.0f);  // beyond two repetitions
    curve.SetPostExtrapolation(KFCurve::eMirrorRepetition, 2);
    EXPECT_FLOAT_EQ(value(1.25), 3.0f);  // the value at 0.75
    EXPECT_FLOAT_EQ(value(2.25), 1.0f);  // the value at 0.25
    curve.SetPreExtrapolation(KFCurve::eRepetition, KFCurve::kUnlimitedCount);
    EXPECT_FLOAT_EQ(value(-0.25), 3.0f);
    EXPECT_FLOAT_EQ(value(-1000.25), 3.0f);
    curve.SetPreExtrapolation(KFCurve::eMirrorRepetition, 5);
    EXPECT_FLOAT_EQ(value(-0.25), 1.0f);
    EXPECT_FLOAT_EQ(value(-1.25), 3.0f);
    curve.SetPreExtrapolation(KFCurve::eRepetition, 0);  // a count of 0 is constant
    EXPECT_EQ(value(-0.25), 0.0f);

    curve.SetPostExtrapolation(KFCurve::eKeepSlope, 0);
    EXPECT_EQ(value(3), 4.0f);
    curve.SetPostExtrapolation(KFCurve::eKeepSlope, 1);
    EXPECT_FLOAT_EQ(value(1.5), 6.0f);
    EXPECT_FLOAT_EQ(value(7), 8.0f);  // one period at most
    curve.SetPreExtrapolation(KFCurve::eKeepSlope, KFCurve::kUnlimitedCount);
    EXPECT_FLOAT_EQ(value(-2), -8.0f);
    // Times at the ends of the tick range go through without overflow.
    for (uint32_t mode :
         {KFCurve::eRepetition, KFCurve::eMirrorRepetition, KFCurve::eKeepSlope, KFCurve::eExtrapolationNone}) {
        curve.SetPreExtrapolation(mode, KFCurve::kUnlimitedCount);
        curve.SetPostExtrapolation(mode, KFCurve::kUnlimitedCount);
        EXPECT_FALSE(std::isnan(curve.Evaluate(FbxTime::kInfinite))) << mode;
        EXPECT_FALSE(std::isnan(curve.Evaluate(std::numeric_limits<FbxLongLong>::min()))) << mode;
    }
}

TEST(KFCurve, BadKeyArraysStayDefined) {
    // What a damaged file can give: times out of order and repeated, a value
    // that is no number, keys without attributes.
    KFCurve curve;
    curve.Resize(6);
    const double times[] = {0.0, 3.0, 1.0, 1.0, 2.0, 2.5};
    const float values[] = {1.0f, 2.0f, std::nanf(""), 4.0f, 5.0f, 6.0f};
    KFCurve::KeyAttribute* cubic = curve.NewAttribute(kCubic | KFCurve::eTangentAuto);
    for (int i = 0; i < 6; ++i) {
        curve.KeySetTime(i, at(times[i]));
        curve.KeySetValue(i, values[i]);
        if (i % 2 == 0) curve.KeySetAttribute(i, cubic);
    }
    EXPECT_EQ(cubic->refCount, 3);
    int cache = 4;
    for (double t = -2.0; t <= 4.0; t += 0.125) {
        double k = curve.TimeToIndex(at(t), &cache);
        EXPECT_TRUE(k >= -0.5 && k <= 5.5) << t;
        EXPECT_TRUE(cache >= 0 && cache <= 6) << t;
        curve.Evaluate(at(t));
        curve.Evaluate(at(t), &cache);
    }
    for (int i = 0; i < 6; ++i) {
        curve.KeyGetLeftDerivative(i);
        curve.KeyGetRightDerivative(i);
    }
    EXPECT_EQ(curve.KeyGetRightDerivative(9), 0.0);
    EXPECT_EQ(curve.EvaluateIndex(std::nan("")), 1.0f);  // key 0
    EXPECT_EQ(curve.EvaluateIndex(1e30), 6.0f);          // the last key
    curve.Resize(2);
    EXPECT_EQ(cubic->refCount, 1);
}

TEST(KFCurve, TheSearchStartChangesNoValue) {
    KFCurve curve;
    for (int i = 0; i < 100; ++i)
        curve.KeyAdd(at(i * 0.1), static_cast<float>(std::sin(i * 0.3)), kCubic | KFCurve::eTangentAuto);
    int cache = 0;
    for (int step = 0; step < 400; ++step) {
        double t = step * 0.0257;
        int scrambled = (step * 37) % 100;
        EXPECT_EQ(curve.Evaluate(at(t), &cache), curve.Evaluate(at(t), &scrambled)) << t;
    }
    for (int step = 400; step >= 0; --step)
        EXPECT_EQ(curve.Evaluate(at(step * 0.0257), &cache), curve.Evaluate(at(step * 0.0257)));
}

TEST(KFCurve, ScalingValuesAndTangentsScalesTheCurve) {
    // Every tangent kind in one curve, a run of keys sharing one attribute.
    KFCurve curve;
    fill(curve, {{0.0, 0.0f}, {0.5, 1.0f}, {1.0, 3.0f}, {1.5, 2.0f}, {2.0, -1.0f}, {3.0, 0.5f}, {3.5, 2.0f}},
         kCubic | KFCurve::eTangentUser);
    curve.KeySetSlopes(0, 1.5f, -2.0f);
    curve.KeySetFlags(1, kCubic | KFCurve::eTangentAuto);
    curve.KeySetDataFloat(1, 0, 30.0f);
    curve.KeySetFlags(2, kCubic | KFCurve::eTangentTCB);
    curve.KeySetTCB(2, 0.2f, -0.3f, 0.1f);
    curve.KeySetFlags(3, kCubic | KFCurve::eTangentBreak);
    curve.KeySetSlopes(3, 4.0f, 0.5f);
    curve.KeySetFlags(4, kLinear);
    KFCurve::KeyAttribute* shared = curve.NewAttribute(kCubic | KFCurve::eTangentUser);
    shared->SetFloat(0, 1.0f);
    shared->SetFloat(1, -1.0f);
    curve.KeySetAttribute(5, shared);
    curve.KeySetAttribute(6, shared);

    KFCurve scaled;
    scaled.CopyFrom(curve);
    EXPECT_EQ(scaled.KeyGet(5).attribute, scaled.KeyGet(6).attribute);  // sharing kept
    const float factor = -2.5f;
    scaled.KeyModifyBegin();
    for (int i = 0; i < scaled.KeyGetCount(); ++i) {
        scaled.KeyMultValue(i, factor);
        scaled.KeyMultTangent(i, factor);
    }
    scaled.KeyModifyEnd();
    for (double t = -0.5; t <= 4.0; t += 0.05)
        EXPECT_NEAR(scaled.Evaluate(at(t)), factor * curve.Evaluate(at(t)), 1e-4) << t;
    EXPECT_EQ(shared->GetFloat(0), 1.0f);  // the original stays
}

}  // namespace
