// Shared storage behind a JsonValue handle: containers and scalars whose text
// does not fit inside the handle. Private to the JSON library.
#pragma once

#include <string>
#include <vector>

#include "json/json.h"

struct JsonData {
    uint32_t refCount = 1;
    uint32_t kind = 0;
    std::string text;               // scalars only
    std::vector<JsonValue> values;  // members of objects and arrays, in order
    std::vector<std::string> names; // objects only, parallel to values

    static const JsonData* Of(const JsonValue& value) {
        return value.IsShared() ? value.Data() : nullptr;
    }
    static bool IsInlineScalar(const JsonValue& value) { return value.IsInline(); }
    static std::string_view InlineText(const JsonValue& value) {
        return std::string_view(reinterpret_cast<const char*>(value.raw_), value.raw_[14]);
    }
};
