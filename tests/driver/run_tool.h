// Runs the built vurl executable in a scratch folder and captures what it prints.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

struct ToolRun {
    int exitCode = -1;  // -1 when the process died of a signal
    int signal = 0;
    std::string out;
    std::string err;
};

// Arguments are passed as they are (no shell word splitting); cwd is the scratch folder. A
// non-zero addressSpace caps the tool's address space (RLIMIT_AS) at that many bytes.
ToolRun RunTool(const std::vector<std::string>& args, const std::string& cwd, uint64_t addressSpace = 0);
