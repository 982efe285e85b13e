// Draco compression of a large glTF scene: about 200 MB of indexed, skinned triangle meshes
// (eight wavy grids with position, normal, texCoord0, joints, weights and 32-bit indices),
// read by the glTF loader and then compressed with the default options.
//   bench_meshpost_draco [input.glb]
//   bench_meshpost_draco --make out.glb   (only writes the generated input, for comparisons)
// Without an argument the input is generated into the temporary folder and removed after.
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "bench_clock.h"
#include "glb_fixture.h"
#include "gltf/gltf_loader.h"
#include "meshpost/meshpost.h"

namespace {

constexpr int kMeshes = 8;
constexpr uint32_t kGrid = 572;  // quads per side: 328,329 vertices and 654,368 triangles a mesh

struct MeshBlock {
    std::vector<float> positions, normals, uvs, weights;
    std::vector<uint8_t> joints;
    std::vector<uint32_t> indices;
};

MeshBlock MakeBlock(int mesh) {
    MeshBlock b;
    const uint32_t n = kGrid;
    for (uint32_t j = 0; j <= n; ++j) {
        for (uint32_t i = 0; i <= n; ++i) {
            const float x = float(i) / n, z = float(j) / n;
            const float y = 0.05f * std::sin(12.0f * x + float(mesh)) * std::cos(9.0f * z);
            b.positions.insert(b.positions.end(), {x + float(mesh), y, z});
            b.normals.insert(b.normals.end(), {0.0f, 1.0f, 0.0f});
            b.uvs.insert(b.uvs.end(), {x, z});
            b.joints.insert(b.joints.end(), {uint8_t(i * 4 / (n + 1)), uint8_t(j * 4 / (n + 1)), 0, 0});
            b.weights.insert(b.weights.end(), {1.0f - x, x, 0.0f, 0.0f});
        }
    }
    for (uint32_t j = 0; j < n; ++j) {
        for (uint32_t i = 0; i < n; ++i) {
            const uint32_t a = j * (n + 1) + i, c = a + n + 1;
            b.indices.insert(b.indices.end(), {a, c, a + 1, a + 1, c, c + 1});
        }
    }
    return b;
}

bool WriteInput(const std::string& path) {
    const size_t vertices = size_t(kGrid + 1) * (kGrid + 1);
    const size_t indexCount = size_t(kGrid) * kGrid * 6;
    const size_t sizes[6] = {12 * vertices, 12 * vertices, 8 * vertices, 4 * vertices, 16 * vertices, 4 * indexCount};
    size_t meshBytes = 0;
    for (size_t s : sizes) meshBytes += s;

    std::string views, accessors, meshes, nodes, children;
    int view = 0;
    for (int m = 0; m < kMeshes; ++m) {
        size_t at = meshBytes * size_t(m);
        const char* kinds[6] = {"VEC3", "VEC3", "VEC2", "VEC4", "VEC4", "SCALAR"};
        const int types[6] = {5126, 5126, 5126, 5121, 5126, 5125};
        for (int k = 0; k < 6; ++k) {
            views += std::string(view ? "," : "") + "{\"buffer\":0,\"byteOffset\":" + std::to_string(at) +
                     ",\"byteLength\":" + std::to_string(sizes[k]) + "}";
            accessors += std::string(view ? "," : "") + "{\"bufferView\":" + std::to_string(view) +
                         ",\"componentType\":" + std::to_string(types[k]) +
                         ",\"count\":" + std::to_string(k == 5 ? indexCount : vertices) + ",\"type\":\"" + kinds[k] +
                         "\"" + (k == 0 ? ",\"min\":[0,-1,0],\"max\":[9,1,1]" : "") + "}";
            at += sizes[k];
            ++view;
        }
        const int a = m * 6;
        meshes += std::string(m ? "," : "") + "{\"primitives\":[{\"attributes\":{\"POSITION\":" + std::to_string(a) +
                  ",\"NORMAL\":" + std::to_string(a + 1) + ",\"TEXCOORD_0\":" + std::to_string(a + 2) +
                  ",\"JOINTS_0\":" + std::to_string(a + 3) + ",\"WEIGHTS_0\":" + std::to_string(a + 4) +
                  "},\"indices\":" + std::to_string(a + 5) + "}]}";
        nodes += "{\"mesh\":" + std::to_string(m) + "},";
        children += std::string(m ? "," : "") + std::to_string(m);
    }
    nodes += "{\"name\":\"Root\",\"children\":[" + children + "]}";
    const uint64_t binaryLength = uint64_t(meshBytes) * kMeshes;
    const std::string json = "{\"asset\":{\"version\":\"2.0\"},\"buffers\":[{\"byteLength\":" +
                             std::to_string(binaryLength) + "}],\"bufferViews\":[" + views + "],\"accessors\":[" +
                             accessors + "],\"meshes\":[" + meshes + "],\"nodes\":[" + nodes +
                             "],\"scenes\":[{\"nodes\":[" + std::to_string(kMeshes) + "]}],\"scene\":0}";

    std::FILE* file = std::fopen(path.c_str(), "wb");
    if (!file) return false;
    bool ok = glbfixture::BeginGlbStream(file, json, binaryLength);
    for (int m = 0; ok && m < kMeshes; ++m) {
        const MeshBlock b = MakeBlock(m);
        auto put = [&](const auto& v) {
            ok = ok && std::fwrite(v.data(), sizeof(v[0]), v.size(), file) == v.size();
        };
        put(b.positions);
        put(b.normals);
        put(b.uvs);
        put(b.joints);
        put(b.weights);
        put(b.indices);
    }
    ok = ok && glbfixture::FinishGlbStream(file, binaryLength);
    return std::fclose(file) == 0 && ok;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc == 3 && std::string(argv[1]) == "--make") {
        if (WriteInput(argv[2])) return 0;
        std::fprintf(stderr, "ERROR: cannot write %s\n", argv[2]);
        return 1;
    }
    std::string path;
    const bool generated = argc < 2;
    if (generated) {
        const char* tmp = std::getenv("TMPDIR");
        path = std::string(tmp && *tmp ? tmp : "/tmp") + "/vurl_bench_meshpost_draco.glb";
        if (!WriteInput(path)) {
            std::fprintf(stderr, "ERROR: cannot write the benchmark input %s\n", path.c_str());
            return 1;
        }
    } else {
        path = argv[1];
    }

