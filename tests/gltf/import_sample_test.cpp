// End to end on the project's generated sample: container, images, import of every part.
#include <cstdlib>
#include <regex>

#include "file_contents.h"
#include "read_test_util.h"
#include "runtimejson/json_scene_writer.h"

using namespace gltftest;

namespace {

std::string MakeSample(const ScratchFolder& dir) {
    const std::string path = dir.File("sample.glb");
    EXPECT_EQ(std::system((std::string(VURL_SAMPLE_GENERATOR) + " '" + path + "' ").c_str()), 0);
    return path;
}

}  // namespace

// The expected JSON files were checked value by value against the sample's source data: node
// walk and parents, inverse binds, the compacted bulge (vertices 4 to 7), flipped texture
// v, gamma of the base colour (0.8 -> 0.903545, 0.6 -> 0.792793), roughness x 100, the
// sampler words, the animation where only the translation track has Euler-side keys, the
// statistics, and the entities below the root with Bone_Root as the skin's root bone.
TEST(ImportSample, SavesTheTextureKeepsEveryChannelAndWritesTheCheckedJson) {
    ScratchFolder dir;
    const std::string path = MakeSample(dir);

    ::testing::internal::CaptureStdout();
    std::unique_ptr<Scene> scene(LoadGltf(path, ConversionOptions()));
    const std::string out = ::testing::internal::GetCapturedStdout();
    ASSERT_TRUE(scene);
    EXPECT_TRUE(std::regex_match(out, std::regex("writing [0-9]+ bytes to \"" + path + ".fbm/checker.png\"\\.\\.\\.\n")))
        << out;
    EXPECT_EQ(testsupport::ReadFileText(path + ".fbm/checker.png").substr(1, 3), "PNG");

    auto with = [](void (*set)(ExportOptions&)) {
        ExportOptions options;
        set(options);
        return options;
    };
    const std::pair<const char*, ExportOptions> outputs[] = {
        {"model.json", with([](ExportOptions& o) { o.exportModel = true; })},
        {"materials.json", with([](ExportOptions& o) { o.exportMaterials = true; })},
        {"animation.json", with([](ExportOptions& o) { o.animations = {"Wave"}; })},
        {"metadata.json", with([](ExportOptions& o) { o.exportMetadata = true; })},
        {"scene.json", with([](ExportOptions& o) { o.exportSceneMetadata = true; })},
    };
    for (const auto& [name, options] : outputs) {
        ::testing::internal::CaptureStdout();
        WriteJsonScene(dir.File(name), *scene, options);
        ::testing::internal::GetCapturedStdout();
        EXPECT_EQ(testsupport::ReadFileText(dir.File(name)), testsupport::ReadFileText(std::string(VURL_GLTF_DATA_DIR) + "/import_sample/" + name)) << name;
    }
}
