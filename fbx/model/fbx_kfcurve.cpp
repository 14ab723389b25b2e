#include "fbx/model/fbx_kfcurve.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <limits>
#include <map>

namespace {

constexpr FbxLongLong kMaxTicks = std::numeric_limits<FbxLongLong>::max();
constexpr FbxLongLong kMinTicks = std::numeric_limits<FbxLongLong>::min();
constexpr double kTicks = static_cast<double>(FbxTime::kTicksPerSecond);
// The weight of a tangent whose weight is not stored: 1/3 as a float.
constexpr double kDefaultWeight = static_cast<double>(1.0f / 3.0f);
constexpr double kWeightScale = 9999.0;

FbxLongLong saturatedAdd(FbxLongLong a, FbxLongLong b) {
    FbxLongLong r;
    if (__builtin_add_overflow(a, b, &r)) return b > 0 ? kMaxTicks : kMinTicks;
    return r;
}

FbxLongLong saturatedSub(FbxLongLong a, FbxLongLong b) {
    FbxLongLong r;
    if (__builtin_sub_overflow(a, b, &r)) return b < 0 ? kMaxTicks : kMinTicks;
    return r;
}

// period * count for a positive period; the unlimited count saturates.
FbxLongLong repeatSpan(FbxLongLong period, uint32_t count) {
    if (count == KFCurve::kUnlimitedCount) return kMaxTicks;
    FbxLongLong r;
    if (__builtin_mul_overflow(period, static_cast<FbxLongLong>(count), &r)) return kMaxTicks;
    return r;
}

double secondsOf(FbxLongLong ticks) { return static_cast<double>(ticks) / kTicks; }

double lerp(double a, double b, double u) { return a + (b - a) * u; }

// The cubic Bezier of four control values at u, by de Casteljau.
double bezier(double p0, double p1, double p2, double p3, double u) {
    double a = lerp(p0, p1, u), b = lerp(p1, p2, u), c = lerp(p2, p3, u);
    double d = lerp(a, b, u), e = lerp(b, c, u);
    return lerp(d, e, u);
}

// The parameter s at which the Bezier of 0, wr, 1 - wl, 1 reaches u, by the
// secant method from the ends of [0, 1].
double weightedParameter(double wr, double wl, double u) {
    auto residual = [&](double s) { return bezier(0.0, wr, 1.0 - wl, 1.0, s) - u; };
    double prev = 1.0, fPrev = residual(1.0);
    double cur = 0.0, fCur = residual(0.0);
    if (std::fabs(fPrev) < std::fabs(fCur)) {
        std::swap(prev, cur);
        std::swap(fPrev, fCur);
    }
    for (int step = 0; step < 15; ++step) {
        if (fCur == 0.0 || fCur == fPrev) break;
        double next = cur - fCur * (cur - prev) / (fCur - fPrev);
        prev = cur;
        fPrev = fCur;
        cur = next;
        fCur = residual(cur);
        if (!(std::fabs(cur - prev) >= 1e-6)) break;
    }
    return cur;
}

uint16_t toWeightHalf(double fraction) {
    double clamped = std::clamp(fraction == fraction ? fraction : 0.0, 0.0, 1.0);
    return static_cast<uint16_t>(std::lround(clamped * kWeightScale));
}

bool isCubic(uint32_t flags) { return (flags & KFCurve::eInterpolationMask) == KFCurve::eInterpolationCubic; }
bool isAutoWord(uint32_t word) { return word == KFCurve::eTangentAuto || word == KFCurve::eTangentAutoBreak; }
bool isUserWord(uint32_t word) { return word == KFCurve::eTangentUser || word == KFCurve::eTangentBreak; }

}  // namespace

float KFCurve::KeyAttribute::GetFloat(int word) const {
    return word >= 0 && word < 4 ? std::bit_cast<float>(data[word]) : 0.0f;
}

void KFCurve::KeyAttribute::SetFloat(int word, float value) {
    if (word >= 0 && word < 4) data[word] = std::bit_cast<uint32_t>(value);
}

KFCurve::KFCurve() = default;
KFCurve::~KFCurve() = default;

