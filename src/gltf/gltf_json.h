// The parsed JSON of a glTF file: RapidJSON's document with its default memory pool, over an
// allocator that throws std::bad_alloc when memory runs out. The library's own allocator
// returns null, and its parser then writes through the null pointer.
#pragma once

#include <cstddef>
#include <cstdlib>
#include <new>

#include <rapidjson/document.h>

class GltfJsonAllocator {
public:
    static const bool kNeedFree = true;
    void* Malloc(size_t size) {
        if (size == 0) return nullptr;
        return Checked(std::malloc(size));
    }
    void* Realloc(void* original, size_t /*originalSize*/, size_t newSize) {
        if (newSize == 0) {
            std::free(original);
            return nullptr;
        }
        return Checked(std::realloc(original, newSize));
    }
    static void Free(void* memory) { std::free(memory); }

private:
    static void* Checked(void* memory) {
        if (!memory) throw std::bad_alloc();
        return memory;
    }
};

using GltfJsonDocument =
    rapidjson::GenericDocument<rapidjson::UTF8<>, rapidjson::MemoryPoolAllocator<GltfJsonAllocator>, GltfJsonAllocator>;
using GltfJsonValue = GltfJsonDocument::ValueType;
