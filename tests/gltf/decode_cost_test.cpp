// The cost of a document's import, known before it is decoded.
#include "gltf/gltf_decode_cost.h"
#include "read_test_util.h"

using namespace gltftest;
using namespace glbfixture;

TEST(DecodeCost, EachReadOfEachAccessorCounts) {
    GlbFixture glb;
    const int view = glb.AddViewOf(std::vector<float>(9, 1.0f));
    glb.AddAccessor(view, 0, kFloat, 3, "VEC3");                                 // 0: 3 x 3 x 4 = 36
    glb.AddData(std::vector<uint16_t>{0, 1, 2, 0}, kUShort, "SCALAR");           // 1: 4 indices x 4 = 16
    glb.AddData(std::vector<uint8_t>(12, 0), kUByte, "VEC4");                    // 2: 3 x 4 joints x 2 = 24
    glb.AddData(std::vector<float>(32, 0.0f), kFloat, "MAT4");                   // 3: 2 x 16 x 4 = 128
    glb.AddData(std::vector<float>{0.0f, 1.0f}, kFloat, "SCALAR");               // 4: 2 x 4 = 8
    glb.AddAccessor(view, 0, kFloat, 1000000, "VEC3");                           // 5: past the buffer, refused
    const int sparseIndices = glb.AddViewOf(std::vector<uint8_t>{0, 2, 0, 0});
    const int sparseValues = glb.AddViewOf(std::vector<float>(6, 2.0f));
    glb.AddAccessor(view, 0, kFloat, 3, "VEC3", false,                           // 6: 36 + 2 x 4 + 2 x 12 = 68
                    ",\"sparse\":{\"count\":2,\"indices\":{\"bufferView\":" + std::to_string(sparseIndices) +
                        ",\"componentType\":5121},\"values\":{\"bufferView\":" + std::to_string(sparseValues) + "}}");

    const std::string node = R"(,"nodes":[{"mesh":0}])";
    auto mesh = [&](const std::string& primitive) { return R"("meshes":[{"primitives":[)" + primitive + "]}]" + node; };
    const struct {
        const char* what;
        std::string members;
        uint64_t bytes;
    } cases[] = {
        {"positions and indices, one mesh on two nodes: read once", R"("meshes":[{"primitives":[{"attributes":{"POSITION":0},"indices":1}]}],"nodes":[{"mesh":0},{"mesh":0}])", 36 + 16},
        {"joints decode to 16 bits", mesh(R"({"attributes":{"POSITION":0,"JOINTS_0":2}})"), 36 + 24},
        {"three targets naming the positions: read, then kept as two deltas", mesh(R"({"attributes":{"POSITION":0},"targets":[{"POSITION":0},{"POSITION":0},{"POSITION":0}]})"), 36 + 3 * (36 + 2 * 36)},
        {"target normals", mesh(R"({"attributes":{"POSITION":0},"targets":[{"POSITION":0,"NORMAL":0}]})"), 36 + 36 + 36 + 2 * 36},
        {"a mesh no node shows", R"("meshes":[{"primitives":[{"attributes":{"POSITION":0}}]}])", 0},
        {"inverse bind matrices", R"("skins":[{"inverseBindMatrices":3,"joints":[0,0]}])", 128},
        {"animation: the one channel the import reads", R"("nodes":[{}],"animations":[{"samplers":[{"input":4,"output":0}],"channels":[{"sampler":0,"target":{"node":0,"path":"translation"}},{"sampler":0,"target":{"node":5,"path":"translation"}},{"sampler":0,"target":{"node":0,"path":"pointer"}}]}])", 8 + 36},
        {"a read past the buffer", mesh(R"({"attributes":{"POSITION":5}})"), 0},
        {"sparse: base, indices and values", mesh(R"({"attributes":{"POSITION":6}})"), 68},
        {"Draco data instead of accessors", mesh(R"({"attributes":{"POSITION":0},"extensions":{"KHR_draco_mesh_compression":{"bufferView":0,"attributes":{"POSITION":0}}}})"), 0},
    };
    ScratchFolder dir;
    for (const auto& c : cases) {
        GltfContext context;
        ASSERT_TRUE(ReadBytes(dir, glb.Build(c.members), context));
        EXPECT_EQ(EstimateDecodedBytes(context), c.bytes) << c.what;
    }
}
