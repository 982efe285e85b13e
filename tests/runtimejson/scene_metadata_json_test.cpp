#include "runtimejson/scene_metadata_json.h"
#include "runtimejson/metadata_json.h"

#include <gtest/gtest.h>

#include <cstdio>

#include "expected_file.h"
#include "scene_builder.h"

namespace {

using namespace testing_scene;
using namespace testsupport;

TEST(SceneMetadataJson, EntitiesComponentsAndAssets) {
    SceneBuilder b;
    auto root = b.Root();
    Material* skinMat = b.AddMaterial("skinMat", 1);
    Material* propMat = b.AddMaterial("propMat", 2);
    Material ghost;  // not in the dictionary
    ghost.name = "ghost";

    VertexData* bodyVertices = b.NewVertices();
    bodyVertices->positions.assign(12, 0.0f);
    bodyVertices->normals.assign(12, 0.0f);
    Geometry* bodyMesh = b.AddGeometry("bodyMesh", 10);
    b.AddMesh(bodyMesh).Vertices(bodyVertices).Indices({0, 1, 2, 0, 2, 3}).WithSkin(b.NewSkin({5, 6, 77}))
        .WithMaterial(skinMat);
    b.AddMesh(bodyMesh).Vertices(bodyVertices).Type(1);  // lines add no triangles

    VertexData* propVertices = b.NewVertices();
    propVertices->positions.assign(9, 0.0f);
    propVertices->colors.assign(12, 0.5f);
    propVertices->joints.assign(12, 0);
    propVertices->weights.assign(12, 0.25f);
    propVertices->texCoords[0].assign(6, 0.0f);
    propVertices->texCoords[1].assign(6, 0.0f);
    propVertices->texCoords[2].assign(6, 0.0f);
    Geometry* propMesh = b.AddGeometry("propMesh", 11);
    b.AddMesh(propMesh).Vertices(propVertices).Compressed().WithMaterial(propMat);
    b.AddMesh(propMesh).WithMaterial(&ghost);

    VertexData* rigVertices = b.NewVertices();
    rigVertices->positions.assign(9, 0.0f);
    Geometry* rigMesh = b.AddGeometry("rigMesh", 12);
    b.AddMesh(rigMesh).Vertices(rigVertices).Indices({0, 1, 2}).WithSkin(b.NewSkin({4, 7}));

    Camera camera;
    camera.projection = 2;
    camera.nearClip = 0.5f;
    camera.farClip = 100.0f;
    camera.fov = 60.0f;
    root.Child("cam", 1).WithCamera(camera).WithGeometry(bodyMesh);  // the camera wins
    Light point;
    point.type = 1;
    point.falloffMode = 3;
    point.range = 5.0f;
    Light spot;
    spot.type = 2;
    root.Child("lamp", 2).Position(1, 2, 3).WithLight(point).Child("spotty", 3).WithLight(spot);
    root.Child("body", 4).WithGeometry(bodyMesh).Child("hip", 5).Child("knee", 6).ScaleCompensation();
    root.Child("prop", 7).WithGeometry(propMesh);
    root.Child("rootskin", 8).WithGeometry(rigMesh);
    Light directional;
    directional.castShadows = true;
    directional.falloffMode = 1;  // has no place on a directional light
    root.Child("dirlight", 9).Rotation(0, -90, 0).WithLight(directional);

    const std::string path = ScratchPath("scene_metadata_test.json");
    ASSERT_TRUE(WriteSceneMetadataJson(path, b.scene()));
    EXPECT_EQ(ReadFileText(path), Expected("scene_metadata_pretty"));
    std::remove(path.c_str());
}

TEST(SceneMetadataJson, EmptySceneHasEmptyListsAndNoRootEntity) {
    SceneBuilder b;
    b.Root();
    EXPECT_EQ(JsonWriter(NoFormat).WriteString(BuildSceneMetadataJson(b.scene())), Expected("scene_metadata_empty"));
}

// The render component's root bone: an unknown joint is skipped; a joint that is its own
// ancestor is the root; of two entities with one id the later one stands (as for bone names
// in the model file); with no known joint there is none, and the rest is still written.
TEST(SceneMetadataJson, RootBone) {
    struct Case {
        std::vector<int64_t> joints;
        void (*bones)(NodeBuilder&);
        const char* rootBone;  // nullptr: no member
    } cases[] = {
        {{99, 3}, [](NodeBuilder& root) { root.Child("arm", 2).Child("hand", 3); }, "2"},
        {{5},
         [](NodeBuilder& root) {
             root.Child("first", 5).Child("below", 7);
             root.Child("later", 5);
         },
         "3"},
        {{99}, [](NodeBuilder&) {}, nullptr},
    };
    for (const Case& c : cases) {
        SceneBuilder b;
        auto root = b.Root();
        Geometry* g = b.AddGeometry("g", 1);
        b.AddMesh(g).WithSkin(b.NewSkin(c.joints));
        root.Child("mesh", 1).WithGeometry(g);
        c.bones(root);
        const JsonValue render =
            BuildSceneMetadataJson(b.scene()).Get("scene").Get("entities").Get("0").Get("components").Get("render");
        if (c.rootBone) EXPECT_EQ(render.Get("rootBone").Text(), c.rootBone);
        else EXPECT_FALSE(render.Has("rootBone"));
        EXPECT_TRUE(render.Has("materials"));
    }
}

// A deep bone chain with its joints listed from the tip up, on a geometry that several
// nodes share: the common ancestor narrows one level per joint, which must not cost a
// search of the whole chain for every node of it.
TEST(SceneMetadataJson, RootBoneOverADeepChainListedFromTheTip) {
    constexpr int kDepth = 3000;
    SceneBuilder b;
    auto root = b.Root();
    std::vector<int64_t> joints;
    for (int64_t id = kDepth; id >= 2; --id) joints.push_back(id);
    Geometry* g = b.AddGeometry("g", 1);
    b.AddMesh(g).WithSkin(b.NewSkin(joints));
    for (uint64_t i = 0; i < 3; ++i) root.Child("user", 10000 + i).WithGeometry(g);
    GraphNode* bone = root.Child("b1", 1);
    for (uint64_t id = 2; id <= kDepth; ++id) bone = b.Node(bone).Child("b", id);

    const JsonValue entities = BuildSceneMetadataJson(b.scene()).Get("scene").Get("entities");
    // Entities: the three users (0 to 2), then b1 (3), b2 (4), ...; the joints meet at b2.
    for (const char* user : {"0", "1", "2"})
        EXPECT_EQ(entities.Get(user).Get("components").Get("render").Get("rootBone").Text(), "4") << user;
}

TEST(SceneMetadataJson, FalloffStaysOffAnEntityWhoseCameraWins) {
    SceneBuilder b;
    auto root = b.Root();
    Light point;
    point.type = 1;
    root.Child("both", 1).WithCamera(Camera()).WithLight(point);
    const JsonValue entity = BuildSceneMetadataJson(b.scene()).Get("scene").Get("entities").Get("0");
    EXPECT_FALSE(entity.Has("falloffMode"));
    EXPECT_FALSE(entity.Has("range"));
    EXPECT_TRUE(entity.Get("components").Has("camera"));
}

TEST(MetadataJson, CountsDistinctRecordsAndEveryPair) {
    SceneBuilder b;
    auto root = b.Root();
    VertexData* quad = b.NewVertices();
    quad->positions.assign(12, 0.0f);
    quad->normals.assign(12, 0.0f);
    quad->weights.assign(16, 0.25f);  // weights without joint indices: only blendWeight counts
    VertexData* tri = b.NewVertices();
    tri->positions.assign(9, 0.0f);
    tri->colors.assign(9, 1.0f);
    tri->texCoords[1].assign(6, 0.0f);
    tri->texCoords[2].assign(6, 0.0f);  // sets above 1 are not counted
    Skin* skin = b.NewSkin({1});
    Geometry* g = b.AddGeometry("g", 1);
    b.AddMesh(g).Vertices(quad).Indices({0, 1, 2, 0, 2, 3}).WithSkin(skin);
    b.AddMesh(g).Vertices(quad).WithMorph(b.NewMorph({}));  // 4 vertices, no indices: 1 triangle
    Geometry* h = b.AddGeometry("h", 2);
    b.AddMesh(h).Vertices(tri).WithSkin(skin);
    b.AddMesh(h).Indices({0, 1, 2});  // no vertex data at all
    root.Child("a", 1).WithGeometry(g);
    root.Child("b", 2).WithGeometry(g);
    root.Child("c", 3).WithGeometry(h);

    EXPECT_EQ(JsonWriter(NoFormat).WriteString(BuildMetadataJson(b.scene())), Expected("metadata_counts"));
}

}  // namespace
