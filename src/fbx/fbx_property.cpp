#include "fbx/fbx_property.h"

#include <algorithm>
#include <cstring>
#include <string_view>

#include "fbx/fbx_object.h"
#include "fbx/fbx_property_table.h"

namespace {

const std::vector<FbxProperty> kNoLinks;

bool SameName(std::string_view a, std::string_view b, bool caseSensitive) {
    if (a.size() != b.size()) return false;
    if (caseSensitive) return a == b;
    for (size_t i = 0; i < a.size(); ++i) {
        char x = a[i], y = b[i];
        if (x >= 'A' && x <= 'Z') x = static_cast<char>(x - 'A' + 'a');
        if (y >= 'A' && y <= 'Z') y = static_cast<char>(y - 'A' + 'a');
        if (x != y) return false;
    }
    return true;
}

// How a value type is held in a record.
enum class Storage { None, Integer, Floating, Matrix, Text, Distance };

Storage StorageOf(EFbxType type) {
    switch (type) {
    case eFbxChar: case eFbxUChar: case eFbxShort: case eFbxUShort: case eFbxUInt: case eFbxLongLong:
    case eFbxULongLong: case eFbxBool: case eFbxInt: case eFbxEnum: case eFbxEnumM: case eFbxTime:
        return Storage::Integer;
    case eFbxHalfFloat: case eFbxFloat: case eFbxDouble: case eFbxDouble2: case eFbxDouble3: case eFbxDouble4:
        return Storage::Floating;
    case eFbxDouble4x4: return Storage::Matrix;
    case eFbxString: case eFbxBlob: case eFbxDateTime: return Storage::Text;
    case eFbxDistance: return Storage::Distance;
    default: return Storage::None;
    }
}

int Components(EFbxType type) {
    switch (type) {
    case eFbxDouble2: return 2;
    case eFbxDouble3: return 3;
    case eFbxDouble4: return 4;
    default: return 1;
    }
}

// A value in transit between the caller's type and the stored one.
struct Value {
    Storage storage = Storage::None;
    int64_t i = 0;
    double d[4] = {0, 0, 0, 0};
    int count = 1;
    const std::string* text = nullptr;
    const double* matrix = nullptr;
};

Value FromCaller(const void* in, EFbxType type) {
    Value v;
    v.storage = StorageOf(type);
    switch (type) {
    case eFbxChar: v.i = *static_cast<const int8_t*>(in); break;
    case eFbxUChar: v.i = *static_cast<const uint8_t*>(in); break;
    case eFbxShort: v.i = *static_cast<const int16_t*>(in); break;
    case eFbxUShort: v.i = *static_cast<const uint16_t*>(in); break;
    case eFbxUInt: v.i = *static_cast<const uint32_t*>(in); break;
    case eFbxLongLong: case eFbxTime: v.i = *static_cast<const int64_t*>(in); break;
    case eFbxULongLong: v.i = static_cast<int64_t>(*static_cast<const uint64_t*>(in)); break;
    case eFbxBool: v.i = *static_cast<const bool*>(in) ? 1 : 0; break;
    case eFbxInt: case eFbxEnum: case eFbxEnumM: v.i = *static_cast<const int32_t*>(in); break;
    case eFbxHalfFloat: case eFbxFloat: v.d[0] = *static_cast<const float*>(in); break;
    case eFbxDouble: v.d[0] = *static_cast<const double*>(in); break;
    case eFbxDouble2: case eFbxDouble3: case eFbxDouble4:
        v.count = Components(type);
        std::memcpy(v.d, in, sizeof(double) * static_cast<size_t>(v.count));
        break;
    case eFbxDouble4x4: v.matrix = static_cast<const double*>(in); break;
    case eFbxString: case eFbxBlob: case eFbxDateTime: v.text = static_cast<const std::string*>(in); break;
    case eFbxDistance: v.d[0] = *static_cast<const float*>(in); v.storage = Storage::Floating; break;
    default: break;
    }
    return v;
}

Value FromRecord(const FbxPropertyRecord& r) {
    Value v;
    EFbxType type = r.type.GetType();
    v.storage = StorageOf(type);
    switch (v.storage) {
    case Storage::Integer: v.i = r.num.i; break;
    case Storage::Floating:
        v.count = Components(type);
        std::copy(r.num.d, r.num.d + 4, v.d);
        break;
    case Storage::Matrix: v.matrix = r.extra && r.extra->matrix.size() == 16 ? r.extra->matrix.data() : nullptr; break;
    case Storage::Text: v.text = &r.text; break;
    case Storage::Distance: v.d[0] = r.num.d[0]; v.storage = Storage::Floating; break;
    case Storage::None: break;
    }
    return v;
}

double AsDouble(const Value& v) { return v.storage == Storage::Integer ? static_cast<double>(v.i) : v.d[0]; }

int64_t AsInteger(const Value& v) {
    if (v.storage == Storage::Integer) return v.i;
    double d = v.d[0];
    if (!(d == d)) return 0;
    if (d >= 9.2e18) return INT64_MAX;
    if (d <= -9.2e18) return INT64_MIN;
    return static_cast<int64_t>(d);
}

bool IsNumeric(const Value& v) { return v.storage == Storage::Integer || v.storage == Storage::Floating; }

// Writes v to the caller's out in the caller's type; false when it does not convert.
bool ToCaller(const Value& v, void* out, EFbxType type) {
    Storage target = StorageOf(type);
    if (target == Storage::Text) {
        if (v.storage != Storage::Text || !v.text) return false;
        *static_cast<std::string*>(out) = *v.text;
        return true;
    }
    if (target == Storage::Matrix) {
        if (v.storage != Storage::Matrix || !v.matrix) return false;
        std::memcpy(out, v.matrix, sizeof(double) * 16);
        return true;
    }
    if (!IsNumeric(v)) return false;
    switch (type) {
    case eFbxChar: *static_cast<int8_t*>(out) = static_cast<int8_t>(AsInteger(v)); break;
    case eFbxUChar: *static_cast<uint8_t*>(out) = static_cast<uint8_t>(AsInteger(v)); break;
    case eFbxShort: *static_cast<int16_t*>(out) = static_cast<int16_t>(AsInteger(v)); break;
    case eFbxUShort: *static_cast<uint16_t*>(out) = static_cast<uint16_t>(AsInteger(v)); break;
    case eFbxUInt: *static_cast<uint32_t*>(out) = static_cast<uint32_t>(AsInteger(v)); break;
    case eFbxLongLong: case eFbxTime: *static_cast<int64_t*>(out) = AsInteger(v); break;
    case eFbxULongLong: *static_cast<uint64_t*>(out) = static_cast<uint64_t>(AsInteger(v)); break;
    case eFbxBool: *static_cast<bool*>(out) = v.storage == Storage::Integer ? v.i != 0 : v.d[0] != 0.0; break;
    case eFbxInt: case eFbxEnum: case eFbxEnumM:
        *static_cast<int32_t*>(out) = static_cast<int32_t>(AsInteger(v));
        break;
    case eFbxHalfFloat: case eFbxFloat: case eFbxDistance:
        *static_cast<float*>(out) = static_cast<float>(AsDouble(v));
        break;
    case eFbxDouble: *static_cast<double*>(out) = AsDouble(v); break;
    case eFbxDouble2: case eFbxDouble3: case eFbxDouble4: {
        double* d = static_cast<double*>(out);
        int n = Components(type);
        if (v.storage == Storage::Integer) {
            for (int k = 0; k < n; ++k) d[k] = static_cast<double>(v.i);
        } else if (v.count == 1) {
            for (int k = 0; k < n; ++k) d[k] = v.d[0];
        } else {
            for (int k = 0; k < n; ++k) d[k] = k < v.count ? v.d[k] : 0.0;
        }
        break;
    }
    default: return false;
    }
    return true;
}

// Stores v in the record in the record's own type; false when it does not convert.
bool ToRecord(const Value& v, FbxPropertyRecord& r) {
    EFbxType type = r.type.GetType();
    switch (StorageOf(type)) {
    case Storage::Integer: {
        if (!IsNumeric(v)) return false;
        int64_t i = AsInteger(v);
        switch (type) {  // keep the stored value within the type's width
        case eFbxChar: i = static_cast<int8_t>(i); break;
        case eFbxUChar: i = static_cast<uint8_t>(i); break;
        case eFbxShort: i = static_cast<int16_t>(i); break;
        case eFbxUShort: i = static_cast<uint16_t>(i); break;
        case eFbxUInt: i = static_cast<uint32_t>(i); break;
        case eFbxInt: case eFbxEnum: case eFbxEnumM: i = static_cast<int32_t>(i); break;
        case eFbxBool:
            i = v.storage == Storage::Integer ? (v.i != 0) : (v.d[0] != 0.0);
            break;
        default: break;
        }
        r.num.i = i;
        return true;
    }
    case Storage::Floating: {
        if (!IsNumeric(v)) return false;
        double d[4] = {0, 0, 0, 0};
        ToCaller(v, d, Components(type) == 1 ? eFbxDouble : type);
        if (type == eFbxFloat || type == eFbxHalfFloat) d[0] = static_cast<float>(d[0]);
        std::copy(d, d + 4, r.num.d);
        return true;
    }
    case Storage::Distance:
        if (!IsNumeric(v)) return false;
        r.num.d[0] = static_cast<float>(AsDouble(v));
        return true;
    case Storage::Matrix:
        if (v.storage != Storage::Matrix || !v.matrix) return false;
        r.Extra().matrix.assign(v.matrix, v.matrix + 16);
        return true;
    case Storage::Text:
        if (v.storage != Storage::Text || !v.text) return false;
        if (&r.text != v.text) r.text = *v.text;
        return true;
    case Storage::None: return false;
    }
    return false;
}

bool SameStored(const FbxPropertyRecord& a, const Value& v) {
    Value old = FromRecord(a);
    if (old.storage != v.storage) return false;
    switch (old.storage) {
    case Storage::Integer: return old.i == v.i;
    case Storage::Floating: return std::equal(old.d, old.d + 4, v.d);
    case Storage::Text: return old.text && v.text && *old.text == *v.text;
    default: return false;
    }
}

}  // namespace

