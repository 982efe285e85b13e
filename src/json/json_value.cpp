#include <charconv>
#include <utility>
#include <vector>

#include "json/json.h"
#include "json/json_data.h"

namespace {

bool IsScalarKind(uint32_t kind) { return kind >= kJsonNull && kind <= kJsonBool; }

size_t FormatInt(int32_t number, char* buf) {
    return static_cast<size_t>(std::to_chars(buf, buf + 16, number).ptr - buf);
}

size_t FormatUInt(uint32_t number, char* buf) {
    return static_cast<size_t>(std::to_chars(buf, buf + 16, number).ptr - buf);
}

}  // namespace

// --- life cycle -------------------------------------------------------------

void JsonValue::Retain() const { ++Data()->refCount; }

void JsonValue::Release() {
    JsonData* data = Data();
    Clear();
    if (--data->refCount != 0) return;
    if (data->values.empty()) {
        delete data;
        return;
    }
    // Children are released with a work list rather than recursion, so a deeply
    // nested document (a parsed "[[[[..." of any depth) cannot exhaust the stack.
    std::vector<JsonData*> dead{data};
    while (!dead.empty()) {
        JsonData* current = dead.back();
        dead.pop_back();
        for (JsonValue& child : current->values) {
            if (!child.IsShared()) continue;
            JsonData* childData = child.Data();
            child.Clear();
            if (--childData->refCount == 0) dead.push_back(childData);
        }
        delete current;
    }
}

JsonValue& JsonValue::operator=(const JsonValue& other) noexcept {
    if (this != &other) {
        JsonValue copy(other);
        *this = std::move(copy);
    }
    return *this;
}

JsonValue& JsonValue::operator=(JsonValue&& other) noexcept {
    if (this != &other) {
        // Releasing may destroy the tree that holds other, so take it first.
        unsigned char taken[sizeof raw_];
        std::memcpy(taken, other.raw_, sizeof raw_);
        other.Clear();
        if (IsShared()) Release();
        std::memcpy(raw_, taken, sizeof raw_);
    }
    return *this;
}

void JsonValue::Detach() {
    if (!IsShared()) return;
    JsonData* data = Data();
    if (data->refCount < 2) return;
    JsonData* copy = new JsonData;
    copy->kind = data->kind;
    copy->text = data->text;
    copy->values = data->values;  // members are shared, not cloned
    copy->names = data->names;
    --data->refCount;
    std::memcpy(raw_, &copy, sizeof copy);
}

// --- makers -----------------------------------------------------------------

// Stores a scalar of a known kind 3..6, inline when the text fits.
void JsonValue::AssignScalar(uint32_t kind, std::string_view text) {
    if (text.size() <= kInlineCapacity) {
        Clear();
        std::memcpy(raw_, text.data(), text.size());
        raw_[14] = static_cast<unsigned char>(text.size());
        raw_[15] = static_cast<unsigned char>(kInlineFlag | kind);
        return;
    }
    JsonData* data = new JsonData;
    data->kind = kind;
    data->text.assign(text);
    Clear();
    std::memcpy(raw_, &data, sizeof data);
    raw_[15] = static_cast<unsigned char>(kind);
}

JsonValue::JsonValue(const std::string& text) {
    Clear();
    AssignScalar(kJsonString, Unescape(text));
}

// A null pointer reads as an empty string rather than faulting.
JsonValue::JsonValue(const char* text) : JsonValue(std::string(text ? text : "")) {}

JsonValue::JsonValue(int32_t number) {
    char buf[16];
    Clear();
    AssignScalar(kJsonNumber, std::string_view(buf, FormatInt(number, buf)));
}

JsonValue::JsonValue(uint32_t number) {
    char buf[16];
    Clear();
    AssignScalar(kJsonNumber, std::string_view(buf, FormatUInt(number, buf)));
}

JsonValue::JsonValue(float number) {
    // The hot maker of big arrays: format straight into the handle. A float's
    // text is at most 12 bytes ("-1.17549e-38"), so it always fits inline.
    static_assert(kFloatTextMax <= sizeof raw_);
    Clear();
    size_t size = FormatFloat(number, reinterpret_cast<char*>(raw_));
    raw_[14] = static_cast<unsigned char>(size);
    raw_[15] = static_cast<unsigned char>(kInlineFlag | kJsonNumber);
}

