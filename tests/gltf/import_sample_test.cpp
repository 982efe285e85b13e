// End to end on the project's generated sample: container, images, import of every part.
#include <cmath>
#include <cstdlib>
#include <fstream>
#include <regex>

#include "read_test_util.h"
#include "runtimejson/json_scene_writer.h"

using namespace gltftest;

namespace {

std::string ReadText(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return std::string((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
}

std::string MakeSample(const ScratchDir& dir) {
    const std::string path = dir.File("sample.glb");
    EXPECT_EQ(std::system((std::string(VURL_SAMPLE_GENERATOR) + " '" + path + "' ").c_str()), 0);
    return path;
}

}  // namespace

TEST(ImportSample, SavesTheTextureAndKeepsEveryChannel) {
    ScratchDir dir;
    const std::string path = MakeSample(dir);

    ::testing::internal::CaptureStdout();
    std::unique_ptr<Scene> scene(LoadGltf(path, ConversionOptions()));
    const std::string out = ::testing::internal::GetCapturedStdout();
    ASSERT_TRUE(scene);
    EXPECT_TRUE(std::regex_match(out, std::regex("writing [0-9]+ bytes to \"" + path + ".fbm/checker.png\"\\.\\.\\.\n")))
        << out;
    std::ifstream png(path + ".fbm/checker.png", std::ios::binary);
    char head[4] = {};
    png.read(head, 4);
    EXPECT_EQ(std::string(head + 1, 3), "PNG");

    // What the JSON files below do not show: the quaternion and weight channels.
    ASSERT_EQ(scene->GetAnimationCount(), 1);
    const Animation& wave = *scene->GetAnimation(0);
    EXPECT_EQ(wave.name, "Wave");
    ASSERT_EQ(wave.tracks.size(), 2u);
    EXPECT_EQ(wave.tracks[0].nodeId, 0u);
    EXPECT_EQ(wave.tracks[0].weights.interpolation, 0);
    ASSERT_EQ(wave.tracks[0].weights.values.size(), 3u);
    EXPECT_EQ(wave.tracks[0].weights.values[1], (std::vector<float>{1.0f}));
    EXPECT_EQ(wave.tracks[1].nodeId, 2u);
    EXPECT_EQ(wave.tracks[1].rotationQuat.interpolation, 1);
    EXPECT_EQ(wave.tracks[1].rotationQuat.times, (std::vector<float>{0.0f, 0.5f, 1.0f}));
    EXPECT_NEAR(wave.tracks[1].rotationQuat.values[1].z, std::sin(0.3f), 1e-6f);
}

// The expected files were checked value by value against the sample's source data: node
// walk and parents, inverse binds, the compacted bulge (vertices 4 to 7), flipped texture
// v, gamma of the base colour (0.8 -> 0.903545, 0.6 -> 0.792793), roughness x 100, the
// sampler words, the animation where only the translation track has Euler-side keys, the
// statistics, and the entities below the root with Bone_Root as the skin's root bone.
TEST(ImportSample, JsonOutputsMatchTheCheckedFiles) {
    ScratchDir dir;
    const std::string path = MakeSample(dir);
    ::testing::internal::CaptureStdout();
    std::unique_ptr<Scene> scene(LoadGltf(path, ConversionOptions()));
    ::testing::internal::GetCapturedStdout();
    ASSERT_TRUE(scene);
    const std::string expected = VURL_GLTF_EXPECTED_DIR;
    auto write = [&](const char* name, ExportOptions options) {
        const std::string out = dir.File(name);
        ::testing::internal::CaptureStdout();
        WriteJsonScene(out, *scene, options);
        ::testing::internal::GetCapturedStdout();
        return ReadText(out);
    };
    ExportOptions model;
    model.exportModel = true;
    EXPECT_EQ(write("model.json", model), ReadText(expected + "/model.json"));
    ExportOptions materials;
    materials.exportMaterials = true;
    EXPECT_EQ(write("materials.json", materials), ReadText(expected + "/materials.json"));
    ExportOptions animation;
    animation.animations = {"Wave"};
    EXPECT_EQ(write("animation.json", animation), ReadText(expected + "/animation.json"));
    ExportOptions metadata;
    metadata.exportMetadata = true;
    EXPECT_EQ(write("metadata.json", metadata), ReadText(expected + "/metadata.json"));
    ExportOptions sceneMetadata;
    sceneMetadata.exportSceneMetadata = true;
    EXPECT_EQ(write("scene.json", sceneMetadata), ReadText(expected + "/scene.json"));
}
