// The Ramer-Douglas-Peucker thinning (strict threshold, ties, component-wise quaternion
// blend) and quaternion tangents.
#include <gtest/gtest.h>

#include "fbximport/curve_thinning.h"

namespace {

struct ThinCase {
    const char* label;
    std::vector<float> xs;  // keys at 0, 1, 2... s
    float threshold;
    std::vector<float> keptTimes;
};

class ThinningTest : public testing::TestWithParam<ThinCase> {};

TEST_P(ThinningTest, KeepsWhatTheLineMisses) {
    const ThinCase& c = GetParam();
    VectorChannel channel;
    channel.interpolation = 1;
    for (size_t k = 0; k < c.xs.size(); ++k) {
        channel.times.push_back(float(k));
        channel.values.push_back({c.xs[k], 0.0f, 0.0f});
    }
    SimplifyVectorChannel(channel, c.threshold);
    EXPECT_EQ(channel.times, c.keptTimes);
}

INSTANTIATE_TEST_SUITE_P(
    Thinning, ThinningTest,
    testing::Values(
        ThinCase{"straight_line", {0, 1, 2, 3, 4}, 0.1f, {0, 4}},
        // The peak misses 0..0 by 1 and splits; each half misses its line by 0.5 at its middle
        // key: kept at 0.5 (not strictly below), dropped at 0.6.
        ThinCase{"peak_at_threshold", {0, 0, 1, 0, 0}, 0.5f, {0, 1, 2, 3, 4}},
        ThinCase{"peak_above_threshold", {0, 0, 1, 0, 0}, 0.6f, {0, 2, 4}},
        // Keys 1 and 2 both miss by 1 and the first splits; key 2 then misses by 0.5 and goes.
        ThinCase{"tie_takes_the_first", {0, 1, 1, 0}, 0.6f, {0, 1, 3}}),
    [](const testing::TestParamInfo<ThinCase>& row) { return std::string(row.param.label); });

TEST(Thinning, QuaternionsBlendComponentWise) {
    // The plain blend of (0,0,0,1) and (1,0,0,0) is (0.5,0,0,0.5): no error; a spherical one
    // would give (0.7071,0,0,0.7071) and keep the key.
    QuatChannel channel;
    channel.interpolation = 1;
    channel.times = {0, 1, 2};
    channel.values = {{0, 0, 0, 1}, {0.5f, 0, 0, 0.5f}, {1, 0, 0, 0}};
    SimplifyQuatChannel(channel, 1e-3f);
    EXPECT_EQ(channel.times, (std::vector<float>{0, 2}));
}

TEST(QuatChannels, CubicTangentsAreRotationDifferences) {
    VectorChannel rotation;
    rotation.interpolation = 2;
    rotation.times = {0.5f};
    rotation.values = {{0, 0, 0}};
    rotation.inTangents = {{0, 90, 0}};
    rotation.outTangents = {{90, 0, 0}};
    const QuatChannel q = MakeQuatChannel(rotation);
    EXPECT_EQ(q.values[0], Quat(0, 0, 0, 1));
    // 90 degrees about y: y = w = sin 45 = 0.70710677, less the key's own (0, 0, 0, 1).
    EXPECT_NEAR(q.inTangents[0].y, 0.70710677f, 1e-6f);
    EXPECT_NEAR(q.inTangents[0].w, -0.29289323f, 1e-6f);
    EXPECT_NEAR(q.outTangents[0].x, 0.70710677f, 1e-6f);
    EXPECT_NEAR(q.outTangents[0].y, 0.0f, 1e-7f);
}

}  // namespace
