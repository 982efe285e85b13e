// The tool from end to end on a small avatar file made with the project's FBX writer: the
// model, metadata and scene metadata files against values worked out by hand, and the GLB
// (with the spine's turn as a node transform) through the glTF validator.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "../driver/run_tool.h"
#include "../gltf/write_test_support.h"
#include "fbx_scene_document.h"
#include "file_contents.h"
#include "import_test_support.h"
#include "json/json.h"

namespace {

// In centimetres:
//   RootNode -> rig -> spine (skeleton root, 100 cm up, turned 10 degrees about z)
//            -> geo_GRP -> head_GRP -> C_head_GEO (a mesh)
std::string WriteSmallAvatar(const std::string& dir) {
    fbxwriter::SceneDocument doc;
    doc.SetUnitScale(1.0);
    const int64_t rig = doc.AddNode("rig");
    doc.AddAttribute(rig, "Null");
    const int64_t spine = doc.AddNode("spine", rig, "LimbNode");
    doc.AddAttribute(spine, "Root");
    doc.SetLocal(spine, "Lcl Translation", 0.0, 100.0, 0.0);
    doc.SetLocal(spine, "Lcl Rotation", 0.0, 0.0, 10.0);
    const int64_t geo = doc.AddNode("geo_GRP");
    const int64_t headGroup = doc.AddNode("head_GRP", geo);
    const int64_t head = doc.AddNode("C_head_GEO", headGroup, "Mesh");
    doc.AddMesh(head);
    const std::string path = dir + "/avatar.fbx";
    EXPECT_TRUE(fbxwriter::SaveFile(path, doc.Bytes()));
    return path;
}

void ExpectEndsWith(const std::string& text, const std::string& end) {
    EXPECT_EQ(text.size() < end.size() ? text : text.substr(text.size() - end.size()), end);
}

// Node counts of the output, by hand: the root, rig, spine and geo_GRP from the file
// (head_GRP goes with C_head_GEO below it), then 10 group nodes and 62 slots, each made with
// a placeholder triangle of 3 vertices.
constexpr int kNodes = 4 + 10 + 62;
constexpr int kPlaceholders = 10 + 62;

TEST(AvatarRun, ModelAndMetadataFiles) {
    const std::string dir = ScratchDir("run_json");
    WriteSmallAvatar(dir);
    const ToolRun run = RunTool({"-i", "avatar.fbx", "-m", "model.json", "-g", "scene.json", "-d", "meta.json", "-o",
                                 "avatar.glb"},
                                dir);
    ASSERT_EQ(run.exitCode, 0) << run.err;
    EXPECT_EQ(run.err, "");
    // -m takes the model from -o, whose name keeps the animation only: with no take in the
    // file, no GLB is written.
    ExpectEndsWith(run.out,
                   "Processing scene...\nExporting...\nWriting meta.json...\nWriting model.json...\n"
                   "Writing scene.json...\nExport Complete!\n");

    EXPECT_EQ(testsupport::ReadFileText(dir + "/meta.json"),
              "{\"meshes\":" + std::to_string(kPlaceholders) + ",\"meshInstances\":" + std::to_string(kPlaceholders) +
                  ",\"nodes\":" + std::to_string(kNodes) + ",\"skins\":0,\"morphs\":0,\"vertices\":" +
                  std::to_string(3 * kPlaceholders) + ",\"triangles\":" + std::to_string(kPlaceholders) +
                  ",\"attributes\":{\"position\":" + std::to_string(kPlaceholders) +
                  ",\"normal\":" + std::to_string(kPlaceholders) + "}}");

    // The first nodes, by hand: rig took the centimetre factor into its scale in the
    // document and gave it back in the unit pass (0.01f * 100 is exactly 1); spine's 100 cm
    // are 1 m; the root keeps no transform of its own.
    const std::string model = testsupport::ReadFileText(dir + "/model.json");
    const std::string node = R"(,"rotation":[0,0,0],"scale":[1,1,1],"scaleCompensation":false})";
    const std::string start =
        std::string(R"({"model":{"version":3,"nodes":[{"name":"RootNode","position":[0,0,0])") + node +
        R"(,{"name":"rig","position":[0,0,0])" + node +
        R"(,{"name":"spine","position":[0,1,0],"rotation":[0,0,10],"scale":[1,1,1],"scaleCompensation":false})" +
        R"(,{"name":"geo_GRP","position":[0,0,0])" + node + R"(,{"name":"universal_head_head_GRP",)";
    EXPECT_EQ(model.substr(0, start.size()), start);

    JsonParser parser;
    const JsonValue root = parser.ParseString(model).Get("model");
    const JsonValue nodes = root.Get("nodes");
    const JsonValue parents = root.Get("parents");
    ASSERT_EQ(nodes.Count(), size_t(kNodes));
    // Depth first: geo_GRP (3) holds universal_head_head_GRP (4) with C_head_GEO, C_brow_GEO
    // and universal_head_eyelash_GEO, then universal_head_mouth_GRP (8) with C_headMouth_GEO.
    const char* names[] = {"RootNode",   "rig",        "spine",
                           "geo_GRP",    "universal_head_head_GRP", "C_head_GEO",
                           "C_brow_GEO", "universal_head_eyelash_GEO", "universal_head_mouth_GRP",
                           "C_headMouth_GEO"};
    const int expectedParents[] = {-1, 0, 1, 0, 3, 4, 4, 4, 3, 8};
    for (size_t k = 0; k < 10; ++k) {
        EXPECT_EQ(nodes.Member(k).Get("name").ToString(""), names[k]) << k;
        EXPECT_EQ(parents.Member(k).ToString(""), std::to_string(expectedParents[k])) << k;
    }
    EXPECT_EQ(root.Get("meshes").Count(), size_t(kPlaceholders));
    EXPECT_EQ(root.Get("morphs").Count(), 0u);
    // The first placeholder sits on the first group node, index 4.
    const JsonValue first = root.Get("meshInstances").Member(0);
    EXPECT_EQ(first.Get("node").ToString(""), "4");
    EXPECT_EQ(first.Get("mesh").ToString(""), "0");

    // Scene metadata: every node below the root is an entity; rig is the first.
    const JsonValue entities = parser.ParseFile(dir + "/scene.json").Get("scene").Get("entities");
    ASSERT_EQ(entities.Count(), size_t(kNodes - 1));
    EXPECT_EQ(entities.Get("0").Get("name").ToString(""), "rig");
    EXPECT_EQ(entities.Get("0").Get("parent").ToString(""), "-1");
    EXPECT_EQ(entities.Get("1").Get("name").ToString(""), "spine");
    EXPECT_EQ(entities.Get("1").Get("parent").ToString(""), "0");
}

TEST(AvatarRun, GlbIsValid) {
    const std::string dir = ScratchDir("run_glb");
    WriteSmallAvatar(dir);
    const ToolRun run = RunTool({"-i", "avatar.fbx", "-o", "avatar.glb"}, dir);
    ASSERT_EQ(run.exitCode, 0) << run.err;
    ExpectEndsWith(run.out, "Exporting...\nWriting avatar.glb...\nExport Complete!\n");
    ExpectValidatorClean(dir + "/avatar.glb");
}

TEST(AvatarRun, FileWithoutGeoGroupEndsTheRun) {
    const std::string dir = ScratchDir("run_nogeo");
    fbxwriter::SceneDocument doc;
    doc.AddNode("rig");
    ASSERT_TRUE(fbxwriter::SaveFile(dir + "/rig.fbx", doc.Bytes()));
    const ToolRun run = RunTool({"-i", "rig.fbx", "-m", "model.json"}, dir);
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_EQ(run.err, "ERROR: Couldn't find 'geo_GRP' node?\n");
    EXPECT_NE(run.out.find("Import Complete!"), std::string::npos);
    EXPECT_EQ(run.out.find("Exporting..."), std::string::npos);
}

}  // namespace
