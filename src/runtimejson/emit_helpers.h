// Pieces of output shared by the generators that are written once for both the
// streaming JsonEmitter and the JsonTreeBuilder, which offer the same calls.
// Private to the runtime JSON library.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <type_traits>

#include "scene/math.h"

template <typename Out>
void EmitFloats(Out& out, const float* values, size_t count) {
    out.BeginArray();
    for (size_t i = 0; i < count; ++i) out.Number(values[i]);
    out.EndArray();
}

template <typename Out>
void EmitVec3(Out& out, const Vec3& v) {
    out.BeginArray();
    out.Number(v.x);
    out.Number(v.y);
    out.Number(v.z);
    out.EndArray();
}

// One member with a scalar value. Texts go out whole, by length: a name may hold a
// zero byte.
template <typename Out, typename T>
void Field(Out& out, const char* name, const T& value) {
    out.Name(name);
    if constexpr (std::is_same_v<T, bool>)
        out.Bool(value);
    else if constexpr (std::is_convertible_v<const T&, std::string_view>)
        out.String(std::string_view(value));
    else
        out.Number(value);
}
