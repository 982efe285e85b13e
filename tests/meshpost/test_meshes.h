// Small meshes for the mesh post-processing tests.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <utility>
#include <vector>

#include "scene/geometry.h"

struct TestMesh {
    VertexData data;
    std::vector<uint32_t> indices;
};

// Cube centred on the origin, one flat quad per face: 24 vertices, 12 triangles, normals.
inline TestMesh CubeMesh(float size = 1.0f) {
    TestMesh m;
    const float h = size * 0.5f;
    for (int f = 0; f < 6; ++f) {
        // Normal along axis a (positive on even faces); u and w span the face, u flipped on
        // the negative faces so that every face winds counter-clockwise seen from outside.
        const int a = f / 2, u = (a + 1) % 3, w = (a + 2) % 3;
        const float s = f % 2 ? -1.0f : 1.0f;
        const uint32_t base = uint32_t(m.data.positions.size() / 3);
        for (const auto& [cu, cw] : {std::pair{-1.0f, -1.0f}, {1.0f, -1.0f}, {1.0f, 1.0f}, {-1.0f, 1.0f}}) {
            float p[3], n[3] = {0, 0, 0};
            p[a] = s * h, p[u] = s * cu * h, p[w] = cw * h, n[a] = s;
            m.data.positions.insert(m.data.positions.end(), p, p + 3);
            m.data.normals.insert(m.data.normals.end(), n, n + 3);
        }
        for (uint32_t i : {0u, 1u, 2u, 0u, 2u, 3u}) m.indices.push_back(base + i);
    }
    return m;
}

// Open cylinder of radius 0.5 and height 1 with smooth normals around `segments` sides.
inline TestMesh CylinderMesh(uint32_t segments) {
    TestMesh m;
    auto& [data, indices] = m;
    const double pi = 3.14159265358979323846;
    for (uint32_t s = 0; s <= segments; ++s) {
        const double a = 2.0 * pi * s / segments;
        const float x = float(std::cos(a)), z = float(std::sin(a));
        for (float y : {-0.5f, 0.5f}) {
            data.positions.insert(data.positions.end(), {0.5f * x, y, 0.5f * z});
            data.normals.insert(data.normals.end(), {x, 0.0f, z});
        }
    }
    for (uint32_t s = 0; s < segments; ++s) {
        const uint32_t a = 2 * s, b = a + 1, c = a + 2, d = a + 3;
        indices.insert(indices.end(), {a, b, c, c, b, d});
    }
    return m;
}

// Gently curved grid of n x n quads over the unit square, normals up.
inline TestMesh GridMesh(uint32_t n) {
    TestMesh m;
    auto& [data, indices] = m;
    for (uint32_t j = 0; j <= n; ++j) {
        for (uint32_t i = 0; i <= n; ++i) {
            const float x = float(i) / float(n), z = float(j) / float(n);
            data.positions.insert(data.positions.end(), {x, 0.1f * std::sin(3.0f * x) * std::cos(2.0f * z), z});
            data.normals.insert(data.normals.end(), {0.0f, 1.0f, 0.0f});
        }
    }
    for (uint32_t j = 0; j < n; ++j) {
        for (uint32_t i = 0; i < n; ++i) {
            const uint32_t a = j * (n + 1) + i, b = a + 1, c = a + n + 1, d = c + 1;
            indices.insert(indices.end(), {a, c, b, b, c, d});
        }
    }
    return m;
}

// Over b's triangles, the largest corner difference (position over posTol, UV set uvSet
// over uvTol unless negative) to the best-matching triangle of a, in any order with
// corners in the same cyclic order: at most 1 when every one matches; infinite when the
// counts differ.
inline double TriangleMismatch(const VertexData& a, const std::vector<uint32_t>& aIndices, const VertexData& b,
                               const std::vector<uint32_t>& bIndices, double posTol, int uvSet = -1, double uvTol = 1) {
    if (aIndices.size() != bIndices.size()) return INFINITY;
    // The largest corner difference of a's triangle s and b's triangle t rotated by `rot`.
    auto corners = [&](size_t s, size_t t, size_t rot) {
        double worst = 0;
        for (size_t k = 0; k < 3; ++k) {
            const size_t i = aIndices[s + k], j = bIndices[t + (k + rot) % 3];
            for (size_t c = 0; c < 3; ++c)
                worst = std::max(worst, std::fabs(double(a.positions[3 * i + c]) - b.positions[3 * j + c]) / posTol);
            for (size_t c = 0; uvSet >= 0 && c < 2; ++c)
                worst = std::max(worst, std::fabs(double(a.texCoords[uvSet][2 * i + c]) - b.texCoords[uvSet][2 * j + c]) / uvTol);
        }
        return worst;
    };
    double worst = 0;
    for (size_t t = 0; t + 2 < bIndices.size(); t += 3) {
        double best = INFINITY;
        for (size_t s = 0; s + 2 < aIndices.size(); s += 3)
            for (size_t rot = 0; rot < 3; ++rot) best = std::min(best, corners(s, t, rot));
        worst = std::max(worst, best);
    }
    return worst;
}
