// Whole JSON chunks of small hand-built scenes, byte for byte, plus their binary chunks.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "gltf/glb_json_write.h"
#include "write_test_support.h"

namespace {
TEST(GlbJson, IdentityNodeHasJustItsName) {
    Scene scene;
    scene.root = NewNode("root", 7);
    GlbParts glb = WriteAndRead(scene, ModelOptions(), "identity");
    ASSERT_TRUE(glb.ok) << glb.error;
    EXPECT_EQ(TrimmedJson(glb), std::string(kAsset) +
                                    R"("nodes":[{"name":"root"}],"meshes":[],"buffers":[{"byteLength":0}],)"
                                    R"("bufferViews":[],"accessors":[],"scenes":[{"nodes":[0]}]})");
    EXPECT_TRUE(glb.bin.empty());
}

TEST(GlbJson, GeneratorFollowsTheVersionOfTheOptionsAndEmptyNamesStay) {
    Scene scene;
    scene.root = NewNode("", 0);
    ExportOptions options = ModelOptions();
    options.version = "9.8.7";
    GlbParts glb = WriteAndRead(scene, options, "generator");
    ASSERT_TRUE(glb.ok) << glb.error;
    const std::string head =
        R"({"asset":{"generator":"Fernbright Converter v9.8.7","version":"2.0"},"scene":0,"nodes":[{"name":""}])";
    EXPECT_EQ(TrimmedJson(glb).substr(0, head.size()), head);
}

TEST(GlbJson, TransformMembersAreOmittedAtDefaultAndDroppedWithNaN) {
    Scene scene;
    scene.root = NewNode("root", 0);
    GraphNode* a = NewNode("a", 1, scene.root);
    a->position = Vec3(std::numeric_limits<float>::quiet_NaN(), 0, 0);
    a->rotation = Vec3(0, 90, 0);
    a->scale = Vec3(2, 2, 0.5f);
    GraphNode* b = NewNode("b", 2, scene.root);
    b->position = Vec3(1.5f, -0.0f, 0.1f);
    b->scale = Vec3(1, std::numeric_limits<float>::quiet_NaN(), 1);
    GraphNode* c = NewNode("c", 3, b);
    c->position = Vec3(-0.0f, 0.0f, -0.0f);  // equal to zero: no member

    GlbParts glb = WriteAndRead(scene, ModelOptions(), "transforms");
    ASSERT_TRUE(glb.ok) << glb.error;
    // Euler (0, 90, 0) is the quaternion (0, sin 45, 0, cos 45), six digits each.
    EXPECT_EQ(TrimmedJson(glb), std::string(kAsset) +
                                    R"("nodes":[{"name":"root","children":[1,2]},)"
                                    R"({"name":"a","rotation":[0,0.707107,0,0.707107],"scale":[2,2,0.5]},)"
                                    R"({"name":"b","translation":[1.5,-0,0.1],"children":[3]},{"name":"c"}],)"
                                    R"("meshes":[],"buffers":[{"byteLength":0}],"bufferViews":[],"accessors":[],)"
                                    R"("scenes":[{"nodes":[0]}]})");
}

TEST(GlbJson, SharedGeometryOnTwoNodesIsOneMesh) {
    Scene scene;
    scene.root = NewNode("root", 0);
    GraphNode* a = NewNode("a", 1, scene.root);
    GraphNode* b = NewNode("b", 2, scene.root);
    Geometry* g = NewGeometry(scene, "tri", 0);
    VertexData* v = Triangle(scene);
    v->positions[3] = 0.1f;  // max x 0.1 shows the ten-digit bound text
    NewInstance(scene, *g, v, {0, 1, 2});
    a->geometry = g;
    b->geometry = g;

    GlbParts glb = WriteAndRead(scene, ModelOptions(), "shared_geometry");
    ASSERT_TRUE(glb.ok) << glb.error;
    EXPECT_EQ(TrimmedJson(glb),
              std::string(kAsset) +
                  R"("nodes":[{"name":"root","children":[1,2]},{"name":"a","mesh":0},{"name":"b","mesh":0}],)"
                  R"("meshes":[{"primitives":[{"mode":4,"attributes":{"POSITION":1},"indices":0}]}],)"
                  R"("buffers":[{"byteLength":44}],)"
                  R"("bufferViews":[{"buffer":0,"byteLength":6,"byteOffset":0},)"
                  R"({"buffer":0,"byteLength":36,"byteOffset":8,"byteStride":12,"target":34962}],)"
                  R"("accessors":[{"type":"SCALAR","componentType":5123,"count":3,"bufferView":0,"byteOffset":0},)"
                  R"({"type":"VEC3","componentType":5126,"min":[0,0,0],"max":[0.1000000015,1,0],"count":3,)"
                  R"("bufferView":1,"byteOffset":0}],"scenes":[{"nodes":[0]}]})");
    std::vector<uint8_t> expected;
    PutBytes<uint16_t>(expected, {0, 1, 2});
    PadTo4(expected);
    PutBytes<float>(expected, {0, 0, 0, 0.1f, 0, 0, 0, 1, 0});
    EXPECT_EQ(glb.bin, expected);
}

TEST(GlbJson, RootlessSceneWritesEveryAlwaysMember) {
    Scene scene;  // an empty glTF input has no root
    GlbParts glb = WriteAndRead(scene, ModelOptions(), "rootless");
    ASSERT_TRUE(glb.ok) << glb.error;
    EXPECT_EQ(TrimmedJson(glb), std::string(kAsset) +
                                    R"("nodes":[],"meshes":[],"buffers":[{"byteLength":0}],)"
                                    R"("bufferViews":[],"accessors":[],"scenes":[{"nodes":[]}]})");
}

TEST(GlbJson, BoundTextHasTenSignificantDigits) {
    EXPECT_EQ(FormatBoundValue(0.1f), "0.1000000015");
    EXPECT_EQ(FormatBoundValue(0.5f), "0.5");
    EXPECT_EQ(FormatBoundValue(1.23456789012f), "1.234567881");
    EXPECT_EQ(FormatBoundValue(-2.0f), "-2");
    EXPECT_EQ(FormatBoundValue(1e20f), "1.00000002e+20");
    EXPECT_EQ(FormatBoundValue(1e-7f), "1.000000012e-07");
}
}  // namespace