void KFCurve::CopyFrom(const KFCurve& other) {
    if (&other == this) return;
    Clear();
    std::map<const KeyAttribute*, KeyAttribute*> copies;  // lookup only
    for (const KeyAttribute& a : other.attributes_) copies[&a] = NewAttribute(a.flags, a.data);
    Resize(other.keyCount_);
    for (int i = 0; i < keyCount_; ++i) {
        const Key& from = other.KeyGet(i);
        Key& to = KeyAt(i);
        to.time = from.time;
        to.value = from.value;
        if (from.attribute) KeySetAttribute(i, copies[from.attribute]);
    }
    defaultValue_ = other.defaultValue_;
    preExtrapolation_ = other.preExtrapolation_;
    preCount_ = other.preCount_;
    postExtrapolation_ = other.postExtrapolation_;
    postCount_ = other.postCount_;
}

// Keys ----------------------------------------------------------------------

FbxLongLong KFCurve::KeyGetTime(int index) const { return InRange(index) ? KeyGet(index).time : -1; }

float KFCurve::KeyGetValue(int index) const { return InRange(index) ? KeyGet(index).value : 0.0f; }

uint32_t KFCurve::KeyGetFlags(int index) const {
    if (!InRange(index)) return 0;
    const KeyAttribute* a = KeyGet(index).attribute;
    return a ? a->flags : 0;
}

uint32_t KFCurve::KeyGetDataWord(int index, int word) const {
    if (!InRange(index) || word < 0 || word > 3) return 0;
    const KeyAttribute* a = KeyGet(index).attribute;
    return a ? a->data[word] : 0;
}

float KFCurve::KeyGetDataFloat(int index, int word) const { return std::bit_cast<float>(KeyGetDataWord(index, word)); }

double KFCurve::KeyGetRightWeight(int index) const {
    uint32_t flags = KeyGetFlags(index);
    bool inForce = (flags & eWeightedRight) && isCubic(flags) &&
                   (flags & (eTangentAuto | eTangentUser | eTangentGenericBreak)) && index < keyCount_ - 1;
    return inForce ? (KeyGetDataWord(index, 2) & 0xFFFF) / kWeightScale : kDefaultWeight;
}

double KFCurve::KeyGetNextLeftWeight(int index) const {
    return (KeyGetFlags(index) & eWeightedNextLeft) ? (KeyGetDataWord(index, 2) >> 16) / kWeightScale : kDefaultWeight;
}

// Building and editing --------------------------------------------------------

void KFCurve::Clear() {
    blocks_.clear();
    attributes_.clear();
    keyCount_ = 0;
    defaultValue_ = 0.0f;
    lastIndex_ = 0;
}

void KFCurve::Resize(int count) {
    count = std::max(count, 0);
    for (int i = count; i < keyCount_; ++i) KeySetAttribute(i, nullptr);
    size_t blocks = (static_cast<size_t>(count) + kKeysPerBlock - 1) / kKeysPerBlock;
    if (blocks < blocks_.size()) blocks_.resize(blocks);
    blocks_.reserve(blocks);
    while (blocks_.size() < blocks) blocks_.push_back(std::make_unique<Block>());
    for (int i = keyCount_; i < count; ++i) KeyAt(i) = Key();
    keyCount_ = count;
    lastIndex_ = 0;
}

KFCurve::KeyAttribute* KFCurve::NewAttribute(uint32_t flags, const uint32_t data[4]) {
    KeyAttribute& a = attributes_.emplace_back();
    a.flags = flags;
    if (data) std::copy(data, data + 4, a.data);
    return &a;
}

void KFCurve::KeySetAttribute(int index, KeyAttribute* attribute) {
    if (!InRange(index)) return;
    Key& key = KeyAt(index);
    if (key.attribute == attribute) return;
    if (key.attribute) --key.attribute->refCount;
    key.attribute = attribute;
    if (attribute) ++attribute->refCount;
}

KFCurve::KeyAttribute* KFCurve::OwnAttribute(int index) {
    KeyAttribute* a = KeyAt(index).attribute;
    if (a && a->refCount == 1) return a;
    KeyAttribute* own = a ? NewAttribute(a->flags, a->data) : NewAttribute(0);
    KeySetAttribute(index, own);
    return own;
}

