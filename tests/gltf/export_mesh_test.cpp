// Meshes, vertex layout, morph targets, Draco primitives and skins in the written GLB.
#include <gtest/gtest.h>

#include <cfloat>
#include <cmath>
#include <limits>

#include "gltf/glb_builder.h"
#include "gltf/glb_json_write.h"
#include "gltf/glb_mesh_export.h"
#include "gltf/glb_node_export.h"
#include "gltf/glb_vertex_export.h"
#include "write_test_support.h"

namespace {
// A root whose geometry "g" holds one indexed instance of `v`.
MeshInstance* OneInstanceScene(Scene& scene, VertexData* v) {
    scene.root = NewNode("root", 0);
    Geometry* g = NewGeometry(scene, "g", 0);
    scene.root->geometry = g;
    return NewInstance(scene, *g, v, {0, 1, 2});
}

// Runs ExportMeshes over the scene's nodes.
std::vector<GlbMesh> Meshes(const Scene& scene, GlbBuilder& b, std::vector<GlbNode>* nodesOut = nullptr) {
    std::vector<GlbNode> nodes = ExportNodes(scene.root);
    std::vector<GlbMesh> meshes;
    std::vector<GlbSkin> skins;
    ExportMeshes(nodes, b, meshes, skins);
    if (nodesOut) *nodesOut = nodes;
    return meshes;
}

TEST(GlbMeshExport, IndicesSwitchToU32AtLargestIndex65536) {
    GlbBuilder b;
    int32_t small = ExportIndices(b, {0, 65535, 7});
    int32_t large = ExportIndices(b, {0, 65536, 7});
    EXPECT_EQ(b.accessors[size_t(small)].format.componentType, 5123u);
    EXPECT_EQ(b.accessors[size_t(large)].format.componentType, 5125u);
    ASSERT_EQ(b.bufferViews.size(), 2u);  // 6 bytes, padded to 8, then 12
    EXPECT_EQ(b.bufferViews[1].byteOffset, 8u);
    EXPECT_EQ(b.bufferViews[1].byteLength, 12u);
    EXPECT_EQ(b.bufferViews[1].target, 0u);
    std::vector<uint8_t> expected;
    PutBytes<uint16_t>(expected, {0, 65535, 7});
    PadTo4(expected);
    PutBytes<uint32_t>(expected, {0, 65536, 7});
    EXPECT_EQ(b.data, expected);
}

TEST(GlbMeshExport, InterleavedLayoutOfEveryStream) {
    VertexData v;
    v.positions = {1, 2, 3, 4, 5, 6};
    v.normals = {0, 0, 1, 0, 1, 0};
    const float nan = std::numeric_limits<float>::quiet_NaN();
    v.colors = {0.5f, 1.2f, -0.1f, 1.0f, nan, 0.0f, 0.999f, 0.2f};
    v.joints = {0, 1, 2, 300, 3, 4, 5, 6};  // 300: u16 joints
    v.weights = {0.25f, 0.25f, 0.5f, 0, 1, 0, 0, 0};
    v.texCoords[0] = {0.5f, 0.5f, 1, 0};

    GlbBuilder b;
    b.data.resize(4);  // the block starts where the data ends
    std::map<std::string, int32_t> attributes = ExportVertexData(b, v);

    ASSERT_EQ(b.bufferViews.size(), 1u);
    const GlbBufferView& view = b.bufferViews[0];
    EXPECT_EQ(view.byteOffset, 4u);
    EXPECT_EQ(view.byteStride, 60u);  // 12 + 12 + 4 + 8 + 16 + 8
    EXPECT_EQ(view.byteLength, 120u);
    EXPECT_EQ(view.target, 34962u);

    struct Expect {
        const char* name;
        uint32_t offset, componentType, components;
        bool normalized, bounds;
    };
    const Expect table[] = {{"POSITION", 0, 5126, 3, false, true},  {"NORMAL", 12, 5126, 3, false, true},
                            {"COLOR_0", 24, 5121, 4, true, false},  {"JOINTS_0", 28, 5123, 4, false, false},
                            {"WEIGHTS_0", 36, 5126, 4, false, false}, {"TEXCOORD_0", 52, 5126, 2, false, false}};
    ASSERT_EQ(attributes.size(), 6u);
    int32_t expectedIndex = 0;
    for (const Expect& e : table) {
        SCOPED_TRACE(e.name);
        ASSERT_TRUE(attributes.count(e.name));
        EXPECT_EQ(attributes[e.name], expectedIndex++);  // accessors in stream order
        const GlbAccessor& a = b.accessors[size_t(attributes[e.name])];
        EXPECT_EQ(a.byteOffset, e.offset);
        EXPECT_EQ(a.format.componentType, e.componentType);
        EXPECT_EQ(a.format.components, e.components);
        EXPECT_EQ(a.normalized, e.normalized);
        EXPECT_EQ(a.count, 2u);
        EXPECT_EQ(a.min.empty(), !e.bounds);
    }
    const GlbAccessor& normal = b.accessors[size_t(attributes["NORMAL"])];
    EXPECT_EQ(normal.min, (std::vector<float>{0, 0, 0}));
    EXPECT_EQ(normal.max, (std::vector<float>{0, 1, 1}));

    std::vector<uint8_t> expected(4, 0);
    PutBytes<float>(expected, {1, 2, 3, 0, 0, 1});
    // 0.5 -> 127.5 truncated; above 1 and below 0 clamp.
    PutBytes<uint8_t>(expected, {127, 255, 0, 255});
    PutBytes<uint16_t>(expected, {0, 1, 2, 300});
    PutBytes<float>(expected, {0.25f, 0.25f, 0.5f, 0, 0.5f, 0.5f});
    PutBytes<float>(expected, {4, 5, 6, 0, 1, 0});
    PutBytes<uint8_t>(expected, {0, 0, 254, 51});  // NaN gives 0
    PutBytes<uint16_t>(expected, {3, 4, 5, 6});
    PutBytes<float>(expected, {1, 0, 0, 0, 1, 0});
    EXPECT_EQ(b.data, expected);
}

TEST(GlbMeshExport, JointsBelow256AreBytesAndColoursOfThreeFloatsFillFourByteSlots) {
    VertexData joints;  // streams rounded to 4 bytes: 12 + 4 + 8
    joints.positions = {1, 2, 3};
    joints.joints = {255, 0, 1, 2};
    joints.texCoords[5] = {0.25f, 0.75f};
    GlbBuilder b;
    std::map<std::string, int32_t> attributes = ExportVertexData(b, joints);
    EXPECT_EQ(b.bufferViews[0].byteStride, 24u);
    EXPECT_EQ(b.accessors[size_t(attributes["JOINTS_0"])].format.componentType, 5121u);
    EXPECT_FALSE(b.accessors[size_t(attributes["JOINTS_0"])].normalized);
    EXPECT_EQ(b.accessors[size_t(attributes["TEXCOORD_5"])].byteOffset, 16u);
    std::vector<uint8_t> expected;
    PutBytes<float>(expected, {1, 2, 3});
    PutBytes<uint8_t>(expected, {255, 0, 1, 2});
    PutBytes<float>(expected, {0.25f, 0.75f});
    EXPECT_EQ(b.data, expected);

    // Colours are kept as read; three per vertex still go out as four bytes per vertex,
    // taken in order, and the slots past the end of the data stay zero.
    VertexData colours;
    colours.positions = {0, 0, 0, 1, 0, 0};
    colours.colors = {1, 0, 0, 0, 1, 0};
    b.data.clear();
    ExportVertexData(b, colours);
    expected.clear();
    PutBytes<float>(expected, {0, 0, 0});
    PutBytes<uint8_t>(expected, {255, 0, 0, 0});
    PutBytes<float>(expected, {1, 0, 0});
    PutBytes<uint8_t>(expected, {255, 0, 0, 0});
    EXPECT_EQ(b.data, expected);
}

TEST(GlbMeshExport, InstanceWithoutVertexDataKeepsItsPrimitive) {
    // A Draco stream that failed to decode leaves an instance without vertex data.
    Scene scene;
    OneInstanceScene(scene, nullptr);
    NewInstance(scene, *scene.root->geometry, Triangle(scene), {0, 1, 2});
    GlbBuilder b;
    std::vector<GlbMesh> meshes = Meshes(scene, b);
    ASSERT_EQ(meshes.size(), 1u);
    ASSERT_EQ(meshes[0].primitives.size(), 2u);
    const GlbAccessor& empty = b.accessors[size_t(meshes[0].primitives[0].attributes.at("POSITION"))];
    const GlbAccessor& full = b.accessors[size_t(meshes[0].primitives[1].attributes.at("POSITION"))];
    EXPECT_EQ(empty.count, 0u);
    EXPECT_TRUE(empty.min.empty());
    EXPECT_EQ(full.count, 3u);
    EXPECT_EQ(meshes[0].primitives[1].indices, 2);  // the index list is not shared: a new block
}

TEST(GlbJson, BoundTextHasTenSignificantDigits) {
    const std::pair<float, const char*> rows[] = {{0.1f, "0.1000000015"},   {0.5f, "0.5"},
                                                  {1.23456789012f, "1.234567881"}, {-2.0f, "-2"},
                                                  {1e20f, "1.00000002e+20"}, {1e-7f, "1.000000012e-07"}};
    for (const auto& [value, text] : rows) EXPECT_EQ(FormatBoundValue(value), text);
}

TEST(GlbMeshExport, LastMorphOfAMeshDecidesItsWeightsAndACachedInstanceSetsNone) {
    Scene scene;
    scene.root = NewNode("root", 0);
    GraphNode* other = NewNode("other", 1, scene.root);
    auto target = [&scene](const char* name, float weight) {
        MorphTarget* t = New<MorphTarget>(scene, 3u);
        t->deltaPositions[0] = 1.0f;
        t->name = name;
        t->defaultWeight = weight;
        Compact(*t, FLT_EPSILON);
        return t;
    };
    Geometry* g = NewGeometry(scene, "g", 0);
    VertexData* v = Triangle(scene);
    MeshInstance* first = NewInstance(scene, *g, v, {0, 1, 2});
    first->morph = New<Morph>(scene);
    first->morph->targets = {target("a", 0.5f), target("b", 0.25f)};
    MeshInstance* second = NewInstance(scene, *g, v, {0, 1, 2});
    second->morph = New<Morph>(scene);
    second->morph->targets = {target("c", 0.75f)};
    scene.root->geometry = g;
    // A second geometry made of the first one's morphed instance.
    Geometry* h = NewGeometry(scene, "h", 1);
    h->meshInstances.push_back(first);
    other->geometry = h;

    GlbBuilder b;
    std::vector<GlbNode> nodes;
    std::vector<GlbMesh> meshes = Meshes(scene, b, &nodes);
    ASSERT_EQ(meshes.size(), 2u);
    EXPECT_EQ(meshes[0].weights, (std::vector<float>{0.75f}));
    EXPECT_EQ(meshes[0].targetNames, (std::vector<std::string>{"c"}));
    ASSERT_EQ(meshes[0].primitives.size(), 2u);
    EXPECT_EQ(meshes[0].primitives[0].targets.size(), 2u);
    EXPECT_EQ(meshes[0].primitives[1].targets.size(), 1u);
    // The cached copy brings its targets but the mesh gets no weights from it.
    ASSERT_EQ(meshes[1].primitives.size(), 1u);
    EXPECT_EQ(meshes[1].primitives[0].targets.size(), 2u);
    EXPECT_EQ(meshes[1].primitives[0].targets[1].position, meshes[0].primitives[0].targets[1].position);
    EXPECT_TRUE(meshes[1].weights.empty());
    EXPECT_TRUE(meshes[1].targetNames.empty());
    EXPECT_EQ(nodes[1].mesh, 1);
}

}  // namespace
