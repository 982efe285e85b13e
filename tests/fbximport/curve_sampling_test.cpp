// Sampling curves into channels: time lists in whole ticks, the range start as origin,
// NaN, cubic derivatives, the interpolation choice, and redundant keys.
#include <gtest/gtest.h>

#include <limits>

#include "anim_test_support.h"
#include "fbximport/curve_sampling.h"

namespace {

// Translation x linear at 0 s: 0, 0.5 s: 5, 1 s: 10, 2 s: 10, 3 s: 0; no Y or Z curve;
// the property's value (1, 2, 3).
class SampleTest : public testing::Test {
protected:
    SampleTest() {
        node->LclTranslation.Set(FbxDouble3{1.0, 2.0, 3.0});
        Animate(node->LclTranslation, layer, "X", {{0.0, 0.0f}, {0.5, 5.0f}, {1.0, 10.0f}, {2.0, 10.0f}, {3.0, 0.0f}});
    }
    VectorChannel Sample(float start, float end) {
        return SampleVectorChannel(node->LclTranslation, layer, options, TakeRange(start, end, "take"));
    }

    FbxTestScene doc;
    FbxNode* node = doc.Node("joint");
    FbxAnimLayer* layer = AddStack(doc, "take");
    ConversionOptions options;
};

TEST_F(SampleTest, KeysStayUncutAndMissingOrNaNComponentsTakeTheDefault) {
    FbxAnimCurve* y = Animate(node->LclTranslation, layer, "Y", {{0.0, 7.0f}, {1.0, 7.0f}});
    y->KeySetValue(1, std::numeric_limits<float>::quiet_NaN());
    const VectorChannel c = Sample(1.0f, 2.0f);  // -s 1 -e 2: the key at 0.5 s lands at -0.5
    EXPECT_EQ(c.times, (std::vector<float>{-1.0f, -0.5f, 0.0f, 1.0f, 2.0f}));
    EXPECT_EQ(Xs(c.values), (std::vector<float>{0.0f, 5.0f, 10.0f, 10.0f, 0.0f}));
    EXPECT_EQ(c.values[0], Vec3(0.0f, 7.0f, 3.0f));
    EXPECT_EQ(c.values[2], Vec3(10.0f, 2.0f, 3.0f));  // y is NaN at 1 s
}

struct IntervalCase {
    const char* label;
    float interval, start, end;
    std::vector<float> times, xs;
};

class IntervalTest : public SampleTest, public testing::WithParamInterface<IntervalCase> {};

TEST_P(IntervalTest, StepsInWholeTicksThenTheEnd) {
    const IntervalCase& c = GetParam();
    options.keyframeInterval = c.interval;
    const VectorChannel channel = Sample(c.start, c.end);
    EXPECT_EQ(channel.times, c.times);
    EXPECT_EQ(Xs(channel.values), c.xs);
}

INSTANTIATE_TEST_SUITE_P(
    Sampling, IntervalTest,
    testing::Values(
        // -s 1 -e 2 -k 0.5: x is 10 at 1, 1.5 and 2 s; the middle key goes as redundant.
        IntervalCase{"clipped", 0.5f, 1.0f, 2.0f, {0.0f, 1.0f}, {10.0f, 10.0f}},
        // -k 0.3 on 0..1 s. The step 0.3f s = 0.30000001192 s is 42336001 ticks; three are
        // 127008003 ticks, 0.90000002 s, whose nearest float is the one above 0.9f.
        IntervalCase{"short_last_step", 0.3f, 0.0f, 1.0f, {0.0f, 0.3f, 0.6f, 0.90000004f, 1.0f},
                     {0.0f, 3.0f, 6.0f, 9.0f, 10.0f}},
        // -e beyond the last key: the curve's own range ends the samples at 3 s.
        IntervalCase{"range_beyond_keys", 1.0f, 2.0f, 5.0f, {0.0f, 1.0f}, {10.0f, 0.0f}},
        IntervalCase{"clipped_away", 0.5f, 4.0f, 5.0f, {}, {}}),
    [](const testing::TestParamInfo<IntervalCase>& row) { return std::string(row.param.label); });

TEST_F(SampleTest, AnIntervalBelowOneTickIsRefused) {
    options.keyframeInterval = 1e-12f;  // 0 ticks: the steps would never reach the end
    EXPECT_EXIT(Sample(0.0f, 1.0f), testing::ExitedWithCode(1), "ERROR: keyframe interval .* take 'take'");
}

TEST_F(SampleTest, CubicKeysGiveTheirDerivativesAsTangents) {
    FbxAnimCurve* x = Animate(node->LclRotation, layer, "X", {{0.0, 0.0f}, {1.0, 2.0f}}, 8);
    x->KeySetRightDerivative(0, 2.0f);
    x->KeySetLeftDerivative(1, 2.0f);
    options.cubicCurves = true;
    const VectorChannel c = SampleVectorChannel(node->LclRotation, layer, options, TakeRange(0.0f, 1.0f, "take"));
    ASSERT_EQ(c.interpolation, 2);
    // No left side at the first key, no right side at the last, no Y or Z curve: 0.
    EXPECT_EQ(c.inTangents, (std::vector<Vec3>{{0, 0, 0}, {2, 0, 0}}));
    EXPECT_EQ(c.outTangents, (std::vector<Vec3>{{2, 0, 0}, {0, 0, 0}}));
}

struct InterpolationCase {
    const char* label;
    bool cubic;
    std::vector<int> words;  // per curve: 0 none, -1 no keys, -2 keys without a word, else the keys' word
    int expected;
};

class InterpolationTest : public testing::TestWithParam<InterpolationCase> {};

TEST_P(InterpolationTest, TheMostDemandingKeyDecides) {
    const InterpolationCase& c = GetParam();
    FbxTestScene doc;
    FbxAnimLayer* layer = AddStack(doc, "take");
    std::vector<FbxAnimCurve*> curves;
    for (int word : c.words) {
        FbxNode* node = doc.Node("n");
        if (word == 0) curves.push_back(nullptr);
        else if (word == -1) curves.push_back(Animate(node->LclTranslation, layer, "X", {}));
        else curves.push_back(Animate(node->LclTranslation, layer, "X", {{0, 1.0f}, {1, 2.0f}}, word == -2 ? 0 : word));
    }
    EXPECT_EQ(ChooseInterpolation(curves, c.cubic), c.expected);
}

INSTANTIATE_TEST_SUITE_P(
    Sampling, InterpolationTest,
    testing::Values(InterpolationCase{"cubic_without_b", false, {8, 8, 8}, 1},
                    InterpolationCase{"cubic_wins", true, {4, 8, 0}, 2},
                    InterpolationCase{"linear_over_missing", true, {4, 0, -1}, 1},
                    InterpolationCase{"constant", true, {2, 2, -1}, 0},
                    InterpolationCase{"unknown_word", true, {6, 6, 6}, 1},
                    // The largest value starts at constant (an empty list gives constant), so
                    // keys without a word do not lift it.
                    InterpolationCase{"no_word", true, {-2, -2, -2}, 0},
                    InterpolationCase{"no_curves", true, {}, 0}),
    [](const testing::TestParamInfo<InterpolationCase>& row) { return std::string(row.param.label); });

struct RedundantCase {
    const char* label;
    int interpolation;
    std::vector<float> xs, inX, outX;  // keys at 0, 1, 2... s; cubic tangents
    int expectedInterpolation;
    std::vector<float> keptTimes;
};

class RedundantKeysTest : public testing::TestWithParam<RedundantCase> {};

TEST_P(RedundantKeysTest, NeighboursThatAreLeftDecide) {
    const RedundantCase& c = GetParam();
    VectorChannel channel;
    channel.interpolation = c.interpolation;
    for (size_t k = 0; k < c.xs.size(); ++k) {
        channel.times.push_back(float(k));
        channel.values.push_back({c.xs[k], 0.0f, 0.0f});
    }
    for (float x : c.inX) channel.inTangents.push_back({x, 0.0f, 0.0f});
    for (float x : c.outX) channel.outTangents.push_back({x, 0.0f, 0.0f});
    RemoveRedundantKeys(channel, 1e-5f);
    EXPECT_EQ(channel.interpolation, c.expectedInterpolation);
    EXPECT_EQ(channel.times, c.keptTimes);
    ASSERT_EQ(channel.values.size(), c.keptTimes.size());
    for (size_t k = 0; k < c.keptTimes.size(); ++k) EXPECT_EQ(channel.values[k].x, c.xs[size_t(c.keptTimes[k])]);
}

INSTANTIATE_TEST_SUITE_P(
    Sampling, RedundantKeysTest,
    testing::Values(
        RedundantCase{"plateau", 1, {1, 1, 1, 1}, {}, {}, 1, {0, 3}},
        // Steps of 6e-6: key 1 goes; key 2 is 1.2e-5 from key 0, kept before it, and stays.
        RedundantCase{"slow_ramp", 1, {0.0f, 6e-6f, 1.2e-5f, 1.8e-5f, 2.4e-5f}, {}, {}, 1, {0, 2, 4}},
        RedundantCase{"flat_cubic", 2, {1, 1, 1}, {0, 0, 0}, {0, 0, 0}, 1, {0, 2}},
        RedundantCase{"sloped_cubic", 2, {1, 1, 1}, {1, 1, 1}, {1, 1, 1}, 2, {0, 1, 2}},
        RedundantCase{"one_tangent", 2, {1, 1, 1}, {0, 0, 0}, {0, 3e-5f, 0}, 2, {0, 1, 2}}),
    [](const testing::TestParamInfo<RedundantCase>& row) { return std::string(row.param.label); });

TEST(RedundantWeights, RowsAreComparedOverTheShorterLengthAndKeepTheirValues) {
    WeightsChannel channel;
    channel.interpolation = 1;
    channel.times = {0, 1, 2, 3, 4};
    // Row 1 differs from its neighbours only in a column they lack; row 3 is kept last.
    channel.values = {{0.0f}, {0.0f, 9.0f}, {0.0f}, {5.0f, 1.0f}, {0.0f, 1.0f}};
    RemoveRedundantKeys(channel, 1e-5f);
    EXPECT_EQ(channel.times, (std::vector<float>{0, 2, 3, 4}));
    EXPECT_EQ(channel.values, (std::vector<std::vector<float>>{{0.0f}, {0.0f}, {5.0f, 1.0f}, {0.0f, 1.0f}}));

    // Nothing to drop: every row stays where it is, the last one too.
    channel.values = {{0.0f}, {5.0f}, {0.0f}};
    channel.times = {0, 1, 2};
    RemoveRedundantKeys(channel, 1e-5f);
    EXPECT_EQ(channel.values, (std::vector<std::vector<float>>{{0.0f}, {5.0f}, {0.0f}}));
}

}  // namespace
