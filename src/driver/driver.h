#pragma once

#include <string>
#include <vector>

// Runs the whole tool on argv[1] onward; returns the exit code.
int RunVurl(const std::vector<std::string>& args);
