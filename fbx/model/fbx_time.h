#pragma once

#include "fbx/model/fbx_types.h"

// A point in time as a signed count of ticks, 46186158000 per second. The
// largest value stands for infinite time, at which no animation counts.
class FbxTime {
public:
    static constexpr FbxLongLong kTicksPerSecond = 46186158000LL;
    static constexpr FbxLongLong kInfinite = 0x7FFFFFFFFFFFFFFFLL;

    constexpr FbxTime() = default;
    constexpr explicit FbxTime(FbxLongLong ticks) : ticks_(ticks) {}

    constexpr FbxLongLong Get() const { return ticks_; }
    constexpr void Set(FbxLongLong ticks) { ticks_ = ticks; }
    static constexpr FbxTime Infinite() { return FbxTime(kInfinite); }

    double GetSecondDouble() const { return static_cast<double>(ticks_) / static_cast<double>(kTicksPerSecond); }

    friend constexpr bool operator==(const FbxTime&, const FbxTime&) = default;
    friend constexpr auto operator<=>(const FbxTime&, const FbxTime&) = default;

private:
    FbxLongLong ticks_ = 0;
};
