// The tool from end to end on a small avatar file made with the project's FBX writer: the
// model, metadata and scene metadata files against values worked out by hand, and the end
// of a run on a file without geo_GRP.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "../driver/run_tool.h"
#include "avatar_fixture.h"
#include "file_contents.h"
#include "import_test_support.h"
#include "json/json.h"

namespace {

// In centimetres: rig and geo_GRP as the layout has them, spine (skeleton root) 100 cm up
// and turned 10 degrees about z.
void WriteSmallAvatar(const std::string& dir, bool layout = true) {
    fbxwriter::SceneDocument doc;
    doc.SetUnitScale(1.0);
    if (layout) {
        const testsupport::AvatarIds ids = testsupport::AddAvatarLayout(doc, "spine", "Root", 100.0);
        doc.AddAttribute(ids.rig, "Null");
        doc.SetLocal(ids.joint, "Lcl Rotation", 0.0, 0.0, 10.0);
    } else {
        doc.AddNode("rig");
    }
    EXPECT_TRUE(fbxwriter::SaveFile(dir + "/avatar.fbx", doc.Bytes()));
}

ToolRun Vurl(const std::string& dir, const std::vector<std::string>& args) {
    std::vector<std::string> all{"-i", "avatar.fbx"};
    all.insert(all.end(), args.begin(), args.end());
    return RunTool(all, dir);
}

// Node counts of the output, by hand: the root, rig, spine and geo_GRP from the file
// (head_GRP goes with C_head_GEO below it), then 10 group nodes and 62 slots, each made with
// a placeholder triangle of 3 vertices.
constexpr int kNodes = 4 + 10 + 62;
constexpr int kPlaceholders = 10 + 62;

TEST(AvatarRun, ModelAndMetadataFiles) {
    const std::string dir = ScratchDir("run_json");
    WriteSmallAvatar(dir);
    const ToolRun run = Vurl(dir, {"-m", "model.json", "-g", "scene.json", "-d", "meta.json", "-o", "avatar.glb"});
    ASSERT_EQ(run.exitCode, 0) << run.err;
    EXPECT_EQ(run.err, "");
    // -m takes the model from -o, whose name keeps the animation only: with no take in the
    // file, no GLB is written.
    const std::string end = "Processing scene...\nExporting...\nWriting meta.json...\nWriting model.json...\n"
                            "Writing scene.json...\nExport Complete!\n";
    EXPECT_TRUE(run.out.ends_with(end)) << run.out;

    const std::string p = std::to_string(kPlaceholders);
    EXPECT_EQ(testsupport::ReadFileText(dir + "/meta.json"),
              "{\"meshes\":" + p + ",\"meshInstances\":" + p + ",\"nodes\":" + std::to_string(kNodes) +
                  ",\"skins\":0,\"morphs\":0,\"vertices\":" + std::to_string(3 * kPlaceholders) + ",\"triangles\":" +
                  p + ",\"attributes\":{\"position\":" + p + ",\"normal\":" + p + "}}");

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
    ASSERT_EQ(root.Get("nodes").Count(), size_t(kNodes));
    // Depth first: geo_GRP (3) holds universal_head_head_GRP (4) with C_head_GEO, C_brow_GEO
    // and universal_head_eyelash_GEO, then universal_head_mouth_GRP (8) with C_headMouth_GEO.
    std::string tree;
    for (size_t k = 0; k < 10; ++k)
        tree += root.Get("nodes").Member(k).Get("name").ToString("") + " " + root.Get("parents").Member(k).ToString("") +
                ",";
    EXPECT_EQ(tree, "RootNode -1,rig 0,spine 1,geo_GRP 0,universal_head_head_GRP 3,C_head_GEO 4,C_brow_GEO 4,"
                    "universal_head_eyelash_GEO 4,universal_head_mouth_GRP 3,C_headMouth_GEO 8,");
    EXPECT_EQ(root.Get("meshes").Count(), size_t(kPlaceholders));
    EXPECT_EQ(root.Get("morphs").Count(), 0u);
    // The first placeholder sits on the first group node, index 4.
    const JsonValue first = root.Get("meshInstances").Member(0);
    EXPECT_EQ(first.Get("node").ToString("") + " " + first.Get("mesh").ToString(""), "4 0");

    // Scene metadata: every node below the root is an entity; rig is the first.
    const JsonValue entities = parser.ParseFile(dir + "/scene.json").Get("scene").Get("entities");
    ASSERT_EQ(entities.Count(), size_t(kNodes - 1));
    std::string firstTwo;
    for (const char* k : {"0", "1"})
        firstTwo += entities.Get(k).Get("name").ToString("") + " " + entities.Get(k).Get("parent").ToString("") + ",";
    EXPECT_EQ(firstTwo, "rig -1,spine 0,");
}

TEST(AvatarRun, FileWithoutGeoGroupEndsTheRun) {
    const std::string dir = ScratchDir("run_nogeo");
    WriteSmallAvatar(dir, false);
    const ToolRun refused = Vurl(dir, {"-m", "model.json"});
    EXPECT_EQ(refused.exitCode, 1);
    EXPECT_EQ(refused.err, "ERROR: Couldn't find 'geo_GRP' node?\n");
    EXPECT_NE(refused.out.find("Import Complete!"), std::string::npos);
    EXPECT_EQ(refused.out.find("Exporting..."), std::string::npos);
}

}  // namespace
