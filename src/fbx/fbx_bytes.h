// Loads of file words in either byte order, and the layout facts of one file.
// Private to the FBX library.
#pragma once

#include <cstdint>
#include <cstring>

// Whole-file bytes with the record layout and byte order the stream uses.
struct FbxByteView {
    const uint8_t* data = nullptr;
    uint64_t size = 0;
    uint64_t wordSize = 4;  // record words: 4 for binary type 0, 8 for type 1
    bool bigEndian = false;
};

// `size` bytes at p as an unsigned integer in the given byte order.
inline uint64_t FbxLoadWord(const uint8_t* p, uint64_t size, bool bigEndian) {
    uint64_t value = 0;
    for (uint64_t i = 0; i < size; ++i) {
        const uint64_t shift = bigEndian ? (size - 1 - i) * 8 : i * 8;
        value |= static_cast<uint64_t>(p[i]) << shift;
    }
    return value;
}

inline uint32_t FbxLoadU32(const uint8_t* p, bool bigEndian) {
    return static_cast<uint32_t>(FbxLoadWord(p, 4, bigEndian));
}

// Reads a word of `size` bytes at `pos` when it lies inside the view.
inline bool FbxReadWord(const FbxByteView& view, uint64_t pos, uint64_t size, uint64_t& out) {
    if (pos > view.size || view.size - pos < size) return false;
    out = FbxLoadWord(view.data + pos, size, view.bigEndian);
    return true;
}