int KFCurve::KeyAdd(FbxLongLong time, float value, uint32_t flags) {
    // The first key not before `time`.
    int lo = 0, hi = keyCount_;
    while (lo < hi) {
        int mid = lo + (hi - lo) / 2;
        if (KeyGet(mid).time < time)
            lo = mid + 1;
        else
            hi = mid;
    }
    if (lo < keyCount_ && KeyGet(lo).time == time) {
        KeyAt(lo).value = value;
        return lo;
    }
    Resize(keyCount_ + 1);
    for (int i = keyCount_ - 1; i > lo; --i) KeyAt(i) = KeyGet(i - 1);
    KeyAt(lo) = Key{time, nullptr, value};
    KeySetAttribute(lo, NewAttribute(flags));
    return lo;
}

void KFCurve::KeySetFlags(int index, uint32_t flags) {
    if (InRange(index)) OwnAttribute(index)->flags = flags;
}

void KFCurve::KeySetInterpolation(int index, uint32_t interpolation) {
    if (InRange(index))
        KeySetFlags(index, (KeyGetFlags(index) & ~eInterpolationMask) | (interpolation & eInterpolationMask));
}

void KFCurve::KeySetTangentMode(int index, uint32_t tangentMode) {
    constexpr uint32_t kTangentBits = eTangentMask | eTangentGenericClampProgressive;
    if (InRange(index)) KeySetFlags(index, (KeyGetFlags(index) & ~kTangentBits) | (tangentMode & kTangentBits));
}

void KFCurve::KeySetDataWord(int index, int word, uint32_t bits) {
    if (InRange(index) && word >= 0 && word < 4) OwnAttribute(index)->data[word] = bits;
}

void KFCurve::KeySetDataFloat(int index, int word, float value) {
    KeySetDataWord(index, word, std::bit_cast<uint32_t>(value));
}

void KFCurve::KeySetTCB(int index, float tension, float continuity, float bias) {
    KeySetDataFloat(index, 0, tension);
    KeySetDataFloat(index, 1, continuity);
    KeySetDataFloat(index, 2, bias);
}

void KFCurve::KeySetWeights(int index, double right, double nextLeft) {
    if (!InRange(index)) return;
    KeyAttribute* a = OwnAttribute(index);
    a->data[2] = toWeightHalf(right) | static_cast<uint32_t>(toWeightHalf(nextLeft)) << 16;
    a->flags |= eWeightedMask;
}

void KFCurve::KeySetVelocities(int index, double right, double nextLeft) {
    if (!InRange(index)) return;
    KeyAttribute* a = OwnAttribute(index);
    a->data[3] = toWeightHalf(right) | static_cast<uint32_t>(toWeightHalf(nextLeft)) << 16;
    a->flags |= eVelocityMask;
}

void KFCurve::KeyMultValue(int index, float factor) {
    if (InRange(index)) KeyAt(index).value *= factor;
}

void KFCurve::KeyMultTangent(int index, float factor) {
    if (!InRange(index)) return;
    uint32_t flags = KeyGetFlags(index);
    if (!isCubic(flags)) return;
    uint32_t word = flags & eTangentMask;
    // Word 0 is a slope for the user words. Word 1 is one when the next key
    // reads it as its left slope rather than as an auto bias.
    bool rightSlope = isUserWord(word);
    bool nextLeftSlope = false;
    if (word != eTangentTCB && index + 1 < keyCount_) {
        uint32_t next = KeyGetFlags(index + 1);
        uint32_t nextInterpolation = next & eInterpolationMask;
        if (nextInterpolation == eInterpolationConstant || nextInterpolation == eInterpolationLinear)
            nextLeftSlope = isUserWord(word);
        else if (nextInterpolation == eInterpolationCubic)
            nextLeftSlope = isUserWord(next & eTangentMask);
    }
    if (!rightSlope && !nextLeftSlope) return;
    KeyAttribute* a = OwnAttribute(index);
    if (rightSlope) a->SetFloat(0, a->GetFloat(0) * factor);
    if (nextLeftSlope) a->SetFloat(1, a->GetFloat(1) * factor);
}

// Evaluation ------------------------------------------------------------------

double KFCurve::Seconds(int from, int to) const {
    FbxLongLong d;
    if (__builtin_sub_overflow(KeyGet(to).time, KeyGet(from).time, &d))
        return (static_cast<double>(KeyGet(to).time) - static_cast<double>(KeyGet(from).time)) / kTicks;
    return secondsOf(d);
}

double KFCurve::ChordLeft(int index) const {
    return (static_cast<double>(KeyGet(index).value) - KeyGet(index - 1).value) / Seconds(index - 1, index);
}

