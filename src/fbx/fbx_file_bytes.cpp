#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "fbx/fbx_field_stream.h"

namespace {
// Files from this size on are mapped rather than read: their pages are dropped once read
// and come back from the page cache if read again.
constexpr size_t kMapFrom = size_t{1} << 20;
}  // namespace

FbxFileBytes::~FbxFileBytes() {
    if (mapped_) munmap(const_cast<uint8_t*>(data_), size_);
    std::free(owned_);
}

void FbxFileBytes::Release(const uint8_t* from, size_t length) const {
    if (!mapped_ || from < data_ || length > size_ || size_t(from - data_) > size_ - length) return;
    const size_t page = size_t(sysconf(_SC_PAGESIZE));
    // Only the pages wholly inside the range: their neighbours may still be in use.
    const uintptr_t begin = (reinterpret_cast<uintptr_t>(from) + page - 1) / page * page;
    const uintptr_t end = (reinterpret_cast<uintptr_t>(from) + length) / page * page;
    if (end > begin) madvise(reinterpret_cast<void*>(begin), end - begin, MADV_DONTNEED);
}

std::shared_ptr<const FbxFileBytes> FbxFileBytes::MapFile(const std::string& path) {
    const int fd = open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (fd < 0) return nullptr;
    struct stat info {};
    void* map = MAP_FAILED;
    if (fstat(fd, &info) == 0 && S_ISREG(info.st_mode) && info.st_size >= off_t(kMapFrom))
        map = mmap(nullptr, size_t(info.st_size), PROT_READ, MAP_PRIVATE, fd, 0);
    close(fd);
    if (map == MAP_FAILED) return nullptr;
    madvise(map, size_t(info.st_size), MADV_SEQUENTIAL);
    std::shared_ptr<FbxFileBytes> bytes(new FbxFileBytes);
    bytes->data_ = static_cast<const uint8_t*>(map);
    bytes->size_ = size_t(info.st_size);
    bytes->mapped_ = true;
    return bytes;
}

std::shared_ptr<const FbxFileBytes> FbxFileBytes::ReadFile(const std::string& path) {
    if (auto mapped = MapFile(path)) return mapped;
    FILE* file = std::fopen(path.c_str(), "rb");
    if (!file) return nullptr;
    std::shared_ptr<FbxFileBytes> bytes(new FbxFileBytes);
    // Read in growing steps rather than trusting a size from seek/tell, so that
    // pipes and files that change while read still end up whole and bounded.
    size_t capacity = 0, size = 0;
    if (std::fseek(file, 0, SEEK_END) == 0) {
        const long end = std::ftell(file);
        if (end > 0) capacity = static_cast<size_t>(end) + 1;
        std::fseek(file, 0, SEEK_SET);
    }
    uint8_t* data = nullptr;
    for (;;) {
        if (size == capacity || !data) {
            const size_t grown = !data && capacity > 0 ? capacity : capacity < 65536 ? 65536 : capacity * 2;
            auto* bigger = static_cast<uint8_t*>(std::realloc(data, grown));
            if (!bigger) {
                std::free(data);
                std::fclose(file);
                return nullptr;
            }
            data = bigger;
            capacity = grown;
        }
        const size_t got = std::fread(data + size, 1, capacity - size, file);
        size += got;
        if (got == 0) break;
    }
    const bool failed = std::ferror(file) != 0;
    std::fclose(file);
    if (failed) {
        std::free(data);
        return nullptr;
    }
    bytes->owned_ = data;
    bytes->data_ = data;
    bytes->size_ = size;
    return bytes;
}

std::shared_ptr<const FbxFileBytes> FbxFileBytes::Borrow(const void* data, size_t size) {
    std::shared_ptr<FbxFileBytes> bytes(new FbxFileBytes);
    bytes->data_ = static_cast<const uint8_t*>(data);
    bytes->size_ = size;
    return bytes;
}

std::shared_ptr<const FbxFileBytes> FbxFileBytes::Copy(const void* data, size_t size) {
    std::shared_ptr<FbxFileBytes> bytes(new FbxFileBytes);
    bytes->owned_ = static_cast<uint8_t*>(std::malloc(size > 0 ? size : 1));
    if (!bytes->owned_) return nullptr;
    if (size > 0) std::memcpy(bytes->owned_, data, size);
    bytes->data_ = bytes->owned_;
    bytes->size_ = size;
    return bytes;
}

std::shared_ptr<const FbxFileBytes> FbxFileBytes::Adopt(std::vector<uint8_t>&& data) {
    std::shared_ptr<FbxFileBytes> bytes(new FbxFileBytes);
    bytes->adopted_ = std::move(data);
    bytes->data_ = bytes->adopted_.data();
    bytes->size_ = bytes->adopted_.size();
    return bytes;
}
