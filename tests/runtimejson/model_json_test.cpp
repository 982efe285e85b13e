#include "runtimejson/model_json.h"

#include <gtest/gtest.h>

#include <cfloat>
#include <cmath>
#include <cstdio>
#include <fstream>
#include <limits>

#include "expected_file.h"
#include "scene_builder.h"

namespace {

using namespace testing_scene;
using namespace testsupport;

std::string WriteText(const JsonValue& value, const JsonFormat& format) { return JsonWriter(format).WriteString(value); }

TEST(ModelJson, RootAloneHasEmptyListsWritten) {
    SceneBuilder b;
    EXPECT_EQ(WriteText(BuildModelJson(b.scene()), NoFormat), Expected("model_no_root"));
    b.Root("only");
    EXPECT_EQ(WriteText(BuildModelJson(b.scene()), NoFormat), Expected("model_root_only"));
}

TEST(ModelJson, CameraAndLightMembersFollowTheNode) {
    SceneBuilder b;
    auto root = b.Root();
    Camera ortho;
    ortho.projection = 1;
    ortho.nearClip = 0.1f;
    ortho.farClip = 1000.0f;
    ortho.fov = 45.0f;
    ortho.clearColor = {0.2f, 0.3f, 0.4f};
    root.Child("cam", 1).Position(1.0f, 2.5f, -3.0f).WithCamera(ortho);
    Light sun;
    sun.type = 0;
    sun.enabled = false;
    sun.color = {1.0f, 0.5f, 0.25f};
    sun.intensity = 2.0f;
    sun.castShadows = true;
    sun.falloffMode = 1;  // not written for a directional light
    auto sunNode = root.Child("sun", 2).WithLight(sun);
    Light bulb;
    bulb.type = 1;
    bulb.falloffMode = 5;
    bulb.range = 12.5f;
    sunNode.Child("bulb", 3).WithLight(bulb);
    Light spot;
    spot.type = 2;
    spot.innerConeAngle = 0.1f;
    root.Child("spot", 4).WithLight(spot);
    Light unknown;
    unknown.type = 7;
    root.Child("odd", 5).Rotation(90.0f, 0.0f, -45.0f).Scale(2.0f, 2.0f, 2.0f).ScaleCompensation().WithCamera(Camera())
        .WithLight(unknown);

    EXPECT_EQ(WriteText(BuildModelJson(b.scene()), StandardFormat), Expected("model_nodes_pretty"));
}

// Skin with an unknown joint, morphs with an all-zero and a never-compacted target,
// vertex data shared by two instances, one geometry on two nodes (one with a name to
// escape), colours out of range, texture coordinate sets 0, 1 and a dropped set 2,
// non-finite floats.
TEST(ModelJson, WholeCompactDocumentOfMeshes) {
    SceneBuilder b;
    auto root = b.Root();
    Geometry* body = b.AddGeometry("bodyMesh", 10);
    VertexData* shared = b.NewVertices();
    shared->positions = {0, 0, 0, 1, 0, 0, 0, 1, 0};
    shared->normals = {0, 0, 1, 0, 0, 1, 0, 0, 1};
    const float nan = std::numeric_limits<float>::quiet_NaN();
    const float inf = std::numeric_limits<float>::infinity();
    shared->colors = {-0.5f, 2.0f, 0.5f, 1.0f, 0.1f, 0.2f, 1.0f, 0.0f, nan, inf, 0.999f, 0.003f};
    shared->joints = {0, 1, 300, 2, 1, 0, 0, 0, 2, 2, 2, 2};
    shared->weights = {1, 0, 0, 0, 0.5f, 0.5f, 0, 0, 0.25f, 0.25f, 0.25f, 0.25f};
    shared->texCoords[0] = {0, 0, 1, 0.25f, 0.5f, 1};
    shared->texCoords[1] = {0.5f, 0.5f, 0.1f, 0.9f, 2, -1};
    shared->texCoords[2] = {9, 9, 9, 9, 9, 9};

    Skin* skin = b.NewSkin({1, 99, 3});
    skin->inverseBindMatrices[0].m[12] = 1;
    skin->inverseBindMatrices[0].m[13] = 2;
    skin->inverseBindMatrices[0].m[14] = 3;
    MorphTarget* smile = b.NewTarget("smile", {0, 0, 0, 0.5f, 0, 0, 0, 0, 0}, {0, 0, 0, 0, 0, 0, 0, 0.25f, 0});
    MorphTarget* blank = b.NewTarget("blank", std::vector<float>(9, 0.0f), std::vector<float>(9, 0.0f));
    Compact(*smile, FLT_EPSILON);
    Compact(*blank, FLT_EPSILON);
    b.AddMesh(body).Vertices(shared).Indices({0, 1, 2}).WithSkin(skin).WithMorph(b.NewMorph({smile, blank}))
        .Box({-1, -2, -3}, {1, 2, 3});
    b.AddMesh(body).Vertices(shared).Type(1);

    Geometry* strip = b.AddGeometry("stripMesh", 11);
    VertexData* odd = b.NewVertices();
    odd->positions = {0, 0, 0, nan, 0, 0, inf, -inf, 0, 1e-7f, 1234567.0f, 0.1f};
    odd->texCoords[1] = std::vector<float>(8, 0.0f);
    MorphTarget* dense = b.NewTarget("dense", {1, 2, 3, 4, 5, 6}, {0, 0, 0, 0, 0, 0});
    b.AddMesh(strip).Vertices(odd).Indices({0, 1, 2, 3}).Type(4).WithMorph(b.NewMorph({dense}));

    root.Child("body", 1).WithGeometry(body).Child("joint", 3);
    root.Child("co\"py/\t\\n", 4).WithGeometry(body);  // escapes, and a stored escape pair
    root.Child("strip", 5).WithGeometry(strip);

    ::testing::internal::CaptureStdout();
    const std::string text = WriteText(BuildModelJson(b.scene()), NoFormat);
    EXPECT_EQ(::testing::internal::GetCapturedStdout(), "JSON skin conversion error");
    EXPECT_EQ(text, Expected("model_meshes_compact"));
}

TEST(ModelJson, ParentIndicesWrapAtSixteenBits) {
    SceneBuilder b;
    auto root = b.Root();
    GraphNode* last = nullptr;
    for (int i = 1; i <= 65535; ++i) last = root.Child("n", uint64_t(i));  // indices 1 .. 65535
    b.Node(last).Child("deep", 70000).Child("deeper", 70001);            // indices 65536, 65537
    const JsonValue parents = BuildModelJson(b.scene()).Get("model").Get("parents");
    ASSERT_EQ(parents.Count(), 65538u);
    EXPECT_EQ(parents.Member(65535).Text(), "0");
    EXPECT_EQ(parents.Member(65536).Text(), "65535");
    EXPECT_EQ(parents.Member(65537).Text(), "0");
}

TEST(ModelJson, NullEntriesAreSkippedAndNullVertexDataIsAnEmptyRecord) {
    SceneBuilder b;
    auto root = b.Root();
    Geometry* geometry = b.AddGeometry("g", 1);
    geometry->meshInstances.push_back(nullptr);
    b.AddMesh(geometry);  // no vertex data, no indices
    root.Get()->children.push_back(nullptr);
    root.Child("a", 1).WithGeometry(geometry);
    const JsonValue model = BuildModelJson(b.scene()).Get("model");
    EXPECT_EQ(WriteText(model.Get("vertices"), NoFormat), "[{}]");
    EXPECT_EQ(WriteText(model.Get("meshes"), NoFormat), Expected("model_empty_mesh"));
}

TEST(ModelJsonDeathTest, TargetShorterThanItsCountIsRefusedBeforeWriting) {
    SceneBuilder b;
    auto root = b.Root();
    Geometry* geometry = b.AddGeometry("g", 1);
    MorphTarget* broken = b.NewTarget("broken", {1, 2, 3}, {0, 0, 0});
    broken->count = 5;
    VertexData* vertices = b.NewVertices();
    b.AddMesh(geometry).Vertices(vertices).WithMorph(b.NewMorph({broken}));
    root.Child("a", 1).WithGeometry(geometry);
    const std::string path = ScratchPath("model_refused.json");
    std::remove(path.c_str());
    EXPECT_EXIT(WriteModelJson(path, b.scene(), false), ::testing::ExitedWithCode(1),
                "ERROR: Cannot write '.*model_refused.json': morph target 'broken' holds fewer deltas");
    EXPECT_FALSE(std::ifstream(path).good());
}

TEST(ModelJson, NodeListedTwiceIsWalkedOnce) {
    SceneBuilder b;
    auto root = b.Root();
    GraphNode* a = root.Child("a", 1).Child("b", 2).Get()->parent;
    root.Get()->children.push_back(a);  // malformed: the same child twice
    const JsonValue model = BuildModelJson(b.scene()).Get("model");
    root.Get()->children.pop_back();  // the tree owns its children once
    EXPECT_EQ(JsonWriter(NoFormat).WriteString(model.Get("parents")), "[-1,0,1]");
}

}  // namespace
