// FbxTime: second conversions with their rounding, and key times in the old tick unit.
#include <gtest/gtest.h>

#include <cmath>

#include "fbx/fbx_time.h"

namespace {

constexpr FbxLongLong kSecond = 141120000;
constexpr FbxLongLong kOldSecond = 46186158000LL;

TEST(FbxTime, SetSecondDoubleRoundsAHundredthOfATickAwayFromZero) {
    struct Row {
        double seconds;
        FbxLongLong ticks;
    };
    const Row rows[] = {
        {1.0 / 30, 4704000},                 // 141120000 / 30, a product a hair off the integer
        {-1.0 / 30, -4704000},
        {10.996 / double(kSecond), 11},      // 10.996 + 0.005 truncates to 11
        {10.994 / double(kSecond), 10},      // 10.994 + 0.005 stays below 11
        {-10.996 / double(kSecond), -11},
        {1.5, 211680000},
        {1e300, FbxTime::kInfinite},         // beyond 64 bits: saturates instead of overflowing
        {-1e300, FbxTime::kMinusInfinite},
    };
    for (const Row& row : rows) {
        FbxTime time;
        time.SetSecondDouble(row.seconds);
        EXPECT_EQ(time.Get(), row.ticks) << row.seconds;
    }
    EXPECT_EQ(FbxTime(211680000).GetSecondDouble(), 1.5);
    EXPECT_EQ(FbxTime::MinusInfinite().Get(), FbxLongLong(0x8000000000000001ULL));
}

TEST(FbxTime, OldUnitTicksConvertThroughHoursMinutesAndSeconds) {
    struct Row {
        FbxLongLong old;
        FbxLongLong ticks;
    };
    const Row rows[] = {
        {kOldSecond, kSecond},
        {-kOldSecond, -kSecond},
        // 1 h + 1 min + 1 s + half a second: 3661 s, remainder 23093079000 gives
        // ((23093079000 + 164) * 141120) / 46186158 = 70560000.5..., truncated.
        {166270168800000LL + 2771169480000LL + kOldSecond + kOldSecond / 2, 3661 * kSecond + 70560000},
        // A millisecond: (46186158 + 164) * 141120 / 46186158 = 141120.50 -> 141120, and
        // negative: (-46186158 + 164) * 141120 / 46186158 = -141119.49 -> -141119 (towards zero).
        {46186158, 141120},
        {-46186158, -141119},
        {0, 0},
        {FbxTime::kInfinite, FbxTime::kInfinite},
        {FbxTime::kMinusInfinite, FbxTime::kMinusInfinite},
    };
    for (const Row& row : rows) EXPECT_EQ(FbxConvertOldUnitTicks(row.old), row.ticks) << row.old;
}

}  // namespace
