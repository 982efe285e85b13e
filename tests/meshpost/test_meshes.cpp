#include "test_meshes.h"

#include <algorithm>
#include <cmath>
#include <limits>

TestMesh CubeMesh(float size) {
    TestMesh m;
    auto& [data, indices] = m;
    const float h = size * 0.5f;
    // For each face: normal, and two axes spanning it.
    const float faces[6][9] = {
        {1, 0, 0, 0, 1, 0, 0, 0, 1},  {-1, 0, 0, 0, 0, 1, 0, 1, 0}, {0, 1, 0, 0, 0, 1, 1, 0, 0},
        {0, -1, 0, 1, 0, 0, 0, 0, 1}, {0, 0, 1, 1, 0, 0, 0, 1, 0},  {0, 0, -1, 0, 1, 0, 1, 0, 0},
    };
    const float corners[4][2] = {{-1, -1}, {1, -1}, {1, 1}, {-1, 1}};
    for (const auto& f : faces) {
        const uint32_t base = uint32_t(data.positions.size() / 3);
        for (const auto& c : corners) {
            for (int k = 0; k < 3; ++k) {
                data.positions.push_back(h * (f[k] + c[0] * f[3 + k] + c[1] * f[6 + k]));
                data.normals.push_back(f[k]);
            }
        }
        for (uint32_t i : {0u, 1u, 2u, 0u, 2u, 3u}) indices.push_back(base + i);
    }
    return m;
}

TestMesh CylinderMesh(uint32_t segments) {
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

TestMesh GridMesh(uint32_t n) {
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

namespace {

// The largest difference of the two triangles' corners (b's rotated by `rot`).
double CornerMismatch(const VertexData& a, const uint32_t* at, const VertexData& b, const uint32_t* bt, int rot,
                      double posTol, int uvSet, double uvTol) {
    double worst = 0;
    for (int k = 0; k < 3; ++k) {
        const size_t i = at[k], j = bt[(k + rot) % 3];
        for (size_t c = 0; c < 3; ++c)
            worst = std::max(worst, std::fabs(double(a.positions[3 * i + c]) - b.positions[3 * j + c]) / posTol);
        for (size_t c = 0; uvSet >= 0 && c < 2; ++c)
            worst = std::max(worst, std::fabs(double(a.texCoords[uvSet][2 * i + c]) - b.texCoords[uvSet][2 * j + c]) / uvTol);
    }
    return worst;
}

}  // namespace

double TriangleMismatch(const VertexData& a, const std::vector<uint32_t>& aIndices, const VertexData& b,
                        const std::vector<uint32_t>& bIndices, double posTol, int uvSet, double uvTol) {
    if (aIndices.size() != bIndices.size()) return std::numeric_limits<double>::infinity();
    double worst = 0;
    for (size_t t = 0; t + 2 < bIndices.size(); t += 3) {
        double best = std::numeric_limits<double>::infinity();
        for (size_t s = 0; s + 2 < aIndices.size(); s += 3)
            for (int rot = 0; rot < 3; ++rot)
                best = std::min(best, CornerMismatch(a, &aIndices[s], b, &bIndices[t], rot, posTol, uvSet, uvTol));
        worst = std::max(worst, best);
    }
    return worst;
}
