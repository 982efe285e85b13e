// Shared storage behind a JsonValue handle: containers and scalars whose text
// does not fit inside the handle. Private to the JSON library.
#pragma once

#include <cstdlib>
#include <new>
#include <string>
#include <vector>

#include "json/json.h"

// Member values of a container. A JsonValue holds no pointer into itself, so
// it can be moved bytewise; growing with realloc lets a large array grow in
// place (the kernel remaps its pages) instead of copying and touching fresh
// memory at every doubling.
class JsonValueList {
public:
    JsonValueList() = default;
    JsonValueList(const JsonValueList& other) { *this = other; }
    JsonValueList& operator=(const JsonValueList& other) {
        if (this == &other) return *this;
        clear();
        reserve(other.size_);
        for (size_t i = 0; i < other.size_; ++i) new (items_ + i) JsonValue(other.items_[i]);
        size_ = other.size_;
        return *this;
    }
    ~JsonValueList() {
        clear();
        std::free(items_);
    }

    size_t size() const { return size_; }
    bool empty() const { return size_ == 0; }
    JsonValue& operator[](size_t i) { return items_[i]; }
    const JsonValue& operator[](size_t i) const { return items_[i]; }
    JsonValue* begin() { return items_; }
    JsonValue* end() { return items_ + size_; }

    void push_back(JsonValue&& value) {
        if (size_ == capacity_) reserve(capacity_ < 8 ? 8 : capacity_ * 2);
        new (items_ + size_) JsonValue(std::move(value));
        ++size_;
    }
    void reserve(size_t capacity) {
        if (capacity <= capacity_) return;
        void* grown = std::realloc(static_cast<void*>(items_), capacity * sizeof(JsonValue));
        if (!grown) throw std::bad_alloc();
        items_ = static_cast<JsonValue*>(grown);
        capacity_ = capacity;
    }
    void clear() {
        for (size_t i = 0; i < size_; ++i) items_[i].~JsonValue();
        size_ = 0;
    }

private:
    JsonValue* items_ = nullptr;
    size_t size_ = 0;
    size_t capacity_ = 0;
};

struct JsonData {
    uint32_t refCount = 1;
    uint32_t kind = 0;
    std::string text;                // scalars only
    JsonValueList values;            // members of objects and arrays, in order
    std::vector<std::string> names;  // objects only, parallel to values

    static const JsonData* Of(const JsonValue& value) {
        return value.IsShared() ? value.Data() : nullptr;
    }
    static std::string_view InlineText(const JsonValue& value) {
        return std::string_view(reinterpret_cast<const char*>(value.raw_), value.raw_[14]);
    }
};
