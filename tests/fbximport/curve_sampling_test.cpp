// Sampling curves into channels (time lists in whole ticks, the range start as origin, NaN,
// cubic derivatives, the interpolation choice), redundant keys, thinning and quaternion
// tangents. The case tables and their derivations are in data/curve_*.txt.
#include <gtest/gtest.h>

#include <algorithm>
#include <limits>

#include "fbximport/curve_sampling.h"
#include "fbximport/curve_thinning.h"
#include "import_test_support.h"

namespace {

using testsupport::TableRow;

// Translation x linear at 0 s: 0, 0.5 s: 5, 1 s: 10, 2 s: 10, 3 s: 0; no Y or Z curve;
// the property's value (1, 2, 3).
class SampleTest : public testing::Test {
protected:
    SampleTest() {
        node->LclTranslation.Set(FbxDouble3{1.0, 2.0, 3.0});
        Animate(node->LclTranslation, layer, "X", {{0.0, 0.0f}, {0.5, 5.0f}, {1.0, 10.0f}, {2.0, 10.0f}, {3.0, 0.0f}});
    }
    VectorChannel Sample(float start, float end, FbxProperty& property) {
        return SampleVectorChannel(property, layer, options, TakeRange(start, end, "take"));
    }

    FbxTestScene doc;
    FbxNode* node = doc.Node("joint");
    FbxAnimLayer* layer = doc.AddStack("take");
    ConversionOptions options;
};

TEST_F(SampleTest, KeysStayUncutAndMissingOrNaNComponentsTakeTheDefault) {
    FbxAnimCurve* y = Animate(node->LclTranslation, layer, "Y", {{0.0, 7.0f}, {1.0, 7.0f}});
    y->KeySetValue(1, std::numeric_limits<float>::quiet_NaN());
    const VectorChannel c = Sample(1.0f, 2.0f, node->LclTranslation);  // the key at 0.5 s lands at -0.5
    EXPECT_EQ(c.times, (std::vector<float>{-1.0f, -0.5f, 0.0f, 1.0f, 2.0f}));
    EXPECT_EQ(Xs(c.values), (std::vector<float>{0.0f, 5.0f, 10.0f, 10.0f, 0.0f}));
    EXPECT_EQ(c.values[0], Vec3(0.0f, 7.0f, 3.0f));
    EXPECT_EQ(c.values[2], Vec3(10.0f, 2.0f, 3.0f));  // y is NaN at 1 s
}

class IntervalTest : public SampleTest, public testing::WithParamInterface<TableRow> {};

TEST_P(IntervalTest, StepsInWholeTicksThenTheEnd) {
    const TableRow& c = GetParam();
    options.keyframeInterval = c.Float(1);
    const VectorChannel channel = Sample(c.Float(2), c.Float(3), node->LclTranslation);
    EXPECT_EQ(channel.times, c.Floats(4));
    EXPECT_EQ(Xs(channel.values), c.Floats(5));
}

INSTANTIATE_TEST_SUITE_P(Sampling, IntervalTest, testing::ValuesIn(Table("curve_intervals.txt")), RowName);

TEST_F(SampleTest, AnIntervalBelowOneTickIsRefused) {
    options.keyframeInterval = 1e-12f;  // 0 ticks: the steps would never reach the end
    EXPECT_EXIT(Sample(0.0f, 1.0f, node->LclTranslation), testing::ExitedWithCode(1),
                "ERROR: keyframe interval .* take 'take'");
}

TEST_F(SampleTest, CubicKeysGiveTheirDerivativesAsTangents) {
    FbxAnimCurve* x = Animate(node->LclRotation, layer, "X", {{0.0, 0.0f}, {1.0, 2.0f}}, 8);
    x->KeySetRightDerivative(0, 2.0f);
    x->KeySetLeftDerivative(1, 2.0f);
    options.cubicCurves = true;
    const VectorChannel c = Sample(0.0f, 1.0f, node->LclRotation);
    ASSERT_EQ(c.interpolation, 2);
    // No left side at the first key, no right side at the last, no Y or Z curve: 0.
    EXPECT_EQ(c.inTangents, (std::vector<Vec3>{{0, 0, 0}, {2, 0, 0}}));
    EXPECT_EQ(c.outTangents, (std::vector<Vec3>{{2, 0, 0}, {0, 0, 0}}));
}

class InterpolationTest : public testing::TestWithParam<TableRow> {};

TEST_P(InterpolationTest, TheMostDemandingKeyDecides) {
    const TableRow& c = GetParam();
    FbxTestScene doc;
    FbxAnimLayer* layer = doc.AddStack("take");
    std::vector<FbxAnimCurve*> curves;
    for (float word : c.Floats(2)) {
        std::vector<TestKey> keys;
        if (word != -1) keys = {{0, 1.0f}, {1, 2.0f}};
        FbxNode* node = doc.Node("n");
        curves.push_back(word == 0 ? nullptr : Animate(node->LclTranslation, layer, "X", keys, std::max(int(word), 0)));
    }
    EXPECT_EQ(ChooseInterpolation(curves, c.Int(1) != 0), c.Int(3));
}

INSTANTIATE_TEST_SUITE_P(Sampling, InterpolationTest, testing::ValuesIn(Table("curve_interpolation.txt")), RowName);

class RedundantKeysTest : public testing::TestWithParam<TableRow> {};

TEST_P(RedundantKeysTest, NeighboursThatAreLeftDecide) {
    const TableRow& c = GetParam();
    const std::vector<float> xs = c.Floats(2), kept = c.Floats(6);
    VectorChannel channel = XChannel(c.Int(1), xs);
    channel.inTangents = XChannel(0, c.Floats(3)).values;
    channel.outTangents = XChannel(0, c.Floats(4)).values;
    RemoveRedundantKeys(channel, 1e-5f);
    EXPECT_EQ(channel.interpolation, c.Int(5));
    EXPECT_EQ(channel.times, kept);
    ASSERT_EQ(channel.values.size(), kept.size());
    for (size_t k = 0; k < kept.size(); ++k) EXPECT_EQ(channel.values[k].x, xs[size_t(kept[k])]);
}

INSTANTIATE_TEST_SUITE_P(Sampling, RedundantKeysTest, testing::ValuesIn(Table("curve_redundant.txt")), RowName);

class ThinningTest : public testing::TestWithParam<TableRow> {};

TEST_P(ThinningTest, KeepsWhatTheLineMisses) {
    const TableRow& c = GetParam();
    VectorChannel channel = XChannel(1, c.Floats(1));
    SimplifyVectorChannel(channel, c.Float(2));
    EXPECT_EQ(channel.times, c.Floats(3));
}

INSTANTIATE_TEST_SUITE_P(Thinning, ThinningTest, testing::ValuesIn(Table("curve_thinning.txt")), RowName);

TEST(QuatChannels, CubicTangentsAreRotationDifferences) {
    VectorChannel rotation = XChannel(2, {0});
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
