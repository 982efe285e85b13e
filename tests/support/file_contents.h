// Reading a whole file back in tests.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace testsupport {

// The bytes of the file, empty when it cannot be read.
std::string ReadFileText(const std::string& path);
std::vector<uint8_t> ReadFileBytes(const std::string& path);

}  // namespace testsupport