// ---- FbxPropertyTable ----

namespace {
// Root children an object adds before they are looked up through an index.
constexpr uint32_t kIndexedChildren = 16;
}  // namespace

FbxPropertyRecord FbxPropertyRecord::CopyWithoutLinks() const {
    FbxPropertyRecord r;
    r.name = name;
    r.type = type;
    r.flags = flags;
    r.state = state;
    r.parent = parent;
    r.firstChild = firstChild;
    r.lastChild = lastChild;
    r.nextSibling = nextSibling;
    r.num = num;
    r.text = text;
    if (extra) r.extra = std::make_unique<FbxPropertyExtra>(*extra);
    return r;
}

FbxPropertyTable::FbxPropertyTable(FbxObject* owner) : owner_(owner) {
    added_.emplace_back();  // the root: empty name, no type
}

FbxPropertyRecord& FbxPropertyTable::Write(uint32_t id) {
    if (id >= base_) return added_[id - base_];
    if (slots_.empty()) slots_.assign(base_, 0);
    if (slots_[id] == 0) {
        own_.push_back(prototype_->records[id].CopyWithoutLinks());
        slots_[id] = static_cast<uint32_t>(own_.size());
    }
    return own_[slots_[id] - 1];
}

uint32_t FbxPropertyTable::Add(uint32_t parent, const char* name, const FbxDataType& type) {
    uint32_t id = Size();
    added_.emplace_back();
    FbxPropertyRecord& r = added_.back();
    r.name = name;
    r.type = type;
    r.parent = parent;
    uint32_t last = Read(parent).lastChild;
    if (last == FbxPropertyRecord::None)
        Write(parent).firstChild = id;
    else
        Write(last).nextSibling = id;
    Write(parent).lastChild = id;
    if (parent == 0) {
        ++addedRootChildren_;
        if (addedRootIndex_) {
            addedRootIndex_->emplace(name, id);
        } else if (addedRootChildren_ >= kIndexedChildren) {
            addedRootIndex_ = std::make_unique<std::unordered_map<std::string, uint32_t>>();
            const uint32_t prototypeLast = prototype_ ? prototype_->lastRootChild : FbxPropertyRecord::None;
            const uint32_t first =
                prototypeLast == FbxPropertyRecord::None ? Read(0).firstChild : Read(prototypeLast).nextSibling;
            for (uint32_t c = first; c != FbxPropertyRecord::None; c = Read(c).nextSibling)
                addedRootIndex_->emplace(Read(c).name, c);
        }
    }
    return id;
}

