// The console channels: what reaches each stream, and how a run ends early.
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>

#include "scene/console.h"

namespace {

// Exit code 1 with nothing else on standard error than the expected text (a regex).
void ExpectEndsRun(void (*run)(), const std::string& stderrPattern) {
    EXPECT_EXIT(run(), testing::ExitedWithCode(1), stderrPattern);
}

}  // namespace

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

TEST(ConsoleDeathTest, ErrorWritesAfterTheProgressSoFar) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    // In a child whose standard output is a fully buffered file, the progress line must be
    // in the file by the time the error is written; the exit code tells the parent.
    const std::string path = testing::TempDir() + "console_error_order.txt";
    EXPECT_EXIT(
        {
            if (!std::freopen(path.c_str(), "w", stdout)) std::_Exit(2);
            std::setvbuf(stdout, nullptr, _IOFBF, 4096);
            ConsolePrint("Loading scene...\n");  // 17 bytes
            ConsoleError("late");
            std::error_code error;
            std::_Exit(std::filesystem::file_size(path, error) == 17 ? 3 : 4);
        },
        testing::ExitedWithCode(3), "^ERROR: late\n$");
    std::remove(path.c_str());
}

TEST(ConsoleDeathTest, EndRunExitsWithOne) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    ExpectEndsRun([] { EndRun(); }, "^$");
    ExpectEndsRun([] { EndRun("Couldn't find '%s' node?", "geo_GRP"); }, "^ERROR: Couldn't find 'geo_GRP' node\\?\n$");
}

TEST(ConsoleDeathTest, EndRunKeepsBufferedProgress) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    // The progress written before the end reaches standard output; a child's output is only
    // visible through a file it leaves behind.
    const std::string path = testing::TempDir() + "console_end_run.txt";
    std::remove(path.c_str());
    EXPECT_EXIT(
        {
            if (!std::freopen(path.c_str(), "w", stdout)) std::_Exit(2);
            std::setvbuf(stdout, nullptr, _IOFBF, 4096);
            ConsolePrint("Writing %s...\n", "a.json");
            EndRun("Cannot write '%s': %s", "a.json", "too big");
        },
        testing::ExitedWithCode(1), "^ERROR: Cannot write 'a.json': too big\n$");
    std::FILE* file = std::fopen(path.c_str(), "r");
    ASSERT_NE(file, nullptr);
    char text[64] = {};
    const size_t got = std::fread(text, 1, sizeof text - 1, file);
    std::fclose(file);
    std::remove(path.c_str());
    EXPECT_EQ(std::string(text, got), "Writing a.json...\n");
}