double KFCurve::ChordRight(int index) const {
    return (static_cast<double>(KeyGet(index + 1).value) - KeyGet(index).value) / Seconds(index, index + 1);
}

float KFCurve::Evaluate(FbxLongLong time, int* lastIndex) const {
    if (keyCount_ >= 2) {
        FbxLongLong first = KeyGet(0).time, last = KeyGet(keyCount_ - 1).time;
        if ((preExtrapolation_ == eKeepSlope && time < first) || (postExtrapolation_ == eKeepSlope && time > last))
            return ExtrapolateSlope(time);
    }
    return EvaluateIndex(TimeToIndex(time, lastIndex));
}

float KFCurve::ExtrapolateSlope(FbxLongLong time) const {
    // The end key's value plus its slope times the distance, the distance
    // limited to the repetition count in periods.
    int n = keyCount_;
    FbxLongLong first = KeyGet(0).time, last = KeyGet(n - 1).time;
    FbxLongLong period = std::max<FbxLongLong>(saturatedSub(last, first), 0);
    if (time < first) {
        FbxLongLong limit = repeatSpan(period, preCount_);
        FbxLongLong d = time < saturatedSub(first, limit) ? -limit : saturatedSub(time, first);
        return static_cast<float>(KeyGet(0).value + secondsOf(d) * KeyGetRightDerivative(0));
    }
    FbxLongLong limit = repeatSpan(period, postCount_);
    FbxLongLong d = time > saturatedAdd(last, limit) ? limit : saturatedSub(time, last);
    return static_cast<float>(KeyGet(n - 1).value + secondsOf(d) * KeyGetLeftDerivative(n - 1));
}

double KFCurve::TimeToIndex(FbxLongLong time, int* lastIndex) const {
    int n = keyCount_;
    if (n == 0) return -1.0;
    FbxLongLong first = KeyGet(0).time, last = KeyGet(n - 1).time;
    FbxLongLong period = saturatedSub(last, first);
    FbxLongLong t = time;
    if (time < first) {
        if (preExtrapolation_ == eConstant || period <= 0) return 0.0;
        if (time <= saturatedSub(first, repeatSpan(period, preCount_))) return 0.0;
        FbxLongLong rel = saturatedSub(time, first);
        FbxLongLong q = rel / period;  // at or below 0
        FbxLongLong rem = rel - q * period;
        bool odd = (q % 2) != 0;
        if (preExtrapolation_ == eRepetition)
            t = last + rem;
        else if (preExtrapolation_ == eMirrorRepetition)
            t = odd ? last + rem : first - rem;
    } else if (time > last) {
        if (postExtrapolation_ == eConstant || period <= 0) return n - 1;
        if (saturatedAdd(last, repeatSpan(period, postCount_)) <= time) return n - 1;
        FbxLongLong rel = saturatedSub(time, last);
        FbxLongLong q = rel / period;
        FbxLongLong rem = rel - q * period;
        bool odd = (q % 2) != 0;
        if (postExtrapolation_ == eRepetition)
            t = first + rem;
        else if (postExtrapolation_ == eMirrorRepetition)
            t = odd ? first + rem : last - rem;
    }
    return KeyFind(t, lastIndex);
}

double KFCurve::KeyFind(FbxLongLong time, int* lastIndex) const {
    int n = keyCount_;
    if (n == 0) return -1.0;
    int& cache = lastIndex ? *lastIndex : lastIndex_;
    int i = std::clamp(cache, 0, n - 1);
    FbxLongLong at = KeyGet(i).time;
    if (time == at) return i;
    // Between keys the fraction is taken from a pair whose first time is at
    // or before `time` and whose second is after it, so that the pair's
    // times always differ, even in a file whose times are not in order.
    auto between = [&](int lo) {
        FbxLongLong t0 = KeyGet(lo).time, t1 = KeyGet(lo + 1).time;
        return lo + secondsOf(saturatedSub(time, t0)) / secondsOf(saturatedSub(t1, t0));
    };
    if (time > at) {
        while (i + 1 < n && KeyGet(i + 1).time <= time) ++i;
        if (i == n - 1) {
            if (KeyGet(i).time == time) {
                cache = i;
                return i;
            }
            cache = n;
            return n - 0.5;
        }
        cache = i + 1;
        return between(i);
    }
    while (i > 0 && KeyGet(i - 1).time > time) --i;
    if (i == 0) {
        cache = 0;
        return -0.5;
    }
    cache = i - 1;
    return between(i - 1);
}

