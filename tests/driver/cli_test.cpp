// The command line as users' scripts see it: texts, streams and exit codes (cases in
// data/cli.txt).
#include <gtest/gtest.h>

#include <csignal>
#include <filesystem>
#include <fstream>

#include "file_contents.h"
#include "run_tool.h"
#include "scratch_folder.h"
#include "text_table.h"

namespace {

class CliTest : public testing::TestWithParam<testsupport::TableRow> {};

TEST_P(CliTest, ExitCodeAndStreams) {
    const testsupport::TableRow& c = GetParam();
    const testsupport::ScratchFolder folder("cli");
    const std::string dir = folder.Path().string();
    std::ofstream(dir + "/scene.txt") << "not a scene";
    std::ofstream(dir + "/scene.glb") << "glTF";

    const ToolRun run = RunTool(c.Items(1), dir);
    EXPECT_EQ(c.Text(2) == "abort" ? run.signal : run.exitCode, c.Text(2) == "abort" ? SIGABRT : c.Int(2));
    const std::string out = c.Text(3), err = c.Text(4);
    if (out != "*") {
        EXPECT_EQ(run.out, out.starts_with('<') ? testsupport::ReadFileText(VURL_TEST_DATA "/" + out.substr(1, out.size() - 2)) : out);
    }
    if (err.starts_with('~')) {
        EXPECT_NE(run.err.find(err.substr(1)), std::string::npos) << run.err;
    } else {
        EXPECT_EQ(run.err, err);
    }
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(dir), std::filesystem::directory_iterator()), 2);
}

INSTANTIATE_TEST_SUITE_P(Cli, CliTest, testing::ValuesIn(testsupport::ReadTable(VURL_TEST_DATA "/cli.txt")),
                         testsupport::RowName);

}  // namespace
