// Scratch folders for tests that write files.
#pragma once

#include <filesystem>
#include <string>

namespace testsupport {

// A new, empty folder of its own under the system's temporary folder, removed with
// everything in it when the object goes. The name is unique across processes, so that
// parallel test runs of several checkouts never meet.
class ScratchFolder {
public:
    explicit ScratchFolder(const std::string& label = "test");
    ~ScratchFolder();
    ScratchFolder(const ScratchFolder&) = delete;
    ScratchFolder& operator=(const ScratchFolder&) = delete;

    const std::filesystem::path& Path() const { return path_; }
    // The path of `name` inside the folder; nothing is created.
    std::string File(const std::string& name) const;

private:
    std::filesystem::path path_;
    long owner_ = 0;  // process that made the folder
};

// One folder for the whole test process, removed when the process ends.
const ScratchFolder& ProcessScratchFolder();

}  // namespace testsupport
