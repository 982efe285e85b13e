#include "driver/output_guard.h"

#include <cstdio>

OutputSnapshot::OutputSnapshot(const std::string& path) : path_(path) {
    existed_ = lstat(path.c_str(), &before_) == 0;
}

void OutputSnapshot::RemoveIfChanged() const {
    struct stat now {};
    if (lstat(path_.c_str(), &now) != 0 || !S_ISREG(now.st_mode)) return;
    const bool changed = !existed_ || now.st_dev != before_.st_dev || now.st_ino != before_.st_ino ||
                         now.st_size != before_.st_size || now.st_mtim.tv_sec != before_.st_mtim.tv_sec ||
                         now.st_mtim.tv_nsec != before_.st_mtim.tv_nsec ||
                         now.st_ctim.tv_sec != before_.st_ctim.tv_sec || now.st_ctim.tv_nsec != before_.st_ctim.tv_nsec;
    if (changed) std::remove(path_.c_str());
}
