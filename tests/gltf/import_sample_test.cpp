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

TEST(ImportSample, LoadsTheGeneratedSampleCompletely) {
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

    // Nodes: one root, so no SceneRoot.
    ASSERT_TRUE(scene->root);
    EXPECT_EQ(scene->root->name, "Armature");
    EXPECT_EQ(scene->root->id, 3u);
    GraphNode* column = FindNode(scene->root, "Column");
    GraphNode* top = FindNode(scene->root, "Bone_Top");
    ASSERT_TRUE(column && top);
    EXPECT_EQ(top->position, Vec3(0, 1, 0));
    EXPECT_EQ(top->parent->name, "Bone_Root");

    // Mesh: 12 vertices, 16 triangles, all attributes.
    ASSERT_TRUE(column->geometry);
    EXPECT_EQ(column->geometry->name, "Column");
    ASSERT_EQ(column->geometry->meshInstances.size(), 1u);
    const MeshInstance& mi = *column->geometry->meshInstances[0];
    ASSERT_TRUE(mi.vertices && mi.indices);
    EXPECT_EQ(mi.primitiveType, 3u);
    EXPECT_EQ(mi.indices->size(), 48u);
    EXPECT_EQ(mi.vertices->positions.size(), 36u);
    EXPECT_EQ(mi.vertices->normals.size(), 36u);
    EXPECT_EQ(mi.vertices->texCoords[0].size(), 24u);
    EXPECT_EQ(mi.vertices->joints.size(), 48u);
    EXPECT_EQ(mi.vertices->joints[1], 1u);
    // The middle ring is weighted half and half between the bones.
    EXPECT_EQ(mi.vertices->weights[4 * 4], 0.5f);
    EXPECT_EQ(mi.vertices->weights[4 * 4 + 1], 0.5f);

    // Skin with the top bone's inverse bind one unit down.
    ASSERT_TRUE(mi.skin);
    EXPECT_EQ(mi.skin->joints, (std::vector<int64_t>{1, 2}));
    ASSERT_EQ(mi.skin->inverseBindMatrices.size(), 2u);
    EXPECT_EQ(mi.skin->inverseBindMatrices[1][13], -1.0f);

    // The bulge moves the middle ring only.
    ASSERT_TRUE(mi.morph);
    ASSERT_EQ(mi.morph->targets.size(), 1u);
    const MorphTarget& bulge = *mi.morph->targets[0];
    EXPECT_EQ(bulge.name, "Bulge");
    EXPECT_EQ(bulge.sourceVertexCount, 12u);
    EXPECT_EQ(bulge.indices, (std::vector<uint32_t>{4, 5, 6, 7}));
    EXPECT_EQ(bulge.boundingBox.min, Vec3(-0.25f, 0, -0.25f));
    EXPECT_EQ(bulge.boundingBox.max, Vec3(0.25f, 0, 0.25f));

    // Material: base colour through the gamma, the texture with its sampler.
    ASSERT_TRUE(mi.material);
    const Material& m = *mi.material;
    EXPECT_EQ(m.name, "Checker");
    EXPECT_EQ(m.diffuse.x, 1.0f);
    EXPECT_NEAR(m.diffuse.y, 0.90355f, 1e-4f);
    EXPECT_NEAR(m.diffuse.z, 0.79283f, 1e-4f);
    EXPECT_EQ(m.metalness, 0.0f);
    EXPECT_EQ(m.shininess, 0.5f);
    ASSERT_TRUE(m.diffuseMap.texture);
    const Texture& t = *m.diffuseMap.texture;
    EXPECT_EQ(t.name, "CheckerTexture");
    EXPECT_EQ(t.uri, "checker.png");
    EXPECT_EQ(t.addressU, 2u);
    EXPECT_EQ(t.addressV, 3u);
    EXPECT_EQ(t.minFilter, 3u);
    EXPECT_EQ(t.magFilter, 1u);

    // Animation: the morph weight track of the column and the rotation of the top bone.
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
    EXPECT_EQ(wave.tracks[1].position.values[1], Vec3(0, 1.25f, 0));
}

// The expected files were checked value by value against the sample's source data: node
// walk and parents, inverse binds, the compacted bulge (vertices 4 to 7), flipped texture
// v, gamma of the base colour (0.8 -> 0.903545, 0.6 -> 0.792793), roughness x 100, the
// sampler words, and the animation where only the translation track has Euler-side keys.
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
}
