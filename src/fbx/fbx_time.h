// Time of the FBX document layer: signed 64-bit ticks, 141,120,000 a second, with the
// infinite times, the conversion of key times written in the older 46,186,158,000-a-second
// unit, and the time modes of the global settings.
#pragma once

#include <compare>
#include <cstdint>

using FbxLongLong = int64_t;

class FbxTime {
public:
    static constexpr FbxLongLong kTicksPerSecond = 141120000;
    static constexpr FbxLongLong kInfinite = 0x7FFFFFFFFFFFFFFFLL;
    static constexpr FbxLongLong kMinusInfinite = -0x7FFFFFFFFFFFFFFFLL;  // 0x8000000000000001

    constexpr FbxTime() = default;
    constexpr explicit FbxTime(FbxLongLong ticks) : ticks_(ticks) {}

    static constexpr FbxTime Infinite() { return FbxTime(kInfinite); }
    static constexpr FbxTime MinusInfinite() { return FbxTime(kMinusInfinite); }

    constexpr FbxLongLong Get() const { return ticks_; }
    constexpr void Set(FbxLongLong ticks) { ticks_ = ticks; }

    // Rounds half a hundredth of a tick away from zero, then truncates. Seconds beyond the
    // range of the ticks (and NaN) saturate to the infinite times.
    void SetSecondDouble(double seconds);
    double GetSecondDouble() const { return double(ticks_) / double(kTicksPerSecond); }

    // Plain 64-bit arithmetic on the counts, as the format's users expect.
    friend constexpr FbxTime operator-(FbxTime a, FbxTime b) { return FbxTime(int64_t(uint64_t(a.ticks_) - uint64_t(b.ticks_))); }
    friend constexpr FbxTime operator+(FbxTime a, FbxTime b) { return FbxTime(int64_t(uint64_t(a.ticks_) + uint64_t(b.ticks_))); }
    FbxTime& operator+=(FbxTime other) { return *this = *this + other; }
    FbxTime& operator-=(FbxTime other) { return *this = *this - other; }
    friend constexpr bool operator==(FbxTime a, FbxTime b) = default;
    friend constexpr auto operator<=>(FbxTime a, FbxTime b) = default;

private:
    FbxLongLong ticks_ = 0;
};

// Ticks in the unit of 46,186,158,000 a second, converted to FbxTime ticks through hours,
// minutes and seconds so that whole seconds stay exact; 0 and the infinite times are kept.
FbxLongLong FbxConvertOldUnitTicks(FbxLongLong oldTicks);

// Whether key times of a file with this time-unit definition and version are in the old unit.
bool FbxFileTimesInOldUnit(int timeUnitDefinition, int fileVersion);

// Values of `TimeMode` in the global settings.
enum class FbxTimeMode : int {
    Default = 0,
    Frames120 = 1,
    Frames100 = 2,
    Frames60 = 3,
    Frames50 = 4,
    Frames48 = 5,
    Frames30 = 6,
    Frames30_DROP = 7,
    NTSC_DropFrame = 8,
    NTSC_FullFrame = 9,
    PAL = 10,
    Frames24 = 11,
    Frames1000 = 12,
    Film_FullFrame = 13,
    Custom = 14,
    Frames96 = 15,
    Frames72 = 16,
    Frames5994 = 17,
    Frames119_88 = 18,
};
constexpr int kFbxTimeModeCount = 19;

// Frames a second of a mode; `Custom` gives `customFrameRate`, `Default` and unknown
// values 0 (they carry no rate of their own).
double FbxGetFrameRate(FbxTimeMode mode, double customFrameRate = 0.0);

// Name of a mode as the enum list of `TimeMode` shows it; "" for an unknown value.
const char* FbxTimeModeName(FbxTimeMode mode);
