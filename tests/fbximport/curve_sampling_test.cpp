// Sampling of curves into channels: the time lists (key union and fixed intervals in whole
// ticks), the user range as origin and clip, the interpolation choice, defaults and NaN,
// cubic derivatives, and the removal of redundant keys.
#include <gtest/gtest.h>

#include <cfloat>
#include <limits>

#include "anim_test_support.h"
#include "fbximport/curve_sampling.h"

namespace {

// A node whose translation has an X curve with keys 0 s: 0, 0.5 s: 5, 1 s: 10, 2 s: 10,
// 3 s: 0, no Y or Z curve, and the property value (1, 2, 3).
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

TEST_F(SampleTest, KeyTimesAreTakenUncutRelativeToTheRangeStart) {
    // -s 1 -e 2 without -k: every key stays, the key at 0.5 s lands at -0.5.
    const VectorChannel c = Sample(1.0f, 2.0f);
    EXPECT_EQ(c.interpolation, 1);
    EXPECT_EQ(c.times, (std::vector<float>{-1.0f, -0.5f, 0.0f, 1.0f, 2.0f}));
    EXPECT_EQ(Xs(c.values), (std::vector<float>{0.0f, 5.0f, 10.0f, 10.0f, 0.0f}));
    // The missing curves give the property's value.
    EXPECT_EQ(c.values[2], Vec3(10.0f, 2.0f, 3.0f));
    EXPECT_EQ(c.defaultValue, Vec3(1.0f, 2.0f, 3.0f));
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

// Values on the linear keys: x(t) = 10 t up to 1 s, 10 up to 2 s, then 10 - 10 (t - 2).
INSTANTIATE_TEST_SUITE_P(
    Sampling, IntervalTest,
    testing::Values(
        // -s 1 -e 2 -k 0.5: 1, 1.5, 2 s, relative 0, 0.5, 1. x is 10 throughout, so the
        // middle key goes as redundant.
        IntervalCase{"clipped", 0.5f, 1.0f, 2.0f, {0.0f, 1.0f}, {10.0f, 10.0f}},
        // -k 0.3 on 0..1 s: 0, 0.3, 0.6, 0.9, then the shorter last step to 1.0. The step is
        // 0.3f s = 0.30000001192 s, 42336001 ticks; three of them are 127008003 ticks,
        // 0.90000002 s, whose nearest float is the one above 0.9f.
        IntervalCase{"short_last_step", 0.3f, 0.0f, 1.0f, {0.0f, 0.3f, 0.6f, 0.90000004f, 1.0f}, {0.0f, 3.0f, 6.0f, 9.0f, 10.0f}},
        // -e beyond the last key: the curve's own range ends the samples at 3 s.
        IntervalCase{"range_beyond_keys", 1.0f, 2.0f, 5.0f, {0.0f, 1.0f}, {10.0f, 0.0f}},
        // An interval longer than the range: its start and its end.
        IntervalCase{"one_step", 10.0f, 0.0f, 3.0f, {0.0f, 3.0f}, {0.0f, 0.0f}},
        // A range of one instant gives its end alone.
        IntervalCase{"instant", 0.5f, 2.5f, 2.5f, {0.0f}, {5.0f}},
        // The range lies after the keys: nothing is left to sample.
        IntervalCase{"clipped_away", 0.5f, 4.0f, 5.0f, {}, {}}),
    [](const testing::TestParamInfo<IntervalCase>& info) { return std::string(info.param.label); });

TEST_F(SampleTest, NaNFallsBackToTheDefaultComponent) {
    FbxAnimCurve* y = Animate(node->LclTranslation, layer, "Y", {{0.0, 7.0f}, {1.0, 7.0f}});
    y->KeySetValue(1, std::numeric_limits<float>::quiet_NaN());
    const VectorChannel c = Sample(0.0f, 3.0f);
    ASSERT_EQ(c.values.size(), 5u);
    EXPECT_EQ(c.values[0].y, 7.0f);
    EXPECT_EQ(c.values[2].y, 2.0f);  // the key at 1 s is NaN: the property's y
}

TEST_F(SampleTest, NoKeysGiveTheDefaultAlone) {
    FbxNode* still = doc.Node("still");
    still->LclRotation.Set(FbxDouble3{0.0, 45.0, 0.0});
    Animate(still->LclRotation, layer, "Z", {});  // a curve without keys counts as none
    const VectorChannel c = SampleVectorChannel(still->LclRotation, layer, options, TakeRange(0.0f, 1.0f, "take"));
    EXPECT_TRUE(c.times.empty());
    EXPECT_TRUE(c.values.empty());
    EXPECT_EQ(c.defaultValue, Vec3(0.0f, 45.0f, 0.0f));
}

TEST_F(SampleTest, CubicKeysGiveDerivativesAsTangents) {
    FbxNode* arm = doc.Node("arm");
    FbxAnimCurve* x = Animate(arm->LclRotation, layer, "X", {{0.0, 0.0f}, {1.0, 2.0f}}, 8);
    // Slope 2 a second leaving key 0 and arriving at key 1.
    x->KeySetRightDerivative(0, 2.0f);
    x->KeySetLeftDerivative(1, 2.0f);
    options.cubicCurves = true;
    const VectorChannel c = SampleVectorChannel(arm->LclRotation, layer, options, TakeRange(0.0f, 1.0f, "take"));
    ASSERT_EQ(c.interpolation, 2);
    // The first key has no left side and the last no right side: both 0. Y and Z have no
    // curve: 0 as well.
    EXPECT_EQ(c.inTangents, (std::vector<Vec3>{{0, 0, 0}, {2, 0, 0}}));
    EXPECT_EQ(c.outTangents, (std::vector<Vec3>{{2, 0, 0}, {0, 0, 0}}));

    // Without -b the same keys are sampled into a linear channel.
    options.cubicCurves = false;
    const VectorChannel linear = SampleVectorChannel(arm->LclRotation, layer, options, TakeRange(0.0f, 1.0f, "take"));
    EXPECT_EQ(linear.interpolation, 1);
    EXPECT_TRUE(linear.inTangents.empty());
}

TEST_F(SampleTest, FlatCubicKeysFallBackToLinear) {
    FbxNode* arm = doc.Node("arm");
    Animate(arm->LclScaling, layer, "Y", {{0.0, 1.0f}, {1.0, 3.0f}, {2.0, 1.0f}}, 8);  // user slopes 0
    options.cubicCurves = true;
    const VectorChannel c = SampleVectorChannel(arm->LclScaling, layer, options, TakeRange(0.0f, 2.0f, "take"));
    EXPECT_EQ(c.interpolation, 1);
    EXPECT_TRUE(c.inTangents.empty());
    EXPECT_TRUE(c.outTangents.empty());
    EXPECT_EQ(c.times.size(), 3u);
}

TEST_F(SampleTest, AnIntervalBelowOneTickIsRefused) {
    options.keyframeInterval = 1e-12f;  // rounds to 0 ticks: the steps would never reach the end
    EXPECT_EXIT(Sample(0.0f, 1.0f), testing::ExitedWithCode(1), "ERROR: keyframe interval .* take 'take'");
}

struct InterpolationCase {
    const char* label;
    bool cubic;
    std::vector<int> curveWords;  // per curve: 0 none, -1 empty, -2 keys without a word, else the keys' word
    int expected;
};

class InterpolationTest : public testing::TestWithParam<InterpolationCase> {};

TEST_P(InterpolationTest, TheMostDemandingKeyDecides) {
    const InterpolationCase& c = GetParam();
    FbxTestScene doc;
    FbxAnimLayer* layer = AddStack(doc, "take");
    std::vector<FbxAnimCurve*> curves;
    const char* channels[] = {"X", "Y", "Z"};
    for (size_t k = 0; k < c.curveWords.size(); ++k) {
        FbxNode* node = doc.Node("n" + std::to_string(k));
        const int word = c.curveWords[k];
        if (word == 0) {
            curves.push_back(nullptr);
        } else if (word == -1) {
            curves.push_back(Animate(node->LclTranslation, layer, channels[k % 3], {}));
        } else {
            curves.push_back(
                Animate(node->LclTranslation, layer, channels[k % 3], {{0.0, 1.0f}, {1.0, 2.0f}}, word == -2 ? 0 : word));
        }
    }
    EXPECT_EQ(ChooseInterpolation(curves, c.cubic), c.expected);
}

INSTANTIATE_TEST_SUITE_P(
    Sampling, InterpolationTest,
    testing::Values(InterpolationCase{"linear_without_b", false, {8, 8, 8}, 1},
                    InterpolationCase{"constant_without_b", false, {2, 2, 2}, 1},
                    InterpolationCase{"cubic_wins", true, {4, 8, 0}, 2},
                    InterpolationCase{"linear_over_missing", true, {4, 0, -1}, 1},
                    InterpolationCase{"constant_keys", true, {2, 2, -1}, 0},
                    InterpolationCase{"no_curves", true, {}, 0},
                    // A word that is neither 2, 4 nor 8 gives linear.
                    InterpolationCase{"unknown_word", true, {6, 6, 6}, 1},
                    // Keys without an interpolation word rank below constant, where the
                    // largest value starts (an empty list gives constant).
                    InterpolationCase{"no_word", true, {-2, -2, -2}, 0},
                    InterpolationCase{"all_missing", true, {0, 0, 0}, 0}),
    [](const testing::TestParamInfo<InterpolationCase>& info) { return std::string(info.param.label); });

// -- Redundant keys ---------------------------------------------------------------------

struct RedundantCase {
    const char* label;
    int interpolation;
    std::vector<float> xs;         // key values (x; y and z 0), times 0, 1, 2...
    std::vector<float> inX, outX;  // cubic tangents (x)
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
    for (size_t k = 0; k < c.keptTimes.size(); ++k)
        EXPECT_EQ(channel.values[k].x, c.xs[size_t(c.keptTimes[k])]) << k;
}

INSTANTIATE_TEST_SUITE_P(
    Sampling, RedundantKeysTest,
    testing::Values(
        // A plateau keeps its first and last key.
        RedundantCase{"plateau", 1, {1, 1, 1, 1}, {}, {}, 1, {0, 3}},
        // Steps of 6e-6: key 1 goes; key 2 is 1.2e-5 from key 0, the key kept before it,
        // and stays; key 3 goes against key 2 and key 4.
        RedundantCase{"slow_ramp", 1, {0.0f, 6e-6f, 1.2e-5f, 1.8e-5f, 2.4e-5f}, {}, {}, 1, {0, 2, 4}},
        RedundantCase{"spike", 1, {0, 0, 0, 5, 0, 0, 0}, {}, {}, 1, {0, 2, 3, 4, 6}},
        RedundantCase{"two_keys", 1, {1, 1}, {}, {}, 1, {0, 1}},
        // Constant channels are reduced as linear ones are.
        RedundantCase{"constant", 0, {4, 4, 4}, {}, {}, 0, {0, 2}},
        // Flat tangents: linear first, then the plateau is reduced.
        RedundantCase{"flat_cubic", 2, {1, 1, 1}, {0, 0, 0}, {0, 0, 0}, 1, {0, 2}},
        // Equal tangents that are not near zero keep the channel cubic, keys and all.
        RedundantCase{"sloped_cubic", 2, {1, 1, 1}, {1, 1, 1}, {1, 1, 1}, 2, {0, 1, 2}},
        // Flat in-tangents but one out-tangent that is not: still cubic.
        RedundantCase{"one_tangent", 2, {1, 1, 1}, {0, 0, 0}, {0, 3e-5f, 0}, 2, {0, 1, 2}}),
    [](const testing::TestParamInfo<RedundantCase>& info) { return std::string(info.param.label); });

TEST(RedundantWeights, RowsAreComparedOverTheShorterLength) {
    WeightsChannel channel;
    channel.interpolation = 1;
    channel.times = {0.0f, 1.0f, 2.0f};
    // The middle row's second column differs by 9, but its neighbours have one column.
    channel.values = {{0.0f}, {0.0f, 9.0f}, {0.0f}};
    RemoveRedundantKeys(channel, 1e-5f);
    EXPECT_EQ(channel.times, (std::vector<float>{0.0f, 2.0f}));
}

TEST(RedundantWeights, KeptRowsKeepTheirValues) {
    WeightsChannel channel;
    channel.interpolation = 1;
    channel.times = {0.0f, 1.0f, 2.0f, 3.0f};
    channel.values = {{0.0f, 1.0f}, {5.0f, 1.0f}, {5.0f, 1.0f}, {0.0f, 1.0f}};
    RemoveRedundantKeys(channel, 1e-5f);
    EXPECT_EQ(channel.times, (std::vector<float>{0.0f, 1.0f, 2.0f, 3.0f}));
    EXPECT_EQ(channel.values, (std::vector<std::vector<float>>{{0.0f, 1.0f}, {5.0f, 1.0f}, {5.0f, 1.0f}, {0.0f, 1.0f}}));
}

TEST(Ranges, EmptyRangeStartsAtTheLargestFloatAndEndsAtTheSmallestNormal) {
    TimeRange range;
    EXPECT_EQ(range.start, 3.4028235e38f);
    EXPECT_EQ(range.end, 1.1754944e-38f);
    // A single key at 0 moves the start only: the end stays just above 0.
    FbxTestScene doc;
    FbxAnimLayer* layer = AddStack(doc, "take");
    FbxNode* node = doc.Node("n");
    range.Add(Animate(node->LclRotation, layer, "X", {{0.0, 1.0f}}));
    EXPECT_EQ(range.start, 0.0f);
    EXPECT_EQ(range.end, 1.1754944e-38f);
}

}  // namespace
