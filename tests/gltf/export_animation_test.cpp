// Animations in the written GLB: channel order, cubic layout, shared time accessors.
#include <gtest/gtest.h>

#include <cfloat>
#include <cmath>

#include "write_test_support.h"

namespace {
Animation* AddTake(Scene& scene, const std::string& name) {
    Animation* a = new Animation;
    a->name = name;
    scene.AddAnimation(a);
    return a;
}

AnimationTrack& AddTrack(Animation& animation, uint64_t nodeId) {
    animation.tracks.emplace_back();
    animation.tracks.back().nodeId = nodeId;
    return animation.tracks.back();
}

TEST(GlbAnimationExport, CubicTranslationIsInValueOutPerKeyBeforeItsTimes) {
    Scene scene;
    scene.root = NewNode("root", 0);
    VectorChannel& c = AddTrack(*AddTake(scene, "walk"), 0).position;
    c.interpolation = 2;
    c.times = {0, 1};
    c.inTangents = {{1, 1, 1}, {2, 2, 2}};
    c.values = {{3, 3, 3}, {4, 4, 4}};
    c.outTangents = {{5, 5, 5}, {6, 6, 6}};

    GlbParts glb = ExpectChunk(scene, "cubic", AnimationOptions({"walk"}));
    std::vector<uint8_t> expected;
    PutBytes<float>(expected, {1, 1, 1, 3, 3, 3, 5, 5, 5, 2, 2, 2, 4, 4, 4, 6, 6, 6, 0, 1});
    EXPECT_EQ(glb.bin, expected);
}

TEST(GlbAnimationExport, EqualTimesShareOneAccessorAcrossAnimations) {
    Scene scene;
    scene.root = NewNode("root", 0);
    NewNode("c", 5, scene.root);
    const float justAboveHalf = std::nextafter(0.5f, 1.0f);

    // Not named in the options: adds nothing to the buffer.
    AddTrack(*AddTake(scene, "C"), 0).position = VectorChannel{{}, 1, {0, 9}, {}, {{1, 1, 1}, {2, 2, 2}}, {}};

    Animation* a = AddTake(scene, "A");
    AnimationTrack& a0 = AddTrack(*a, 0);
    a0.position.interpolation = 1;
    a0.position.times = {0, 0.5f};
    a0.position.values = {{1, 2, 3}, {4, 5, 6}};
    AnimationTrack& a5 = AddTrack(*a, 5);
    a5.rotationQuat.interpolation = 1;
    a5.rotationQuat.times = {0, 0.5f};
    a5.rotationQuat.values = {{0, 0, 0, 1}, {0, 1, 0, 0}};

    Animation* b = AddTake(scene, "B");
    AnimationTrack& b5 = AddTrack(*b, 5);
    b5.scale.times = {0, 0.5f};
    b5.scale.values = {{1, 1, 1}, {2, 2, 2}};
    AnimationTrack& b0 = AddTrack(*b, 0);
    b0.position.interpolation = 1;
    b0.position.times = {0, justAboveHalf};  // differs in the last float: its own accessor
    b0.position.values = {{0, 0, 0}, {1, 1, 1}};

    GlbParts glb = ExpectChunk(scene, "shared_times", AnimationOptions({"A", "B"}));
    std::vector<uint8_t> quats(glb.bin.begin() + 32, glb.bin.begin() + 64), expected;
    PutBytes<float>(expected, {0, 0, 0, 1, 0, 1, 0, 0});  // x, y, z, w
    EXPECT_EQ(quats, expected);
}

TEST(GlbAnimationExport, AnimationWithoutUsableTrackKeepsItsEntry) {
    Scene scene;
    scene.root = NewNode("root", 0);
    Animation* a = AddTake(scene, "idle");
    AddTrack(*a, 42).position = VectorChannel{{}, 1, {0}, {}, {{1, 1, 1}}, {}};  // unknown node
    AddTrack(*a, 0);                                                           // all channels empty
    VectorChannel& euler = AddTrack(*a, 0).rotation;                           // never exported
    euler.times = {0};
    euler.values = {{90, 0, 0}};
    ExpectChunk(scene, "no_usable_track", AnimationOptions({"idle"}));
}

// A node with a two-target morph and a track that drives all four exported channels.
void MorphScene(Scene& scene, int32_t weightsInterpolation) {
    scene.root = NewNode("root", 0);
    Geometry* g = NewGeometry(scene, "g", 0);
    VertexData* v = Triangle(scene);
    v->normals = {0, 0, 1, 0, 0, 1, 0, 0, 1};
    MeshInstance* mi = NewInstance(scene, *g, v, {0, 1, 2});
    mi->morph = New<Morph>(scene);
    for (int i = 0; i < 2; ++i) {
        MorphTarget* t = New<MorphTarget>(scene, 3u);
        t->deltaPositions[size_t(3 * i + 2)] = 1.0f;
        Compact(*t, FLT_EPSILON);
        mi->morph->targets.push_back(t);
    }
    scene.root->geometry = g;

    AnimationTrack& t = AddTrack(*AddTake(scene, "talk"), 0);
    t.weights.interpolation = weightsInterpolation;
    t.weights.times = {0, 1, 2};
    if (weightsInterpolation == 2) {
        t.weights.times = {0, 1};
        t.weights.inTangents = {{-3, 0}, {0, 0}};
        t.weights.values = {{0, 1}, {1, 0}};
        t.weights.outTangents = {{0, 0}, {0, 7}};
    } else {
        t.weights.values = {{0, 1}, {0.5f, 0.25f}, {1, -0.5f}};
    }
    t.scale = VectorChannel{{}, 1, {0, 2}, {}, {{1, 1, 1}, {2, 2, 2}}, {}};
    t.rotation = VectorChannel{{}, 1, {0, 2}, {}, {{0, 0, 0}, {0, 90, 0}}, {}};
    t.rotationQuat = QuatChannel{{}, 1, {0, 2}, {}, {{0, 0, 0, 1}, {0, 0.70710677f, 0, 0.70710677f}}, {}};
    t.position = VectorChannel{{}, 0, {0, 1, 2}, {}, {{0, 0, 0}, {0, 1, 0}, {0, 2, 0}}, {}};
}

TEST(GlbAnimationExport, MorphTrackChannelsSamplersAndWeightsBounds) {
    const struct {
        int32_t weightsInterpolation;
        bool model;
        const char* stem;
    } cases[] = {{1, true, "weights"}, {2, true, "cubic_weights"}, {1, false, "weights_no_model"}};
    for (const auto& c : cases) {
        Scene scene;
        MorphScene(scene, c.weightsInterpolation);
        ExpectFragments(scene, c.stem, AnimationOptions({"talk"}, c.model));
    }
}

TEST(GlbAnimationExport, OfTwoNodesWithOneIdTheLaterIsDriven) {
    // A glTF input with several top nodes gets a "SceneRoot" of id 0 above node 0.
    Scene scene;
    scene.root = NewNode("SceneRoot", 0);
    NewNode("node_0", 0, scene.root);
    NewNode("node_1", 1, scene.root);
    AddTrack(*AddTake(scene, "t"), 0).position = VectorChannel{{}, 1, {0}, {}, {{1, 1, 1}}, {}};
    ExpectFragments(scene, "duplicate_id", AnimationOptions({"t"}));
}
}  // namespace
