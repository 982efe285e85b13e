// The placeholder triangle and its token morph targets, to the bit.
#include <gtest/gtest.h>

#include <bit>

#include "avatar/placeholder.h"

namespace {
std::vector<uint32_t> Bits(const std::vector<float>& values) {
    std::vector<uint32_t> bits;
    for (float v : values) bits.push_back(std::bit_cast<uint32_t>(v));
    return bits;
}
// 0, 1 and the float nearest to 0.0001 by their bit patterns.
constexpr uint32_t k0 = 0, k1 = 0x3F800000, kT = 0x38D1B717;
}  // namespace

TEST(PlaceholderTest, OneTinyTriangleAndTargetsWithThreeDeltas) {
    Scene scene;
    Geometry* geometry = MakePlaceholderGeometry(scene);
    EXPECT_EQ(geometry->name + " " + std::to_string(geometry->id), "dummy_mesh 1");
    EXPECT_EQ(scene.geometries.items.size(), 0u);  // reached through its node only
    ASSERT_EQ(geometry->meshInstances.size(), 1u);
    MeshInstance& mesh = *geometry->meshInstances[0];
    EXPECT_TRUE(mesh.primitiveType == 3 && !mesh.material && !mesh.skin && !mesh.morph && !mesh.compressed);
    EXPECT_FALSE(mesh.boundingBox.valid);
    EXPECT_EQ(*mesh.indices, (std::vector<uint32_t>{0, 1, 2}));
    const VertexData& v = *mesh.vertices;
    EXPECT_EQ(Bits(v.positions), (std::vector<uint32_t>{k0, k0, k0, kT, k0, k0, kT, kT, kT}));
    EXPECT_EQ(Bits(v.normals), (std::vector<uint32_t>{k0, k0, k1, k0, k0, k1, k0, k0, k1}));
    EXPECT_TRUE(v.colors.empty() && v.joints.empty() && v.weights.empty() && v.texCoords[0].empty());
    EXPECT_NE(MakePlaceholderGeometry(scene)->meshInstances[0]->vertices, mesh.vertices);  // one per slot

    MorphTarget* target = MakePlaceholderMorphTarget(scene, "ai_browDown_L");
    EXPECT_EQ(target->name, "face_shapes.ai_browDown_L");
    EXPECT_EQ(target->defaultWeight, 0.0f);
    // Every vertex has a normal delta of 1, far above the threshold, so all three stay.
    EXPECT_TRUE(target->count == 3u && target->sourceVertexCount == 3u);
    EXPECT_EQ(target->indices, (std::vector<uint32_t>{0, 1, 2}));
    // The first delta is (0, 0, t), unlike the mesh's first vertex at the origin.
    EXPECT_EQ(Bits(target->deltaPositions), (std::vector<uint32_t>{k0, k0, kT, kT, k0, k0, kT, kT, kT}));
    EXPECT_EQ(Bits(target->deltaNormals), (std::vector<uint32_t>{k0, k0, k1, k0, k0, k1, k0, k0, k1}));
    // Box of the origin and the deltas: each component from 0 to t.
    const float t = std::bit_cast<float>(kT);
    EXPECT_TRUE(target->boundingBox.valid && target->boundingBox.min == Vec3(0, 0, 0));
    EXPECT_EQ(target->boundingBox.max, Vec3(t, t, t));
}
