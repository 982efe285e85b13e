// Taking away an output file that a writer left half-done when memory ran out.
#pragma once

#include <sys/stat.h>

#include <string>

// The state of an output path just before its writer runs.
class OutputSnapshot {
public:
    explicit OutputSnapshot(const std::string& path);
    // Removes the file when this write created or changed it, so that no half-written file
    // stays behind. A file the writer never reached keeps its earlier content; anything but a
    // plain file (a device, a link) is left alone.
    void RemoveIfChanged() const;

private:
    std::string path_;
    bool existed_ = false;
    struct stat before_ {};
};

// Runs `write`; when it throws, removes what it left of `path` and lets the exception go on.
template <typename Write>
auto GuardOutput(const std::string& path, Write write) {
    const OutputSnapshot snapshot(path);
    try {
        return write();
    } catch (...) {
        snapshot.RemoveIfChanged();
        throw;
    }
}
