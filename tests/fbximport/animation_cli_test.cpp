// Whole runs of the tool on writer-made avatars with known curves: the animation file for
// each option alone and combined, compared byte for byte with outputs derived by hand, and
// the GLB's rotation, scale and weight samplers, validator-clean.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <filesystem>
#include <string>
#include <vector>

#include "fbx_scene_document.h"
#include "import_test_support.h"
#include "file_contents.h"
#include "json/json.h"
#include "run_tool.h"
#include "scratch_folder.h"
#include "write_test_support.h"

namespace {

using fbxwriter::Interpolation;
using fbxwriter::SceneDocument;

// RootNode -> rig -> jnt, animated in "Take 001":
//   translation x linear 0 s: 0, 0.5 s: 1, 1 s: 2, 2 s: 2
//   rotation y linear 0 s: 0, 1 s: 45, 2 s: 90
//   scaling x cubic with flat tangents 0 s: 1, 1 s: 2, 2 s: 1
// geo_GRP -> head_GRP -> C_head_GEO with the channels blendShape1.ai_jawOpen (0: 0,
// 1: 100, 2: 50), ai_browDown_L without a dot (0: 0, 2: 100) and a.b.c (no keys).
// "empty" is a second take without keys; "late" (when asked) has keys at 5 s and 6 s only.
SceneDocument Avatar(bool late) {
    SceneDocument doc;
    doc.SetUnitScale(100.0);
    const int64_t rig = doc.AddNode("rig");
    const int64_t jnt = doc.AddNode("jnt", rig, "LimbNode");
    doc.AddAttribute(jnt, "LimbNode");
    const int64_t geo = doc.AddNode("geo_GRP");
    const int64_t headGroup = doc.AddNode("head_GRP", geo);
    const int64_t head = doc.AddNode("C_head_GEO", headGroup, "Mesh");
    const int64_t blendShape = doc.AddBlendShape(doc.AddMesh(head), "blendShape1");
    const int64_t jaw = doc.AddBlendShapeChannel(blendShape, "blendShape1.ai_jawOpen");
    const int64_t brow = doc.AddBlendShapeChannel(blendShape, "ai_browDown_L");
    doc.AddBlendShapeChannel(blendShape, "a.b.c");

    const int64_t take = doc.AddLayer(doc.AddStack("Take 001", 0.0, 2.0));
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

std::string ExpectedCompact(const std::string& name) {
    std::string text = testsupport::ReadFileText(std::string(VURL_TEST_DATA_DIR) + "/" + name);
    std::erase(text, '\n');
    return text;
}

// The parts of a written GLB the checks need: its JSON and the floats behind an accessor.
class Glb {
public:
    explicit Glb(const std::string& path) : parts_(ReadGlbParts(path)) {
        if (parts_.ok) root_ = parser_.ParseString(TrimmedJson(parts_));
    }
    bool ok() const { return parts_.ok && !root_.IsNullHandle(); }

    int NodeIndex(const std::string& name) const {
        const JsonValue nodes = root_.Get("nodes");
        for (size_t i = 0; i < nodes.Count(); ++i)
            if (nodes.Member(i).Get("name").Text() == name) return int(i);
        return -1;
    }
    // The sampler of the channel of the first animation that drives node's path.
    JsonValue Sampler(int node, const std::string& path) const {
        const JsonValue animation = root_.Get("animations").Member(0);
        const JsonValue channels = animation.Get("channels");
        for (size_t i = 0; i < channels.Count(); ++i) {
            const JsonValue target = channels.Member(i).Get("target");
            if (Number(target.Get("node")) == node && target.Get("path").Text() == path)
                return animation.Get("samplers").Member(size_t(Number(channels.Member(i).Get("sampler"))));
        }
        return JsonValue();
    }
    std::vector<float> Floats(const JsonValue& accessorIndex) const {
        const JsonValue accessor = root_.Get("accessors").Member(size_t(Number(accessorIndex)));
        const JsonValue view = root_.Get("bufferViews").Member(size_t(Number(accessor.Get("bufferView"))));
        const std::string type(accessor.Get("type").Text());
        const size_t components = type == "SCALAR" ? 1 : type == "VEC3" ? 3 : 4;
        const size_t count = size_t(Number(accessor.Get("count"))) * components;
        const size_t offset = size_t(Number(view.Get("byteOffset")) + Number(accessor.Get("byteOffset")));
        std::vector<float> values(count);
        if (offset + count * 4 <= parts_.bin.size()) std::memcpy(values.data(), parts_.bin.data() + offset, count * 4);
        return values;
    }

private:
    static long Number(const JsonValue& value) {
        const std::string text(value.Text());
        return text.empty() ? 0 : std::stol(text);
    }
    GlbParts parts_;
    JsonParser parser_;
    JsonValue root_;
};

void ExpectNear(const std::vector<float>& actual, const std::vector<float>& expected, const char* what) {
    ASSERT_EQ(actual.size(), expected.size()) << what;
    for (size_t k = 0; k < actual.size(); ++k) EXPECT_NEAR(actual[k], expected[k], 2e-6f) << what << " " << k;
}

class AnimationOptions : public testing::TestWithParam<testsupport::TableRow> {};

TEST_P(AnimationOptions, FilesMatchTheHandDerivedTakes) {
    const testsupport::TableRow& c = GetParam();
    const std::vector<std::string> options = c.Items(1);
    const std::vector<float> earringTimes = c.Floats(6);
    const testsupport::ScratchFolder folder("anim-" + c.Text(0));
    const std::string dir = folder.Path().string();
    ASSERT_TRUE(fbxwriter::SaveFile(dir + "/avatar.fbx", Avatar(false).Bytes()));

    std::vector<std::string> json = {"-i", "avatar.fbx", "-a", "anim.json"};
    json.insert(json.end(), options.begin(), options.end());
    const ToolRun jsonRun = RunTool(json, dir);
    ASSERT_EQ(jsonRun.exitCode, 0) << jsonRun.err;
    EXPECT_EQ(testsupport::ReadFileText(dir + "/anim.json"), ExpectedCompact(c.Text(2)));

    std::vector<std::string> glb = {"-i", "avatar.fbx", "-o", "out.glb"};
    glb.insert(glb.end(), options.begin(), options.end());
    const ToolRun glbRun = RunTool(glb, dir);
    ASSERT_EQ(glbRun.exitCode, 0) << glbRun.err;
    // Keys before the user start keep their negative times, which glTF does not allow.
    std::vector<std::string> allowed;
    if (earringTimes.front() < 0.0f) {
        allowed = {"ACCESSOR_ANIMATION_INPUT_NEGATIVE@/animations/*/samplers/*/input",
                   "ACCESSOR_ANIMATION_INPUT_NON_INCREASING@/animations/*/samplers/*/input"};
    }
    ExpectValidatorClean(dir + "/out.glb", allowed);
    const Glb file(dir + "/out.glb");
    ASSERT_TRUE(file.ok());

    const int jnt = file.NodeIndex("jnt");
    ASSERT_GE(jnt, 0);
    const JsonValue rotation = file.Sampler(jnt, "rotation");
    ASSERT_FALSE(rotation.IsNullHandle());
    EXPECT_EQ(file.Floats(rotation.Get("input")).size(), size_t(c.Int(3)));
    const JsonValue scale = file.Sampler(jnt, "scale");
    ASSERT_FALSE(scale.IsNullHandle());
    EXPECT_EQ(scale.Get("interpolation").Text(), c.Text(4));
    EXPECT_EQ(file.Floats(scale.Get("output")).size(), size_t(c.Int(5)));

    for (const char* slot : {"C_earringLlobe1_GEO", "C_earringRhearingAid_GEO"}) {
        const JsonValue weights = file.Sampler(file.NodeIndex(slot), "weights");
        ASSERT_FALSE(weights.IsNullHandle()) << slot;
        ExpectNear(file.Floats(weights.Get("input")), earringTimes, "times");
        ExpectNear(file.Floats(weights.Get("output")), c.Floats(7), "weights");
    }
}

INSTANTIATE_TEST_SUITE_P(Cli, AnimationOptions, testing::ValuesIn(Table("animation_options.txt")), RowName);

TEST(AnimationCli, HeadChannelsFeedEveryGroupWithOrWithoutDots) {
    const testsupport::ScratchFolder folder("anim-channels");
    const std::string dir = folder.Path().string();
    ASSERT_TRUE(fbxwriter::SaveFile(dir + "/avatar.fbx", Avatar(false).Bytes()));
    const ToolRun run = RunTool({"-i", "avatar.fbx", "-o", "out.glb"}, dir);
    ASSERT_EQ(run.exitCode, 0) << run.err;
    EXPECT_NE(run.out.find("SOURCE MESH NAME: head\n  ai_jawOpen\n  ai_browDown_L\n  b.c\n"), std::string::npos);
    // There is no C_brow_GEO: the brow group takes the head's three channels.
    EXPECT_NE(run.out.find("TargetName : brow\nSourceName : brow\ntargetMorphTargets size: 16\nTrying to use head\n"
                           "head 3\n1\nsourceMorphTargets size: 3\n  ai_browDown_L  FOUND\n  ai_browDown_R  NOT FOUND\n"),
              std::string::npos);

    const Glb file(dir + "/out.glb");
    ASSERT_TRUE(file.ok());
    // The head slot: 100 columns, ai_browDown_L first (0, 0.5, 1) and ai_jawOpen last (0, 1, 0.5).
    const JsonValue weights = file.Sampler(file.NodeIndex("C_head_GEO"), "weights");
    ASSERT_FALSE(weights.IsNullHandle());
    const std::vector<float> values = file.Floats(weights.Get("output"));
    ASSERT_EQ(values.size(), 300u);
    for (size_t key = 0; key < 3; ++key) {
        EXPECT_EQ(values[key * 100], (std::vector<float>{0, 0.5f, 1})[key]);
        EXPECT_EQ(values[key * 100 + 99], (std::vector<float>{0, 1, 0.5f})[key]);
        for (size_t column = 1; column < 99; ++column) ASSERT_EQ(values[key * 100 + column], 0.0f) << column;
    }
}

TEST(AnimationCli, TakesWithoutKeysOrClippedAwayGiveNoFile) {
    const testsupport::ScratchFolder folder("anim-takes");
    const std::string dir = folder.Path().string();
    ASSERT_TRUE(fbxwriter::SaveFile(dir + "/avatar.fbx", Avatar(true).Bytes()));
    ToolRun run = RunTool({"-i", "avatar.fbx", "-a", "anim.json", "-f", "take"}, dir);
    ASSERT_EQ(run.exitCode, 0) << run.err;
    EXPECT_TRUE(std::filesystem::exists(dir + "/animTake_001.json"));
    EXPECT_TRUE(std::filesystem::exists(dir + "/animlate.json"));
    EXPECT_FALSE(std::filesystem::exists(dir + "/animempty.json"));

    // With -e 2 "late" has all its keys after the end.
    std::filesystem::remove(dir + "/animlate.json");
    run = RunTool({"-i", "avatar.fbx", "-a", "anim.json", "-f", "take", "-e", "2"}, dir);
    ASSERT_EQ(run.exitCode, 0) << run.err;
    EXPECT_TRUE(std::filesystem::exists(dir + "/animTake_001.json"));
    EXPECT_FALSE(std::filesystem::exists(dir + "/animlate.json"));
}

TEST(AnimationCli, AFileWithoutStacksHasNoAnimation) {
    SceneDocument doc;
    doc.SetUnitScale(100.0);
    const int64_t geo = doc.AddNode("geo_GRP");
    const int64_t head = doc.AddNode("C_head_GEO", doc.AddNode("head_GRP", geo), "Mesh");
    doc.AddBlendShapeChannel(doc.AddBlendShape(doc.AddMesh(head), "blendShape1"), "blendShape1.ai_jawOpen");
    const testsupport::ScratchFolder folder("anim-none");
    const std::string dir = folder.Path().string();
    ASSERT_TRUE(fbxwriter::SaveFile(dir + "/avatar.fbx", doc.Bytes()));
    const ToolRun run = RunTool({"-i", "avatar.fbx", "-o", "out.glb", "-a", "anim.json"}, dir);
    ASSERT_EQ(run.exitCode, 0) << run.err;
    EXPECT_EQ(run.out.find("SOURCE MESH NAME"), std::string::npos);
    EXPECT_FALSE(std::filesystem::exists(dir + "/anim.json"));
    const Glb file(dir + "/out.glb");
    ASSERT_TRUE(file.ok());
    EXPECT_TRUE(file.Sampler(file.NodeIndex("C_head_GEO"), "weights").IsNullHandle());
    ExpectValidatorClean(dir + "/out.glb");
}

}  // namespace
