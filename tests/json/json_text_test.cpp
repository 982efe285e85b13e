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
    const float inf = std::numeric_limits<float>::infinity();
    const std::pair<float, const char*> rows[] = {
        {0.1f, "0.1"}, {1234567.0f, "1.23457e+06"}, {16.0f, "16"}, {100000.0f, "100000"}, {999999.0f, "999999"},
        {999999.5f, "1e+06"},  // rounds up into the exponent form
        {0.0001f, "0.0001"}, {0.00001f, "1e-05"},
        {123456.5f, "123456"},  // an exact tie goes to even
        {0.0f, "0"}, {-0.0f, "-0"}, {-2.5f, "-2.5"}, {3.4028235e38f, "3.40282e+38"}, {1.4e-45f, "1.4013e-45"},
        {inf, "inf"}, {-inf, "-inf"}};
    for (const auto& [value, text] : rows) EXPECT_EQ(FormatFloat(value), text);
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

TEST(Escape, PairsLookupTextWithoutEightAndTrailingZero) {
    const std::pair<std::string, std::string> rows[] = {
        {"\\/\"\n\t\b\f\r", "\\\\\\/\\\"\\n\\t\\b\\f\\r"},
        {"plain \x7f \xc3\xa9", "plain \x7f \xc3\xa9"},
        {std::string(1, '\0'), "\\u0000"},
        {"\x07", "\\u0007"},
        {"\x0b", "\\u000c"},  // index 11 of the lookup text is 'c'
        {"\x18", "\\u0019"},
        {"\x1a", "\\u001b"},
        {"\x0f", std::string("\\u000\0", 6)},
        {"\x1f", std::string("\\u001\0", 6)}};
    for (const auto& [text, escaped] : rows) EXPECT_EQ(Escape(text), escaped);
}

TEST(Unescape, OnlyTheEightPairs) {
    const std::pair<const char*, const char*> rows[] = {
        {"a\\nb\\tc\\\\d\\/e\\\"f\\bg\\fh\\ri", "a\nb\tc\\d/e\"f\bg\fh\ri"},
        {"\\u0041", "\\u0041"},
        {"\\q", "\\q"},
        {"\\\\n", "\\n"},  // the first pair consumes the second backslash
        {"end\\", "end\\"}};
    for (const auto& [text, plain] : rows) EXPECT_EQ(Unescape(text), plain);
}

}  // namespace
