// The resource file beside the executable: where it is looked up, the first fault it
// reports, and how array elements become names.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <optional>
#include <set>

#include <unistd.h>

#include "avatar/rrs_nodes.h"

namespace fs = std::filesystem;

namespace {
void WriteText(const fs::path& path, const std::string& text) {
    std::ofstream(path, std::ios::binary) << text;
}

std::set<std::string> Sorted(const std::unordered_set<std::string>& names) { return {names.begin(), names.end()}; }

struct Row {
    const char* label;
    std::optional<std::string> content;  // none: no file at all
    std::string stderrText;
    std::set<std::string> ignore;
    std::set<std::string> inherit;
};
}  // namespace

// One test walks every case: they all rewrite the one file beside the test executable.
TEST(RrsNodesTest, LoadsFromTheExecutableFolderAndReportsTheFirstFault) {
    const fs::path binDir = fs::canonical(VURL_AVATAR_TEST_BIN_DIR);
    const fs::path file = binDir / "resources" / "rrs_nodes.json";
    fs::create_directories(file.parent_path());

    // The working folder has a valid file of its own, which must never be read.
    const fs::path elsewhere = fs::temp_directory_path() / ("vurl-rrs-" + std::to_string(getpid()));
    fs::create_directories(elsewhere / "resources");
    WriteText(elsewhere / "resources" / "rrs_nodes.json", R"({"ignore_node_keys": ["decoy"], "inherit_rrs_nodes": []})");
    const fs::path oldCwd = fs::current_path();
    fs::current_path(elsewhere);

    const Row rows[] = {
        {"missing file", std::nullopt, "Invalid rrs nodes json file\n", {}, {}},
        {"empty file", "", "Invalid rrs nodes json file\n", {}, {}},
        {"parse failure", "{\"ignore_node_keys\": [1,]}", "Invalid rrs nodes json file\n", {}, {}},
        {"bare word", "not json", "Invalid rrs nodes json file\n", {}, {}},
        {"array document", "[[], []]", "ignore_node_keys not found in json\n", {}, {}},
        {"ignore missing", R"({"inherit_rrs_nodes": []})", "ignore_node_keys not found in json\n", {}, {}},
        {"ignore object", R"({"ignore_node_keys": {}})", "ignore_node_keys not valid in json\n", {}, {}},
        {"ignore string", R"({"ignore_node_keys": "a", "inherit_rrs_nodes": 1})", "ignore_node_keys not valid in json\n",
         {}, {}},
        {"inherit missing", R"({"ignore_node_keys": []})", "inherit_rrs_nodes not found in json\n", {}, {}},
        {"inherit number", R"({"ignore_node_keys": [], "inherit_rrs_nodes": 3})", "inherit_rrs_nodes not valid in json\n",
         {}, {}},
        {"empty arrays", R"({"ignore_node_keys": [], "inherit_rrs_nodes": []})", "", {}, {}},
        // Element texts: scalars as written, null as "null", containers as the empty name;
        // duplicates once; unknown members ignored; the first of a doubled member counts.
        {"element texts",
         R"({"ignore_node_keys": ["root", 5, null, TRUE, [1], {"k": 1}, "root", "a\/b"],
             "inherit_rrs_nodes": ["C_head_GEO", -1.50], "extra": 1, "inherit_rrs_nodes": ["late"]})",
         "",
         {"root", "5", "null", "true", "", "a/b"},
         {"C_head_GEO", "-1.50"}},
    };
    const std::string pathLine = "Path to rrs nodes json file: " + file.string() + "\n";
    for (const Row& row : rows) {
        SCOPED_TRACE(row.label);
        fs::remove(file);
        if (row.content) WriteText(file, *row.content);

        RrsNodeSets sets;
        testing::internal::CaptureStdout();
        testing::internal::CaptureStderr();
        const bool ok = LoadRrsNodes(sets);
        const std::string out = testing::internal::GetCapturedStdout();
        const std::string err = testing::internal::GetCapturedStderr();

        EXPECT_EQ(out, pathLine);
        EXPECT_EQ(err, row.stderrText);
        EXPECT_EQ(ok, row.stderrText.empty());
        if (ok) {
            EXPECT_EQ(Sorted(sets.ignoreNodeKeys), row.ignore);
            EXPECT_EQ(Sorted(sets.inheritRrsNodes), row.inherit);
        }
    }

    // A folder in the file's place cannot be read either.
    fs::remove(file);
    fs::create_directory(file);
    RrsNodeSets sets;
    testing::internal::CaptureStderr();
    EXPECT_FALSE(LoadRrsNodes(sets));
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "Invalid rrs nodes json file\n");
    fs::remove(file);

    // A conversion cannot go on without the file.
    EXPECT_EXIT(RequireRrsNodes(), testing::ExitedWithCode(1), "^Invalid rrs nodes json file\n$");

    fs::current_path(oldCwd);
    fs::remove_all(elsewhere);
}
