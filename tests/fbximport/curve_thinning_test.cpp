// Quaternion channels and the Ramer-Douglas-Peucker thinning: strict threshold, ties, the
// component-wise blend of quaternions, and the channels left alone.
#include <gtest/gtest.h>

#include "fbximport/curve_thinning.h"

namespace {

struct ThinCase {
    const char* label;
    std::vector<float> xs;  // values at times 0, 1, 2...
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
    ASSERT_EQ(channel.values.size(), c.keptTimes.size());
    for (size_t k = 0; k < c.keptTimes.size(); ++k) EXPECT_EQ(channel.values[k].x, c.xs[size_t(c.keptTimes[k])]);
}

INSTANTIATE_TEST_SUITE_P(
    Thinning, ThinningTest,
    testing::Values(
        ThinCase{"straight_line", {0, 1, 2, 3, 4}, 0.1f, {0, 4}},
        // 0 0 1 0 0: the peak misses the line 0..0 by 1 and splits; each half misses its
        // line by 0.5 at the middle key: kept at 0.5 (not strictly below), dropped at 0.6.
        ThinCase{"peak_at_threshold", {0, 0, 1, 0, 0}, 0.5f, {0, 1, 2, 3, 4}},
        ThinCase{"peak_above_threshold", {0, 0, 1, 0, 0}, 0.6f, {0, 2, 4}},
        // 0 1 1 0: keys 1 and 2 both miss by 1; the first one splits. Key 2 then misses the
        // line from key 1 to key 3 by 0.5 and goes at 0.6. Had key 2 split, key 1 would go.
        ThinCase{"tie_takes_the_first", {0, 1, 1, 0}, 0.6f, {0, 1, 3}},
        ThinCase{"two_keys", {0, 5}, 0.0f, {0, 1}}),
    [](const testing::TestParamInfo<ThinCase>& info) { return std::string(info.param.label); });

TEST(Thinning, CubicChannelsStayWhole) {
    VectorChannel channel;
    channel.interpolation = 2;
    channel.times = {0, 1, 2};
    channel.values = {{0, 0, 0}, {1, 0, 0}, {2, 0, 0}};
    channel.inTangents = channel.outTangents = {{1, 0, 0}, {1, 0, 0}, {1, 0, 0}};
    SimplifyVectorChannel(channel, 100.0f);
    EXPECT_EQ(channel.times.size(), 3u);
}

TEST(Thinning, QuaternionsBlendComponentWise) {
    // Halfway between (0,0,0,1) and (1,0,0,0) the plain blend is (0.5,0,0,0.5): no error,
    // where a spherical blend would have given (0.7071,0,0,0.7071) and kept the key.
    QuatChannel channel;
    channel.interpolation = 1;
    channel.times = {0, 1, 2};
    channel.values = {{0, 0, 0, 1}, {0.5f, 0, 0, 0.5f}, {1, 0, 0, 0}};
    SimplifyQuatChannel(channel, 1e-3f);
    EXPECT_EQ(channel.times, (std::vector<float>{0, 2}));
}

TEST(QuatChannels, KeysAndCubicTangentsAsQuaternions) {
    VectorChannel rotation;
    rotation.defaultValue = {0, 0, 0};
    rotation.interpolation = 2;
    rotation.times = {0.5f};
    rotation.values = {{0, 0, 0}};
    rotation.inTangents = {{0, 90, 0}};
    rotation.outTangents = {{90, 0, 0}};
    const QuatChannel q = MakeQuatChannel(rotation);
    EXPECT_EQ(q.interpolation, 2);
    EXPECT_EQ(q.times, rotation.times);
    // Zero angles: (0, 0, 0, 1).
    EXPECT_EQ(q.defaultValue, Quat(0, 0, 0, 1));
    EXPECT_EQ(q.values[0], Quat(0, 0, 0, 1));
    // 90 degrees about y: half angle 45, so y = w = sin 45 = 0.70710677; the tangent is that
    // rotation less the key's own: (0, 0.70710677, 0, 0.70710677 - 1).
    EXPECT_NEAR(q.inTangents[0].x, 0.0f, 1e-7f);
    EXPECT_NEAR(q.inTangents[0].y, 0.70710677f, 1e-6f);
    EXPECT_NEAR(q.inTangents[0].z, 0.0f, 1e-7f);
    EXPECT_NEAR(q.inTangents[0].w, -0.29289323f, 1e-6f);
    // 90 degrees about x: (0.70710677, 0, 0, 0.70710677) less (0, 0, 0, 1).
    EXPECT_NEAR(q.outTangents[0].x, 0.70710677f, 1e-6f);
    EXPECT_NEAR(q.outTangents[0].w, -0.29289323f, 1e-6f);

    // Not cubic: values only.
    rotation.interpolation = 1;
    const QuatChannel linear = MakeQuatChannel(rotation);
    EXPECT_TRUE(linear.inTangents.empty());
    EXPECT_EQ(linear.values.size(), 1u);
}

}  // namespace
