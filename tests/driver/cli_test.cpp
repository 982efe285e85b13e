// The command line as users' scripts see it: texts, streams and exit codes.
#include <gtest/gtest.h>

#include <csignal>
#include <filesystem>
#include <fstream>

#include "file_contents.h"
#include "run_tool.h"
#include "scratch_folder.h"

namespace {

using testsupport::ReadFileText;

class CliTest : public ::testing::Test {
protected:
    void SetUp() override {
        std::ofstream(dir + "/scene.txt") << "not a scene";
        std::ofstream(dir + "/scene.glb") << "glTF";
        help = ReadFileText(std::string(VURL_TEST_DATA) + "/help_options.txt");
        fullHelp = ReadFileText(std::string(VURL_TEST_DATA) + "/help_full.txt");
        ASSERT_FALSE(help.empty());
    }
    ToolRun Run(const std::vector<std::string>& args) { return RunTool(args, dir); }

    // An "ERROR:" report: the message and two line ends on stderr, the options on stdout, exit 1.
    void ExpectError(const ToolRun& run, const std::string& message) {
        EXPECT_EQ(run.exitCode, 1);
        EXPECT_EQ(run.err, message + "\n\n");
        EXPECT_EQ(run.out, help);
    }

    testsupport::ScratchFolder folder{"cli"};
    std::string dir = folder.Path().string(), help, fullHelp;
};

TEST_F(CliTest, HelpAndVersionOutrankEverything) {
    for (auto args : std::vector<std::vector<std::string>>{
             {"--help"}, {"-h"}, {"-i", "missing.fbx", "-h"}, {"-v", "-h"}, {"-f", "bogus", "--help"}}) {
        ToolRun run = Run(args);
        EXPECT_EQ(run.exitCode, 0);
        EXPECT_EQ(run.out, fullHelp);
        EXPECT_EQ(run.err, "");
    }
    for (auto args : std::vector<std::vector<std::string>>{{"--version"}, {"-v", "-i", "missing.fbx"}}) {
        ToolRun run = Run(args);
        EXPECT_EQ(run.exitCode, 0);
        EXPECT_EQ(run.out, "Fernbright Variable Uniform Rendering Loader (VURL) Version 1.2.2\n\n");
        EXPECT_EQ(run.err, "");
    }
}

TEST_F(CliTest, InputErrors) {
    ExpectError(Run({}), "ERROR: No input file specified.");
    ExpectError(Run({"-m", "a.json", "--inputs", "scene.txt"}), "ERROR: No input file specified.");
    ExpectError(Run({"-m", "a.json", "-i", "missing.fbx"}), "ERROR: Input file 'missing.fbx' does not exist.");
    // -i as the last token has an empty value.
    ExpectError(Run({"-m", "a.json", "-i"}), "ERROR: Input file '' does not exist.");
    // The long name wins over the short one, wherever they stand.
    ExpectError(Run({"-i", "scene.txt", "--input", "nope.glb", "-m", "a.json"}),
                "ERROR: Input file 'nope.glb' does not exist.");
}

TEST_F(CliTest, OutputAndChoiceErrorsInOrder) {
    const std::string noOutputs =
        "ERROR: No output filenames specified. Specify -m (to output a model), -a (to output an animation) or both.";
    ExpectError(Run({"-i", "scene.txt"}), noOutputs);
    ExpectError(Run({"-i", "scene.txt", "-n", "m.json"}), noOutputs);  // a manifest alone is not enough
    ExpectError(Run({"-i", "scene.txt", "-m", ""}), noOutputs);
    // The output check comes before any option value is parsed.
    ExpectError(Run({"-i", "scene.txt", "-s", "abc"}), noOutputs);

    const std::string naming = "ERROR: animation-naming must be one of: combine, numbered, take.";
    const std::string compress = "ERROR: mesh-compress must be one of: none, draco.";
    ExpectError(Run({"-i", "scene.txt", "-a", "x.json", "-f", "Take"}), naming);
    ExpectError(Run({"-i", "scene.txt", "-a", "x.json", "-f", "take", "-C", "zip"}), compress);
    ExpectError(Run({"-i", "scene.txt", "-a", "x.json", "-f", "bad", "-C", "zip"}), naming);
}

TEST_F(CliTest, LoadFailureEndsWithoutHelp) {
    // An existing file that no loader takes; -f and -C given empty fall back to their defaults.
    ToolRun run = Run({"-i", "scene.txt", "-m", "out.json", "-f", "", "-C"});
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_EQ(run.out, "Loading scene...\nFailed to load scene.\n");
    EXPECT_FALSE(std::filesystem::exists(dir + "/out.json"));
}

TEST_F(CliTest, FloatJunkEndsTheProcessAbnormally) {
    for (auto opt : {"-s", "-e", "-t", "-x", "-y", "-z", "-k", "-q", "--animation-start"}) {
        ToolRun run = Run({"-i", "scene.txt", "-m", "o.json", opt, "abc"});
        EXPECT_EQ(run.signal, SIGABRT) << opt;
        EXPECT_NE(run.err.find("invalid stof argument"), std::string::npos) << opt;
    }
    ToolRun range = Run({"-i", "scene.txt", "-m", "o.json", "-s", "1e99"});
    EXPECT_EQ(range.signal, SIGABRT);
    EXPECT_NE(range.err.find("stof argument out of range"), std::string::npos);
    // Integer options never fail, and a float option given no value reads 0.
    ToolRun lenient = Run({"-i", "scene.txt", "-m", "o.json", "--draco-position-bits", "abc", "-s"});
    EXPECT_EQ(lenient.exitCode, 1);
    EXPECT_EQ(lenient.out, "Loading scene...\nFailed to load scene.\n");
}

}  // namespace
