#include "runtimejson/json_scene_writer.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>

#include "expected_file.h"
#include "runtimejson/materials_json.h"
#include "runtimejson/model_json.h"
#include "runtimejson/scene_metadata_json.h"
#include "scene_builder.h"

namespace {

using namespace testing_scene;
using namespace testsupport;

// One file, several roles: the later role replaces the earlier one; the model stays when no
// take of the file exists; scene metadata is indented whatever the option; no role, no file.
TEST(JsonSceneWriter, LaterRoleReplacesEarlierOne) {
    SceneBuilder b;
    b.Root().Child("a", 1);
    AnimationTrack track;
    track.nodeId = 1;
    track.position = Channel(1, {0.0f}, {{1, 2, 3}});
    b.AddAnimation("take", 1.0f)->tracks.push_back(track);
    const std::string path = ScratchPath("json_scene_writer_test.json");
    auto written = [&](const ExportOptions& options) {
        std::remove(path.c_str());
        EXPECT_TRUE(WriteJsonScene(path, b.scene(), options));
        return ReadFileText(path);
    };

    ExportOptions options;
    options.exportModel = true;
    options.prettyPrint = true;
    options.animations = {"other"};
    EXPECT_EQ(written(options), JsonWriter(StandardFormat).WriteString(BuildModelJson(b.scene())));
    options.prettyPrint = false;
    options.exportMaterials = true;
    EXPECT_EQ(written(options), JsonWriter(NoFormat).WriteString(BuildMaterialsJson(b.scene())));
    options.animations = {"take"};
    EXPECT_EQ(written(options), Expected("writer_animation_role"));
    options.exportMetadata = true;
    options.prettyPrint = true;
    EXPECT_EQ(written(options).substr(0, 12), "{\n\t\"meshes\":");
    options.exportSceneMetadata = true;
    options.prettyPrint = false;
    EXPECT_EQ(written(options), JsonWriter(StandardFormat).WriteString(BuildSceneMetadataJson(b.scene())));

    EXPECT_EQ(written(ExportOptions()), "");
    EXPECT_FALSE(std::ifstream(path).good());
    std::remove(path.c_str());
}

}  // namespace
