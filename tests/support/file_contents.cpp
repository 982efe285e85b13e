#include "file_contents.h"

#include <fstream>
#include <iterator>

namespace testsupport {

std::string ReadFileText(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

std::vector<uint8_t> ReadFileBytes(const std::string& path) {
    const std::string text = ReadFileText(path);
    return std::vector<uint8_t>(text.begin(), text.end());
}

}  // namespace testsupport
