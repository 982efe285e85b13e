// The resource file beside the executable: where it is looked up, the first fault it
// reports, and how array elements become names.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <optional>
#include <set>


#include "avatar/rrs_nodes.h"
#include "scratch_folder.h"

namespace fs = std::filesystem;

namespace {
void WriteText(const fs::path& path, const std::string& text) { std::ofstream(path, std::ios::binary) << text; }
std::set<std::string> Sorted(const std::unordered_set<std::string>& names) { return {names.begin(), names.end()}; }
}  // namespace

// One test walks every case: they all rewrite the one file beside the test executable.
TEST(RrsNodesTest, LoadsFromTheExecutableFolderAndReportsTheFirstFault) {
    const fs::path file = fs::canonical(VURL_AVATAR_TEST_BIN_DIR) / "resources" / "rrs_nodes.json";
    fs::create_directories(file.parent_path());
    // The working folder has a valid file of its own, which must never be read.
    const testsupport::ScratchFolder folder("rrs");
    const fs::path& elsewhere = folder.Path();
    fs::create_directories(elsewhere / "resources");
    WriteText(elsewhere / "resources" / "rrs_nodes.json", R"({"ignore_node_keys": ["decoy"], "inherit_rrs_nodes": []})");
    const fs::path oldCwd = fs::current_path();
    fs::current_path(elsewhere);

    const std::string invalid = "Invalid rrs nodes json file\n", ignoreMissing = "ignore_node_keys not found in json\n",
                      ignoreBad = "ignore_node_keys not valid in json\n",
                      inheritMissing = "inherit_rrs_nodes not found in json\n",
                      inheritBad = "inherit_rrs_nodes not valid in json\n";
    struct Row {
        std::optional<std::string> content;  // none: no file at all
        std::string err;
        std::set<std::string> ignore, inherit;
    };
    const Row rows[] = {
        {std::nullopt, invalid, {}, {}},
        {"", invalid, {}, {}},
        {R"({"ignore_node_keys": [1,]})", invalid, {}, {}},  // extra comma in array
        {"[[], []]", ignoreMissing, {}, {}},
        {R"({"inherit_rrs_nodes": []})", ignoreMissing, {}, {}},
        {R"({"ignore_node_keys": {}})", ignoreBad, {}, {}},
        {R"({"ignore_node_keys": "a", "inherit_rrs_nodes": 1})", ignoreBad, {}, {}},  // first fault only
        {R"({"ignore_node_keys": []})", inheritMissing, {}, {}},
        {R"({"ignore_node_keys": [], "inherit_rrs_nodes": 3})", inheritBad, {}, {}},
        {R"({"ignore_node_keys": [], "inherit_rrs_nodes": []})", "", {}, {}},
        // Scalars as written, null as "null", containers as the empty name; duplicates once;
        // unknown members ignored; of a doubled member the first counts.
        {R"({"ignore_node_keys": ["root", 5, null, TRUE, [1], {"k": 1}, "root", "a\/b"],
             "inherit_rrs_nodes": ["C_head_GEO", -1.50], "extra": 1, "inherit_rrs_nodes": ["late"]})",
         "",
         {"root", "5", "null", "true", "", "a/b"},
         {"C_head_GEO", "-1.50"}},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.content.value_or("no file"));
        fs::remove(file);
        if (row.content) WriteText(file, *row.content);
        RrsNodeSets sets;
        testing::internal::CaptureStdout();
        testing::internal::CaptureStderr();
        const bool ok = LoadRrsNodes(sets);
        EXPECT_EQ(testing::internal::GetCapturedStdout(), "Path to rrs nodes json file: " + file.string() + "\n");
        EXPECT_EQ(testing::internal::GetCapturedStderr(), row.err);
        EXPECT_EQ(ok, row.err.empty());
        EXPECT_EQ(Sorted(sets.ignoreNodeKeys), row.ignore);
        EXPECT_EQ(Sorted(sets.inheritRrsNodes), row.inherit);
    }

    // The file the build puts beside the tool loads cleanly.
    fs::copy_file(VURL_SOURCE_RRS_NODES, file, fs::copy_options::overwrite_existing);
    RrsNodeSets shipped;
    testing::internal::CaptureStderr();
    EXPECT_TRUE(LoadRrsNodes(shipped));
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");

    // A folder in the file's place cannot be read either, and a conversion cannot go on.
    fs::remove(file);
    fs::create_directory(file);
    EXPECT_EXIT(RequireRrsNodes(), testing::ExitedWithCode(1), "^Invalid rrs nodes json file\n$");
    fs::remove(file);
    fs::current_path(oldCwd);
}
