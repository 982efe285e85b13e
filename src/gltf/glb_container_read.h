// Reading side of the GLB container: chunk table, refusals, streamed JSON chunk.
// Private to the glTF library.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <string>

#include "gltf/gltf_context.h"

struct GlbChunk {
    uint32_t offset = 0;  // absolute position of the chunk's data
    uint32_t length = 0;
    uint32_t type = 0;
};

// RapidJSON input stream over a byte range of an open file, through a 64 KiB window, so
// that the JSON chunk is never held whole in memory.
class BoundedFileStream {
public:
    using Ch = char;
    static constexpr size_t kWindowSize = 65536;

    // Reads the first window at once; the file must be positioned at the range's start.
    BoundedFileStream(std::FILE* file, uint64_t length);

    Ch Peek() const { return position_ < count_ ? window_[position_] : '\0'; }
    Ch Take() {
        if (position_ >= count_) return '\0';
        const Ch c = window_[position_++];
        if (position_ == count_) Refill();
        return c;
    }
    size_t Tell() const { return size_t(base_ + position_); }

    // Output side of the stream concept; never used for reading.
    Ch* PutBegin() { return nullptr; }
    void Put(Ch) {}
    void Flush() {}
    size_t PutEnd(Ch*) { return 0; }

private:
    void Refill();

    std::FILE* file_;
    uint64_t base_ = 0;  // position of the window within the range
    uint64_t end_;
    size_t position_ = 0;
    size_t count_ = 0;
    char window_[kWindowSize];
};

// Opens `path`, walks the container (or takes a bare JSON file whole), parses the JSON
// into context.json and reads the binary chunk. Prints the reason on standard error and
// returns false for a refused container.
bool ReadGlbContainer(const std::string& path, GltfContext& context);
