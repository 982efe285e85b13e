// Whole runs of the tool on writer-made avatars: the model, metadata and scene metadata
// files of a small avatar against values worked out by hand; the animation file for each
// option alone and combined, compared byte for byte with outputs derived by hand, and the
// GLB's rotation, scale and weight samplers, validator-clean; the end of a run on a file
// without geo_GRP.
#include <gtest/gtest.h>

#include <cstring>
#include <filesystem>
#include <string>
#include <vector>

#include "avatar_fixture.h"
#include "file_contents.h"
#include "import_test_support.h"
#include "json/json.h"
#include "run_tool.h"
#include "write_test_support.h"

namespace {

namespace fs = std::filesystem;

// The layout in metres with the joint "jnt" at the origin, animated in "Take 001" (0..2 s):
//   translation x linear 0 s: 0, 0.5 s: 1, 1 s: 2, 2 s: 2
//   rotation y linear 0 s: 0, 1 s: 45, 2 s: 90
//   scaling x cubic with flat tangents 0 s: 1, 1 s: 2, 2 s: 1
// C_head_GEO has the channels blendShape1.ai_jawOpen (0: 0, 1: 100, 2: 50), ai_browDown_L
// without a dot (0: 0, 2: 100) and a.b.c (no keys). "empty" is a second take without keys;
// "late" (when asked) has keys at 5 s and 6 s only.
fbxwriter::SceneDocument AnimatedAvatar(bool late = false) {
    using fbxwriter::Interpolation;
    fbxwriter::SceneDocument doc;
    doc.SetUnitScale(100.0);
    const testsupport::AvatarIds ids = testsupport::AddAvatarLayout(doc, "jnt", "LimbNode", 0.0);
    const int64_t blendShape = doc.AddBlendShape(ids.geometry, "blendShape1");
    const int64_t jaw = doc.AddBlendShapeChannel(blendShape, "blendShape1.ai_jawOpen");
    const int64_t brow = doc.AddBlendShapeChannel(blendShape, "ai_browDown_L");
    doc.AddBlendShapeChannel(blendShape, "a.b.c");

    const int64_t take = doc.AddLayer(doc.AddStack("Take 001", 0.0, 2.0));
    const int64_t jnt = ids.joint;
    doc.AnimateVector(take, jnt, "Lcl Translation", "T", {0, 0, 0}, {{{{0, 0}, {0.5, 1}, {1, 2}, {2, 2}}, {}, {}}});
    doc.AnimateVector(take, jnt, "Lcl Rotation", "R", {0, 0, 0}, {{{}, {{0, 0}, {1, 45}, {2, 90}}, {}}});
    doc.AnimateVector(take, jnt, "Lcl Scaling", "S", {1, 1, 1}, {{{{0, 1}, {1, 2}, {2, 1}}, {}, {}}},
                      Interpolation::Cubic);
    doc.AnimateNumber(take, jaw, "DeformPercent", 0.0, {{0, 0}, {1, 100}, {2, 50}});
    doc.AnimateNumber(take, brow, "DeformPercent", 0.0, {{0, 0}, {2, 100}});
    doc.AddLayer(doc.AddStack("empty", 0.0, 1.0));
    if (late) {
        const int64_t layer = doc.AddLayer(doc.AddStack("late", 5.0, 6.0));
        doc.AnimateVector(layer, jnt, "Lcl Rotation", "R", {0, 0, 0}, {{{{5, 0}, {6, 10}}, {}, {}}});
    }
    return doc;
}

// A scratch folder holding the document as avatar.fbx.
std::string Folder(const std::string& label, const fbxwriter::SceneDocument& doc) {
    const std::string dir = ScratchDir("run-" + label);
    EXPECT_TRUE(fbxwriter::SaveFile(dir + "/avatar.fbx", doc.Bytes()));
    return dir;
}

ToolRun Vurl(const std::string& dir, std::vector<std::string> args, const std::vector<std::string>& options = {},
             int exitCode = 0) {
    args.insert(args.begin(), {"-i", "avatar.fbx"});
    args.insert(args.end(), options.begin(), options.end());
    ToolRun run = RunTool(args, dir);
    EXPECT_EQ(run.exitCode, exitCode) << run.err;
    return run;
}

// The parts of a written GLB the checks need: its JSON and the floats behind an accessor.
struct Glb {
    explicit Glb(const std::string& path) : parts(ReadGlbParts(path)) {
        if (parts.ok) root = parser.ParseString(TrimmedJson(parts));
    }
    static size_t Number(const JsonValue& value) {
        return value.Text().empty() ? 0 : std::stoul(std::string(value.Text()));
    }
    size_t NodeIndex(const std::string& name) const {
        const JsonValue nodes = root.Get("nodes");
        size_t i = 0;
        while (i < nodes.Count() && nodes.Member(i).Get("name").Text() != name) ++i;
        return i;
    }
    // The sampler of the channel of the first animation that drives the node's path.
    JsonValue Sampler(const std::string& node, const std::string& path) const {
        const JsonValue animation = root.Get("animations").Member(0), channels = animation.Get("channels");
        for (size_t i = 0; i < channels.Count(); ++i) {
            const JsonValue target = channels.Member(i).Get("target");
            if (Number(target.Get("node")) == NodeIndex(node) && target.Get("path").Text() == path)
                return animation.Get("samplers").Member(Number(channels.Member(i).Get("sampler")));
        }
        return JsonValue();
    }
    std::vector<float> Floats(const JsonValue& accessorIndex) const {
        const JsonValue accessor = root.Get("accessors").Member(Number(accessorIndex));
        const JsonValue view = root.Get("bufferViews").Member(Number(accessor.Get("bufferView")));
        const std::string type(accessor.Get("type").Text());
        const size_t count = Number(accessor.Get("count")) * (type == "SCALAR" ? 1 : type == "VEC3" ? 3 : 4);
        const size_t offset = Number(view.Get("byteOffset")) + Number(accessor.Get("byteOffset"));
        std::vector<float> values(count);
        if (offset + count * 4 <= parts.bin.size()) std::memcpy(values.data(), parts.bin.data() + offset, count * 4);
        return values;
    }
    GlbParts parts;
    JsonParser parser;
    JsonValue root;
};

void ExpectNear(const std::vector<float>& actual, const std::vector<float>& expected) {
    ASSERT_EQ(actual.size(), expected.size());
    for (size_t k = 0; k < actual.size(); ++k) EXPECT_NEAR(actual[k], expected[k], 2e-6f) << k;
}

// In centimetres: rig and geo_GRP as the layout has them, spine (skeleton root) 100 cm up
// and turned 10 degrees about z.
fbxwriter::SceneDocument SmallAvatar() {
    fbxwriter::SceneDocument doc;
    doc.SetUnitScale(1.0);
    const testsupport::AvatarIds ids = testsupport::AddAvatarLayout(doc, "spine", "Root", 100.0);
    doc.AddAttribute(ids.rig, "Null");
    doc.SetLocal(ids.joint, "Lcl Rotation", 0.0, 0.0, 10.0);
    return doc;
}

// Node counts of the output, by hand: the root, rig, spine and geo_GRP from the file
// (head_GRP goes with C_head_GEO below it), then 10 group nodes and 62 slots, each made with
// a placeholder triangle of 3 vertices.
constexpr int kNodes = 4 + 10 + 62;
constexpr int kPlaceholders = 10 + 62;

TEST(AvatarRun, ModelAndMetadataFiles) {
    const std::string dir = Folder("json", SmallAvatar());
    const ToolRun run = Vurl(dir, {"-m", "model.json", "-g", "scene.json", "-d", "meta.json", "-o", "avatar.glb"});
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
    const JsonValue nodes = root.Get("nodes"), parents = root.Get("parents");
    std::string tree;
    for (size_t k = 0; k < 10; ++k)
        tree += nodes.Member(k).Get("name").ToString("") + " " + parents.Member(k).ToString("") + ",";
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
    fbxwriter::SceneDocument doc;
    doc.AddNode("rig");
    const ToolRun refused = Vurl(Folder("nogeo", doc), {"-m", "model.json"}, {}, 1);
    EXPECT_EQ(refused.err, "ERROR: Couldn't find 'geo_GRP' node?\n");
    EXPECT_NE(refused.out.find("Import Complete!"), std::string::npos);
    EXPECT_EQ(refused.out.find("Exporting..."), std::string::npos);
}

class AnimationOptions : public testing::TestWithParam<testsupport::TableRow> {};

TEST_P(AnimationOptions, FilesMatchTheHandDerivedTakes) {
    const testsupport::TableRow& c = GetParam();
    const std::vector<float> earringTimes = c.Floats(6);
    const std::string dir = Folder(c.Text(0), AnimatedAvatar());
    Vurl(dir, {"-a", "anim.json"}, c.Items(1));
    std::string expected = testsupport::ReadFileText(std::string(VURL_TEST_DATA_DIR) + "/" + c.Text(2));
    std::erase(expected, '\n');
    EXPECT_EQ(testsupport::ReadFileText(dir + "/anim.json"), expected);

    Vurl(dir, {"-o", "out.glb"}, c.Items(1));
    // Keys before the user start keep their negative times, which glTF does not allow.
    std::vector<std::string> allowed;
    if (earringTimes.front() < 0.0f) {
        allowed = {"ACCESSOR_ANIMATION_INPUT_NEGATIVE@/animations/*/samplers/*/input",
                   "ACCESSOR_ANIMATION_INPUT_NON_INCREASING@/animations/*/samplers/*/input"};
    }
    ExpectValidatorClean(dir + "/out.glb", allowed);
    const Glb file(dir + "/out.glb");
    ASSERT_TRUE(file.parts.ok);
    const JsonValue rotation = file.Sampler("jnt", "rotation"), scale = file.Sampler("jnt", "scale");
    ASSERT_FALSE(rotation.IsNullHandle() || scale.IsNullHandle());
    EXPECT_EQ(file.Floats(rotation.Get("input")).size(), size_t(c.Int(3)));
    EXPECT_EQ(scale.Get("interpolation").Text(), c.Text(4));
    EXPECT_EQ(file.Floats(scale.Get("output")).size(), size_t(c.Int(5)));
    for (const char* slot : {"C_earringLlobe1_GEO", "C_earringRhearingAid_GEO"}) {
        SCOPED_TRACE(slot);
        const JsonValue weights = file.Sampler(slot, "weights");
        ASSERT_FALSE(weights.IsNullHandle());
        ExpectNear(file.Floats(weights.Get("input")), earringTimes);
        ExpectNear(file.Floats(weights.Get("output")), c.Floats(7));
    }
}

INSTANTIATE_TEST_SUITE_P(Cli, AnimationOptions, testing::ValuesIn(Table("animation_options.txt")), RowName);

TEST(AnimationCli, TakesWithoutKeysOrClippedAwayGiveNoFile) {
    const std::string dir = Folder("takes", AnimatedAvatar(true));
    Vurl(dir, {"-a", "anim.json", "-f", "take"});
    EXPECT_TRUE(fs::exists(dir + "/animTake_001.json") && fs::exists(dir + "/animlate.json"));
    EXPECT_FALSE(fs::exists(dir + "/animempty.json"));
    // With -e 2 "late" has all its keys after the end.
    fs::remove(dir + "/animlate.json");
    Vurl(dir, {"-a", "anim.json", "-f", "take", "-e", "2"});
    EXPECT_TRUE(fs::exists(dir + "/animTake_001.json"));
    EXPECT_FALSE(fs::exists(dir + "/animlate.json"));
}

TEST(AnimationCli, AFileWithoutStacksHasNoAnimation) {
    fbxwriter::SceneDocument doc;
    doc.SetUnitScale(100.0);
    const testsupport::AvatarIds ids = testsupport::AddAvatarLayout(doc, "jnt", "LimbNode", 0.0);
    doc.AddBlendShapeChannel(doc.AddBlendShape(ids.geometry, "blendShape1"), "blendShape1.ai_jawOpen");
    const std::string dir = Folder("none", doc);
    const ToolRun run = Vurl(dir, {"-o", "out.glb", "-a", "anim.json"});
    EXPECT_EQ(run.out.find("SOURCE MESH NAME"), std::string::npos);
    EXPECT_FALSE(fs::exists(dir + "/anim.json"));
    EXPECT_TRUE(Glb(dir + "/out.glb").Sampler("C_head_GEO", "weights").IsNullHandle());
    ExpectValidatorClean(dir + "/out.glb");
}

}  // namespace
