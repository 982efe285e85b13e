#include <gtest/gtest.h>


#include "driver/export_plan.h"
#include "driver/manifest.h"
#include "file_contents.h"
#include "scratch_folder.h"

namespace {

void AddTakes(Scene& scene, std::initializer_list<const char*> names) {
    for (const char* name : names) {
        auto* a = new Animation;
        a->name = name;
        scene.AddAnimation(a);
    }
}

struct Written {
    std::string name;
    ExportOptions options;
};

// Plans and "writes" with a writer that records what it was asked for.
std::vector<Written> Plan(const Scene& scene, const OutputNames& names, const std::string& naming,
                          std::vector<WrittenFile>* files = nullptr) {
    std::vector<Written> calls;
    FormatRegistry registry;
    RegisterWriter(registry, ".json", [&](const std::string& n, const Scene&, const ExportOptions& o) {
        calls.push_back({n, o});
        return true;
    });
    testing::internal::CaptureStdout();
    std::vector<WrittenFile> written = WriteOutputs(registry, scene, names, naming, false);
    testing::internal::GetCapturedStdout();
    if (files) *files = written;
    return calls;
}

std::vector<std::string> Names(const std::vector<Written>& calls) {
    std::vector<std::string> out;
    for (auto& c : calls) out.push_back(c.name);
    return out;
}

}  // namespace

TEST(ExportPlan, NumberedNamesGrowPastThreeDigitsAndSortByteWise) {
    EXPECT_EQ(AnimationFileName("walk.json", "numbered", 0, "A"), "walk000.json");
    EXPECT_EQ(AnimationFileName("walk.json", "numbered", 42, "A"), "walk042.json");
    EXPECT_EQ(AnimationFileName("x.json", "numbered", 1000, "A"), "x1000.json");
    EXPECT_EQ(AnimationFileName("noext", "numbered", 1, "A"), "noext001");
    EXPECT_EQ(AnimationFileName("a.b/c", "numbered", 1, "A"), "a001.b/c");  // the last dot anywhere

    Scene scene;
    for (int i = 0; i < 1001; ++i) {
        auto* a = new Animation;
        a->name = "t" + std::to_string(i);
        scene.AddAnimation(a);
    }
    OutputNames names;
    names.animationFile = "x.json";
    auto calls = Plan(scene, names, "numbered");
    ASSERT_EQ(calls.size(), 1001u);
    EXPECT_EQ(calls[0].name, "x000.json");
    // "x1000.json" sorts between "x100.json" and "x101.json".
    EXPECT_EQ(calls[100].name, "x100.json");
    EXPECT_EQ(calls[101].name, "x1000.json");
    EXPECT_EQ(calls[102].name, "x101.json");
    EXPECT_EQ(calls.back().name, "x999.json");
    EXPECT_EQ(calls[101].options.animations, std::set<std::string>{"t1000"});
}

TEST(ExportPlan, TakeNamesAreCleanedAndMayShareAFile) {
    EXPECT_EQ(AnimationFileName("walk.json", "take", 0, "Take 001"), "walkTake_001.json");
    EXPECT_EQ(AnimationFileName("w.json", "take", 0, "a/b?c<d>e\\f:g*h|i\"j\tk\x7fl"), "wa_b_c_d_e_f_g_h_i_j_k\x7fl.json");
    EXPECT_EQ(AnimationFileName("w.json", "take", 0, "caf\xc3\xa9"), "wcaf\xc3\xa9.json");
    EXPECT_EQ(AnimationFileName("dir.old/noext", "take", 0, "run"), "dirrun.old/noext");

    Scene scene;
    AddTakes(scene, {"a b", "a_b", "c"});
    OutputNames names;
    names.animationFile = "x.json";
    auto calls = Plan(scene, names, "take");
    ASSERT_EQ(Names(calls), (std::vector<std::string>{"xa_b.json", "xc.json"}));
    EXPECT_EQ(calls[0].options.animations, (std::set<std::string>{"a b", "a_b"}));
    // No takes, no animation file.
    std::vector<WrittenFile> files;
    EXPECT_TRUE(Plan(Scene(), names, "combine", &files).empty());
    EXPECT_TRUE(files.empty());
}

TEST(ExportPlan, RolesFollowNamesAndCollapse) {
    Scene scene;
    AddTakes(scene, {"B", "A"});
    OutputNames names;
    names.modelFile = "all.json";
    names.animationFile = "all.json";
    names.materialsFile = "mat.json";
    names.metadataFile = "mat.json";
    names.sceneMetadataFile = "./mat.json";  // a different name, byte for byte
    std::vector<WrittenFile> files;
    auto calls = Plan(scene, names, "combine", &files);
    ASSERT_EQ(Names(calls), (std::vector<std::string>{"./mat.json", "all.json", "mat.json"}));
    EXPECT_TRUE(calls[0].options.exportSceneMetadata);
    EXPECT_FALSE(calls[0].options.exportMaterials);
    EXPECT_TRUE(calls[1].options.exportModel);
    EXPECT_EQ(calls[1].options.animations, (std::set<std::string>{"A", "B"}));
    EXPECT_TRUE(calls[2].options.exportMaterials && calls[2].options.exportMetadata);
    EXPECT_EQ(calls[2].options.version, "1.2.2");
    ASSERT_EQ(files.size(), 3u);

    // The model can also be one of the numbered files.
    OutputNames numbered;
    numbered.modelFile = "x000.json";
    numbered.animationFile = "x.json";
    auto n = Plan(scene, numbered, "numbered");
    ASSERT_EQ(Names(n), (std::vector<std::string>{"x000.json", "x001.json"}));
    EXPECT_TRUE(n[0].options.exportModel);
    EXPECT_EQ(n[0].options.animations, std::set<std::string>{"B"});
}

TEST(Manifest, StandardLayoutInWritingOrderWithUnknownExtensions) {
    Scene scene;
    AddTakes(scene, {"Take"});
    OutputNames names;
    names.modelFile = "a.glb";
    names.animationFile = "a.glb";
    names.metadataFile = "m.json";
    names.sceneMetadataFile = "m.json";
    names.materialsFile = "r.unknown";
    FormatRegistry registry;  // no writer at all: every file is still listed
    testing::internal::CaptureStdout();
    auto files = WriteOutputs(registry, scene, names, "combine", false);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "Writing a.glb...\nWriting m.json...\nWriting r.unknown...\n");

    testsupport::ScratchFolder folder("manifest");
    const std::string dir = folder.Path().string();
    WriteManifest(files, dir + "/manifest.json");
    EXPECT_EQ(testsupport::ReadFileText(dir + "/manifest.json"),
              "{\n"
              "\t\"a.glb\": [\n\t\t\"model\",\n\t\t\"animation\"\n\t],\n"
              "\t\"m.json\": [\n\t\t\"scene\",\n\t\t\"metadata\"\n\t],\n"
              "\t\"r.unknown\": [\n\t\t\"materials\"\n\t]\n"
              "}");
    WriteManifest({}, dir + "/empty.json");
    EXPECT_EQ(testsupport::ReadFileText(dir + "/empty.json"), "{\n\n}");
}
