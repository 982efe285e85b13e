// Primitives compressed with KHR_draco_mesh_compression, encoded here with the Draco library.
#include <draco/compression/encode.h>
#include <draco/mesh/triangle_soup_mesh_builder.h>
#include <draco/point_cloud/point_cloud_builder.h>

#include "read_test_util.h"

using namespace gltftest;
using namespace glbfixture;

namespace {

struct Encoded {
    std::vector<uint8_t> bytes;
    int position = -1, color = -1, joints = -1, uv = -1, weights = -1;
};

const float kCorners[2][3][3] = {{{0, 0, 0}, {1, 0, 0}, {0, 1, 0}}, {{1, 0, 0}, {1, 1, 0}, {0, 1, 0}}};

Encoded EncodeQuad() {
    draco::TriangleSoupMeshBuilder builder;
    builder.Start(2);
    Encoded e;
    e.position = builder.AddAttribute(draco::GeometryAttribute::POSITION, 3, draco::DT_FLOAT32);
    e.color = builder.AddAttribute(draco::GeometryAttribute::COLOR, 4, draco::DT_UINT8);
    e.joints = builder.AddAttribute(draco::GeometryAttribute::GENERIC, 4, draco::DT_UINT16);
    e.uv = builder.AddAttribute(draco::GeometryAttribute::TEX_COORD, 2, draco::DT_INT16, true);
    e.weights = builder.AddAttribute(draco::GeometryAttribute::GENERIC, 4, draco::DT_FLOAT64);
    for (int f = 0; f < 2; ++f) {
        uint8_t colors[3][4];
        uint16_t joints[3][4];
        int16_t uvs[3][2];
        double weights[3][4];
        for (int c = 0; c < 3; ++c) {
            for (int k = 0; k < 4; ++k) {
                colors[c][k] = uint8_t(kCorners[f][c][0] * 255);
                joints[c][k] = uint16_t(k + 1000);
                weights[c][k] = k == 0 ? 1.0 : 0.0;
            }
            uvs[c][0] = int16_t(kCorners[f][c][0] * 32767);
            uvs[c][1] = int16_t(-32768);
        }
        const draco::FaceIndex face(f);
        builder.SetAttributeValuesForFace(e.position, face, kCorners[f][0], kCorners[f][1], kCorners[f][2]);
        builder.SetAttributeValuesForFace(e.color, face, colors[0], colors[1], colors[2]);
        builder.SetAttributeValuesForFace(e.joints, face, joints[0], joints[1], joints[2]);
        builder.SetAttributeValuesForFace(e.uv, face, uvs[0], uvs[1], uvs[2]);
        builder.SetAttributeValuesForFace(e.weights, face, weights[0], weights[1], weights[2]);
    }
    std::unique_ptr<draco::Mesh> mesh = builder.Finalize();
    for (int* id : {&e.position, &e.color, &e.joints, &e.uv, &e.weights}) *id = int(mesh->attribute(*id)->unique_id());
    draco::Encoder encoder;
    encoder.SetEncodingMethod(draco::MESH_SEQUENTIAL_ENCODING);
    draco::EncoderBuffer buffer;
    EXPECT_TRUE(encoder.EncodeMeshToBuffer(*mesh, &buffer).ok());
    e.bytes.assign(buffer.data(), buffer.data() + buffer.size());
    return e;
}

std::vector<uint8_t> EncodePointCloud() {
    draco::PointCloudBuilder builder;
    builder.Start(2);
    const int att = builder.AddAttribute(draco::GeometryAttribute::POSITION, 3, draco::DT_FLOAT32);
    const float p[2][3] = {{0, 0, 0}, {1, 1, 1}};
    for (uint32_t i = 0; i < 2; ++i) builder.SetAttributeValueForPoint(att, draco::PointIndex(i), p[i]);
    std::unique_ptr<draco::PointCloud> cloud = builder.Finalize(false);
    draco::Encoder encoder;
    draco::EncoderBuffer buffer;
    EXPECT_TRUE(encoder.EncodePointCloudToBuffer(*cloud, &buffer).ok());
    return std::vector<uint8_t>(buffer.data(), buffer.data() + buffer.size());
}

std::string DracoPrimitive(int view, const std::string& attributes, const std::string& own = "") {
    return R"({"attributes":{)" + own + R"(},"extensions":{"KHR_draco_mesh_compression":{"bufferView":)" +
           std::to_string(view) + R"(,"attributes":{)" + attributes + "}}}}";
}

}  // namespace

