#include "scratch_folder.h"

#include <stdlib.h>  // mkdtemp
#include <unistd.h>  // getpid

#include <stdexcept>

namespace testsupport {

ScratchFolder::ScratchFolder(const std::string& label) {
    std::string pattern = (std::filesystem::temp_directory_path() / ("vurl-" + label + "-XXXXXX")).string();
    if (!mkdtemp(pattern.data())) throw std::runtime_error("cannot make a scratch folder from " + pattern);
    path_ = pattern;
    owner_ = getpid();
}

ScratchFolder::~ScratchFolder() {
    // A death test's child runs the same destructors when it exits; the folder is the
    // parent's to remove.
    if (getpid() != owner_) return;
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
}

std::string ScratchFolder::File(const std::string& name) const { return (path_ / name).string(); }

const ScratchFolder& ProcessScratchFolder() {
    static const ScratchFolder folder("process");
    return folder;
}

}  // namespace testsupport
