// Writes the model file of one mesh with 1,000,000 vertices (position, normal,
// texCoord0) and 2,000,000 triangles, compact, and reports the time per phase.
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <string>

#include <sys/resource.h>

#include "runtimejson/model_json.h"
#include "scene/scene.h"

namespace {

constexpr uint32_t kGrid = 1000;  // kGrid x kGrid vertices
constexpr uint32_t kVertices = kGrid * kGrid;
constexpr uint32_t kTriangles = 2000000;

double Seconds(std::chrono::steady_clock::time_point since) {
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - since).count();
}

// A wavy grid, so that the numbers have the digits of real data rather than zeros.
void FillMesh(Scene& scene) {
    auto* vertices = scene.Own(std::make_unique<VertexData>());
    vertices->positions.reserve(size_t(kVertices) * 3);
    vertices->normals.reserve(size_t(kVertices) * 3);
    vertices->texCoords[0].reserve(size_t(kVertices) * 2);
    uint32_t state = 12345;
    auto noise = [&state] {
        state = state * 1664525u + 1013904223u;
        return float(state >> 8) / float(1u << 24);
    };
    for (uint32_t y = 0; y < kGrid; ++y) {
        for (uint32_t x = 0; x < kGrid; ++x) {
            const float u = float(x) / float(kGrid - 1);
            const float v = float(y) / float(kGrid - 1);
            vertices->positions.insert(vertices->positions.end(), {u * 12.5f - 6.25f, noise() * 0.37f, v * -8.0f + 1.5f});
            Vec3 n(noise() - 0.5f, 1.0f, noise() - 0.5f);
            n.Normalize();
            vertices->normals.insert(vertices->normals.end(), {n.x, n.y, n.z});
            vertices->texCoords[0].insert(vertices->texCoords[0].end(), {u, v});
        }
    }
    auto* indices = scene.Own(std::make_unique<std::vector<uint32_t>>());
    indices->reserve(size_t(kTriangles) * 3);
    for (uint32_t t = 0; indices->size() < size_t(kTriangles) * 3; ++t) {
        const uint32_t quad = (t / 2) % ((kGrid - 1) * (kGrid - 1));
        const uint32_t a = (quad / (kGrid - 1)) * kGrid + quad % (kGrid - 1);
        if (t % 2 == 0)
            indices->insert(indices->end(), {a, a + 1, a + kGrid});
        else
            indices->insert(indices->end(), {a + 1, a + kGrid + 1, a + kGrid});
    }

    auto* geometry = new Geometry();
    geometry->name = "terrain";
    auto* instance = scene.Own(std::make_unique<MeshInstance>());
    instance->vertices = vertices;
    instance->indices = indices;
    geometry->meshInstances.push_back(instance);
    scene.geometries.Add(geometry);

    scene.root = new GraphNode();
    scene.root->name = "root";
    auto* node = new GraphNode();
    node->name = "terrain";
    node->id = 1;
    node->geometry = geometry;
    scene.root->AddChild(node);
}

}  // namespace

int main() {
    auto start = std::chrono::steady_clock::now();
    Scene scene;
    FillMesh(scene);
    std::printf("scene built: %.3f s\n", Seconds(start));

    const std::string path = (std::filesystem::temp_directory_path() / "bench_model_file.json").string();
    start = std::chrono::steady_clock::now();
    const bool ok = WriteModelJson(path, scene, false);
    const double seconds = Seconds(start);
    std::error_code error;
    const auto bytes = std::filesystem::file_size(path, error);
    std::printf("model file written: %.3f s, %.1f MB, %s\n", seconds, error ? 0.0 : double(bytes) / 1e6,
                ok ? "ok" : "FAILED");
    std::fflush(stdout);
    std::filesystem::remove(path, error);
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    std::printf("peak resident memory: %.1f MB\n", double(usage.ru_maxrss) / 1024.0);
    return ok ? 0 : 1;
}
