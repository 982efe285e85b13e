// Loads of fixture files made with the project's FBX writer: the console transcript of a
// load byte for byte, the failure paths of the context, the password retry, and what the
// load steps (axes, units, pivots, names, slots) leave in the Scene.
#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <regex>
#include <string>
#include <vector>

#include "fbx/fbx_manager.h"
#include "fbx_scene_document.h"
#include "fbximport/fbx_context.h"
#include "fbximport/fbx_loader.h"
#include "import_test_support.h"
#include "scene/scene.h"

namespace {

using fbxwriter::SceneDocument;

constexpr const char* kBanner = "FBX document layer version 1.2.2 (file format 7.7.0)\n";
constexpr const char* kReaderVersion = "FBX file format version for this reader is 7.7.0\n";
constexpr const char* kLoadFailed = "An error occured while loading the scene...\n";

std::string RrsPathLine() {
    const std::filesystem::path exe = std::filesystem::read_symlink("/proc/self/exe");
    return "Path to rrs nodes json file: " + (exe.parent_path() / "resources" / "rrs_nodes.json").string() + "\n";
}

// RootNode -> rig -> spine (skeleton root at 100 units up, joint orient of 5 degrees about z)
//                 -> dup
//          -> geo_GRP -> head_GRP -> C_head_GEO
//                     -> dup
SceneDocument SmallAvatar(double unitCentimetres) {
    SceneDocument doc;
    doc.SetUnitScale(unitCentimetres);
    const int64_t rig = doc.AddNode("rig");
    const int64_t spine = doc.AddNode("spine", rig, "LimbNode");
    doc.AddAttribute(spine, "Root");
    doc.SetLocal(spine, "Lcl Translation", 0.0, 100.0, 0.0);
    doc.SetBool(spine, "RotationActive", true);
    doc.SetVector(spine, "PreRotation", 0.0, 0.0, 5.0);
    doc.AddNode("dup", rig);
    const int64_t geo = doc.AddNode("geo_GRP");
    const int64_t headGroup = doc.AddNode("head_GRP", geo);
    const int64_t head = doc.AddNode("C_head_GEO", headGroup, "Mesh");
    doc.AddMesh(head);
    doc.AddNode("dup", geo);
    return doc;
}

std::string WriteFixture(const std::string& dir, const std::string& name, const std::vector<uint8_t>& bytes) {
    const std::string path = dir + "/" + name;
    EXPECT_TRUE(WriteBytes(path, bytes));
    return path;
}

// Splits a transcript at the import progress, which is rewritten in place ("NN%\r") as far
// as the reader reports it; the rest is compared byte for byte.
struct Transcript {
    std::string before, progress, after;
};

Transcript Split(const std::string& out) {
    Transcript t;
    const std::string start = "Importing FBX...\n";
    const std::string end = "Import Complete!\n";
    const size_t a = out.find(start);
    const size_t b = out.find(end);
    if (a == std::string::npos || b == std::string::npos || b < a) {
        t.before = out;
        return t;
    }
    t.before = out.substr(0, a + start.size());
    t.progress = out.substr(a + start.size(), b - a - start.size());
    t.after = out.substr(b);
    return t;
}

void ExpectProgress(const std::string& progress) {
    EXPECT_TRUE(std::regex_match(progress, std::regex("([0-9]{2,3}%\r)*100%\r"))) << progress;
}

const GraphNode* Find(const GraphNode* node, const std::string& name) {
    if (!node) return nullptr;
    if (node->name == name) return node;
    for (const GraphNode* child : node->children)
        if (const GraphNode* hit = Find(child, name)) return hit;
    return nullptr;
}

std::vector<std::string> BreadthFirstNames(const GraphNode* root) {
    std::vector<const GraphNode*> queue{root};
    std::vector<std::string> names;
    for (size_t k = 0; k < queue.size(); ++k) {
        names.push_back(queue[k]->name);
        for (const GraphNode* child : queue[k]->children) queue.push_back(child);
    }
    return names;
}

struct Load {
    std::unique_ptr<Scene> scene;
    std::string out;
};

Load LoadCaptured(const std::string& path) {
    Load load;
    testing::internal::CaptureStdout();
    load.scene.reset(FbxLoadScene(path, ConversionOptions()));
    load.out = testing::internal::GetCapturedStdout();
    return load;
}

TEST(FbxLoad, TranscriptOfAFileInMetres) {
    const std::string dir = ScratchDir("metres");
    const std::string path = WriteFixture(dir, "avatar.fbx", SmallAvatar(100.0).Bytes());
    const Load load = LoadCaptured(path);
    ASSERT_NE(load.scene, nullptr);

    const Transcript t = Split(load.out);
    EXPECT_EQ(t.before, std::string(kBanner) + kReaderVersion + "FBX file format version for file '" + path +
                            "' is 7.4.0\n\n" + "Importing FBX...\n");
    ExpectProgress(t.progress);
    // Metres: no unit conversion, and the unit pass has nothing to print.
    EXPECT_EQ(t.after, "Import Complete!\nScene unit scale factor: 100.000000. is cm: 0\n" + RrsPathLine());
}

TEST(FbxLoad, TranscriptOfAFileInCentimetres) {
    const std::string dir = ScratchDir("centimetres");
    const std::string path = WriteFixture(dir, "avatar.fbx", SmallAvatar(1.0).Bytes());
    const Load load = LoadCaptured(path);
    ASSERT_NE(load.scene, nullptr);

    const Transcript t = Split(load.out);
    ExpectProgress(t.progress);
    std::string expected = "Import Complete!\nScene unit scale factor: 1.000000. is cm: 1\n" + RrsPathLine() +
                           "Unit scale applied: 0.010000\n";
    // Stage two prints every node of the finished tree, breadth first: the root, its two
    // children, then the next level, with the slots of the avatar assembly.
    const std::vector<std::string> names = BreadthFirstNames(load.scene->root);
    ASSERT_GE(names.size(), 6u);
    EXPECT_EQ(std::vector<std::string>(names.begin(), names.begin() + 6),
              (std::vector<std::string>{"RootNode", "rig", "geo_GRP", "spine", "dup", "dup.001"}));
    // 1 root + rig, spine, dup, geo_GRP, dup.001 + 10 group nodes + 62 slots; head_GRP and
    // C_head_GEO below it are gone.
    EXPECT_EQ(names.size(), 78u);
    for (const std::string& name : names) expected += "Node: " + name + "\n";
    EXPECT_EQ(t.after, expected);

    // spine: 100 cm is 1 m. rig, a child of the root, took the factor 0.01 into its scale in
    // the document, and the unit pass took it out again: 0.01f * 100 rounds to exactly 1.
    const GraphNode* rig = Find(load.scene->root, "rig");
    const GraphNode* spine = Find(load.scene->root, "spine");
    ASSERT_NE(rig, nullptr);
    ASSERT_NE(spine, nullptr);
    ExpectVec3(load.scene->root->scale, 1, 1, 1);
    ExpectVec3(rig->scale, 1, 1, 1);
    ExpectVec3(spine->position, 0, 1, 0);
    EXPECT_TRUE(spine->isSkeletonRoot);
}

TEST(FbxLoad, FileInInches) {
    const std::string dir = ScratchDir("inches");
    const std::string path = WriteFixture(dir, "avatar.fbx", SmallAvatar(2.54).Bytes());
    const Load load = LoadCaptured(path);
    ASSERT_NE(load.scene, nullptr);
    const Transcript t = Split(load.out);
    // 2.54 * 0.01 is not 0.01: stage one only, no "Node: " lines.
    EXPECT_EQ(t.after, "Import Complete!\nScene unit scale factor: 2.540000. is cm: 0\n" + RrsPathLine() +
                           "Unit scale applied: 0.025400\n");
    const float applied = 2.54f * 0.01f;
    ExpectVec3(load.scene->root->scale, applied, applied, applied);
}

TEST(FbxLoad, StepsOfThePreparation) {
    SceneDocument doc = SmallAvatar(100.0);
    // Z up, front -y, right handed: the rig's translation along z becomes one along y, and
    // its rotation takes the turn: x stays, z goes to y, y to -z, a -90 degree turn about x.
    doc.SetAxes(2, 1, 1, -1, 0, 1);
    const std::string dir = ScratchDir("zup");
    const std::string path = WriteFixture(dir, "avatar.fbx", doc.Bytes());
    const Load load = LoadCaptured(path);
    ASSERT_NE(load.scene, nullptr);
    const GraphNode* root = load.scene->root;
    EXPECT_EQ(root->name, "RootNode");

    const GraphNode* rig = Find(root, "rig");
    ASSERT_NE(rig, nullptr);
    EXPECT_NEAR(rig->rotation.x, -90.0f, 1e-4f);
    EXPECT_NEAR(rig->rotation.y, 0.0f, 1e-4f);
    EXPECT_NEAR(rig->rotation.z, 0.0f, 1e-4f);

    // The joint orient was baked into the rotation by the pivot reset.
    const GraphNode* spine = Find(root, "spine");
    ASSERT_NE(spine, nullptr);
    EXPECT_NEAR(spine->rotation.z, 5.0f, 1e-4f);
    ExpectVec3(spine->position, 0, 100, 0);

    // Names are made unique breadth first: the dup below rig is met first.
    const GraphNode* geo = Find(root, "geo_GRP");
    ASSERT_NE(geo, nullptr);
    EXPECT_EQ(Find(rig, "dup")->GetParent(), rig);
    EXPECT_EQ(Find(geo, "dup.001")->GetParent(), geo);

    // Slots: head_GRP below geo_GRP is removed; the group nodes follow dup.001 in the
    // order the slots are made.
    EXPECT_EQ(Find(root, "head_GRP"), nullptr);
    std::vector<std::string> children;
    for (const GraphNode* child : geo->children) children.push_back(child->name);
    EXPECT_EQ(children, (std::vector<std::string>{"dup.001", "universal_head_head_GRP", "universal_head_mouth_GRP",
                                                  "universal_head_facial_hair_GRP", "browringL_GRP", "browringR_GRP",
                                                  "earringL_GRP", "earringR_GRP", "nosering_GRP", "mouthring_GRP",
                                                  "tonguering_GRP"}));
}

TEST(FbxLoad, WithoutGeoGroupTheRunEnds) {
    SceneDocument doc;
    doc.AddNode("rig");
    const std::string dir = ScratchDir("nogeo");
    const std::string path = WriteFixture(dir, "rig.fbx", doc.Bytes());
    EXPECT_EXIT(FbxLoadScene(path, ConversionOptions()), testing::ExitedWithCode(1),
                "ERROR: Couldn't find 'geo_GRP' node\\?");
}

// -- Failures of the context ------------------------------------------------------------------

struct InitializeFailure {
    const char* label;
    const char* fileName;
    std::vector<uint8_t> bytes;
    // After "Error returned: ", with the %s filled in; {file} stands for the path.
    std::string afterError;
};

std::vector<InitializeFailure> InitializeFailures() {
    fbxwriter::Options newer;
    newer.version = 8000;
    SceneDocument plain;
    plain.AddNode("geo_GRP");
    const std::string objText = "v 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\n";
    return {
        // Only an invalid version adds the two version lines, with the file's own numbers. The
        // stream refuses the file before the importer looks at it, with its own text.
        {"VersionEight", "new.fbx", plain.Bytes(newer),
         "FBX file version 8.0.0 is not supported in this product\n\n" + std::string(kReaderVersion) +
             "FBX file format version for file '{file}' is 8.0.0\n\n"},
        // No reader for the content of another format.
        {"ObjText", "mesh.obj", std::vector<uint8_t>(objText.begin(), objText.end()), "Unexpected file type\n\n"},
    };
}

class InitializeFailureTest : public testing::TestWithParam<InitializeFailure> {};

TEST_P(InitializeFailureTest, EndsWithTheMisspeltLine) {
    const InitializeFailure& c = GetParam();
    const std::string dir = ScratchDir(std::string("init_") + c.label);
    const std::string path = WriteFixture(dir, c.fileName, c.bytes);
    const Load load = LoadCaptured(path);
    EXPECT_EQ(load.scene, nullptr);
    std::string after = c.afterError;
    const size_t at = after.find("{file}");
    if (at != std::string::npos) after.replace(at, 6, path);
    EXPECT_EQ(load.out,
              std::string(kBanner) + "Call to FbxImporter::Initialize() failed.\nError returned: " + after + kLoadFailed);
}

INSTANTIATE_TEST_SUITE_P(Files, InitializeFailureTest, testing::ValuesIn(InitializeFailures()),
                         [](const testing::TestParamInfo<InitializeFailure>& info) { return info.param.label; });

TEST(FbxLoad, MissingFileReportsTheLayersReason) {
    const std::string dir = ScratchDir("missing");
    const Load load = LoadCaptured(dir + "/absent.fbx");
    EXPECT_EQ(load.scene, nullptr);
    const std::string head = std::string(kBanner) + "Call to FbxImporter::Initialize() failed.\nError returned: ";
    ASSERT_EQ(load.out.compare(0, head.size(), head), 0) << load.out;
    const std::string tail = std::string("\n\n") + kLoadFailed;
    ASSERT_GT(load.out.size(), head.size() + tail.size()) << "the layer's reason is not empty";
    EXPECT_EQ(load.out.substr(load.out.size() - tail.size()), tail);
}

// -- The password prompt ----------------------------------------------------------------------

struct PasswordCase {
    const char* label;
    std::string typed;
    std::string password;  // what the option holds afterwards
};

class PasswordTest : public testing::TestWithParam<PasswordCase> {};

TEST_P(PasswordTest, OnePromptOneRetry) {
    const PasswordCase& c = GetParam();
    SceneDocument doc;
    doc.AddNode("geo_GRP");
    std::vector<fbxwriter::Record> records = doc.Records();
    records[0].Add("EncryptionType").Int(1);
    const std::string dir = ScratchDir(std::string("password_") + c.label);
    const std::string path = WriteFixture(dir, "locked.fbx", fbxwriter::Write(records));

    std::FILE* input = std::tmpfile();
    ASSERT_NE(input, nullptr);
    std::fputs(c.typed.c_str(), input);
    std::rewind(input);

    testing::internal::CaptureStdout();
    FbxContext context = InitializeFbxContext();
    const bool imported = ImportFbxFile(context, path, input);
    const std::string out = testing::internal::GetCapturedStdout();
    std::fclose(input);

    EXPECT_FALSE(imported);
    EXPECT_EQ(out, std::string(kBanner) + kReaderVersion + "FBX file format version for file '" + path +
                       "' is 7.4.0\n\nImporting FBX...\nImport Complete!\nPlease enter password: "
                       "\nPassword is wrong, import aborted.\n");
    FbxIOSettings* settings = context.manager->GetIOSettings();
    EXPECT_EQ(settings->GetStringProp("Import|AdvOptGrp|FileFormat|Fbx|Password", "unset"), c.password);
    EXPECT_TRUE(settings->GetBoolProp("Import|AdvOptGrp|FileFormat|Fbx|Password_Enable", false));
    DestroyFbxContext(context);
}

INSTANTIATE_TEST_SUITE_P(Inputs, PasswordTest,
                         testing::Values(PasswordCase{"OneWord", "guess\n", "guess"},
                                         // One whitespace-delimited word: the rest stays unread.
                                         PasswordCase{"FirstWordOnly", "  open sesame\n", "open"},
                                         // Nothing to read: the retry still happens, once.
                                         PasswordCase{"EndOfInput", "", ""}),
                         [](const testing::TestParamInfo<PasswordCase>& info) { return info.param.label; });

TEST(FbxContext, ImportSetsTheFbxOptions) {
    const std::string dir = ScratchDir("options");
    const std::string path = WriteFixture(dir, "avatar.fbx", SmallAvatar(100.0).Bytes());
    testing::internal::CaptureStdout();
    FbxContext context = InitializeFbxContext();
    FbxIOSettings* settings = context.manager->GetIOSettings();
    EXPECT_STREQ(settings->GetName(), "IOSRoot");
    EXPECT_STREQ(context.scene->GetName(), "My Scene");
    const bool imported = ImportFbxFile(context, path);
    testing::internal::GetCapturedStdout();
    EXPECT_TRUE(imported);
    for (const char* option : {"Material", "Texture", "Link", "Shape", "Gobo", "Animation", "Global_Settings"})
        EXPECT_TRUE(settings->GetBoolProp((std::string("Import|AdvOptGrp|FileFormat|Fbx|") + option).c_str(), false))
            << option;
    DestroyFbxContext(context);
}

}  // namespace