uint32_t FbxPropertyTable::FindChild(uint32_t parent, const char* name, size_t length, bool caseSensitive) const {
    std::string_view wanted(name, length);
    uint32_t first = Read(parent).firstChild;
    if (parent == 0 && prototype_ && caseSensitive) {
        // The class's own children by name; the object's additions follow them.
        auto it = prototype_->rootChildren.find(wanted);
        if (it != prototype_->rootChildren.end()) return it->second;
        uint32_t last = prototype_->lastRootChild;
        first = last == FbxPropertyRecord::None ? first : Read(last).nextSibling;
    }
    if (parent == 0 && addedRootIndex_ && caseSensitive) {
        // Every root child the prototype does not hold is in the index.
        auto it = addedRootIndex_->find(std::string(wanted));
        return it == addedRootIndex_->end() ? FbxPropertyRecord::None : it->second;
    }
    for (uint32_t c = first; c != FbxPropertyRecord::None; c = Read(c).nextSibling)
        if (SameName(Read(c).name, wanted, caseSensitive)) return c;
    return FbxPropertyRecord::None;
}

void FbxPropertyTable::UsePrototype(const FbxPropertyPrototype* prototype) {
    if (!prototype || prototype->records.empty() || Size() != 1 || own_.size() != 0) return;
    // The root stays the object's own: it is the end of every connection.
    FbxPropertyRecord root = std::move(added_[0]);
    added_.clear();
    prototype_ = prototype;
    base_ = static_cast<uint32_t>(prototype->records.size());
    slots_.assign(base_, 0);
    own_.push_back(prototype->records[0].CopyWithoutLinks());
    own_.back().links = std::move(root.links);
    slots_[0] = 1;
}

