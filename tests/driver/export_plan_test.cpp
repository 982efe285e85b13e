// Which files a run writes and what each holds (cases in data/export_plans.txt), and the
// manifest that lists them.
#include <gtest/gtest.h>

#include "driver/export_plan.h"
#include "driver/manifest.h"
#include "file_contents.h"
#include "scratch_folder.h"
#include "text_table.h"

namespace {

void AddTakes(Scene& scene, const std::vector<std::string>& names) {
    for (const std::string& name : names) {
        auto* a = new Animation;
        a->name = name;
        scene.AddAnimation(a);
    }
}

// "name: roles takes a, b" per file, joined by " ; ".
std::string Describe(const std::vector<WrittenFile>& files) {
    std::string out;
    for (const WrittenFile& f : files) {
        out += (out.empty() ? "" : " ; ") + f.name + ":";
        const ExportOptions& o = f.options;
        for (auto [on, role] : {std::pair{o.exportModel, " model"}, {o.exportMaterials, " materials"},
                                {o.exportMetadata, " metadata"}, {o.exportSceneMetadata, " scene"}})
            out += on ? role : "";
        for (const std::string& take : o.animations) out += (take == *o.animations.begin() ? " takes " : ", ") + take;
    }
    return out;
}

// The files WriteOutputs lists; a writer for .json files checks that it is asked for each
// of them with the listed roles.
std::vector<WrittenFile> Plan(const Scene& scene, const OutputNames& names, const std::string& naming,
                              std::string* out = nullptr) {
    std::vector<WrittenFile> calls;
    FormatRegistry registry;
    RegisterWriter(registry, ".json", [&](const std::string& n, const Scene&, const ExportOptions& o) {
        calls.push_back({n, o});
        return true;
    });
    testing::internal::CaptureStdout();
    std::vector<WrittenFile> files = WriteOutputs(registry, scene, names, naming, false);
    const std::string printed = testing::internal::GetCapturedStdout();
    if (out) *out = printed;
    std::vector<WrittenFile> json = files;
    std::erase_if(json, [](const WrittenFile& f) { return !f.name.ends_with(".json"); });
    EXPECT_EQ(Describe(calls), Describe(json));
    return files;
}

class ExportPlanTest : public testing::TestWithParam<testsupport::TableRow> {};

TEST_P(ExportPlanTest, FilesAndTheirRoles) {
    const testsupport::TableRow& row = GetParam();
    Scene scene;
    AddTakes(scene, row.Items(1));
    const OutputNames names{row.Text(2), row.Text(3), row.Text(4), row.Text(5), row.Text(6), ""};
    EXPECT_EQ(Describe(Plan(scene, names, row.Text(7))), row.Text(8));
}

INSTANTIATE_TEST_SUITE_P(ExportPlan, ExportPlanTest,
                         testing::ValuesIn(testsupport::ReadTable(VURL_TEST_DATA "/export_plans.txt")),
                         testsupport::RowName);

}  // namespace

TEST(ExportPlan, NumberedNamesGrowPastThreeDigitsAndSortByteWise) {
    Scene scene;
    std::vector<std::string> takes;
    for (int i = 0; i < 1001; ++i) takes.push_back("t" + std::to_string(i));
    AddTakes(scene, takes);
    const auto files = Plan(scene, {"", "x.json", "", "", "", ""}, "numbered");
    ASSERT_EQ(files.size(), 1001u);
    // "x1000.json" sorts between "x100.json" and "x101.json".
    EXPECT_EQ(Describe({files[0], files[100], files[101], files[102], files.back()}),
              "x000.json: takes t0 ; x100.json: takes t100 ; x1000.json: takes t1000 ; x101.json: takes t101 ; "
              "x999.json: takes t999");
}

TEST(Manifest, StandardLayoutInWritingOrderWithUnknownExtensions) {
    Scene scene;
    AddTakes(scene, {"Take"});
    std::string out;  // no writer takes .glb or .unknown: every file is still listed
    const auto files = Plan(scene, {"a.glb", "a.glb", "r.unknown", "m.json", "m.json", ""}, "combine", &out);
    EXPECT_EQ(out, "Writing a.glb...\nWriting m.json...\nWriting r.unknown...\n");

    testsupport::ScratchFolder folder("manifest");
    const std::string dir = folder.Path().string();
    WriteManifest(files, dir + "/manifest.json");
    EXPECT_EQ(testsupport::ReadFileText(dir + "/manifest.json"), testsupport::ReadFileText(VURL_TEST_DATA "/manifest.json"));
    WriteManifest({}, dir + "/empty.json");
    EXPECT_EQ(testsupport::ReadFileText(dir + "/empty.json"), "{\n\n}");
}
