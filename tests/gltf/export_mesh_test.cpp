// Index width, primitives without vertex data, the morph weights of a mesh and bound texts.
#include <gtest/gtest.h>

#include <cfloat>

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
