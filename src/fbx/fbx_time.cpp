#include "fbx/fbx_time.h"

#include <cmath>

void FbxTime::SetSecondDouble(double seconds) {
    const double scaled = seconds >= 0.0 ? seconds * double(kTicksPerSecond) + 0.005
                                         : seconds * double(kTicksPerSecond) - 0.005;
    // 2^63 is the first double outside the signed range; casting beyond it is undefined.
    constexpr double kLimit = 9223372036854775808.0;
    if (std::isnan(scaled)) {
        ticks_ = kInfinite;
    } else if (scaled >= kLimit) {
        ticks_ = kInfinite;
    } else if (scaled <= -kLimit) {
        ticks_ = kMinusInfinite;
    } else {
        ticks_ = FbxLongLong(scaled);  // truncates towards zero
    }
}

FbxLongLong FbxConvertOldUnitTicks(FbxLongLong t) {
    if (t == 0 || t == FbxTime::kInfinite || t == FbxTime::kMinusInfinite) return t;
    constexpr FbxLongLong kSecond = 46186158000LL;
    // Hours, minutes and seconds of the old unit are exact multiples of its second, and
    // C++ division truncates towards zero (as the conversion wants for negative times
    // too), so whole seconds and the rest come from one division.
    const FbxLongLong seconds = t / kSecond;
    const FbxLongLong remainder = t % kSecond;
    return seconds * FbxTime::kTicksPerSecond + ((remainder + 164) * 141120) / 46186158;
}

bool FbxFileTimesInOldUnit(int timeUnitDefinition, int fileVersion) {
    return timeUnitDefinition == 127 && fileVersion != 7600;
}

namespace {

struct TimeModeRow {
    const char* name;
    double framesPerSecond;
};

constexpr TimeModeRow kTimeModes[kFbxTimeModeCount] = {
    {"Default", 0.0},
    {"Frames120", 120.0},
    {"Frames100", 100.0},
    {"Frames60", 60.0},
    {"Frames50", 50.0},
    {"Frames48", 48.0},
    {"Frames30", 30.0},
    {"Frames30_DROP", 30.0},
    {"NTSC_DropFrame", 29.97002997002997},
    {"NTSC_FullFrame", 29.97002997002997},
    {"PAL", 25.0},
    {"Frames24", 24.0},
    {"Frames1000", 1000.0},
    {"Film_FullFrame", 23.976023976023978},
    {"Custom", 0.0},
    {"Frames96", 96.0},
    {"Frames72", 72.0},
    {"Frames5994", 59.94005994005994},
    {"119.88 fps", 119.88011988011988},
};

bool Known(FbxTimeMode mode) { return int(mode) >= 0 && int(mode) < kFbxTimeModeCount; }

}  // namespace

double FbxGetFrameRate(FbxTimeMode mode, double customFrameRate) {
    if (mode == FbxTimeMode::Custom) return customFrameRate;
    return Known(mode) ? kTimeModes[int(mode)].framesPerSecond : 0.0;
}

const char* FbxTimeModeName(FbxTimeMode mode) { return Known(mode) ? kTimeModes[int(mode)].name : ""; }
