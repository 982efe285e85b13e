#include "scene/geometry.h"

#include <cmath>

void Compact(MorphTarget& target, float threshold) {
    const uint32_t n = target.count;
    auto component = [](const std::vector<float>& v, size_t i) { return i < v.size() ? v[i] : 0.0f; };
    // NaN compares false, so it never keeps a vertex.
    auto kept = [&](uint32_t i) {
        for (size_t c = 0; c < 3; ++c) {
            if (std::fabs(component(target.deltaPositions, size_t(i) * 3 + c)) > threshold) return true;
            if (std::fabs(component(target.deltaNormals, size_t(i) * 3 + c)) > threshold) return true;
        }
        return false;
    };

    uint32_t m = 0;
    for (uint32_t i = 0; i < n; ++i)
        if (kept(i)) ++m;

    std::vector<uint32_t> indices;
    std::vector<float> positions, normals;
    indices.reserve(m);
    positions.reserve(size_t(m) * 3);
    normals.reserve(size_t(m) * 3);

    target.boundingBox.Reset();
    target.boundingBox.Extend(Vec3(0.0f, 0.0f, 0.0f));
    for (uint32_t i = 0; i < n; ++i) {
        if (!kept(i)) continue;
        indices.push_back(i);
        Vec3 p;
        for (int c = 0; c < 3; ++c) {
            p[c] = component(target.deltaPositions, size_t(i) * 3 + c);
            positions.push_back(p[c]);
            normals.push_back(component(target.deltaNormals, size_t(i) * 3 + c));
        }
        target.boundingBox.Extend(p);
    }

    target.sourceVertexCount = n;
    target.count = m;
    target.indices = std::move(indices);
    target.deltaPositions = std::move(positions);
    target.deltaNormals = std::move(normals);
}
