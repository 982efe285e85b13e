// Storage behind FbxProperty handles: one table per object, record 0 its root.
// Private to the FBX library.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "fbx/fbx_property.h"

struct FbxPropertyLinks {
    std::vector<FbxProperty> sources;
    std::vector<FbxProperty> destinations;
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

    FbxPropertyExtra& Extra() {
        if (!extra) extra = std::make_unique<FbxPropertyExtra>();
        return *extra;
    }
    FbxPropertyLinks& Links() {
        if (!links) links = std::make_unique<FbxPropertyLinks>();
        return *links;
    }
};

class FbxPropertyTable {
public:
    explicit FbxPropertyTable(FbxObject* owner);

    FbxObject* Owner() const { return owner_; }
    uint32_t Size() const { return static_cast<uint32_t>(records_.size()); }
    FbxPropertyRecord& operator[](uint32_t id) { return records_[id]; }
    const FbxPropertyRecord& operator[](uint32_t id) const { return records_[id]; }
    bool Has(uint32_t id) const { return id < records_.size(); }

    // Appends a child of parent; the caller knows the name is new there.
    uint32_t Add(uint32_t parent, const char* name, const FbxDataType& type);
    uint32_t FindChild(uint32_t parent, const char* name, size_t length, bool caseSensitive) const;
    void Reserve(size_t count) { records_.reserve(count); }

private:
    FbxObject* owner_;
    std::vector<FbxPropertyRecord> records_;
};
