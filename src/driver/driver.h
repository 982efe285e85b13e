#pragma once

#include <string>
#include <vector>

// Runs the whole tool on argv[1] onward; returns the exit code.
using Args = std::vector<std::string>;
int RunVurl(const Args& args);
