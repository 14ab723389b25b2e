#include "fbx/model/fbx_time.h"

#include <cmath>

namespace {

struct ModeRow {
    const char* name;
    double rate;  // 0: no rate of its own
};

const ModeRow kModes[FbxTime::eModesCount] = {
    {"Default", 0.0},
    {"Frames120", 120.0},
    {"Frames100", 100.0},
    {"Frames60", 60.0},
    {"Frames50", 50.0},
    {"Frames48", 48.0},
    {"Frames30", 30.0},
    {"Frames30_DROP", 0.0},
    {"NTSC_DropFrame", 30000.0 / 1001.0},
    {"NTSC_FullFrame", 30000.0 / 1001.0},
    {"PAL", 25.0},
    {"Frames24", 24.0},
    {"Frames1000", 1000.0},
    {"Film_FullFrame", 24000.0 / 1001.0},
    {"Custom", 12.5},
    {"Frames96", 96.0},
    {"Frames72", 72.0},
    {"Frames5994", 60000.0 / 1001.0},
};

}  // namespace

void FbxTime::SetSecondDouble(double seconds) {
    double ticks = seconds * static_cast<double>(kTicksPerSecond);
    ticks += ticks < 0.0 ? -0.005 : 0.005;
    // 2^63 is the first double beyond the tick range.
    if (!(ticks == ticks))
        ticks_ = 0;
    else if (ticks >= 9223372036854775808.0)
        ticks_ = kInfinite;
    else if (ticks <= -9223372036854775808.0)
        ticks_ = kMinusInfinite;
    else
        ticks_ = static_cast<FbxLongLong>(ticks);
}

bool FbxTime::IsValidCustomFrameRate(double rate) {
    if (!(rate >= 1.0) || !std::isfinite(rate)) return false;
    double tenths = 1000.0 / rate * 46186158.0;
    return tenths == std::floor(tenths);
}

double FbxTime::GetFrameRate(EMode mode, double customRate) {
    if (mode < 0 || mode >= eModesCount) mode = eDefaultMode;
    if (mode == eCustom && IsValidCustomFrameRate(customRate)) return customRate;
    double rate = kModes[mode].rate;
    return rate > 0.0 ? rate : kModes[eFrames30].rate;
}

const char* FbxTime::GetModeName(EMode mode) { return mode >= 0 && mode < eModesCount ? kModes[mode].name : ""; }

FbxLongLong FbxTime::GetFrameCount(EMode mode, double customRate) const {
    double frames = GetSecondDouble() * GetFrameRate(mode, customRate);
    if (!(std::fabs(frames) < 9.2e18)) return frames < 0.0 ? kMinusInfinite : kInfinite;
    return static_cast<FbxLongLong>(frames);
}
