// Whole JSON chunks of small hand-built scenes, byte for byte, plus their binary chunks.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "gltf/glb_json_write.h"
#include "write_test_support.h"

namespace {
TEST(GlbJson, IdentityNodeHasJustItsNameAndARootlessSceneEveryAlwaysMember) {
    Scene scene;  // an empty glTF input has no root
    ExpectChunk(scene, "rootless");
    scene.root = NewNode("root", 7);
    EXPECT_TRUE(ExpectChunk(scene, "identity").bin.empty());
}

TEST(GlbJson, GeneratorFollowsTheVersionOfTheOptionsAndEmptyNamesStay) {
    Scene scene;
    scene.root = NewNode("", 0);
    ExportOptions options = ModelOptions();
    options.version = "9.8.7";
    ExpectFragments(scene, "generator", options);
}

TEST(GlbJson, TransformMembersAreOmittedAtDefaultAndDroppedWithNaN) {
    // Euler (0, 90, 0) is the quaternion (0, sin 45, 0, cos 45), six digits each.
    Scene scene;
    scene.root = NewNode("root", 0);
    GraphNode* a = NewNode("a", 1, scene.root);
    a->position = Vec3(std::numeric_limits<float>::quiet_NaN(), 0, 0);
    a->rotation = Vec3(0, 90, 0);
    a->scale = Vec3(2, 2, 0.5f);
    GraphNode* b = NewNode("b", 2, scene.root);
    b->position = Vec3(1.5f, -0.0f, 0.1f);
    b->scale = Vec3(1, std::numeric_limits<float>::quiet_NaN(), 1);
    NewNode("c", 3, b)->position = Vec3(-0.0f, 0.0f, -0.0f);  // equal to zero: no member
    ExpectChunk(scene, "transforms");
}

TEST(GlbJson, SharedGeometryOnTwoNodesIsOneMesh) {
    Scene scene;
    scene.root = NewNode("root", 0);
    Geometry* g = NewGeometry(scene, "tri", 0);
    VertexData* v = Triangle(scene);
    v->positions[3] = 0.1f;  // max x 0.1 shows the ten-digit bound text
    NewInstance(scene, *g, v, {0, 1, 2});
    NewNode("a", 1, scene.root)->geometry = g;
    NewNode("b", 2, scene.root)->geometry = g;

    std::vector<uint8_t> expected;
    PutBytes<uint16_t>(expected, {0, 1, 2});
    PadTo4(expected);
    PutBytes<float>(expected, {0, 0, 0, 0.1f, 0, 0, 0, 1, 0});
    EXPECT_EQ(ExpectChunk(scene, "shared_geometry").bin, expected);
}

TEST(GlbJson, BoundTextHasTenSignificantDigits) {
    const std::pair<float, const char*> rows[] = {{0.1f, "0.1000000015"},   {0.5f, "0.5"},
                                                  {1.23456789012f, "1.234567881"}, {-2.0f, "-2"},
                                                  {1e20f, "1.00000002e+20"}, {1e-7f, "1.000000012e-07"}};
    for (const auto& [value, text] : rows) EXPECT_EQ(FormatBoundValue(value), text);
}
}  // namespace
