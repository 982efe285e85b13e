#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <random>
#include <sstream>
#include <string>

#include "json/json.h"
#include "text_table.h"

namespace {

std::string StreamPrinted(float value) {
    std::ostringstream out;
    out << value;
    return out.str();
}

// The rows of data/text_cases.txt: FormatFloat, Escape and Unescape of each input.
TEST(JsonText, CasesOfTheTable) {
    for (const testsupport::TableRow& row : testsupport::ReadTable(std::string(VURL_JSON_DATA_DIR) + "/text_cases.txt")) {
        const std::string& kind = row.Text(0);
        const std::string out = kind == "float"    ? FormatFloat(float(testsupport::Number(row.Text(1))))
                                : kind == "escape" ? Escape(row.Text(1))
                                                   : Unescape(row.Text(1));
        EXPECT_EQ(out, row.Text(2)) << "text_cases.txt:" << row.line;
    }
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

}  // namespace
