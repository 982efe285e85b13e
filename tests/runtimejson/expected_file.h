// Expected outputs kept as readable text under tests/runtimejson/expected/.
#pragma once

#include <string>

#include "file_contents.h"
#include "scratch_folder.h"

namespace testing_scene {

// A scratch file of this test process alone.
inline std::string ScratchPath(const std::string& name) { return testsupport::ProcessScratchFolder().File(name); }

using testsupport::ReadFileText;

// An expected indented document; the line end that closes the last line of the text
// file is not part of the output.
inline std::string ExpectedPretty(const std::string& name) {
    std::string text = ReadFileText(std::string(RUNTIMEJSON_EXPECTED_DIR) + "/" + name);
    if (!text.empty() && text.back() == '\n') text.pop_back();
    return text;
}

// An expected compact document. Compact output holds no line ends (strings escape
// them), so the text file may be broken into lines for reading; they are removed.
inline std::string ExpectedCompact(const std::string& name) {
    std::string text = ReadFileText(std::string(RUNTIMEJSON_EXPECTED_DIR) + "/" + name);
    std::string out;
    for (char c : text)
        if (c != '\n') out += c;
    return out;
}

}  // namespace testing_scene