std::unique_ptr<FbxPropertyPrototype> FbxPropertyTable::MakePrototype() const {
    auto prototype = std::make_unique<FbxPropertyPrototype>();
    prototype->records.reserve(Size());
    for (uint32_t id = 0; id < Size(); ++id) {
        prototype->records.push_back(Read(id).CopyWithoutLinks());
        prototype->records.back().state &= ~FbxPropertyRecord::ValueSet;
    }
    // The records stay where they are from here on, so their names can be the keys.
    const std::vector<FbxPropertyRecord>& records = prototype->records;
    for (uint32_t c = records[0].firstChild; c != FbxPropertyRecord::None; c = records[c].nextSibling) {
        prototype->rootChildren.emplace(records[c].name, c);
        prototype->lastRootChild = c;
    }
    return prototype;
}

// ---- FbxCriteria ----

bool FbxCriteria::Matches(const FbxObject* object) const {
    return object && (!classId_ || object->GetClassId().Is(*classId_));
}

// ---- FbxProperty: tree and names ----

FbxProperty FbxProperty::Create(const FbxProperty& parent, const FbxDataType& type, const char* name, const char* label,
                                bool /*forceSet*/, bool* wasFound) {
    if (wasFound) *wasFound = false;
    if (!parent.IsValid() || !name || !parent.table_->Has(parent.id_)) return FbxProperty();
    FbxPropertyTable& t = *parent.table_;
    uint32_t found = t.FindChild(parent.id_, name, std::strlen(name), true);
    if (found != FbxPropertyRecord::None) {
        if (wasFound) *wasFound = true;
        return FbxProperty(&t, found);
    }
    uint32_t id = t.Add(parent.id_, name, type);
    if (label && *label) t.Write(id).Extra().label = label;
    return FbxProperty(&t, id);
}

