// The unit scaling pass at the end of an FBX load: stage one moves the file's unit onto the
// root and out of the top nodes and their tracks; stage two, started only by a root scale
// component of exactly 0.01f, brings every position down by 100 instead.
#include <gtest/gtest.h>

#include <string>

#include "fbximport/fbx_node_walk.h"
#include "import_test_support.h"
#include "scene/scene.h"

namespace {

struct UnitCase {
    const char* label;
    float unitScale;
    Vec3 rootScale;
    // Expected results for the tree root -> top -> leaf, with top at position (1, 2, 3) and
    // scale (1, 1, 1), leaf at position (4, 0, 0); tracks of both nodes with one key each:
    // top position 5, top scale 2, leaf position 3.
    Vec3 rootScaleAfter;
    Vec3 topPosition, topScale, leafPosition;
    float topTrackPosition, topTrackScale, leafTrackPosition;
    std::string console;
};

// Stage one factors, by hand: applied = unitScale * 0.01f, inverse = 1 / applied.
constexpr float kCmApplied = 0.01f;               // 1 * 0.01f
constexpr float kCmInverse = 100.0f;              // 1 / 0.01f rounds back to exactly 100
constexpr float kInchApplied = 2.54f * 0.01f;     // 0.0254: not 0.01f, so no stage two
constexpr float kInchInverse = 1.0f / kInchApplied;

const char kStageTwoLines[] = "Node: root\nNode: top\nNode: leaf\n";

std::vector<UnitCase> Cases() {
    return {
        // A file in metres: nothing to do apart from the root test.
        {"Metres", 100.0f, {1, 1, 1}, {1, 1, 1}, {1, 2, 3}, {1, 1, 1}, {4, 0, 0}, 5.0f, 2.0f, 3.0f, ""},
        // Centimetres: the root scale becomes exactly 0.01f, so stage two follows. The top
        // position grows by 100 and comes back down; its scale keeps the factor 100; the
        // leaf and every position track are divided by 100.
        {"Centimetres", 1.0f, {1, 1, 1}, {1, 1, 1}, {1, 2, 3}, {kCmInverse, kCmInverse, kCmInverse}, {0.04f, 0, 0},
         5.0f * kCmInverse * 0.01f, 2.0f * kCmInverse, 3.0f * 0.01f,
         std::string("Unit scale applied: 0.010000\n") + kStageTwoLines},
        {"Inches", 2.54f, {1, 1, 1}, {kInchApplied, kInchApplied, kInchApplied},
         {1 * kInchInverse, 2 * kInchInverse, 3 * kInchInverse}, {kInchInverse, kInchInverse, kInchInverse},
         {4, 0, 0}, 5.0f * kInchInverse, 2.0f * kInchInverse, 3.0f, "Unit scale applied: 0.025400\n"},
        // Metres, but one root scale component (here z) at exactly 0.01f starts stage two.
        {"MetresRootScaleHundredth", 100.0f, {7, 3, 0.01f}, {1, 1, 1}, {0.01f, 0.02f, 0.03f}, {1, 1, 1},
         {0.04f, 0, 0}, 5.0f * 0.01f, 2.0f, 3.0f * 0.01f, kStageTwoLines},
        // A component next to 0.01f does not count: the comparison is exact.
        {"MetresRootScaleNearHundredth", 100.0f, {0.0100001f, 1, 1}, {0.0100001f, 1, 1}, {1, 2, 3}, {1, 1, 1},
         {4, 0, 0}, 5.0f, 2.0f, 3.0f, ""},
    };
}

class ApplyUnitScaleTest : public testing::TestWithParam<UnitCase> {};

VectorChannel OneKey(float value) {
    VectorChannel channel;
    channel.defaultValue.Set(value, value, value);
    channel.interpolation = 1;
    channel.times = {0.0f};
    channel.values = {Vec3(value, 0.0f, 0.0f)};
    return channel;
}

TEST_P(ApplyUnitScaleTest, ScalesNodesAndTracks) {
    const UnitCase& c = GetParam();
    Scene scene;
    scene.root = new GraphNode;
    scene.root->name = "root";
    scene.root->id = 1;
    scene.root->scale = c.rootScale;
    auto* top = new GraphNode;
    top->name = "top";
    top->id = 2;
    top->position.Set(1, 2, 3);
    scene.root->AddChild(top);
    auto* leaf = new GraphNode;
    leaf->name = "leaf";
    leaf->id = 3;
    leaf->position.Set(4, 0, 0);
    top->AddChild(leaf);

    auto* take = new Animation;
    take->name = "take";
    AnimationTrack topTrack;
    topTrack.nodeId = 2;
    topTrack.position = OneKey(5.0f);
    topTrack.scale = OneKey(2.0f);
    topTrack.rotation = OneKey(45.0f);
    AnimationTrack leafTrack;
    leafTrack.nodeId = 3;
    leafTrack.position = OneKey(3.0f);
    leafTrack.scale = OneKey(2.0f);
    take->tracks = {topTrack, leafTrack};
    scene.AddAnimation(take);

    testing::internal::CaptureStdout();
    ApplyUnitScale(scene, c.unitScale);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), c.console);

    ExpectVec3(scene.root->scale, c.rootScaleAfter.x, c.rootScaleAfter.y, c.rootScaleAfter.z);
    ExpectVec3(scene.root->position, 0, 0, 0);
    ExpectVec3(top->position, c.topPosition.x, c.topPosition.y, c.topPosition.z);
    ExpectVec3(top->scale, c.topScale.x, c.topScale.y, c.topScale.z);
    ExpectVec3(leaf->position, c.leafPosition.x, c.leafPosition.y, c.leafPosition.z);
    ExpectVec3(leaf->scale, 1, 1, 1);

    const AnimationTrack& t = take->tracks[0];
    EXPECT_FLOAT_EQ(t.position.values[0].x, c.topTrackPosition);
    EXPECT_FLOAT_EQ(t.position.defaultValue.y, c.topTrackPosition);
    EXPECT_FLOAT_EQ(t.scale.values[0].x, c.topTrackScale);
    EXPECT_FLOAT_EQ(t.rotation.values[0].x, 45.0f) << "rotation is never scaled";
    const AnimationTrack& l = take->tracks[1];
    EXPECT_FLOAT_EQ(l.position.values[0].x, c.leafTrackPosition);
    EXPECT_FLOAT_EQ(l.scale.values[0].x, 2.0f) << "a deeper node's scale track is never scaled";
}

INSTANTIATE_TEST_SUITE_P(Units, ApplyUnitScaleTest, testing::ValuesIn(Cases()),
                         [](const testing::TestParamInfo<UnitCase>& row) { return row.param.label; });

}  // namespace
