// The passes over the whole tree at the end of an FBX load: unique node names (cases in
// data/node_names.txt), counters past three digits, node attributes that keep their names;
// and the unit scaling (cases in data/unit_scale.txt): stage one moves the file's unit onto
// the root and out of the top nodes and their tracks; stage two, started only by a root
// scale component of exactly 0.01f, brings every position down by 100 instead.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "fbximport/fbx_node_walk.h"
#include "import_test_support.h"
#include "scene_builder.h"

namespace {

class MakeNodeNamesUniqueTest : public testing::TestWithParam<testsupport::TableRow> {};

TEST_P(MakeNodeNamesUniqueTest, RenamesLaterOccurrences) {
    const std::vector<std::string> names = GetParam().Items(1), expected = GetParam().Items(3);
    const std::vector<float> parents = GetParam().Floats(2);
    FbxTestScene doc;
    std::vector<FbxNode*> nodes;
    for (size_t k = 0; k < names.size(); ++k)
        nodes.push_back(doc.Node(names[k], parents.at(k) < 0 ? nullptr : nodes.at(size_t(parents[k]))));

    MakeNodeNamesUnique(doc.Root());

    ASSERT_EQ(nodes.size(), expected.size());
    for (size_t k = 0; k < nodes.size(); ++k) EXPECT_EQ(nodes[k]->GetName(), expected[k]) << "node " << k;
    EXPECT_STREQ(doc.Root()->GetName(), "RootNode");
}

INSTANTIATE_TEST_SUITE_P(Trees, MakeNodeNamesUniqueTest, testing::ValuesIn(Table("node_names.txt")), RowName);

TEST(MakeNodeNamesUnique, CountersGrowPastThreeDigitsAndAttributesKeepTheirNames) {
    FbxTestScene doc;
    std::vector<FbxNode*> nodes;
    for (int k = 0; k < 1002; ++k) nodes.push_back(doc.Node("x"));
    FbxNull* attribute = FbxNull::Create(doc.Scene(), "x");
    nodes[1]->SetNodeAttribute(attribute);
    MakeNodeNamesUnique(doc.Root());
    EXPECT_STREQ(nodes[0]->GetName(), "x");
    EXPECT_STREQ(nodes[7]->GetName(), "x.007");
    EXPECT_STREQ(nodes[999]->GetName(), "x.999");
    EXPECT_STREQ(nodes[1000]->GetName(), "x.1000");
    EXPECT_STREQ(nodes[1001]->GetName(), "x.1001");
    EXPECT_STREQ(attribute->GetName(), "x");
}

class ApplyUnitScaleTest : public testing::TestWithParam<testsupport::TableRow> {};

VectorChannel OneKey(float value) { return testsupport::Channel(1, {0.0f}, {{value, 0, 0}}, {value, value, value}); }

AnimationTrack Track(uint64_t node, float position, float scale, float rotation) {
    AnimationTrack track;
    track.nodeId = node;
    track.position = OneKey(position);
    track.scale = OneKey(scale);
    track.rotation = OneKey(rotation);
    return track;
}

TEST_P(ApplyUnitScaleTest, ScalesNodesAndTracks) {
    const testsupport::TableRow& c = GetParam();
    testsupport::SceneBuilder b;
    const std::vector<float> rootScale = c.Floats(2);
    GraphNode* root = b.Root("root", 1).Scale(rootScale.at(0), rootScale.at(1), rootScale.at(2));
    GraphNode* top = b.Node(root).Child("top", 2).Position(1, 2, 3);
    GraphNode* leaf = b.Node(top).Child("leaf", 3).Position(4, 0, 0);
    Animation* take = b.AddAnimation("take", 1.0f);
    take->tracks = {Track(2, 5.0f, 2.0f, 45.0f), Track(3, 3.0f, 2.0f, 0.0f)};

    testing::internal::CaptureStdout();
    ApplyUnitScale(b.scene(), c.Float(1));
    EXPECT_EQ(testing::internal::GetCapturedStdout(), c.Text(10));

    ExpectVec3(root->scale, c.Floats(3));
    ExpectVec3(root->position, {0, 0, 0});
    ExpectVec3(top->position, c.Floats(4));
    ExpectVec3(top->scale, c.Floats(5));
    ExpectVec3(leaf->position, c.Floats(6));
    ExpectVec3(leaf->scale, {1, 1, 1});

    const AnimationTrack& t = take->tracks[0];
    EXPECT_FLOAT_EQ(t.position.values[0].x, c.Float(7));
    EXPECT_FLOAT_EQ(t.position.defaultValue.y, c.Float(7));
    EXPECT_FLOAT_EQ(t.scale.values[0].x, c.Float(8));
    EXPECT_FLOAT_EQ(t.rotation.values[0].x, 45.0f) << "rotation is never scaled";
    const AnimationTrack& l = take->tracks[1];
    EXPECT_FLOAT_EQ(l.position.values[0].x, c.Float(9));
    EXPECT_FLOAT_EQ(l.scale.values[0].x, 2.0f) << "a deeper node's scale track is never scaled";
}

INSTANTIATE_TEST_SUITE_P(Units, ApplyUnitScaleTest, testing::ValuesIn(Table("unit_scale.txt")), RowName);

}  // namespace
