#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "fbx/fbx_field_stream.h"

FbxFileBytes::~FbxFileBytes() { std::free(owned_); }

std::shared_ptr<const FbxFileBytes> FbxFileBytes::ReadFile(const std::string& path) {
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
