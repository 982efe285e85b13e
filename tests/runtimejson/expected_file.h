// Expected outputs kept as readable text under tests/runtimejson/expected/.
#pragma once

#include <gtest/gtest.h>

#include <fstream>
#include <random>
#include <sstream>
#include <string>

namespace testing_scene {

// A scratch file name of this test process alone: ctest runs the tests of one binary
// as parallel processes, and other checkouts run the same binary on the same machine.
inline std::string ScratchPath(const std::string& name) {
    static const std::string tag = std::to_string(std::random_device()()) + "_";
    return ::testing::TempDir() + tag + name;
}

inline std::string ReadFileBytes(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

// An expected indented document; the line end that closes the last line of the text
// file is not part of the output.
inline std::string ExpectedPretty(const std::string& name) {
    std::string text = ReadFileBytes(std::string(RUNTIMEJSON_EXPECTED_DIR) + "/" + name);
    if (!text.empty() && text.back() == '\n') text.pop_back();
    return text;
}

// An expected compact document. Compact output holds no line ends (strings escape
// them), so the text file may be broken into lines for reading; they are removed.
inline std::string ExpectedCompact(const std::string& name) {
    std::string text = ReadFileBytes(std::string(RUNTIMEJSON_EXPECTED_DIR) + "/" + name);
    std::string out;
    for (char c : text)
        if (c != '\n') out += c;
    return out;
}

}  // namespace testing_scene
