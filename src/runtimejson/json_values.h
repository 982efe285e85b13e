// Small value makers shared by the tree-built files.
// Private to the runtime JSON library.
#pragma once

#include <initializer_list>

#include "json/json.h"
#include "scene/math.h"

inline JsonValue FloatsJson(std::initializer_list<float> values) {
    JsonValue array = JsonValue::Array();
    for (float v : values) array.Add(JsonValue(v));
    return array;
}

inline JsonValue Vec3Json(const Vec3& v) { return FloatsJson({v.x, v.y, v.z}); }
