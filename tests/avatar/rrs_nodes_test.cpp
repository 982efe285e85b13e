// The resource file beside the executable: where it is looked up, the first fault it
// reports, and how array elements become names (cases in data/rrs_nodes.txt).
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <set>

#include "avatar/rrs_nodes.h"
#include "scratch_folder.h"
#include "text_table.h"

namespace fs = std::filesystem;

namespace {
void WriteText(const fs::path& path, const std::string& text) { std::ofstream(path, std::ios::binary) << text; }
std::set<std::string> Sorted(const std::unordered_set<std::string>& names) { return {names.begin(), names.end()}; }
std::set<std::string> Sorted(const std::vector<std::string>& names) { return {names.begin(), names.end()}; }
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

    for (const testsupport::TableRow& row : testsupport::ReadTable(VURL_AVATAR_TEST_DATA "/rrs_nodes.txt")) {
        SCOPED_TRACE(row.Text(0));
        fs::remove(file);
        if (row.Text(1) != "<none>") WriteText(file, row.Text(1));
        RrsNodeSets sets;
        testing::internal::CaptureStdout();
        testing::internal::CaptureStderr();
        const bool ok = LoadRrsNodes(sets);
        EXPECT_EQ(testing::internal::GetCapturedStdout(), "Path to rrs nodes json file: " + file.string() + "\n");
        EXPECT_EQ(testing::internal::GetCapturedStderr(), row.Text(2));
        EXPECT_EQ(ok, row.Text(2).empty());
        EXPECT_EQ(Sorted(sets.ignoreNodeKeys), Sorted(row.Items(3)));
        EXPECT_EQ(Sorted(sets.inheritRrsNodes), Sorted(row.Items(4)));
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