FbxProperty FbxProperty::Create(FbxObject* object, const FbxDataType& type, const char* name, const char* label,
                                bool forceSet, bool* wasFound) {
    if (!object) {
        if (wasFound) *wasFound = false;
        return FbxProperty();
    }
    return Create(object->RootProperty, type, name, label, forceSet, wasFound);
}

FbxObject* FbxProperty::GetFbxObject() const { return IsValid() ? table_->Owner() : nullptr; }

const char* FbxProperty::GetName() const {
    if (!IsValid() || !table_->Has(id_)) return "";
    if (id_ == 0) return table_->Owner()->GetName();
    return table_->Read(id_).name.c_str();
}

std::string FbxProperty::GetHierarchicalName() const {
    if (!IsValid() || !table_->Has(id_) || id_ == 0) return std::string();
    std::vector<uint32_t> chain;
    for (uint32_t c = id_; c != 0 && c != FbxPropertyRecord::None; c = table_->Read(c).parent) chain.push_back(c);
    std::string name;
    for (size_t k = chain.size(); k-- > 0;) {
        name += table_->Read(chain[k]).name;
        if (k) name += '|';
    }
    return name;
}

const char* FbxProperty::GetLabel() const {
    if (!IsValid() || !table_->Has(id_)) return "";
    const FbxPropertyRecord& r = table_->Read(id_);
    return r.extra ? r.extra->label.c_str() : "";
}

void FbxProperty::SetLabel(const char* label) {
    if (IsValid() && table_->Has(id_)) table_->Write(id_).Extra().label = label ? label : "";
}

FbxDataType FbxProperty::GetPropertyDataType() const {
    return IsValid() && table_->Has(id_) ? table_->Read(id_).type : FbxDataType();
}

FbxProperty FbxProperty::GetParent() const {
    if (!IsValid() || !table_->Has(id_)) return FbxProperty();
    uint32_t p = table_->Read(id_).parent;
    return p == FbxPropertyRecord::None ? FbxProperty() : FbxProperty(table_, p);
}

FbxProperty FbxProperty::GetChild() const {
    if (!IsValid() || !table_->Has(id_)) return FbxProperty();
    uint32_t c = table_->Read(id_).firstChild;
    return c == FbxPropertyRecord::None ? FbxProperty() : FbxProperty(table_, c);
}

FbxProperty FbxProperty::GetSibling() const {
    if (!IsValid() || !table_->Has(id_)) return FbxProperty();
    uint32_t s = table_->Read(id_).nextSibling;
    return s == FbxPropertyRecord::None ? FbxProperty() : FbxProperty(table_, s);
}

FbxProperty FbxProperty::FindChild(const char* name, bool caseSensitive) const {
    if (!IsValid() || !name || !table_->Has(id_)) return FbxProperty();
    uint32_t c = table_->FindChild(id_, name, std::strlen(name), caseSensitive);
    return c == FbxPropertyRecord::None ? FbxProperty() : FbxProperty(table_, c);
}

FbxProperty FbxProperty::Find(const char* name, const char* separator, bool caseSensitive) const {
    if (!IsValid() || !name || !table_->Has(id_)) return FbxProperty();
    std::string_view rest(name);
    std::string_view sep = separator && *separator ? std::string_view(separator) : std::string_view();
    uint32_t at = id_;
    while (true) {
        size_t cut = sep.empty() ? std::string_view::npos : rest.find(sep);
        std::string_view part = rest.substr(0, cut);
        at = table_->FindChild(at, part.data(), part.size(), caseSensitive);
        if (at == FbxPropertyRecord::None) return FbxProperty();
        if (cut == std::string_view::npos) return FbxProperty(table_, at);
        rest.remove_prefix(cut + sep.size());
    }
}

