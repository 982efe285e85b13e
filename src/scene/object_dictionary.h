// Owning container of materials, textures and geometries, keyed by source id.
#pragma once

#include <cstdint>
#include <cstdio>
#include <map>
#include <vector>

#include "scene/console.h"

template <typename T>
class ObjectDictionary;

// The process-wide "current" dictionary of each item type: the one made last, cleared when it
// goes. The loaders reach their scene's dictionaries through the Scene itself; nothing in the
// program reads these.
template <typename T>
struct CurrentDictionary {
    static inline ObjectDictionary<T>* pointer = nullptr;
};

template <typename T>
class ObjectDictionary {
public:
    std::map<uint64_t, size_t> index;
    std::vector<T> items;

    ObjectDictionary() { CurrentDictionary<T>::pointer = this; }
    ObjectDictionary(const ObjectDictionary&) = delete;
    ObjectDictionary& operator=(const ObjectDictionary&) = delete;

    virtual ~ObjectDictionary() {
        for (T item : items) delete item;
        items.clear();
        if (CurrentDictionary<T>::pointer == this) CurrentDictionary<T>::pointer = nullptr;
    }

    // A second item with a known id is not stored; it stays with its caller.
    void Add(T item) {
        auto [it, inserted] = index.emplace(item->id, items.size());
        if (!inserted) {
            ConsolePrint("ObjectDictionary::Add : New entry %s already occurs in dictionary\n", item->name.c_str());
            return;
        }
        items.push_back(item);
    }

    T Find(uint64_t id) const {
        auto it = index.find(id);
        if (it == index.end() || it->second >= items.size()) return nullptr;
        return items[it->second];
    }

    size_t Size() const { return items.size(); }
    T operator[](size_t i) const { return items[i]; }
    T At(size_t i) const { return items[i]; }
};
