// Storage behind FbxProperty handles: one table per object, record 0 its root.
// Private to the FBX library.
//
// The properties a class makes (and those a file's template adds) are the same for
// every object of the class, so they live once in a shared prototype. An object's
// table copies a record out of its prototype only when the object writes to it (a
// value from the file, a connection); everything else reads the shared record. A
// node with eighty class properties of which a file sets five thus holds six.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "fbx/fbx_property.h"

// Where the last look-up of the index-th object of a kind ended in a list, and how many
// objects of that kind the list holds: walks by index go on from there, so that a loop
// over thousands of children stays linear. Appending keeps the place, removing drops it.
struct FbxLinkCursor {
    FbxCriteria criteria;
    int index = -1;
    size_t position = 0;
    FbxCriteria countCriteria;
    int count = -1;
};

struct FbxPropertyLinks {
    std::vector<FbxProperty> sources;
    std::vector<FbxProperty> destinations;
    mutable FbxLinkCursor sourceCursor;
    mutable FbxLinkCursor destinationCursor;
};

// What few properties have: a label, limits, enum entries, a matrix value.
struct FbxPropertyExtra {
    std::string label;
    bool hasMin = false;
    bool hasMax = false;
    double minValue = 0.0;
    double maxValue = 0.0;
    std::vector<std::string> enumValues;
    std::vector<double> matrix;  // 16 doubles of a double4x4 value
};

struct FbxPropertyRecord {
    static constexpr uint32_t None = FbxProperty::InvalidId;
    // State bits, beside the flags.
    static constexpr uint32_t ValueSet = 1;

    std::string name;
    FbxDataType type;
    uint32_t flags = 0;
    uint32_t state = 0;
    uint32_t parent = None;
    uint32_t firstChild = None;
    uint32_t lastChild = None;
    uint32_t nextSibling = None;
    union {
        double d[4];
        int64_t i;
    } num{};
    std::string text;  // strings, blobs, date texts, the unit of a distance
    std::unique_ptr<FbxPropertyLinks> links;
    std::unique_ptr<FbxPropertyExtra> extra;

    FbxPropertyRecord() = default;
    FbxPropertyRecord(FbxPropertyRecord&&) = default;
    FbxPropertyRecord& operator=(FbxPropertyRecord&&) = default;
    // A copy without the connections, which belong to one object alone.
    FbxPropertyRecord CopyWithoutLinks() const;

    FbxPropertyExtra& Extra() {
        if (!extra) extra = std::make_unique<FbxPropertyExtra>();
        return *extra;
    }
    FbxPropertyLinks& Links() {
        if (!links) links = std::make_unique<FbxPropertyLinks>();
        return *links;
    }
};

// Shared records of a class (or of a class with a file's template applied), with the
// children of the root by name: a P record looks its property up there.
struct FbxPropertyPrototype {
    std::vector<FbxPropertyRecord> records;
    std::unordered_map<std::string_view, uint32_t> rootChildren;
    uint32_t lastRootChild = FbxPropertyRecord::None;
};

class FbxPropertyTable {
public:
    explicit FbxPropertyTable(FbxObject* owner);

    FbxObject* Owner() const { return owner_; }
    uint32_t Size() const { return base_ + static_cast<uint32_t>(added_.size()); }
    bool Has(uint32_t id) const { return id < Size(); }

    const FbxPropertyRecord& Read(uint32_t id) const {
        if (id >= base_) return added_[id - base_];
        if (slots_.empty() || slots_[id] == 0) return prototype_->records[id];
        return own_[slots_[id] - 1];
    }
    // The object's own record, copied out of the prototype on first use.
    FbxPropertyRecord& Write(uint32_t id);

    // Appends a child of parent; the caller knows the name is new there.
    uint32_t Add(uint32_t parent, const char* name, const FbxDataType& type);
    uint32_t FindChild(uint32_t parent, const char* name, size_t length, bool caseSensitive) const;
    void Reserve(size_t count) { added_.reserve(count); }

    // Starts the table from shared records; only on a table with just its root.
    void UsePrototype(const FbxPropertyPrototype* prototype);
    // The table's records as a prototype for further objects.
    std::unique_ptr<FbxPropertyPrototype> MakePrototype() const;
    const FbxPropertyPrototype* Prototype() const { return prototype_; }

private:
    FbxObject* owner_;
    const FbxPropertyPrototype* prototype_ = nullptr;
    uint32_t base_ = 0;                  // ids below come from the prototype
    std::vector<uint32_t> slots_;        // per prototype id: 1 + index in own_, 0 while shared
    std::vector<FbxPropertyRecord> own_; // prototype records this object wrote to
    std::vector<FbxPropertyRecord> added_;  // ids from base_ on
    // The object's own children of the root by name, once they are many (objects of
    // plain classes can bring hundreds of properties from a file).
    std::unique_ptr<std::unordered_map<std::string, uint32_t>> addedRootIndex_;
    uint32_t addedRootChildren_ = 0;
};
