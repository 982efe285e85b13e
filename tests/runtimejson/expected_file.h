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

// A whole expected document, data/<name>.json.txt. An indented one ("_pretty") ends without
// the text file's last line end; a compact one holds no line ends (strings escape them), so
// its text file may be broken into lines for reading. Otherwise a one-line output of
// data/outputs.txt, by its label.
inline std::string Expected(const std::string& name) {
    const std::string dir = std::string(RUNTIMEJSON_EXPECTED_DIR) + "/";
    if (name.ends_with("_pretty")) {
        const std::string text = ReadFileText(dir + name + ".json.txt");
        return text.ends_with('\n') ? text.substr(0, text.size() - 1) : text;
    }
    if (name.ends_with("_compact")) {
        std::string text = ReadFileText(dir + name + ".json.txt");
        std::erase(text, '\n');
        return text;
    }
    for (const testsupport::TableRow& row : testsupport::ReadTable(dir + "outputs.txt"))
        if (row.Text(0) == name) return row.Text(1);
    throw std::out_of_range("no expected output " + name);
}

}  // namespace testing_scene
