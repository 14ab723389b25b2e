#pragma once

#include "fbx/model/fbx_types.h"

// A point in time as a signed count of ticks, 46186158000 per second. The
// largest value stands for infinite time, at which no animation counts; the
// smallest but one for minus infinity.
class FbxTime {
public:
    static constexpr FbxLongLong kTicksPerSecond = 46186158000LL;
    static constexpr FbxLongLong kInfinite = 0x7FFFFFFFFFFFFFFFLL;
    static constexpr FbxLongLong kMinusInfinite = -0x7FFFFFFFFFFFFFFFLL;

    // Time modes: the frame rates of the "TimeMode" setting, by its value.
    enum EMode {
        eDefaultMode = 0,
        eFrames120 = 1,
        eFrames100 = 2,
        eFrames60 = 3,
        eFrames50 = 4,
        eFrames48 = 5,
        eFrames30 = 6,
        eFrames30Drop = 7,
        eNTSCDropFrame = 8,
        eNTSCFullFrame = 9,
        ePAL = 10,
        eFrames24 = 11,
        eFrames1000 = 12,
        eFilmFullFrame = 13,
        eCustom = 14,
        eFrames96 = 15,
        eFrames72 = 16,
        eFrames59dot94 = 17,
        eModesCount = 18
    };

    constexpr FbxTime() = default;
    constexpr explicit FbxTime(FbxLongLong ticks) : ticks_(ticks) {}

    constexpr FbxLongLong Get() const { return ticks_; }
    constexpr void Set(FbxLongLong ticks) { ticks_ = ticks; }
    static constexpr FbxTime Infinite() { return FbxTime(kInfinite); }
    static constexpr FbxTime MinusInfinite() { return FbxTime(kMinusInfinite); }
    constexpr bool IsInfinite() const { return ticks_ == kInfinite; }

    double GetSecondDouble() const { return static_cast<double>(ticks_) / static_cast<double>(kTicksPerSecond); }
    // Rounds by 0.005 of a tick away from zero, then truncates; seconds that
    // do not fit the ticks saturate (not a number gives 0).
    void SetSecondDouble(double seconds);
    static FbxTime FromSeconds(double seconds) {
        FbxTime t;
        t.SetSecondDouble(seconds);
        return t;
    }

    // The frame rate of a mode. The default mode and the drop-frame mode of
    // 30 frames have none and give the rate of eFrames30; eCustom gives
    // `customRate` when it is a valid custom rate, else 12.5. A value out of
    // range reads as the default mode.
    static double GetFrameRate(EMode mode, double customRate = -1.0);
    // A custom rate is valid when it is at least 1 and a frame lasts a whole
    // number of tenths of a tick.
    static bool IsValidCustomFrameRate(double rate);
    // The word of a mode in "TimeMode" ("Frames24"), "" out of range.
    static const char* GetModeName(EMode mode);
    // The whole frames of a mode's rate in this time, truncated.
    FbxLongLong GetFrameCount(EMode mode, double customRate = -1.0) const;

    friend constexpr bool operator==(const FbxTime&, const FbxTime&) = default;
    friend constexpr auto operator<=>(const FbxTime&, const FbxTime&) = default;

private:
    FbxLongLong ticks_ = 0;
};

// A span of time: a start and a stop.
struct FbxTimeSpan {
    FbxTime start;
    FbxTime stop;

    FbxTime GetDuration() const { return FbxTime(stop.Get() - start.Get()); }
    // The smaller start and the larger stop of both.
    void UnionAssignment(const FbxTimeSpan& other) {
        if (other.start < start) start = other.start;
        if (other.stop > stop) stop = other.stop;
    }
    friend bool operator==(const FbxTimeSpan&, const FbxTimeSpan&) = default;
};
