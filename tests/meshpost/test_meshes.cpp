#include "test_meshes.h"

#include "scene_builder.h"

#include <algorithm>
#include <cmath>
#include <limits>

MeshInstance* MakeInstance(Scene& scene, VertexData data, std::vector<uint32_t> indices) {
    MeshInstance* mi = testsupport::New<MeshInstance>(scene);
    mi->vertices = testsupport::New<VertexData>(scene, std::move(data));
    mi->indices = testsupport::New<std::vector<uint32_t>>(scene, std::move(indices));
    return mi;
}

void MakeCube(VertexData& data, std::vector<uint32_t>& indices, float size) {
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
}

void MakeCylinder(VertexData& data, std::vector<uint32_t>& indices, uint32_t segments) {
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
}

void MakeGrid(VertexData& data, std::vector<uint32_t>& indices, uint32_t n) {
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
}

double WorldArea(const MeshInstance& mi) {
    const std::vector<float>& p = mi.vertices->positions;
    double area = 0;
    for (size_t t = 0; t + 2 < mi.indices->size(); t += 3) {
        const float* a = &p[size_t((*mi.indices)[t]) * 3];
        const float* b = &p[size_t((*mi.indices)[t + 1]) * 3];
        const float* c = &p[size_t((*mi.indices)[t + 2]) * 3];
        const double u[3] = {double(b[0]) - a[0], double(b[1]) - a[1], double(b[2]) - a[2]};
        const double v[3] = {double(c[0]) - a[0], double(c[1]) - a[1], double(c[2]) - a[2]};
        const double x = u[1] * v[2] - u[2] * v[1], y = u[2] * v[0] - u[0] * v[2], z = u[0] * v[1] - u[1] * v[0];
        area += 0.5 * std::sqrt(x * x + y * y + z * z);
    }
    return area;
}

double UvArea(const MeshInstance& mi, int set) {
    const std::vector<float>& uv = mi.vertices->texCoords[set];
    double area = 0;
    for (size_t t = 0; t + 2 < mi.indices->size(); t += 3) {
        const float* a = &uv[size_t((*mi.indices)[t]) * 2];
        const float* b = &uv[size_t((*mi.indices)[t + 1]) * 2];
        const float* c = &uv[size_t((*mi.indices)[t + 2]) * 2];
        area += 0.5 * std::fabs(double(b[0] - a[0]) * (c[1] - a[1]) - double(c[0] - a[0]) * (b[1] - a[1]));
    }
    return area;
}

Mat4 ScaleMatrix(float sx, float sy, float sz) {
    Mat4 m;
    m(0, 0) = sx;
    m(1, 1) = sy;
    m(2, 2) = sz;
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
