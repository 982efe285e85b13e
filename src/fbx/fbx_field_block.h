// One nesting level of the field tree: the records of a block grouped by name.
// Private to the FBX library.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

#include "fbx/fbx_bytes.h"

// One record. Its value list is read in place from the file's bytes.
struct FbxFieldInstance {
    const uint8_t* values = nullptr;  // value list; null when the count is 0
    uint64_t valueCount = 0;
    uint64_t listLength = 0;
    uint64_t nestedBlock = 0;         // file position of the nested block, 0 for none
    uint64_t cursor = 0;              // index of the next value to read
    uint32_t parsedCount = 0;         // values whose payload offset is known
    uint32_t heapOffsets = 0;         // first entry in the block's offset pool
    uint8_t inlineOffsets[8] = {};    // entry i: payload offset of value i (value 0 needs none)
    bool inlined = true;
    uint32_t field = 0;               // index of its field in the block
    uint8_t* scratch = nullptr;       // last array handed out
    uint64_t scratchCapacity = 0;
};

// All records of one name in a block, in file order.
struct FbxField {
    std::string_view name;
    uint32_t first = 0;    // first entry in the block's instance order
    uint32_t count = 0;
    uint32_t current = 0;  // current instance
};

struct FbxFieldBlock {
    uint64_t start = 0;
    uint64_t end = 0;  // just past the block's closing record, once read
    // Accounting of the section's shared value-list buffer: a block below the
    // size limit takes its value lists from the buffer its root allocated;
    // children continue behind their parent's fill position.
    bool buffered = false;
    uint64_t capacity = 0;
    uint64_t fill = 0;

    std::vector<FbxFieldInstance> instances;  // file order
    std::vector<uint32_t> order;              // instance indices grouped by field
    std::vector<FbxField> fields;             // order of first appearance
    std::vector<uint32_t> slots;              // open-addressing table of field index + 1
    std::vector<uint32_t> offsetPool;         // value offsets of records beyond the inline limit
    int currentField = -1;

    void Clear();
    // Field of that name, or -1.
    int Find(std::string_view name) const;
    int FindOrAdd(std::string_view name);

    FbxFieldInstance* CurrentInstance();
    const FbxFieldInstance* CurrentInstance() const;
    // Payload offset of value i of an instance (its code byte sits just before).
    uint64_t PayloadOffset(const FbxFieldInstance& instance, uint64_t index) const {
        if (index == 0) return 1;
        return instance.inlined ? instance.inlineOffsets[index] : offsetPool[instance.heapOffsets + index - 1];
    }

private:
    void Rehash(size_t slotCount);
};

// Reads the records of a block at block.start: walks the end offsets to find
// its extent, then reads every record header and value list and groups the
// records by name. A child of a buffered parent continues in the parent's
// buffer. Nested blocks are only noted. False on any inconsistency.
bool FbxReadBlock(const FbxByteView& view, FbxFieldBlock& block, const FbxFieldBlock* parent);

// Finds the payload offsets of a record's values; stops at a code it does not
// know, at an offset outside the list, or after valueCount values.
void FbxParseValueOffsets(FbxFieldBlock& block, FbxFieldInstance& instance, bool bigEndian);

// Names end at their first NUL, as they would in a C string buffer.
inline std::string_view FbxFieldName(const uint8_t* p, size_t length) {
    const auto* text = reinterpret_cast<const char*>(p);
    const void* nul = std::memchr(text, 0, length);
    return std::string_view(text, nul ? static_cast<size_t>(static_cast<const char*>(nul) - text) : length);
}