JsonValue::JsonValue(bool flag) {
    Clear();
    AssignScalar(kJsonBool, flag ? "true" : "false");
}

JsonValue::JsonValue(uint32_t kind, std::string_view text) {
    Clear();
    if (kind == kJsonString) {
        AssignScalar(kind, Unescape(text));
    } else if (IsScalarKind(kind)) {
        AssignScalar(kind, text);
    }
}

JsonValue JsonValue::Object() {
    JsonValue value;
    JsonData* data = new JsonData;
    data->kind = kJsonObject;
    std::memcpy(value.raw_, &data, sizeof data);
    value.raw_[15] = kJsonObject;
    return value;
}

JsonValue JsonValue::Array() {
    JsonValue value = Object();
    value.Data()->kind = kJsonArray;
    value.raw_[15] = kJsonArray;
    return value;
}

// --- setters ----------------------------------------------------------------

void JsonValue::SetScalar(uint32_t kind, std::string_view text) {
    if (!IsScalarKind(Kind())) return;
    // text may point into this value's own storage, so build the new one aside.
    JsonValue replacement;
    replacement.AssignScalar(kind, text);
    *this = std::move(replacement);
}

void JsonValue::Set(const std::string& text) {
    if (IsScalarKind(Kind())) SetScalar(kJsonString, Unescape(text));
}

void JsonValue::Set(const char* text) {
    if (IsScalarKind(Kind())) SetScalar(kJsonString, Unescape(text ? text : ""));
}

void JsonValue::Set(int32_t number) {
    char buf[16];
    SetScalar(kJsonNumber, std::string_view(buf, FormatInt(number, buf)));
}

void JsonValue::Set(uint32_t number) {
    char buf[16];
    SetScalar(kJsonNumber, std::string_view(buf, FormatUInt(number, buf)));
}

void JsonValue::Set(float number) {
    char buf[kFloatTextMax];
    SetScalar(kJsonNumber, std::string_view(buf, FormatFloat(number, buf)));
}

void JsonValue::Set(bool flag) { SetScalar(kJsonBool, flag ? "true" : "false"); }

// --- containers -------------------------------------------------------------

void JsonValue::Add(std::string_view name, JsonValue value) {
    if (Kind() != kJsonObject) return;
    Detach();
    JsonData* data = Data();
    data->names.emplace_back(name);
    data->values.push_back(std::move(value));
}

void JsonValue::Add(JsonValue value) {
    if (Kind() != kJsonArray) return;
    Detach();
    Data()->values.push_back(std::move(value));
}

void JsonValue::Reserve(size_t count) {
    uint32_t kind = Kind();
    if (kind != kJsonObject && kind != kJsonArray) return;
    Detach();
    JsonData* data = Data();
    data->values.reserve(count);
    if (kind == kJsonObject) data->names.reserve(count);
}

bool JsonValue::Has(std::string_view name) const {
    if (Kind() != kJsonObject) return false;
    for (const std::string& memberName : Data()->names) {
        if (memberName == name) return true;
    }
    return false;
}

JsonValue JsonValue::Get(std::string_view name) const {
    if (Kind() != kJsonObject) return JsonValue();
    const JsonData* data = Data();
    for (size_t i = 0; i < data->names.size(); ++i) {
        if (data->names[i] == name) return data->values[i];
    }
    return JsonValue();
}

size_t JsonValue::Count() const {
    const JsonData* data = JsonData::Of(*this);
    return data ? data->values.size() : 0;
}

std::string_view JsonValue::MemberName(size_t i) const {
    if (Kind() != kJsonObject || i >= Data()->names.size()) return {};
    return Data()->names[i];
}

const JsonValue& JsonValue::Member(size_t i) const {
    const JsonData* data = JsonData::Of(*this);
    static const JsonValue none;
    if (!data || i >= data->values.size()) return none;
    return data->values[i];
}

std::string_view JsonValue::Text() const {
    if (IsInline()) return JsonData::InlineText(*this);
    if (IsScalarKind(Kind())) return Data()->text;
    return {};
}

std::string JsonValue::ToString(const std::string& fallback) const {
    uint32_t kind = Kind();
    if (kind == kJsonNull) return "null";
    if (IsScalarKind(kind)) return std::string(Text());
    return fallback;
}
