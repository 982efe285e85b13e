// Writes a large skinned GLB for load and export benchmarks: eight meshes, about four
// million vertices with position, normal, texCoord0, joints and weights (about 208 MB).
// Even meshes keep each attribute in its own view, odd meshes interleave them.
//   vurl_make_big_glb <out.glb> [vertices per mesh]
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "glb_fixture.h"

using namespace glbfixture;

namespace {

constexpr int kMeshes = 8;
constexpr int kJoints = 4;
constexpr size_t kVertexBytes = 12 + 12 + 8 + 4 + 16;

// Vertex v of a mesh block of n vertices, either interleaved (52-byte stride) or with one
// run per attribute.
void FillVertex(uint8_t* out, size_t v, int mesh, bool interleaved, size_t n) {
    const float t = float(v) * 0.001f;
    const float p[3] = {float(mesh) + std::sin(t), float(v % 1000) * 0.01f, std::cos(t)};
    const float nrm[3] = {std::sin(t), 0.0f, std::cos(t)};
    const float uv[2] = {float(v % 1024) / 1024.0f, float((v / 1024) % 1024) / 1024.0f};
    const uint8_t j[4] = {uint8_t(v % kJoints), uint8_t((v + 1) % kJoints), 0, 0};
    const float w[4] = {0.75f, 0.25f, 0.0f, 0.0f};
    if (interleaved) {
        uint8_t* at = out + v * kVertexBytes;
        std::memcpy(at, p, 12);
        std::memcpy(at + 12, nrm, 12);
        std::memcpy(at + 24, uv, 8);
        std::memcpy(at + 32, j, 4);
        std::memcpy(at + 36, w, 16);
    } else {
        std::memcpy(out + v * 12, p, 12);
        std::memcpy(out + 12 * n + v * 12, nrm, 12);
        std::memcpy(out + 24 * n + v * 8, uv, 8);
        std::memcpy(out + 32 * n + v * 4, j, 4);
        std::memcpy(out + 36 * n + v * 16, w, 16);
    }
}

}  // namespace

