#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <random>
#include <sstream>
#include <string>

#include "json/json.h"

namespace {

std::string StreamPrinted(float value) {
    std::ostringstream out;
    out << value;
    return out.str();
}

TEST(FormatFloat, KnownForms) {
    EXPECT_EQ(FormatFloat(0.1f), "0.1");
    EXPECT_EQ(FormatFloat(1234567.0f), "1.23457e+06");
    EXPECT_EQ(FormatFloat(16.0f), "16");
    EXPECT_EQ(FormatFloat(100000.0f), "100000");
    EXPECT_EQ(FormatFloat(999999.0f), "999999");
    EXPECT_EQ(FormatFloat(999999.5f), "1e+06");  // rounds up into the exponent form
    EXPECT_EQ(FormatFloat(0.0001f), "0.0001");
    EXPECT_EQ(FormatFloat(0.00001f), "1e-05");
    EXPECT_EQ(FormatFloat(123456.5f), "123456");  // an exact tie goes to even
    EXPECT_EQ(FormatFloat(0.0f), "0");
    EXPECT_EQ(FormatFloat(-0.0f), "-0");
    EXPECT_EQ(FormatFloat(-2.5f), "-2.5");
    EXPECT_EQ(FormatFloat(3.4028235e38f), "3.40282e+38");
    EXPECT_EQ(FormatFloat(1.4e-45f), "1.4013e-45");
    EXPECT_EQ(FormatFloat(std::numeric_limits<float>::infinity()), "inf");
    EXPECT_EQ(FormatFloat(-std::numeric_limits<float>::infinity()), "-inf");
}

TEST(FormatFloat, MatchesDefaultStreamIncludingNan) {
    const float nan = std::numeric_limits<float>::quiet_NaN();
    EXPECT_EQ(FormatFloat(nan), StreamPrinted(nan));
    EXPECT_EQ(FormatFloat(-nan), StreamPrinted(-nan));
    // Random bit patterns cover every magnitude, subnormals included.
    std::mt19937 random(20261121);
    char buf[kFloatTextMax];
    for (int i = 0; i < 200000; ++i) {
        const uint32_t bits = uint32_t(random());
        float value;
        std::memcpy(&value, &bits, sizeof value);
        size_t size = FormatFloat(value, buf);
        ASSERT_EQ(std::string(buf, size), StreamPrinted(value)) << "bits " << bits;
    }
    // And values of the size a mesh holds, near rounding boundaries.
    std::uniform_real_distribution<float> coordinate(-1000.0f, 1000.0f);
    for (int i = 0; i < 200000; ++i) {
        float value = coordinate(random);
        ASSERT_EQ(FormatFloat(value), StreamPrinted(value));
    }
}

TEST(Escape, PairsAndPassThrough) {
    EXPECT_EQ(Escape("\\/\"\n\t\b\f\r"), "\\\\\\/\\\"\\n\\t\\b\\f\\r");
    EXPECT_EQ(Escape("plain \x7f \xc3\xa9"), "plain \x7f \xc3\xa9");
}

TEST(Escape, LookupTextWithoutEightAndWithTrailingZero) {
    EXPECT_EQ(Escape(std::string(1, '\0')), "\\u0000");
    EXPECT_EQ(Escape("\x07"), "\\u0007");
    EXPECT_EQ(Escape("\x0b"), "\\u000c");  // index 11 of the lookup text is 'c'
    EXPECT_EQ(Escape("\x18"), "\\u0019");
    EXPECT_EQ(Escape("\x1a"), "\\u001b");
    EXPECT_EQ(Escape("\x0f"), std::string("\\u000\0", 6));
    EXPECT_EQ(Escape("\x1f"), std::string("\\u001\0", 6));
}

TEST(Unescape, OnlyTheEightPairs) {
    EXPECT_EQ(Unescape("a\\nb\\tc\\\\d\\/e\\\"f\\bg\\fh\\ri"), "a\nb\tc\\d/e\"f\bg\fh\ri");
    EXPECT_EQ(Unescape("\\u0041"), "\\u0041");
    EXPECT_EQ(Unescape("\\q"), "\\q");
    EXPECT_EQ(Unescape("\\\\n"), "\\n");  // the first pair consumes the second backslash
    EXPECT_EQ(Unescape("end\\"), "end\\");
}

}  // namespace
