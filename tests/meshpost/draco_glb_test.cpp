// A scene unwrapped and compressed as `-u true -C draco` does, written as GLB, checked by the
// Khronos validator and read back through our own loader, which decodes the Draco streams.
#include <gtest/gtest.h>

#include <cmath>
#include <map>
#include <memory>

#include "gltf/glb_writer.h"
#include "gltf/gltf_loader.h"
#include "meshpost/meshpost.h"
#include "test_meshes.h"
#include "write_test_support.h"

TEST(DracoGlb, UnwrappedCompressedSceneValidatesAndReadsBack) {
    Scene scene;
    scene.root = NewNode("root", 0);
    const char* names[] = {"cube", "tube", "morphed"};
    const TestMesh meshes[] = {CubeMesh(), CylinderMesh(20), CubeMesh(2)};
    Geometry* geometries[3];
    VertexData* vd[3];
    for (int i = 0; i < 3; ++i) {
        geometries[i] = NewGeometry(scene, names[i], uint64_t(i));
        vd[i] = New<VertexData>(scene, meshes[i].data);
        NewInstance(scene, *geometries[i], vd[i], meshes[i].indices);
        NewNode(names[i], uint64_t(i + 1), scene.root)->geometry = geometries[i];
    }
    Geometry *cube = geometries[0], *tube = geometries[1], *morphed = geometries[2];
    for (size_t v = 0; v < vd[0]->positions.size() / 3; ++v)
        vd[0]->texCoords[0].insert(vd[0]->texCoords[0].end(), {0.1f * float(v % 7), 0.05f * float(v % 11)});
    morphed->meshInstances[0]->morph = New<Morph>(scene);
    auto* target = New<MorphTarget>(scene, uint32_t(vd[2]->positions.size() / 3));
    target->name = "grow";
    for (size_t i = 0; i < target->deltaPositions.size(); ++i) target->deltaPositions[i] = 0.1f * vd[2]->positions[i];
    Compact(*target, 1.1920929e-7f);
    morphed->meshInstances[0]->morph->targets.push_back(target);

    UnwrapScene(scene, 16.0f);
    CompressScene(scene, DracoOptions());
    ASSERT_TRUE(cube->meshInstances[0]->compressed);
    ASSERT_TRUE(tube->meshInstances[0]->compressed);
    ASSERT_FALSE(morphed->meshInstances[0]->compressed);

    std::string path;
    const GlbParts glb = WriteAndRead(scene, ModelOptions(), "meshpost_draco", &path);
    ASSERT_TRUE(glb.ok) << glb.error;
    EXPECT_NE(glb.json.find("\"KHR_draco_mesh_compression\""), std::string::npos);

    std::unique_ptr<Scene> back(LoadGltf(path, ConversionOptions()));
    ASSERT_TRUE(back);
    // The writer names nodes, not meshes: find each geometry through its node.
    std::map<std::string, const Geometry*> byName;
    ASSERT_TRUE(back->root);
    for (const GraphNode* node : back->root->children)
        if (node && node->geometry) byName[node->name] = node->geometry;
    ASSERT_EQ(byName.size(), 3u);

    // Positions within 11 bits over the unit extent, UVs within 10 bits.
    const float pos11 = 1.0f / 2047, uv10 = 1.0f / 1023;
    auto mismatch = [&](const Geometry* before, const char* name, int set, float uvTol) {
        const MeshInstance& a = *before->meshInstances[0];
        const MeshInstance& b = *byName.at(name)->meshInstances.at(0);
        return b.vertices && b.indices && !b.vertices->texCoords[set].empty()
                   ? TriangleMismatch(*a.vertices, *a.indices, *b.vertices, *b.indices, pos11, set, uvTol)
                   : INFINITY;
    };
    EXPECT_LE(mismatch(cube, "cube", 0, uv10 * 0.6f), 1.0);
    EXPECT_LE(mismatch(cube, "cube", 1, uv10), 1.0);  // the lightmap set after set 0
    EXPECT_LE(mismatch(tube, "tube", 0, uv10), 1.0);  // the only set is the lightmap one
    EXPECT_TRUE(byName.at("tube")->meshInstances[0]->vertices->texCoords[1].empty());

    // The uncompressed morph mesh comes back exactly.
    const MeshInstance& morphBack = *byName.at("morphed")->meshInstances.at(0);
    EXPECT_EQ(morphBack.vertices->positions, morphed->meshInstances[0]->vertices->positions);
    EXPECT_EQ(*morphBack.indices, *morphed->meshInstances[0]->indices);
}
