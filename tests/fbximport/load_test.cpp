// Loads of fixture files made with the project's FBX writer: the console transcript byte for
// byte, the failure paths of the context, the password retry, and what the preparation steps
// (axes, pivots, names, slots) leave in the Scene.
#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <memory>
#include <regex>
#include <string>
#include <vector>

#include "avatar/avatar_tables.h"
#include "avatar_fixture.h"
#include "fbx/fbx_manager.h"
#include "fbximport/fbx_context.h"
#include "fbximport/fbx_loader.h"
#include "import_test_support.h"

namespace {

using fbxwriter::SceneDocument;

const std::string kBanner = "FBX document layer version 1.2.2 (file format 7.7.0)\n";
const std::string kReaderVersion = "FBX file format version for this reader is 7.7.0\n";

// The channel bindings of a file without animation stacks: no source mesh is collected, so
// every group falls back to a head that is not there and finds none of its names.
std::string UnboundGroupLines() {
    std::string lines;
    for (std::string_view group : AccessoryGroupNames) {
        const MorphTransferEntry& row = MorphTransferTable.at(std::string(group));
        lines += "TargetName : " + std::string(group) + "\nSourceName : " + row.sourceMesh + "\n";
        const std::vector<std::string>& names = MorphNamesForGroup(std::string(group));
        lines += "targetMorphTargets size: " + std::to_string(names.size()) + "\n";
        lines += "Trying to use head\n0\nsourceMorphTargets size: 0\n";
        for (const std::string& name : names) lines += "  " + name + "  NOT FOUND\n";
    }
    return lines;
}

// RootNode -> rig (5 units along z) -> spine (skeleton root, 100 units up, joint orient of
//                                            5 degrees about z)
//                                   -> dup
//          -> geo_GRP -> head_GRP -> C_head_GEO
//                     -> dup
SceneDocument SmallAvatar(double unitCentimetres) {
    SceneDocument doc;
    doc.SetUnitScale(unitCentimetres);
    const testsupport::AvatarIds ids = testsupport::AddAvatarLayout(doc, "spine", "Root", 100.0);
    doc.SetLocal(ids.rig, "Lcl Translation", 0.0, 0.0, 5.0);
    doc.SetBool(ids.joint, "RotationActive", true);
    doc.SetVector(ids.joint, "PreRotation", 0.0, 0.0, 5.0);
    doc.AddNode("dup", ids.rig);
    doc.AddNode("dup", ids.geo);
    return doc;
}

std::string Fixture(const std::string& label, const std::string& name, const std::vector<uint8_t>& bytes) {
    const std::string path = ScratchDir(label) + "/" + name;
    EXPECT_TRUE(fbxwriter::SaveFile(path, bytes));
    return path;
}

struct Load {
    std::unique_ptr<Scene> scene;
    std::string out;
    // The parts before and after the import progress ("NN%\r" rewritten in place, as far as
    // the reader reports it), which are compared byte for byte.
    std::string before, after;
};

Load LoadCaptured(const std::string& path) {
    Load load;
    testing::internal::CaptureStdout();
    load.scene.reset(FbxLoadScene(path, ConversionOptions()));
    load.out = testing::internal::GetCapturedStdout();
    const std::string start = "Importing FBX...\n";
    const size_t a = load.out.find(start), b = load.out.find("Import Complete!\n");
    if (a == std::string::npos || b == std::string::npos) return load;
    load.before = load.out.substr(0, a + start.size());
    load.after = load.out.substr(b);
    EXPECT_TRUE(std::regex_match(load.out.substr(a + start.size(), b - a - start.size()),
                                 std::regex("([0-9]{2,3}%\r)*100%\r")));
    return load;
}

const GraphNode* Find(const GraphNode* node, const std::string& name) {
    if (node->name == name) return node;
    for (const GraphNode* child : node->children)
        if (const GraphNode* hit = Find(child, name)) return hit;
    return nullptr;
}

class LoadTranscriptTest : public testing::TestWithParam<testsupport::TableRow> {};

TEST_P(LoadTranscriptTest, ByteForByte) {
    const testsupport::TableRow& c = GetParam();
    const std::string path = Fixture("units_" + c.Text(0), "avatar.fbx", SmallAvatar(std::stod(c.Text(1))).Bytes());
    const Load load = LoadCaptured(path);
    ASSERT_NE(load.scene, nullptr);
    EXPECT_EQ(load.before, kBanner + kReaderVersion + "FBX file format version for file '" + path +
                               "' is 7.4.0\n\nImporting FBX...\n");
    const std::filesystem::path exe = std::filesystem::read_symlink("/proc/self/exe");
    std::string expected = "Import Complete!\n" + c.Text(2) + "Path to rrs nodes json file: " +
                           (exe.parent_path() / "resources" / "rrs_nodes.json").string() + "\n" +
                           UnboundGroupLines() + c.Text(3);
    if (c.Int(4)) {
        // Every node of the finished tree, breadth first: the root, rig, geo_GRP, spine,
        // dup, dup.001, the 10 group nodes, the 62 slots; 78 in all.
        std::vector<const GraphNode*> queue{load.scene->root};
        for (size_t k = 0; k < queue.size(); ++k) {
            expected += "Node: " + queue[k]->name + "\n";
            queue.insert(queue.end(), queue[k]->children.begin(), queue[k]->children.end());
        }
        EXPECT_EQ(queue.size(), 78u);
        EXPECT_EQ(queue[5]->name, "dup.001");
    }
    EXPECT_EQ(load.after, expected);
}

INSTANTIATE_TEST_SUITE_P(Units, LoadTranscriptTest, testing::ValuesIn(Table("load_units.txt")), RowName);

TEST(FbxLoad, StepsOfThePreparation) {
    SceneDocument doc = SmallAvatar(100.0);
    // Z up, front -y, right handed: x stays, z goes to y and y to -z, so rig's 5 along z
    // becomes 5 along y, and rig takes a -90 degree turn about x.
    doc.SetAxes(2, 1, 1, -1, 0, 1);
    const Load load = LoadCaptured(Fixture("steps", "avatar.fbx", doc.Bytes()));
    ASSERT_NE(load.scene, nullptr);
    const GraphNode* root = load.scene->root;
    const GraphNode* rig = Find(root, "rig");
    const GraphNode* spine = Find(root, "spine");
    const GraphNode* geo = Find(root, "geo_GRP");
    ASSERT_TRUE(rig && spine && geo);
    ExpectVec3(rig->position, {0, 5, 0});
    EXPECT_NEAR(rig->rotation.x, -90.0f, 1e-4f);
    // The joint orient is baked into the rotation by the pivot reset.
    EXPECT_NEAR(spine->rotation.z, 5.0f, 1e-4f);
    EXPECT_TRUE(spine->isSkeletonRoot);
    // World matrices: spine's 100 along y, turned with rig, point along -z from rig at (0,5,0).
    EXPECT_NEAR(spine->worldMatrix[12], 0.0f, 1e-4f);
    EXPECT_NEAR(spine->worldMatrix[13], 5.0f, 1e-4f);
    EXPECT_NEAR(spine->worldMatrix[14], -100.0f, 1e-4f);
    // Unique names, breadth first: the dup below rig is met before the one below geo_GRP.
    EXPECT_EQ(Find(rig, "dup")->GetParent(), rig);
    EXPECT_EQ(Find(geo, "dup.001")->GetParent(), geo);
    // head_GRP below geo_GRP is gone; the slots follow dup.001 (their layout is the slot
    // tests' concern).
    EXPECT_EQ(Find(root, "head_GRP"), nullptr);
    ASSERT_EQ(geo->children.size(), 11u);
    EXPECT_EQ(geo->children[1]->name, "universal_head_head_GRP");
}

TEST(FbxLoad, InitializeFailuresEndWithTheMisspeltLine) {
    SceneDocument plain;
    plain.AddNode("geo_GRP");
    fbxwriter::Options newer;
    newer.version = 8000;
    const std::string obj = "v 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\n";
    const struct {
        std::string path, afterError;  // afterError: behind "Error returned: "
    } cases[] = {
        // Only a version error adds the two version lines, with the file's own numbers. The
        // stream refuses the file before the importer looks at it, with its own text.
        {Fixture("init_version", "new.fbx", plain.Bytes(newer)),
         "FBX file version 8.0.0 is not supported in this product\n\n" + kReaderVersion +
             "FBX file format version for file '{file}' is 8.0.0\n\n"},
        // No reader for another format's content.
        {Fixture("init_obj", "mesh.obj", std::vector<uint8_t>(obj.begin(), obj.end())), "Unexpected file type\n\n"},
    };
    for (const auto& c : cases) {
        const Load load = LoadCaptured(c.path);
        EXPECT_EQ(load.scene, nullptr);
        const std::string after = std::regex_replace(c.afterError, std::regex("\\{file\\}"), c.path);
        EXPECT_EQ(load.out, kBanner + "Call to FbxImporter::Initialize() failed.\nError returned: " + after +
                                "An error occured while loading the scene...\n");
    }
}

TEST(FbxLoad, PasswordPromptsOnceAndRetriesOnce) {
    SceneDocument doc;
    doc.AddNode("geo_GRP");
    std::vector<fbxwriter::Record> records = doc.Records();
    records[0].Add("EncryptionType").Int(1);
    const std::string path = Fixture("password", "locked.fbx", fbxwriter::Write(records));
    // What the console gives, what the option then holds: one whitespace-delimited word, the
    // rest unread; with nothing to read the retry still happens, once.
    for (const auto& [typed, password] : {std::pair<const char*, const char*>{"guess\n", "guess"},
                                          {"  open sesame\n", "open"},
                                          {"", ""}}) {
        SCOPED_TRACE(typed);
        std::FILE* input = std::tmpfile();
        ASSERT_NE(input, nullptr);
        std::fputs(typed, input);
        std::rewind(input);
        testing::internal::CaptureStdout();
        FbxContext context = InitializeFbxContext();
        EXPECT_FALSE(ImportFbxFile(context, path, input));
        const std::string out = testing::internal::GetCapturedStdout();
        std::fclose(input);
        EXPECT_EQ(out, kBanner + kReaderVersion + "FBX file format version for file '" + path +
                           "' is 7.4.0\n\nImporting FBX...\nImport Complete!\nPlease enter password: "
                           "\nPassword is wrong, import aborted.\n");
        FbxIOSettings* settings = context.manager->GetIOSettings();
        EXPECT_EQ(settings->GetStringProp("Import|AdvOptGrp|FileFormat|Fbx|Password", "unset"), password);
        EXPECT_TRUE(settings->GetBoolProp("Import|AdvOptGrp|FileFormat|Fbx|Password_Enable", false));
        DestroyFbxContext(context);
    }
}

}  // namespace
