// The vertex attributes that the metadata files report, in their fixed order: position,
// normal, colour, joint indices, weights, texture sets 0 and 1. Later texture sets are
// never reported.
// Private to the runtime JSON library.
#pragma once

#include <array>
#include <cstddef>

#include "scene/geometry.h"

inline constexpr size_t kReportedAttributeCount = 7;

inline std::array<bool, kReportedAttributeCount> ReportedAttributes(const VertexData& data) {
    return {!data.positions.empty(), !data.normals.empty(),      !data.colors.empty(),      !data.joints.empty(),
            !data.weights.empty(),   !data.texCoords[0].empty(), !data.texCoords[1].empty()};
}
