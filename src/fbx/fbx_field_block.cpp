#include "fbx/fbx_field_block.h"

#include "fbx/fbx_field_stream.h"

namespace {

constexpr size_t kInitialSlots = 64;  // room for the first 20 names at under a third load

uint32_t NameHash(std::string_view name) {
    uint32_t hash = 2166136261u;
    for (char c : name) hash = (hash ^ static_cast<uint8_t>(c)) * 16777619u;
    return hash;
}

// Skip length behind the code byte for the fixed-size codes, 0 for the others.
uint64_t FixedSkip(uint8_t code) {
    switch (code) {
    case 'C':
    case 'Z': return 1;
    case 'Y': return 2;
    case 'I':
    case 'F': return 4;
    case 'L':
    case 'D': return 8;
    default: return 0;
    }
}

bool IsArrayCode(uint8_t code) {
    switch (code) {
    case 'b':
    case 'c':
    case 'h':
    case 'i':
    case 'f':
    case 'l':
    case 'd': return true;
    default: return false;
    }
}

}  // namespace

void FbxFieldBlock::Clear() {
    instances.clear();
    order.clear();
    fields.clear();
    offsetPool.clear();
    // A table grown for a huge block is not worth clearing for every small one after it.
    if (slots.size() != kInitialSlots) {
        slots.assign(kInitialSlots, 0);
    } else {
        std::fill(slots.begin(), slots.end(), 0);
    }
    currentField = -1;
    end = 0;
    buffered = false;
    capacity = 0;
    fill = 0;
}

int FbxFieldBlock::Find(std::string_view name) const {
    if (slots.empty()) return -1;
    const size_t mask = slots.size() - 1;
    for (size_t i = NameHash(name) & mask;; i = (i + 1) & mask) {
        const uint32_t entry = slots[i];
        if (entry == 0) return -1;
        if (fields[entry - 1].name == name) return static_cast<int>(entry - 1);
    }
}

int FbxFieldBlock::FindOrAdd(std::string_view name) {
    if (slots.empty()) slots.assign(kInitialSlots, 0);
    if ((fields.size() + 1) * 2 > slots.size()) Rehash(slots.size() * 2);
    const size_t mask = slots.size() - 1;
    size_t i = NameHash(name) & mask;
    for (;; i = (i + 1) & mask) {
        const uint32_t entry = slots[i];
        if (entry == 0) break;
        if (fields[entry - 1].name == name) return static_cast<int>(entry - 1);
    }
    FbxField field;
    field.name = name;
    fields.push_back(field);
    slots[i] = static_cast<uint32_t>(fields.size());
    return static_cast<int>(fields.size() - 1);
}

void FbxFieldBlock::Rehash(size_t slotCount) {
    slots.assign(slotCount, 0);
    const size_t mask = slotCount - 1;
    for (size_t f = 0; f < fields.size(); ++f) {
        size_t i = NameHash(fields[f].name) & mask;
        while (slots[i] != 0) i = (i + 1) & mask;
        slots[i] = static_cast<uint32_t>(f + 1);
    }
}

FbxFieldInstance* FbxFieldBlock::CurrentInstance() {
    if (currentField < 0) return nullptr;
    const FbxField& field = fields[static_cast<size_t>(currentField)];
    if (field.current >= field.count) return nullptr;
    return &instances[order[field.first + field.current]];
}

const FbxFieldInstance* FbxFieldBlock::CurrentInstance() const {
    return const_cast<FbxFieldBlock*>(this)->CurrentInstance();
}

