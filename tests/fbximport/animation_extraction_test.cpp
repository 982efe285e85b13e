// Whole takes from documents built in memory: the range over all nodes' local curves and
// its odd end, stacks and layers that give nothing, compensation tracks, thinning by
// option, duplicate take names. The slots' weight tracks are left to the whole runs.
#include <gtest/gtest.h>

#include "import_test_support.h"
#include "fbximport/animation_extraction.h"

namespace {

struct Extraction {
    FbxTestScene doc;
    Scene scene;
    ConversionOptions options;
    SscLinks ssc;
    GroupNodes groups;
    std::string out;

    void Run() {
        testing::internal::CaptureStdout();
        ExtractAnimations(doc.Scene(), scene, options, ssc, groups);
        out = testing::internal::GetCapturedStdout();
    }
    const Animation* Take(const std::string& name) const {
        auto it = scene.byName.find(name);
        return it == scene.byName.end() ? nullptr : it->second;
    }
};

std::vector<uint64_t> TrackIds(const Animation& animation) {
    std::vector<uint64_t> ids;
    for (const AnimationTrack& track : animation.tracks) ids.push_back(track.nodeId);
    return ids;
}

TEST(ExtractAnimations, TheRangeCoversTheLocalCurvesOfAllNodes) {
    Extraction x;
    FbxNode* a = x.doc.Node("a");
    FbxNode* b = x.doc.Node("b", a);
    FbxAnimLayer* layer = x.doc.AddStack("walk");
    Animate(a->LclTranslation, layer, "X", {{0.5, 1.0f}, {2.0, 3.0f}});
    Animate(b->LclRotation, layer, "Y", {{-1.0, 0.0f}, {1.0, 10.0f}});
    Animate(b->LclScaling, layer, "Z", {{0.0, 1.0f}, {1.5, 2.0f}});
    FbxProperty other = FbxProperty::Create(b, FbxDouble3DT, "Other");  // does not widen the range
    Animate(other, layer, "X", {{-5.0, 0.0f}, {9.0, 1.0f}});
    x.options.animationStart = -10.0f;  // the default 0 would cut the range at 0
    x.Run();

    const Animation* walk = x.Take("walk");
    ASSERT_NE(walk, nullptr);
    EXPECT_EQ(walk->duration, 3.0f);  // -1 s to 2 s; times count from -1 s
    ASSERT_EQ(TrackIds(*walk), (std::vector<uint64_t>{a->GetUniqueID(), b->GetUniqueID()}));
    EXPECT_EQ(walk->tracks[0].position.times, (std::vector<float>{1.5f, 3.0f}));
    EXPECT_EQ(walk->tracks[1].rotationQuat.times, (std::vector<float>{0.0f, 2.0f}));
    EXPECT_EQ(walk->tracks[1].scale.times, (std::vector<float>{1.0f, 2.5f}));
}

TEST(ExtractAnimations, KeysAtOrBeforeZeroEndJustAboveZeroAndASecondTakeOfANameIsDropped) {
    Extraction x;
    FbxNode* a = x.doc.Node("a");
    Animate(a->LclRotation, x.doc.AddStack("single"), "X", {{0.0, 5.0f}});
    Animate(x.doc.Node("b")->LclRotation, x.doc.AddStack("negative"), "X", {{-2.0, 1.0f}, {-1.0, 2.0f}});
    Animate(a->LclRotation, x.doc.AddStack("take"), "X", {{0.0, 1.0f}, {1.0, 2.0f}});
    Animate(a->LclRotation, x.doc.AddStack("take"), "X", {{0.0, 1.0f}, {4.0, 2.0f}});
    x.Run();
    // The end starts at the smallest normal float, so both ranges end there; the user start
    // 0 lies below it, and the negative keys keep their times.
    ASSERT_EQ(x.scene.GetAnimationCount(), 3);
    EXPECT_EQ(x.Take("single")->duration, 1.1754944e-38f);
    EXPECT_EQ(x.Take("negative")->duration, 1.1754944e-38f);
    EXPECT_EQ(x.Take("negative")->tracks[0].rotation.times, (std::vector<float>{-2.0f, -1.0f}));
    EXPECT_EQ(x.Take("take")->duration, 1.0f);
    EXPECT_NE(x.out.find("AnimationDictionary::AddAnimation : Animation take occurs more than once"),
              std::string::npos);
}

TEST(ExtractAnimations, StacksWithoutKeysGiveNothingAndOnlyTheFirstLayerCounts) {
    Extraction x;
    FbxNode* a = x.doc.Node("a");
    x.doc.AddStack("empty");
    FbxAnimStack::Create(x.doc.Scene(), "no layer");
    FbxAnimLayer* base = x.doc.AddStack("layered");
    FbxAnimLayer* second = FbxAnimLayer::Create(x.doc.Scene(), "second");
    x.doc.Scene()->GetSrcObject<FbxAnimStack>(2)->ConnectSrcObject(second);
    Animate(a->LclTranslation, base, "X", {{0.0, 1.0f}, {1.0, 2.0f}});
    Animate(a->LclTranslation, second, "X", {{0.0, 7.0f}, {5.0, 9.0f}});
    x.Run();
    ASSERT_EQ(x.scene.GetAnimationCount(), 1);
    const Animation* layered = x.Take("layered");
    ASSERT_NE(layered, nullptr);
    EXPECT_EQ(layered->duration, 1.0f);
    EXPECT_EQ(Xs(layered->tracks[0].position.values), (std::vector<float>{1.0f, 2.0f}));
}

TEST(ExtractAnimations, CompensationTracksComeFirstAndCancelTheParentScale) {
    Extraction x;
    FbxNode* p = x.doc.Node("p");
    FbxNode* c = x.doc.Node("c", p);
    FbxNode* d = x.doc.Node("d");
    FbxAnimLayer* layer = x.doc.AddStack("take");
    p->LclScaling.Set(FbxDouble3{5.0, 1.0, 1.0});
    Animate(p->LclScaling, layer, "X", {{0.0, 2.0f}, {1.0, 4.0f}});
    Animate(c->LclTranslation, layer, "X", {{0.0, 1.0f}, {0.5, 1.5f}, {1.0, 2.0f}});  // a line
    Animate(c->LclRotation, layer, "Z", {{0.0, 0.0f}, {0.5, 45.0f}, {1.0, 90.0f}});
    x.ssc[c] = SscLink{777, p->GetUniqueID(), true};
    x.ssc[d] = SscLink{888, x.doc.Root()->GetUniqueID(), true};  // no keys, parent without a track
    x.options.positionTolerance = x.options.rotationTolerance = x.options.scaleTolerance = 100.0f;
    x.Run();

    const Animation* take = x.Take("take");
    ASSERT_NE(take, nullptr);
    ASSERT_EQ(TrackIds(*take), (std::vector<uint64_t>{p->GetUniqueID(), 777, c->GetUniqueID(), 888}));
    const AnimationTrack& ssc = take->tracks[1];
    EXPECT_EQ(Xs(ssc.position.values), (std::vector<float>{1.0f, 1.5f, 2.0f}));  // not thinned
    // The parent's keys (2, 1, 1) and (4, 1, 1) inverted; its default copied as it is.
    EXPECT_EQ(ssc.scale.times, (std::vector<float>{0.0f, 1.0f}));
    EXPECT_EQ(ssc.scale.values, (std::vector<Vec3>{{0.5f, 1, 1}, {0.25f, 1, 1}}));
    EXPECT_EQ(ssc.scale.defaultValue, Vec3(5, 1, 1));
    EXPECT_TRUE(take->tracks[2].position.times.empty());
    EXPECT_EQ(take->tracks[2].rotation.times, (std::vector<float>{0.0f, 1.0f}));  // thinned
    EXPECT_TRUE(take->tracks[3].scale.times.empty());
}

class ThinningOptionsTest : public testing::TestWithParam<testsupport::TableRow> {};

// Cases and their derivation in data/thinning_options.txt.
TEST_P(ThinningOptionsTest, TolerancesScaleByTheSpreadExceptForRotation) {
    const testsupport::TableRow& c = GetParam();
    Extraction x;
    FbxNode* a = x.doc.Node("a");
    FbxAnimLayer* layer = x.doc.AddStack("take");
    a->LclTranslation.Set(FbxDouble3{0.0, -3.0, 0.0});
    a->LclScaling.Set(FbxDouble3{1.0, 0.5, 1.0});
    Animate(a->LclTranslation, layer, "X", {{0, 0.0f}, {1, 1.0f}, {2, 2.2f}, {3, 3.0f}});
    Animate(a->LclRotation, layer, "X", {{0, 0.0f}, {1, 20.0f}, {2, 40.0f}});
    Animate(a->LclScaling, layer, "X", {{0, 1.0f}, {1, 1.5f}, {2, 2.1f}});
    x.options.positionTolerance = c.Float(1);
    x.options.rotationTolerance = c.Float(2);
    x.options.scaleTolerance = c.Float(3);
    x.Run();
    ASSERT_NE(x.Take("take"), nullptr);
    const AnimationTrack& t = x.Take("take")->tracks.at(0);
    EXPECT_EQ(t.position.times, c.Floats(4));
    EXPECT_EQ(t.rotation.times, c.Floats(5));
    EXPECT_EQ(t.rotationQuat.times, c.Floats(6));
    EXPECT_EQ(t.scale.times, c.Floats(7));
}

INSTANTIATE_TEST_SUITE_P(Extraction, ThinningOptionsTest, testing::ValuesIn(Table("thinning_options.txt")), RowName);

}  // namespace