int main(int argc, char** argv) {
    if (argc < 2 || argc > 3) {
        std::fprintf(stderr, "usage: %s <out.glb> [vertices per mesh]\n", argv[0]);
        return 1;
    }
    size_t perMesh = argc == 3 ? size_t(std::strtoull(argv[2], nullptr, 10)) : 500000;
    perMesh -= perMesh % 3;  // whole triangles
    if (perMesh == 0) perMesh = 3;

    // Binary layout: inverse bind matrices, then each mesh's block of perMesh * 52 bytes.
    const size_t ibmBytes = size_t(kJoints) * 64;
    const size_t meshBytes = perMesh * kVertexBytes;
    const uint64_t binaryLength = ibmBytes + uint64_t(meshBytes) * kMeshes;

    std::string views = "{\"buffer\":0,\"byteOffset\":0,\"byteLength\":" + std::to_string(ibmBytes) + "}";
    std::string accessors = "{\"bufferView\":0,\"componentType\":5126,\"count\":" + std::to_string(kJoints) +
                            ",\"type\":\"MAT4\"}";
    std::string meshes, nodes;
    int viewCount = 1, accessorCount = 1;
    auto view = [&](uint64_t offset, uint64_t length, size_t stride) {
        views += ",{\"buffer\":0,\"byteOffset\":" + std::to_string(offset) + ",\"byteLength\":" + std::to_string(length);
        if (stride) views += ",\"byteStride\":" + std::to_string(stride);
        views += "}";
        return viewCount++;
    };
    auto accessor = [&](int v, size_t offset, int type, const char* kind, bool minMax) {
        accessors += ",{\"bufferView\":" + std::to_string(v) + ",\"byteOffset\":" + std::to_string(offset) +
                     ",\"componentType\":" + std::to_string(type) + ",\"count\":" + std::to_string(perMesh) +
                     ",\"type\":\"" + kind + "\"";
        if (minMax) accessors += ",\"min\":[-1,0,-1],\"max\":[8,10,1]";
        accessors += "}";
        return accessorCount++;
    };
    for (int m = 0; m < kMeshes; ++m) {
        const uint64_t base = ibmBytes + uint64_t(meshBytes) * m;
        int a[5];
        if (m % 2 == 0) {
            const size_t sizes[5] = {12, 12, 8, 4, 16};
            uint64_t at = base;
            const int types[5] = {5126, 5126, 5126, 5121, 5126};
            const char* kinds[5] = {"VEC3", "VEC3", "VEC2", "VEC4", "VEC4"};
            for (int k = 0; k < 5; ++k) {
                a[k] = accessor(view(at, sizes[k] * perMesh, 0), 0, types[k], kinds[k], k == 0);
                at += sizes[k] * perMesh;
            }
        } else {
            const int v = view(base, meshBytes, kVertexBytes);
            a[0] = accessor(v, 0, 5126, "VEC3", true);
            a[1] = accessor(v, 12, 5126, "VEC3", false);
            a[2] = accessor(v, 24, 5126, "VEC2", false);
            a[3] = accessor(v, 32, 5121, "VEC4", false);
            a[4] = accessor(v, 36, 5126, "VEC4", false);
        }
        meshes += std::string(m ? "," : "") + "{\"name\":\"Part" + std::to_string(m) +
                  "\",\"primitives\":[{\"attributes\":{\"POSITION\":" + std::to_string(a[0]) +
                  ",\"NORMAL\":" + std::to_string(a[1]) + ",\"TEXCOORD_0\":" + std::to_string(a[2]) +
                  ",\"JOINTS_0\":" + std::to_string(a[3]) + ",\"WEIGHTS_0\":" + std::to_string(a[4]) + "}}]}";
        nodes += "{\"name\":\"Part" + std::to_string(m) + "\",\"mesh\":" + std::to_string(m) + ",\"skin\":0},";
    }
    std::string children = "[";
    for (int i = 0; i < kMeshes + kJoints; ++i) children += (i ? "," : "") + std::to_string(i);
    children += "]";
    for (int j = 0; j < kJoints; ++j)
        nodes += "{\"name\":\"Joint" + std::to_string(j) + "\",\"translation\":[0," + std::to_string(j) + ",0]},";
    nodes += "{\"name\":\"Root\",\"children\":" + children + "}";
    std::string jointList = "[";
    for (int j = 0; j < kJoints; ++j) jointList += (j ? "," : "") + std::to_string(kMeshes + j);
    jointList += "]";

    const std::string json = "{\"asset\":{\"version\":\"2.0\"},\"buffers\":[{\"byteLength\":" +
                             std::to_string(binaryLength) + "}],\"bufferViews\":[" + views + "],\"accessors\":[" +
                             accessors + "],\"meshes\":[" + meshes + "],\"nodes\":[" + nodes +
                             "],\"skins\":[{\"inverseBindMatrices\":0,\"joints\":" + jointList +
                             "}],\"scenes\":[{\"nodes\":[" + std::to_string(kMeshes + kJoints) + "]}],\"scene\":0}";

    std::FILE* file = std::fopen(argv[1], "wb");
    if (!file) {
        std::fprintf(stderr, "cannot write %s\n", argv[1]);
        return 1;
    }
    bool ok = BeginGlbStream(file, json, binaryLength);
    std::vector<uint8_t> block(std::max(ibmBytes, meshBytes));
    float identity[16] = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};
    for (int j = 0; j < kJoints; ++j) std::memcpy(block.data() + j * 64, identity, 64);
    ok = ok && std::fwrite(block.data(), 1, ibmBytes, file) == ibmBytes;
    for (int m = 0; ok && m < kMeshes; ++m) {
        for (size_t v = 0; v < perMesh; ++v) FillVertex(block.data(), v, m, m % 2 == 1, perMesh);
        ok = std::fwrite(block.data(), 1, meshBytes, file) == meshBytes;
    }
    ok = ok && FinishGlbStream(file, binaryLength);
    ok = std::fclose(file) == 0 && ok;
    if (!ok) {
        std::fprintf(stderr, "cannot write %s\n", argv[1]);
        return 1;
    }
    return 0;
}
