// The placeholder triangle and its token morph targets, to the bit.
#include <gtest/gtest.h>

#include <bit>
#include <cstdint>

#include "avatar/placeholder.h"

namespace {
constexpr uint32_t kTinyBits = 0x38D1B717;  // the float nearest to 0.0001
const float kTiny = std::bit_cast<float>(kTinyBits);

std::vector<uint32_t> Bits(const std::vector<float>& values) {
    std::vector<uint32_t> bits;
    for (float v : values) bits.push_back(std::bit_cast<uint32_t>(v));
    return bits;
}

// 1.0f and 0.0f by their bit patterns, so the comparison below reads as plain data.
constexpr uint32_t k1 = 0x3F800000, k0 = 0, kT = kTinyBits;
}  // namespace

TEST(PlaceholderTest, GeometryIsOneTinyTriangleWithPositionsAndNormalsOnly) {
    Scene scene;
    Geometry* geometry = MakePlaceholderGeometry(scene);
    EXPECT_EQ(geometry->name, "dummy_mesh");
    EXPECT_EQ(geometry->id, 1u);
    EXPECT_EQ(scene.geometries.items.size(), 0u);  // reached through its node only

    ASSERT_EQ(geometry->meshInstances.size(), 1u);
    const MeshInstance& mesh = *geometry->meshInstances[0];
    EXPECT_EQ(mesh.primitiveType, 3u);
    EXPECT_EQ(mesh.material, nullptr);
    EXPECT_EQ(mesh.skin, nullptr);
    EXPECT_EQ(mesh.morph, nullptr);
    EXPECT_FALSE(mesh.compressed.has_value());
    EXPECT_FALSE(mesh.boundingBox.valid);
    ASSERT_NE(mesh.indices, nullptr);
    EXPECT_EQ(*mesh.indices, (std::vector<uint32_t>{0, 1, 2}));

    ASSERT_NE(mesh.vertices, nullptr);
    const VertexData& v = *mesh.vertices;
    EXPECT_EQ(Bits(v.positions), (std::vector<uint32_t>{k0, k0, k0, kT, k0, k0, kT, kT, kT}));
    EXPECT_EQ(Bits(v.normals), (std::vector<uint32_t>{k0, k0, k1, k0, k0, k1, k0, k0, k1}));
    EXPECT_TRUE(v.colors.empty());
    EXPECT_TRUE(v.joints.empty());
    EXPECT_TRUE(v.weights.empty());
    for (const auto& set : v.texCoords) EXPECT_TRUE(set.empty());

    // Each call makes a geometry of its own: slots must not share vertex data.
    Geometry* other = MakePlaceholderGeometry(scene);
    EXPECT_NE(other, geometry);
    EXPECT_NE(other->meshInstances[0], geometry->meshInstances[0]);
    EXPECT_NE(other->meshInstances[0]->vertices, geometry->meshInstances[0]->vertices);
}

TEST(PlaceholderTest, MorphTargetKeepsAllThreeDeltasAfterCompaction) {
    Scene scene;
    Geometry* geometry = MakePlaceholderGeometry(scene);
    auto* morph = new Morph;
    geometry->meshInstances[0]->morph = morph;  // the scene frees targets reached this way

    MorphTarget* target = MakePlaceholderMorphTarget(scene, "ai_browDown_L");
    morph->targets.push_back(target);
    EXPECT_EQ(target->name, "face_shapes.ai_browDown_L");
    EXPECT_EQ(target->defaultWeight, 0.0f);
    EXPECT_EQ(target->count, 3u);
    EXPECT_EQ(target->sourceVertexCount, 3u);
    EXPECT_EQ(target->indices, (std::vector<uint32_t>{0, 1, 2}));
    // The first delta is (0, 0, t), unlike the mesh's first vertex at the origin.
    EXPECT_EQ(Bits(target->deltaPositions), (std::vector<uint32_t>{k0, k0, kT, kT, k0, k0, kT, kT, kT}));
    EXPECT_EQ(Bits(target->deltaNormals), (std::vector<uint32_t>{k0, k0, k1, k0, k0, k1, k0, k0, k1}));
    // Box of the origin and the three deltas: every component runs from 0 to t.
    ASSERT_TRUE(target->boundingBox.valid);
    EXPECT_EQ(target->boundingBox.min, Vec3(0.0f, 0.0f, 0.0f));
    EXPECT_EQ(target->boundingBox.max, Vec3(kTiny, kTiny, kTiny));

    MorphTarget* empty = MakePlaceholderMorphTarget(scene, "");
    morph->targets.push_back(empty);
    EXPECT_EQ(empty->name, "face_shapes.");
}
