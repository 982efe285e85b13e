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

class JsonSceneWriter : public ::testing::Test {
protected:
    void SetUp() override {
        b.Root().Child("a", 1);
        Animation* take = b.AddAnimation("take", 1.0f);
        AnimationTrack track;
        track.nodeId = 1;
        track.position = Channel(1, {0.0f}, {{1, 2, 3}});
        take->tracks.push_back(track);
        std::remove(path.c_str());
    }
    void TearDown() override { std::remove(path.c_str()); }

    std::string Written(const ExportOptions& options) {
        EXPECT_TRUE(WriteJsonScene(path, b.scene(), options));
        return ReadFileText(path);
    }

    SceneBuilder b;
    std::string path = ScratchPath("json_scene_writer_test.json");
};

TEST_F(JsonSceneWriter, LaterRoleReplacesEarlierOne) {
    ExportOptions options;
    options.exportModel = true;
    options.exportMaterials = true;
    EXPECT_EQ(Written(options), JsonWriter(NoFormat).WriteString(BuildMaterialsJson(b.scene())));

    options.animations = {"take"};
    EXPECT_EQ(Written(options), Expected("writer_animation_role"));

    options.exportMetadata = true;
    options.prettyPrint = true;
    EXPECT_EQ(Written(options).substr(0, 12), "{\n\t\"meshes\":");

    options.exportSceneMetadata = true;
    EXPECT_EQ(Written(options).substr(0, 29), "{\n\t\"scene\": {\n\t\t\"version\": 1,");
}

TEST_F(JsonSceneWriter, ModelStaysWhenNoTakeOfTheFileExists) {
    ExportOptions options;
    options.exportModel = true;
    options.prettyPrint = true;
    options.animations = {"other"};
    EXPECT_EQ(Written(options), JsonWriter(StandardFormat).WriteString(BuildModelJson(b.scene())));
}

TEST_F(JsonSceneWriter, SceneMetadataIsIndentedWhateverTheOption) {
    ExportOptions options;
    options.exportSceneMetadata = true;
    options.prettyPrint = false;
    EXPECT_EQ(Written(options), JsonWriter(StandardFormat).WriteString(BuildSceneMetadataJson(b.scene())));
}

TEST_F(JsonSceneWriter, NoRoleWritesNoFile) {
    EXPECT_TRUE(WriteJsonScene(path, b.scene(), ExportOptions()));
    EXPECT_FALSE(std::ifstream(path).good());
}

}  // namespace