TEST(ImportDraco, DecodesFacesAndConvertsEveryAttribute) {
    ScratchFolder dir;
    const Encoded e = EncodeQuad();
    GlbFixture glb;
    const int view = glb.AddView(glb.Append(e.bytes), e.bytes.size());
    const int unrelated = glb.AddData(std::vector<float>{9, 9, 9}, kFloat, "VEC3");
    const std::string names = R"("POSITION":)" + std::to_string(e.position) + R"(,"COLOR_0":)" +
                              std::to_string(e.color) + R"(,"JOINTS_0":)" + std::to_string(e.joints) +
                              R"(,"TEXCOORD_0":)" + std::to_string(e.uv) + R"(,"WEIGHTS_0":)" +
                              std::to_string(e.weights) + R"(,"NORMAL":99)";
    auto scene = Import(dir, glb.Build(R"("meshes":[{"primitives":[)" +
                                       DracoPrimitive(view, names, R"("POSITION":)" + std::to_string(unrelated)) +
                                       R"(]}],"nodes":[{"mesh":0}])"));
    ASSERT_TRUE(scene && scene->root);
    const MeshInstance* mi = scene->root->geometry->meshInstances[0];
    ASSERT_TRUE(mi->vertices && mi->indices);
    const VertexData& v = *mi->vertices;
    ASSERT_EQ(mi->indices->size(), 6u);
    EXPECT_FALSE(mi->compressed.has_value());
    EXPECT_TRUE(v.normals.empty());  // no attribute with that id
    const size_t points = v.positions.size() / 3;
    ASSERT_EQ(v.colors.size(), points * 4);
    ASSERT_EQ(v.joints.size(), points * 4);
    ASSERT_EQ(v.texCoords[0].size(), points * 2);
    ASSERT_EQ(v.weights.size(), points * 4);
    for (size_t corner = 0; corner < 6; ++corner) {
        const uint32_t p = (*mi->indices)[corner];
        ASSERT_LT(p, points);
        const float* expected = kCorners[corner / 3][corner % 3];
        for (int c = 0; c < 3; ++c) EXPECT_EQ(v.positions[p * 3 + c], expected[c]) << corner;
        // Colour attributes are normalised by their type: 255 -> 1.
        EXPECT_EQ(v.colors[p * 4], expected[0]);
        EXPECT_EQ(v.joints[p * 4 + 3], 1003);
        // Flagged normalised INT16: 32767 -> 1, -32768 clamps to -1.
        EXPECT_EQ(v.texCoords[0][p * 2], expected[0]);
        EXPECT_EQ(v.texCoords[0][p * 2 + 1], -1.0f);
        EXPECT_EQ(v.weights[p * 4], 1.0f);
    }
}

TEST(ImportDraco, UndecodableDataAndPointCloudsLeaveNoVertices) {
    ScratchFolder dir;
    const std::vector<uint8_t> garbage = {'D', 'R', 'A', 'C', 'O', 2, 2, 1, 1, 0, 0, 0};
    const std::vector<uint8_t> cloud = EncodePointCloud();
    GlbFixture glb;
    const int bad = glb.AddView(glb.Append(garbage), garbage.size());
    const int points = glb.AddView(glb.Append(cloud), cloud.size());
    const int pos = glb.AddData(std::vector<float>(9, 0.0f), kFloat, "VEC3");
    auto scene = Import(dir, glb.Build(R"("meshes":[{"primitives":[)" + DracoPrimitive(bad, R"("POSITION":0)") + "," +
                                       DracoPrimitive(points, R"("POSITION":0)") + "," +
                                       DracoPrimitive(-1, "", R"("POSITION":)" + std::to_string(pos)) +
                                       R"(]}],"nodes":[{"mesh":0}])"));
    ASSERT_TRUE(scene && scene->root);
    const auto& instances = scene->root->geometry->meshInstances;
    ASSERT_EQ(instances.size(), 3u);
    EXPECT_EQ(instances[0]->vertices, nullptr);
    EXPECT_EQ(instances[1]->vertices, nullptr);
    // A negative view means the accessors are read instead.
    ASSERT_TRUE(instances[2]->vertices);
    EXPECT_EQ(instances[2]->vertices->positions.size(), 9u);
}

TEST(ImportDraco, DataOutsideTheFirstBufferFallsBackToTheAccessors) {
    ScratchFolder dir;
    const Encoded e = EncodeQuad();
    GlbFixture glb;
    const size_t at = glb.Append(e.bytes);
    const int view = glb.AddView(at, e.bytes.size());
    const int pos = glb.AddData(std::vector<float>{0, 0, 0, 1, 0, 0, 0, 1, 0}, kFloat, "VEC3");
    std::string json = glb.Json(R"("meshes":[{"primitives":[)" +
                                DracoPrimitive(view, R"("POSITION":)" + std::to_string(e.position),
                                               R"("POSITION":)" + std::to_string(pos)) +
                                R"(]}],"nodes":[{"mesh":0}])");
    // Move the compressed view to a second buffer; the decoder is then not used.
    const std::string first = R"({"buffer":0,"byteOffset":)" + std::to_string(at) + ",";
    const size_t found = json.find(first);
    ASSERT_NE(found, std::string::npos);
    json.replace(found, first.size(), R"({"buffer":1,"byteOffset":)" + std::to_string(at) + ",");
    auto scene = Import(dir, MakeGlb(json, glb.Binary()));
    ASSERT_TRUE(scene && scene->root);
    const MeshInstance* mi = scene->root->geometry->meshInstances[0];
    ASSERT_TRUE(mi->vertices);
    EXPECT_EQ(mi->vertices->positions, (std::vector<float>{0, 0, 0, 1, 0, 0, 0, 1, 0}));
    EXPECT_EQ(mi->indices, nullptr);
}
