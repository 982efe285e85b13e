// Unwraps one bumpy sphere of about 200,000 triangles at the default texel density (or at
// the densities given).
//   bench_meshpost_unwrap [triangles [texels per metre...]]
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <vector>

#include "bench_clock.h"
#include "meshpost/unwrap.h"

namespace {

// Latitude-longitude sphere with ridges, so that xatlas has to make many charts.
void MakeBumpySphere(uint32_t rings, uint32_t segments, VertexData& vd, std::vector<uint32_t>& indices) {
    const double pi = 3.14159265358979323846;
    for (uint32_t r = 0; r <= rings; ++r) {
        const double theta = pi * r / rings;
        for (uint32_t s = 0; s <= segments; ++s) {
            const double phi = 2.0 * pi * s / segments;
            const double bump = 1.0 + 0.05 * std::sin(7.0 * theta) * std::cos(9.0 * phi);
            const double x = std::sin(theta) * std::cos(phi), y = std::cos(theta), z = std::sin(theta) * std::sin(phi);
            vd.positions.insert(vd.positions.end(), {float(x * bump), float(y * bump), float(z * bump)});
            vd.normals.insert(vd.normals.end(), {float(x), float(y), float(z)});
        }
    }
    for (uint32_t r = 0; r < rings; ++r) {
        for (uint32_t s = 0; s < segments; ++s) {
            const uint32_t a = r * (segments + 1) + s, b = a + 1, c = a + segments + 1, d = c + 1;
            indices.insert(indices.end(), {a, c, b, b, c, d});
        }
    }
}

}  // namespace

int main(int argc, char** argv) {
    const double triangles = argc > 1 ? std::atof(argv[1]) : 200000.0;
    const uint32_t rings = uint32_t(std::sqrt(triangles / 4.0));
    const uint32_t segments = 2 * rings;

    std::vector<float> densities;
    for (int i = 2; i < argc; ++i) densities.push_back(float(std::atof(argv[i])));
    if (densities.empty()) densities.push_back(16.0f);

    for (float q : densities) {
        Scene scene;  // owns the records, the unwrapped ones included
        VertexData* vd = scene.Own(std::make_unique<VertexData>());
        auto* indices = scene.Own(std::make_unique<std::vector<uint32_t>>());
        MakeBumpySphere(rings, segments, *vd, *indices);
        MeshInstance mi;
        mi.vertices = vd;
        mi.indices = indices;
        const size_t inVertices = vd->positions.size() / 3;

        BenchClock clock;
        const double cpuBefore = CpuSeconds();
        const AtlasSize size = UnwrapGeometry(scene, {&mi}, 1.0f, q);
        const double seconds = clock.Seconds();
        const double cpu = CpuSeconds() - cpuBefore;
        std::printf("unwrap %zu triangles, %zu vertices, %g texels/m: %.2f s (cpu %.2f s), atlas %u x %u, %zu vertices "
                    "out\n",
                    indices->size() / 3, inVertices, double(q), seconds, cpu, size.width, size.height,
                    mi.vertices->positions.size() / 3);
    }
    std::printf("peak memory %ld KiB\n", PeakRssKiB());
    return 0;
}
