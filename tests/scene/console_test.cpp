// The console channels: what reaches each stream, and how a run ends early.
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>

#include "file_contents.h"
#include "scene/console.h"
#include "scratch_folder.h"

using testing::ExitedWithCode;

TEST(ConsoleTest, ErrorLinesCarryThePrefixAndOneLineEnd) {
    testing::internal::CaptureStderr();
    ConsoleError("'%s': %d bytes", "a.glb", 12);
    ConsoleErrorText("invalid glb version encountered (%u)\n", 3u);
    ConsoleErrorText("no line end");
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "ERROR: 'a.glb': 12 bytes\n"
              "invalid glb version encountered (3)\n"
              "no line end");
}

TEST(ConsoleDeathTest, EndRunExitsWithOne) {
    EXPECT_EXIT(EndRun(), ExitedWithCode(1), "^$");
    EXPECT_EXIT(EndRun("Couldn't find '%s' node?", "geo_GRP"), ExitedWithCode(1),
                "^ERROR: Couldn't find 'geo_GRP' node\\?\n$");
    EXPECT_EXIT(EndRunFromWorkerThread(), ExitedWithCode(1), "^$");
}

TEST(ConsoleDeathTest, ErrorsAndEndsComeAfterTheProgressSoFar) {
    // In a child whose standard output is a fully buffered file, the progress line must be in
    // the file by the time the error is written: the exit code tells the parent, or the file
    // the child leaves behind (it is forked, so the folder is shared).
    testsupport::ScratchFolder folder("console");
    const std::string path = folder.File("out.txt");
    auto bufferStdout = [&] {
        if (!std::freopen(path.c_str(), "w", stdout)) std::_Exit(2);
        std::setvbuf(stdout, nullptr, _IOFBF, 4096);
    };
    EXPECT_EXIT(
        {
            bufferStdout();
            ConsolePrint("Loading scene...\n");  // 17 bytes
            ConsoleError("late");
            std::error_code error;
            std::_Exit(std::filesystem::file_size(path, error) == 17 ? 3 : 4);
        },
        ExitedWithCode(3), "^ERROR: late\n$");
    EXPECT_EXIT(
        {
            bufferStdout();
            ConsolePrint("Writing %s...\n", "a.json");
            EndRun("Cannot write '%s': %s", "a.json", "too big");
        },
        ExitedWithCode(1), "^ERROR: Cannot write 'a.json': too big\n$");
    EXPECT_EQ(testsupport::ReadFileText(path), "Writing a.json...\n");
}
