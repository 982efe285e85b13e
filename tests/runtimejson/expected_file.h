// Expected outputs kept as readable text under tests/runtimejson/data/.
#pragma once

#include <stdexcept>
#include <string>

#include "file_contents.h"
#include "scratch_folder.h"
#include "text_table.h"

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

// A one-line output of data/outputs.txt, by its label.
inline std::string Expected(const std::string& label) {
    for (const testsupport::TableRow& row : testsupport::ReadTable(std::string(RUNTIMEJSON_EXPECTED_DIR) + "/outputs.txt"))
        if (row.Text(0) == label) return row.Text(1);
    throw std::out_of_range("no expected output " + label);
}

}  // namespace testing_scene