// ---- flags ----

uint32_t FbxProperty::GetFlags() const { return IsValid() && table_->Has(id_) ? table_->Read(id_).flags : 0; }

void FbxProperty::ModifyFlag(uint32_t flag, bool value) {
    if (!IsValid() || !table_->Has(id_)) return;
    uint32_t& f = table_->Write(id_).flags;
    f = value ? (f | flag) : (f & ~flag);
}

void FbxProperty::SetFlags(uint32_t flags) {
    if (IsValid() && table_->Has(id_)) table_->Write(id_).flags = flags;
}

// ---- values ----

bool FbxProperty::Get(void* out, EFbxType type) const {
    if (!IsValid() || !out || !table_->Has(id_)) return false;
    const FbxPropertyRecord& r = table_->Read(id_);
    if (!r.type.HasValue()) return false;
    return ToCaller(FromRecord(r), out, type);
}

bool FbxProperty::Set(const void* in, EFbxType type, bool checkValueEquality) {
    if (!IsValid() || !in || !table_->Has(id_)) return false;
    FbxPropertyRecord& r = table_->Write(id_);
    if (!r.type.HasValue()) return false;
    Value v = FromCaller(in, type);
    if (checkValueEquality && (r.state & FbxPropertyRecord::ValueSet) && StorageOf(r.type.GetType()) == v.storage &&
        Components(r.type.GetType()) == v.count && SameStored(r, v))
        return true;
    if (!ToRecord(v, r)) return false;
    r.state |= FbxPropertyRecord::ValueSet;
    table_->Owner()->OnPropertyChanged(*this);
    return true;
}

bool FbxProperty::IsValueSet() const {
    return IsValid() && table_->Has(id_) && (table_->Read(id_).state & FbxPropertyRecord::ValueSet) != 0;
}

void FbxProperty::CopyValue(const FbxProperty& from) {
    if (!IsValid() || !from.IsValid() || !table_->Has(id_) || !from.table_->Has(from.id_)) return;
    if (*this == from) return;
    const FbxPropertyRecord& s = from.table_->Read(from.id_);
    FbxPropertyRecord& d = table_->Write(id_);
    d.type = s.type;
    d.num = s.num;
    d.text = s.text;
    d.flags = s.flags;
    if (s.extra) {
        d.Extra() = *s.extra;
    } else {
        d.extra.reset();
    }
}

// ---- limits and enums ----

bool FbxProperty::HasMinLimit() const {
    return IsValid() && table_->Has(id_) && table_->Read(id_).extra && table_->Read(id_).extra->hasMin;
}
bool FbxProperty::HasMaxLimit() const {
    return IsValid() && table_->Has(id_) && table_->Read(id_).extra && table_->Read(id_).extra->hasMax;
}
double FbxProperty::GetMinLimit() const { return HasMinLimit() ? table_->Read(id_).extra->minValue : 0.0; }
double FbxProperty::GetMaxLimit() const { return HasMaxLimit() ? table_->Read(id_).extra->maxValue : 0.0; }

void FbxProperty::SetMinLimit(double value) {
    if (!IsValid() || !table_->Has(id_)) return;
    FbxPropertyExtra& e = table_->Write(id_).Extra();
    e.hasMin = true;
    e.minValue = value;
}

void FbxProperty::SetMaxLimit(double value) {
    if (!IsValid() || !table_->Has(id_)) return;
    FbxPropertyExtra& e = table_->Write(id_).Extra();
    e.hasMax = true;
    e.maxValue = value;
}

int FbxProperty::AddEnumValue(const char* text) {
    if (!IsValid() || !table_->Has(id_) || !text) return -1;
    EFbxType type = GetType();
    if (type != eFbxEnum && type != eFbxEnumM) return -1;
    std::vector<std::string>& values = table_->Write(id_).Extra().enumValues;
    values.emplace_back(text);
    return static_cast<int>(values.size()) - 1;
}

