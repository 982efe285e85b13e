#include "import_test_support.h"

#include <filesystem>
#include <fstream>

#include "scratch_folder.h"

std::string ScratchDir(const std::string& label) {
    const std::filesystem::path dir = testsupport::ProcessScratchFolder().Path() / label;
    std::filesystem::remove_all(dir);
    std::filesystem::create_directories(dir);
    return dir.string();
}

bool WriteBytes(const std::string& path, const std::vector<uint8_t>& bytes) {
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    return static_cast<bool>(out);
}