float KFCurve::EvaluateIndex(double index) const {
    int n = keyCount_;
    if (n == 0) return defaultValue_;
    if (n == 1) return KeyGet(0).value;
    double k = index > 0.0 ? std::min(index, static_cast<double>(n - 1)) : 0.0;
    int i = static_cast<int>(std::floor(k));
    int j = static_cast<int>(std::ceil(k));
    if (i == j) return KeyGet(i).value;
    uint32_t flags = KeyGetFlags(i);
    switch (flags & eInterpolationMask) {
    case eInterpolationConstant:
        return (flags & eConstantNext) ? KeyGet(j).value : KeyGet(i).value;
    case eInterpolationLinear:
        return static_cast<float>(KeyGet(i).value + (static_cast<double>(KeyGet(j).value) - KeyGet(i).value) * (k - i));
    case eInterpolationCubic:
        return static_cast<float>(CubicSegment(i, k - i));
    default:
        return 0.0f;
    }
}

double KFCurve::CubicSegment(int i, double u) const {
    int j = i + 1;
    double dt = Seconds(i, j);
    double p0 = KeyGet(i).value, p3 = KeyGet(j).value;
    double r = KeyGetRightDerivative(i), l = KeyGetLeftDerivative(j);
    if (!(KeyGetFlags(i) & eWeightedMask)) return bezier(p0, p0 + r * dt / 3.0, p3 - l * dt / 3.0, p3, u);
    double wr = KeyGetRightWeight(i), wl = KeyGetNextLeftWeight(i);
    double s = weightedParameter(wr, wl, u);
    return bezier(p0, p0 + r * dt * wr, p3 - l * dt * wl, p3, s);
}

// Slopes ----------------------------------------------------------------------

double KFCurve::KeyGetRightDerivative(int index) const {
    int n = keyCount_;
    if (!InRange(index)) return 0.0;
    if (index >= n - 1) return n < 2 ? 0.0 : KeyGetLeftDerivative(index);
    const KeyAttribute* a = KeyGet(index).attribute;
    uint32_t flags = a ? a->flags : 0;
    switch (flags & eInterpolationMask) {
    case eInterpolationLinear:
        return ChordRight(index);
    case eInterpolationCubic:
        break;
    default:
        return 0.0;
    }
    uint32_t word = flags & eTangentMask;
    if (isAutoWord(word)) return AutoSlope(index, index, a->GetFloat(0), true);
    if (word == eTangentTCB) return TCBSlope(index, *a, true);
    if (isUserWord(word)) return a->GetFloat(0);
    return 0.0;
}

double KFCurve::KeyGetLeftDerivative(int index) const {
    int n = keyCount_;
    if (!InRange(index)) return 0.0;
    if (index <= 0) return n < 2 ? 0.0 : KeyGetRightDerivative(index);
    const KeyAttribute* p = KeyGet(index - 1).attribute;
    const KeyAttribute* c = KeyGet(index).attribute;
    uint32_t prevFlags = p ? p->flags : 0, flags = c ? c->flags : 0;
    switch (prevFlags & eInterpolationMask) {
    case eInterpolationLinear:
        return ChordLeft(index);
    case eInterpolationCubic:
        break;
    default:
        return 0.0;
    }
    uint32_t w = prevFlags & eTangentMask;
    bool last = index == n - 1;
    switch (flags & eInterpolationMask) {
    case eInterpolationConstant:
    case eInterpolationLinear:
        if (isAutoWord(w)) return AutoSlope(index, index - 1, p->GetFloat(1), false);
        if (isUserWord(w)) return p->GetFloat(1);
        if (w == eTangentTCB && (flags & eInterpolationMask) == eInterpolationLinear)
            return last ? 0.0 : KeyGetRightDerivative(index);
        return 0.0;
    case eInterpolationCubic:
        break;
    default:
        return 0.0;
    }
    uint32_t word = flags & eTangentMask;
    if (word == eTangentTCB) return TCBSlope(index, *c, false);
    if (word == eTangentUser) return w != eTangentTCB ? p->GetFloat(1) : (last ? 0.0 : c->GetFloat(0));
    if (word == eTangentBreak) return w != eTangentTCB ? p->GetFloat(1) : TCBSlope(index, *p, false);
    if (isAutoWord(word)) {
        double bias;
        if (w != eTangentTCB)
            bias = p->GetFloat(1);
        else if (last)
            bias = 0.0;
        else
            bias = (flags & eTangentGenericBreak) ? 100.0 : -static_cast<double>(c->GetFloat(0));
        return AutoSlope(index, index, bias, false);
    }
    return 0.0;
}