void FbxParseValueOffsets(FbxFieldBlock& block, FbxFieldInstance& instance, bool bigEndian) {
    const uint64_t length = instance.listLength;
    const uint8_t* list = instance.values;
    instance.inlined = instance.valueCount <= 8 && length < 256;
    instance.heapOffsets = static_cast<uint32_t>(block.offsetPool.size());
    instance.parsedCount = 0;
    uint64_t at = 0;  // position of the current value's code byte
    for (uint64_t i = 0; i < instance.valueCount && at < length; ++i) {
        const uint8_t code = list[at];
        const uint64_t fixed = FixedSkip(code);
        const bool counted = code == 'S' || code == 'R';
        const bool array = IsArrayCode(code);
        if (fixed == 0 && !counted && !array) break;  // unknown code: the rest of the list is unreadable
        if (i > 0) {
            if (instance.inlined) {
                instance.inlineOffsets[i] = static_cast<uint8_t>(at + 1);
            } else {
                block.offsetPool.push_back(static_cast<uint32_t>(at + 1));
            }
        }
        instance.parsedCount = static_cast<uint32_t>(i + 1);
        if (fixed != 0) {
            at += 1 + fixed;
        } else if (counted) {
            if (length - at < 5) break;
            at += 5 + FbxLoadU32(list + at + 1, bigEndian);
        } else {
            // Behind an array the next value is looked for at the code position
            // plus 9 plus the encoding word, not behind the stored bytes. Files
            // put arrays last, and readers must refuse what this refuses.
            if (length - at < 9) break;
            at += 9 + static_cast<uint64_t>(FbxLoadU32(list + at + 5, bigEndian));
        }
    }
}

bool FbxReadBlock(const FbxByteView& view, FbxFieldBlock& block, const FbxFieldBlock* parent) {
    const uint64_t start = block.start;
    block.Clear();
    const uint64_t w = view.wordSize;

    // Extent of the block from the chain of end offsets, without reading values.
    uint64_t pos = start;
    uint64_t records = 0;
    for (;;) {
        uint64_t end = 0;
        if (!FbxReadWord(view, pos, w, end)) return false;
        if (end == 0) break;
        if (end <= pos || end >= view.size) return false;
        pos = end;
        ++records;
    }
    const uint64_t blockSize = pos - start + 1;
    block.end = pos + 1;
    if (parent && parent->buffered) {
        const uint64_t room = parent->capacity - parent->fill;
        if (blockSize > room) return false;
        block.buffered = true;
        block.capacity = room;
    } else if (blockSize < FbxFieldStream::kSharedBufferLimit) {
        block.buffered = true;
        block.capacity = blockSize;
    }

    block.instances.reserve(records);
    pos = start;
    uint64_t previousEnd = 0;
    for (;;) {
        uint64_t end = 0, count = 0, listLength = 0, nameLength = 0;
        if (!FbxReadWord(view, pos, w, end) || !FbxReadWord(view, pos + w, w, count) ||
            !FbxReadWord(view, pos + 2 * w, w, listLength) || !FbxReadWord(view, pos + 3 * w, 1, nameLength)) {
            return false;
        }
        const uint64_t namePos = pos + 3 * w + 1;
        if (nameLength > view.size - namePos) return false;
        if (end == 0) break;
        if (end <= previousEnd) return false;
        if (w == 8 && static_cast<int64_t>(listLength) < 0) return false;

        FbxFieldInstance instance;
        instance.field = static_cast<uint32_t>(block.FindOrAdd(FbxFieldName(view.data + namePos, nameLength)));
        const uint64_t behindName = namePos + nameLength;
        if (count != 0) {
            if (block.buffered) {
                const uint64_t newFill = block.fill + listLength;
                if (newFill < block.fill || newFill >= block.capacity) return false;
                block.fill = newFill;
            }
            if (listLength > view.size - behindName) return false;
            instance.values = view.data + behindName;
            instance.valueCount = count;
            instance.listLength = listLength;
            FbxParseValueOffsets(block, instance, view.bigEndian);
        }
        const uint64_t behindList = behindName + listLength;
        if (behindList < end) instance.nestedBlock = behindList;
        block.instances.push_back(instance);
        ++block.fields[instance.field].count;
        pos = end;
        previousEnd = end;
    }

    // Group the instances by field, keeping file order inside each field.
    uint32_t next = 0;
    for (FbxField& field : block.fields) {
        field.first = next;
        next += field.count;
        field.count = 0;
    }
    block.order.resize(block.instances.size());
    for (size_t i = 0; i < block.instances.size(); ++i) {
        FbxField& field = block.fields[block.instances[i].field];
        block.order[field.first + field.count++] = static_cast<uint32_t>(i);
    }
    return true;
}