int FbxProperty::GetEnumCount() const {
    if (!IsValid() || !table_->Has(id_)) return 0;
    const FbxPropertyRecord& r = table_->Read(id_);
    return r.extra ? static_cast<int>(r.extra->enumValues.size()) : 0;
}

const char* FbxProperty::GetEnumValue(int index) const {
    if (index < 0 || index >= GetEnumCount()) return "";
    return table_->Read(id_).extra->enumValues[static_cast<size_t>(index)].c_str();
}

// ---- connections ----

void FbxProperty::Link(const FbxProperty& source, const FbxProperty& destination) {
    FbxPropertyLinks& out = source.table_->Write(source.id_).Links();
    out.destinations.push_back(destination);
    out.destinationCursor.count = -1;
    FbxPropertyLinks& in = destination.table_->Write(destination.id_).Links();
    in.sources.push_back(source);
    in.sourceCursor.count = -1;
    if (destination.id_ == 0 && source.id_ == 0) destination.table_->Owner()->OnSrcObjectConnected(source.table_->Owner());
}

// Removes one connection source -> destination, searching from the newest, since the
// newest connections are the ones most often undone.
bool FbxProperty::Unlink(const FbxProperty& source, const FbxProperty& destination) {
    auto removeLast = [](std::unique_ptr<FbxPropertyLinks>& links, bool sources, const FbxProperty& end) {
        if (!links) return false;
        std::vector<FbxProperty>& list = sources ? links->sources : links->destinations;
        for (size_t k = list.size(); k-- > 0;)
            if (list[k] == end) {
                list.erase(list.begin() + static_cast<std::ptrdiff_t>(k));
                (sources ? links->sourceCursor : links->destinationCursor) = FbxLinkCursor();
                return true;
            }
        return false;
    };
    // Records without links are left shared: nothing to remove there.
    bool a = source.table_->Read(source.id_).links && removeLast(source.table_->Write(source.id_).links, false, destination);
    bool b = destination.table_->Read(destination.id_).links &&
             removeLast(destination.table_->Write(destination.id_).links, true, source);
    return a && b;
}

bool FbxProperty::ConnectSrcObject(FbxObject* object) {
    if (!IsValid() || !object) return false;
    Link(object->RootProperty, *this);
    return true;
}

bool FbxProperty::ConnectDstObject(FbxObject* object) {
    if (!IsValid() || !object) return false;
    Link(*this, object->RootProperty);
    return true;
}

bool FbxProperty::ConnectSrcProperty(const FbxProperty& property) {
    if (!IsValid() || !property.IsValid()) return false;
    Link(property, *this);
    return true;
}

bool FbxProperty::ConnectDstProperty(const FbxProperty& property) {
    if (!IsValid() || !property.IsValid()) return false;
    Link(*this, property);
    return true;
}

bool FbxProperty::IsConnectedSrcObject(const FbxObject* object) const {
    if (!IsValid() || !object) return false;
    return IsConnectedSrcProperty(object->RootProperty);
}

bool FbxProperty::IsConnectedDstObject(const FbxObject* object) const {
    if (!IsValid() || !object) return false;
    return IsConnectedDstProperty(object->RootProperty);
}

bool FbxProperty::IsConnectedSrcProperty(const FbxProperty& property) const {
    const std::vector<FbxProperty>& list = Sources();
    return std::find(list.begin(), list.end(), property) != list.end();
}

bool FbxProperty::IsConnectedDstProperty(const FbxProperty& property) const {
    const std::vector<FbxProperty>& list = Destinations();
    return std::find(list.begin(), list.end(), property) != list.end();
}

bool FbxProperty::DisconnectSrcObject(FbxObject* object) {
    return IsValid() && object && Unlink(object->RootProperty, *this);
}

bool FbxProperty::DisconnectDstObject(FbxObject* object) {
    return IsValid() && object && Unlink(*this, object->RootProperty);
}

bool FbxProperty::DisconnectSrcProperty(const FbxProperty& property) {
    return IsValid() && property.IsValid() && Unlink(property, *this);
}