double KFCurve::TCBSlope(int at, const KeyAttribute& tcb, bool rightSide) const {
    double t = tcb.GetFloat(0), c = tcb.GetFloat(1), b = tcb.GetFloat(2);
    int n = keyCount_;
    if (rightSide) {
        if (at == 0) return (1.0 - t) * (1.0 - c) * (1.0 - b) * ChordRight(at);
        return (1.0 - t) / 2.0 * ((1.0 + c) * (1.0 + b) * ChordLeft(at) + (1.0 - c) * (1.0 - b) * ChordRight(at));
    }
    if (at == n - 1) return (1.0 - t) * (1.0 - c) * (1.0 + b) * ChordLeft(at);
    return (1.0 - t) / 2.0 * ((1.0 - c) * (1.0 + b) * ChordLeft(at) + (1.0 + c) * (1.0 - b) * ChordRight(at));
}

bool KFCurve::FlatSide(int at, uint32_t flags, bool rightSide) const {
    // A neighbour whose value is within 0.0001 of the key's flattens the
    // tangent on its side, and on both sides unless the tangent is broken.
    int n = keyCount_;
    double v = KeyGet(at).value;
    auto near = [&](int k) { return std::fabs(KeyGet(k).value - v) <= 0.0001; };
    bool broken = (flags & eTangentGenericBreak) != 0;
    bool prevCubic = at > 0 && isCubic(KeyGetFlags(at - 1));
    bool leftFlat = false, rightFlat = false;
    if (prevCubic && near(at - 1)) {
        leftFlat = true;
        rightFlat = !broken;
    }
    if (!rightFlat && at + 1 < n && near(at + 1)) {
        rightFlat = true;
        if (!broken && prevCubic) leftFlat = true;
    }
    return rightSide ? rightFlat : leftFlat;
}

double KFCurve::AutoSlope(int at, int flagKey, double bias, bool rightSide) const {
    int n = keyCount_;
    if (n < 2) return 0.0;
    uint32_t flags = KeyGetFlags(flagKey);
    if ((flags & eTangentAuto) && (flags & eTangentGenericClamp) && FlatSide(at, flags, rightSide)) return 0.0;
    if ((flags & eTangentGenericClampProgressive) == eTangentGenericClampProgressive) return ProgressiveSlope(at);
    if ((flags & eTangentGenericTimeIndependent) && std::fabs(bias) < 0.01) {
        int before = std::max(at - 1, 0), after = std::min(at + 1, n - 1);
        return (static_cast<double>(KeyGet(after).value) - KeyGet(before).value) / Seconds(before, after);
    }
    double right = at < n - 1 ? ChordRight(at) : ChordLeft(at);
    double left = at > 0 ? ChordLeft(at) : right;
    return BiasedSlope(bias, left, right, rightSide);
}

double KFCurve::BiasedSlope(double bias, double left, double right, bool rightSide) {
    double b = bias, slope;
    if (rightSide) {
        if (std::fabs(b - 100.0) <= 1e-5) return right;
        if (std::fabs(b + 100.0) <= 1e-5) return left;
        slope = ((100.0 - b) / 100.0 * left + (100.0 + b) / 100.0 * right) * 0.5;
    } else {
        if (std::fabs(b - 100.0) <= 1e-5) return left;
        if (std::fabs(b + 100.0) <= 1e-5) return right;
        slope = ((100.0 + b) / 100.0 * left + (100.0 - b) / 100.0 * right) * 0.5;
    }
    if (b > 500.0 || b < -500.0) {
        double e = b > 500.0 ? (b - 500.0) / 500.0 : (b + 500.0) / -500.0;
        bool sideExceeds = rightSide ? (right > left || std::fabs(left - right) < 1e-5) : left > right;
        bool plus = b > 500.0 ? sideExceeds : !sideExceeds;
        slope += (plus ? 1000.0 : -1000.0) * e * e;
    }
    return slope;
}