    BenchClock loadClock;
    Scene* scene = LoadGltf(path, ConversionOptions());
    const double loadSeconds = loadClock.Seconds();
    if (generated) std::remove(path.c_str());
    if (!scene) {
        std::fprintf(stderr, "ERROR: cannot load %s\n", path.c_str());
        return 1;
    }
    const long rssAfterLoad = PeakRssKiB();

    BenchClock compressClock;
    const double cpuBefore = CpuSeconds();
    CompressScene(*scene, DracoOptions());
    const double compressSeconds = compressClock.Seconds();
    const double compressCpu = CpuSeconds() - cpuBefore;

    size_t instances = 0, compressed = 0, faces = 0, plainBytes = 0, dracoBytes = 0;
    for (const Geometry* g : scene->geometries.items) {
        for (const MeshInstance* mi : g->meshInstances) {
            ++instances;
            if (!mi->compressed) continue;
            ++compressed;
            faces += size_t(mi->compressed->indexCount) / 3;
            dracoBytes += mi->compressed->data.size();
            const VertexData& vd = *mi->vertices;
            plainBytes += 4 * (vd.positions.size() + vd.normals.size() + vd.colors.size() + vd.weights.size()) +
                          2 * vd.joints.size() + 4 * mi->indices->size();
            for (const auto& set : vd.texCoords) plainBytes += 4 * set.size();
        }
    }
    std::printf("input %s\n", path.c_str());
    std::printf("load %.2f s (peak %ld KiB)\n", loadSeconds, rssAfterLoad);
    std::printf("draco: %zu of %zu instances, %zu faces, %.2f s (cpu %.2f s), %.1f MB of scene data to %.1f MB\n",
                compressed, instances, faces, compressSeconds, compressCpu, double(plainBytes) / 1e6, double(dracoBytes) / 1e6);
    std::printf("peak memory %ld KiB\n", PeakRssKiB());
    delete scene;
    return 0;
}
