#include "runtimejson/animation_json.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>
#include <limits>
#include <map>

#include "expected_file.h"
#include "scene_builder.h"

namespace {

using namespace testing_scene;
using namespace testsupport;

AnimationTrack Track(uint64_t nodeId) {
    AnimationTrack track;
    track.nodeId = nodeId;
    track.position = Channel(1, {0.0f}, {{0, 0, 0}});
    return track;
}

TEST(AnimationFile, LastNamedTakeInArchiveOrderStays) {
    SceneBuilder b;
    auto root = b.Root();
    root.Child("hips", 1).Child("spineFirst", 2);
    root.Child("spine", 2);  // a later node of the same id names the tracks
    b.AddAnimation("run", 2.0f)->tracks.push_back(Track(1));
    Animation* walk = b.AddAnimation("walk", 1.5f);
    b.AddAnimation("idle", 3.0f)->tracks.push_back(Track(2));

    // One position key, rotation keys, a scale without keys.
    AnimationTrack single = Track(1);
    single.position = Channel(1, {0.0f}, {{1, 2, 3}});
    single.rotation = Channel(1, {0.0f, 0.5f, 1.0f}, {{0, 0, 0}, {10, 20, 30}, {20, 40, 60}});
    single.scale.defaultValue = {1, 1, 1};
    walk->tracks.push_back(single);

    // One key in each channel: the keys only carry their times.
    AnimationTrack onePerChannel = Track(2);
    onePerChannel.position = Channel(1, {0.25f}, {{5, 5, 5}});
    onePerChannel.rotation = Channel(1, {0.25f}, {{1, 1, 1}});
    onePerChannel.scale = Channel(1, {0.75f}, {{2, 2, 2}});
    walk->tracks.push_back(onePerChannel);

    // Linear channels sampled at each other's times; a stepped channel gives its default.
    AnimationTrack blended = Track(1);
    blended.position = Channel(1, {0.0f, 1.0f}, {{0, 0, 0}, {2, 4, -6}});
    blended.rotation = Channel(1, {0.5f, 0.75f, 1.25f}, {{0, 0, 0}, {0, 90, 0}, {0, 180, 0}});
    blended.scale = Channel(0, {0.0f, 1.0f}, {{3, 3, 3}, {4, 4, 4}}, {1, 2, 1});
    walk->tracks.push_back(blended);

    AnimationTrack unknownNode = Track(42);
    unknownNode.position = Channel(1, {0.0f, 1.0f}, {{0, 0, 0}, {1, 1, 1}});
    walk->tracks.push_back(unknownNode);

    AnimationTrack weightsOnly;
    weightsOnly.nodeId = 2;
    weightsOnly.weights.times = {0.0f, 1.0f};
    weightsOnly.weights.values = {{0.0f}, {1.0f}};
    walk->tracks.push_back(weightsOnly);

    AnimationTrack cubic = Track(2);
    cubic.position = Channel(2, {0.0f, 1.0f}, {{1, 1, 1}, {2, 2, 2}}, {7, 8, 9});
    cubic.position.inTangents = cubic.position.outTangents = {{0, 0, 0}, {0, 0, 0}};
    walk->tracks.push_back(cubic);

    const std::string path = ScratchPath("animation_test.json");
    ASSERT_TRUE(WriteAnimationsJson(path, b.scene(), {"walk", "run"}, false));
    EXPECT_EQ(ReadFileText(path), Expected("animation_walk_compact"));
    std::remove(path.c_str());
    // No take of the names: no file.
    EXPECT_TRUE(WriteAnimationsJson(path, b.scene(), {"swim"}, false));
    EXPECT_FALSE(std::ifstream(path).good());
}

// One track of a take, written with its node names.
std::string OneTrack(const char* name, const AnimationTrack& track, const std::map<uint64_t, std::string>& names) {
    Animation animation;
    animation.name = name;
    animation.tracks.push_back(track);
    return JsonWriter(NoFormat).WriteString(BuildAnimationJson(animation, names));
}

TEST(AnimationJson, KeysNeverReadOutsideTheirValues) {
    AnimationTrack shortValues;
    shortValues.nodeId = 0;
    shortValues.position = Channel(1, {0.0f, 1.0f, 2.0f}, {{1, 1, 1}, {3, 3, 3}});
    shortValues.rotation = Channel(1, {0.5f}, {});  // one time, no value: the default stands
    EXPECT_EQ(OneTrack("short", shortValues, {{0, "root"}}), Expected("animation_short_values"));
    AnimationTrack nanTime;
    nanTime.position = Channel(1, {std::numeric_limits<float>::quiet_NaN(), 1.0f}, {{1, 1, 1}, {2, 2, 2}});
    EXPECT_EQ(OneTrack("nan", nanTime, {}), Expected("animation_nan_time"));
}

TEST(AnimationJson, NodeNameWithAZeroByteIsWrittenWholeAndQuaternionTracksAreLeftOut) {
    SceneBuilder b;
    b.Root().Child(std::string("a\0b", 3), 7);
    Animation* take = b.AddAnimation("z", 1.0f);
    AnimationTrack quatOnly;  // the Euler channels decide; quaternion keys alone give no record
    quatOnly.nodeId = 7;
    quatOnly.rotationQuat.interpolation = 1;
    quatOnly.rotationQuat.times = {0.0f, 1.0f};
    quatOnly.rotationQuat.values = {Quat(), Quat()};
    take->tracks.push_back(quatOnly);
    AnimationTrack moved;
    moved.nodeId = 7;
    moved.position = Channel(1, {0.0f, 1.0f}, {{1, 1, 1}, {2, 2, 2}});
    take->tracks.push_back(moved);
    const std::string path = ScratchPath("animation_zero_byte.json");
    ASSERT_TRUE(WriteAnimationsJson(path, b.scene(), {"z"}, false));
    EXPECT_EQ(ReadFileText(path), Expected("animation_zero_byte_name"));
    std::remove(path.c_str());
}

}  // namespace