double KFCurve::ProgressiveSlope(int at) const {
    int n = keyCount_;
    if (at <= 0 || at >= n - 1) return 0.0;
    double c = (static_cast<double>(KeyGet(at + 1).value) - KeyGet(at - 1).value) / Seconds(at - 1, at + 1);
    double a = 3.0 * ChordLeft(at), d = 3.0 * ChordRight(at);
    bool positive = a >= 0.0;
    if ((c >= 0.0) != positive || (d >= 0.0) != positive) return 0.0;
    double best = a;
    if (std::fabs(c) < std::fabs(best)) best = c;
    if (std::fabs(d) < std::fabs(best)) best = d;
    return best;
}

bool KFCurve::GetTimeInterval(FbxTimeSpan& span) const {
    if (keyCount_ < 2) return false;
    span.start = FbxTime(KeyGet(0).time);
    span.stop = FbxTime(KeyGet(keyCount_ - 1).time);
    return true;
}

// Controls and biases -----------------------------------------------------------

double KFCurve::RightControl(int index) const {
    int n = keyCount_;
    if (n == 0 || !InRange(index)) return 0.0;
    double v = KeyGet(index).value;
    uint32_t interpolation = KeyGetFlags(index) & eInterpolationMask;
    if (n == 1 || index == n - 1 || interpolation == eInterpolationConstant) return v;
    if (interpolation != eInterpolationLinear && interpolation != eInterpolationCubic) return v;
    return v + KeyGetRightDerivative(index) * Seconds(index, index + 1) / 3.0;
}

double KFCurve::LeftControl(int index) const {
    int n = keyCount_;
    if (n == 0 || !InRange(index)) return 0.0;
    if (n == 1 || index == 0) return KeyGet(0).value;
    double v = KeyGet(index).value;
    if ((KeyGetFlags(index - 1) & eInterpolationMask) == eInterpolationConstant) return v;
    return v - KeyGetLeftDerivative(index) * Seconds(index - 1, index) / 3.0;
}

namespace {

// The bias that gives `slope` on one side from the chords: the inverse of
// the middle column of the biased slope; 0 when the chords agree.
double inverseBias(double slope, double left, double right, bool rightSide) {
    double spread = rightSide ? right - left : left - right;
    if (!(std::fabs(spread) > 1e-12)) return 0.0;
    double bias = (200.0 * slope - 100.0 * (left + right)) / spread;
    return std::isfinite(bias) ? bias : 0.0;
}

}  // namespace

double KFCurve::RightBias(int index) const {
    int n = keyCount_;
    if (!InRange(index)) return 0.0;
    uint32_t flags = KeyGetFlags(index);
    bool autoCubic = isCubic(flags) && isAutoWord(flags & eTangentMask);
    bool flattened = (flags & eTangentAuto) && (flags & eTangentGenericClamp) && FlatSide(index, flags, true);
    if (autoCubic && !flattened) return KeyGetDataFloat(index, 0);
    if (index >= n - 1) return 0.0;
    double right = ChordRight(index);
    double left = index > 0 ? ChordLeft(index) : right;
    return inverseBias(KeyGetRightDerivative(index), left, right, true);
}

double KFCurve::LeftBias(int index) const {
    int n = keyCount_;
    if (!InRange(index)) return 0.0;
    uint32_t flags = KeyGetFlags(index);
    bool autoCubic = isCubic(flags) && isAutoWord(flags & eTangentMask);
    if (index == 0) return autoCubic ? KeyGetDataFloat(index, 0) : 0.0;
    uint32_t prev = KeyGetFlags(index - 1);
    uint32_t prevInterpolation = prev & eInterpolationMask;
    if (prevInterpolation == eInterpolationConstant) return 0.0;
    if (prevInterpolation == eInterpolationLinear) return 100.0;
    bool flattened = (flags & eTangentAuto) && (flags & eTangentGenericClamp) && FlatSide(index, flags, false);
    if (prevInterpolation == eInterpolationCubic && autoCubic && !flattened) {
        if ((prev & eTangentMask) != eTangentTCB) return KeyGetDataFloat(index - 1, 1);
        return (flags & eTangentGenericBreak) ? 100.0 : -static_cast<double>(KeyGetDataFloat(index, 0));
    }
    double left = ChordLeft(index);
    double right = index < n - 1 ? ChordRight(index) : left;
    return inverseBias(KeyGetLeftDerivative(index), left, right, false);
}