bool FbxProperty::DisconnectDstProperty(const FbxProperty& property) {
    return IsValid() && property.IsValid() && Unlink(*this, property);
}

const std::vector<FbxProperty>& FbxProperty::Sources() const {
    if (!IsValid() || !table_->Has(id_)) return kNoLinks;
    const FbxPropertyRecord& r = table_->Read(id_);
    return r.links ? r.links->sources : kNoLinks;
}

const std::vector<FbxProperty>& FbxProperty::Destinations() const {
    if (!IsValid() || !table_->Has(id_)) return kNoLinks;
    const FbxPropertyRecord& r = table_->Read(id_);
    return r.links ? r.links->destinations : kNoLinks;
}

namespace {

int CountObjects(const std::vector<FbxProperty>& list, const FbxCriteria& criteria, FbxLinkCursor* cursor) {
    if (cursor && cursor->count >= 0 && cursor->countCriteria == criteria) return cursor->count;
    int n = 0;
    for (const FbxProperty& p : list)
        if (p.IsRoot() && criteria.Matches(p.GetFbxObject())) ++n;
    if (cursor) {
        cursor->countCriteria = criteria;
        cursor->count = n;
    }
    return n;
}

FbxObject* NthObject(const std::vector<FbxProperty>& list, const FbxCriteria& criteria, int index, FbxLinkCursor* cursor) {
    if (index < 0) return nullptr;
    size_t start = 0;
    int left = index;
    if (cursor && cursor->index >= 0 && cursor->index <= index && cursor->criteria == criteria) {
        start = cursor->position;
        left = index - cursor->index;
    }
    for (size_t k = start; k < list.size(); ++k) {
        const FbxProperty& p = list[k];
        if (p.IsRoot() && criteria.Matches(p.GetFbxObject()) && left-- == 0) {
            if (cursor) *cursor = {criteria, index, k, cursor->countCriteria, cursor->count};
            return p.GetFbxObject();
        }
    }
    return nullptr;
}

int CountProperties(const std::vector<FbxProperty>& list) {
    int n = 0;
    for (const FbxProperty& p : list)
        if (!p.IsRoot()) ++n;
    return n;
}

FbxProperty NthProperty(const std::vector<FbxProperty>& list, int index) {
    if (index < 0) return FbxProperty();
    for (const FbxProperty& p : list)
        if (!p.IsRoot() && index-- == 0) return p;
    return FbxProperty();
}

}  // namespace

const FbxPropertyLinks* FbxProperty::LinksOf() const {
    if (!IsValid() || !table_->Has(id_)) return nullptr;
    return table_->Read(id_).links.get();
}

int FbxProperty::GetSrcObjectCount(const FbxCriteria& criteria) const {
    const FbxPropertyLinks* links = LinksOf();
    return links ? CountObjects(links->sources, criteria, &links->sourceCursor) : 0;
}
FbxObject* FbxProperty::GetSrcObject(const FbxCriteria& criteria, int index) const {
    const FbxPropertyLinks* links = LinksOf();
    return links ? NthObject(links->sources, criteria, index, &links->sourceCursor) : nullptr;
}
int FbxProperty::GetDstObjectCount(const FbxCriteria& criteria) const {
    const FbxPropertyLinks* links = LinksOf();
    return links ? CountObjects(links->destinations, criteria, &links->destinationCursor) : 0;
}
FbxObject* FbxProperty::GetDstObject(const FbxCriteria& criteria, int index) const {
    const FbxPropertyLinks* links = LinksOf();
    return links ? NthObject(links->destinations, criteria, index, &links->destinationCursor) : nullptr;
}
int FbxProperty::GetSrcPropertyCount() const { return CountProperties(Sources()); }
FbxProperty FbxProperty::GetSrcProperty(int index) const { return NthProperty(Sources(), index); }
int FbxProperty::GetDstPropertyCount() const { return CountProperties(Destinations()); }
FbxProperty FbxProperty::GetDstProperty(int index) const { return NthProperty(Destinations(), index); }
