// Member reading rules: defaults, enumerations, low 32 bits, first-wins maps, optionals.
#include "read_test_util.h"

using namespace gltftest;

TEST(ReadDocument, OptionalSubObjectsCarryTheirOwnDefaults) {
    const GltfDocument d = ParseDocument(R"({"materials":[{"name":"plain"},
        {"pbrMetallicRoughness":{}, "extensions":{"KHR_materials_ior":{}, "KHR_materials_unlit":{"x":1}}}]})");
    ASSERT_EQ(d.materials.size(), 2u);
    EXPECT_FALSE(d.materials[0].pbrMetallicRoughness.has_value());
    EXPECT_FALSE(d.materials[0].extensions.has_value());
    EXPECT_FLOAT_EQ(d.materials[0].alphaCutoff, 0.5f);
    ASSERT_TRUE(d.materials[1].pbrMetallicRoughness.has_value());
    EXPECT_EQ(d.materials[1].pbrMetallicRoughness->metallicFactor, 1.0f);
    EXPECT_TRUE(d.materials[1].pbrMetallicRoughness->baseColorFactor.empty());
    ASSERT_TRUE(d.materials[1].extensions.has_value());
    EXPECT_TRUE(d.materials[1].extensions->unlit);
    ASSERT_TRUE(d.materials[1].extensions->ior.has_value());
    EXPECT_EQ(d.materials[1].extensions->ior->ior, 1.5f);
    EXPECT_FALSE(d.materials[1].extensions->clearcoat.has_value());
}

TEST(ReadDocument, EnumerationsByTextAndNumber) {
    const GltfDocument d = ParseDocument(R"({
        "samplers":[{"magFilter":9728,"minFilter":9986,"wrapS":33648,"wrapT":12345},
                    {"magFilter":9729,"minFilter":1,"wrapS":33071}],
        "materials":[{"alphaMode":"blend"},{"alphaMode":"MASK"}],
        "accessors":[{"componentType":5123,"type":"MAT3"},{"componentType":5000,"type":"vec3"}],
        "animations":[{"samplers":[{"interpolation":"CUBICSPLINE"},{"interpolation":"cubic"}]}],
        "meshes":[{"primitives":[{"mode":7},{"mode":0},{"mode":6}]}],
        "cameras":[{"type":"orthographic"}]})");
    EXPECT_EQ(d.samplers[0].magFilter, 1);
    EXPECT_EQ(d.samplers[0].minFilter, 4);
    EXPECT_EQ(d.samplers[0].wrapS, 1);
    EXPECT_EQ(d.samplers[0].wrapT, 2);  // unknown number keeps the default
    EXPECT_EQ(d.samplers[1].magFilter, 1);
    EXPECT_EQ(d.samplers[1].minFilter, 5);
    EXPECT_EQ(d.samplers[1].wrapS, 0);
    EXPECT_EQ(d.materials[0].alphaMode, GltfAlphaMode::OPAQUE);  // texts are case-sensitive
    EXPECT_EQ(d.materials[1].alphaMode, GltfAlphaMode::MASK);
    EXPECT_EQ(d.accessors[0].componentType, ComponentType::UNSIGNED_SHORT);
    EXPECT_EQ(d.accessors[0].type, ElementType::MAT3);
    EXPECT_EQ(d.accessors[1].componentType, ComponentType::BYTE);
    EXPECT_EQ(d.accessors[1].type, ElementType::SCALAR);
    EXPECT_EQ(d.animations[0].samplers[0].interpolation, GltfInterpolation::CUBICSPLINE);
    EXPECT_EQ(d.animations[0].samplers[1].interpolation, GltfInterpolation::LINEAR);
    EXPECT_EQ(d.meshes[0].primitives[0].mode, 4);
    EXPECT_EQ(d.meshes[0].primitives[1].mode, 0);
    EXPECT_EQ(d.meshes[0].primitives[2].mode, 6);
    EXPECT_EQ(d.cameras[0].type, 1);
}

TEST(ReadDocument, IntegersTakeTheLowBitsOfTheStorage) {
    // 3.0 is stored as a double whose low 32 bits are zero; 2^32 + 5 keeps 5.
    const GltfDocument d = ParseDocument(R"({"nodes":[{"mesh":3.0,"camera":4294967301,"skin":-2}],
        "accessors":[{"count":"7","byteOffset":4294967297}]})");
    EXPECT_EQ(d.nodes[0].mesh, 0);
    EXPECT_EQ(d.nodes[0].camera, 5);
    EXPECT_EQ(d.nodes[0].skin, -2);
    EXPECT_EQ(d.accessors[0].count, 0u);
    EXPECT_EQ(d.accessors[0].byteOffset, 1u);
}

TEST(ReadDocument, FloatsBoolsAndStrings) {
    const GltfDocument d = ParseDocument(R"({"nodes":[{"rotation":[0,1,2],"translation":[1,2.5,-3],
        "name":"a\u0000b"}], "materials":[{"doubleSided":1,"alphaCutoff":2},{"doubleSided":true}]})");
    EXPECT_EQ(d.nodes[0].rotation, (std::vector<float>{0, 1, 2}));  // three numbers stay three
    EXPECT_EQ(d.nodes[0].translation, (std::vector<float>{1, 2.5f, -3}));
    EXPECT_TRUE(d.nodes[0].scale.empty());
    EXPECT_EQ(d.nodes[0].name, "a");
    EXPECT_FALSE(d.materials[0].doubleSided);
    EXPECT_EQ(d.materials[0].alphaCutoff, 2.0f);
    EXPECT_TRUE(d.materials[1].doubleSided);
}

TEST(ReadDocument, AttributeMapsKeepTheFirstOfANameAndExtrasOnlyTargetNames) {
    const GltfDocument d = ParseDocument(R"({"meshes":[{"primitives":[{
        "attributes":{"TEXCOORD_0":2,"POSITION":1,"POSITION":9,"NORMAL":3},
        "targets":[{"POSITION":4},{"NORMAL":5}],
        "extensions":{"KHR_draco_mesh_compression":{"bufferView":6,"attributes":{"POSITION":0,"POSITION":1}}}}],
        "extras":{"targetNames":["a","b"],"other":1}}, {"extras":{}}, {}]})");
    const GltfPrimitive& p = d.meshes[0].primitives[0];
    ASSERT_EQ(p.attributes.size(), 3u);
    EXPECT_EQ(p.attributes.at("POSITION"), 1);
    EXPECT_EQ(p.attributes.begin()->first, "NORMAL");
    ASSERT_EQ(p.targets.size(), 2u);
    EXPECT_EQ(p.targets[1].at("NORMAL"), 5);
    EXPECT_TRUE(p.extensionsPresent);
    EXPECT_TRUE(p.dracoPresent);
    EXPECT_EQ(p.draco.bufferView, 6);
    EXPECT_EQ(p.draco.attributes.at("POSITION"), 0);
    ASSERT_TRUE(d.meshes[0].targetNames.has_value());
    EXPECT_EQ(*d.meshes[0].targetNames, (std::vector<std::string>{"a", "b"}));
    ASSERT_TRUE(d.meshes[1].targetNames.has_value());
    EXPECT_TRUE(d.meshes[1].targetNames->empty());
    EXPECT_FALSE(d.meshes[2].targetNames.has_value());
}

TEST(ReadDocument, NonObjectRootsGiveAnEmptyDocument) {
    const GltfDocument d = ParseDocument(R"([{"nodes":[{}]}])");
    EXPECT_TRUE(d.nodes.empty());
    EXPECT_EQ(d.scene, -1);
    const GltfDocument wrongShapes = ParseDocument(R"({"nodes":{"a":1},"meshes":[1,"x"]})");
    EXPECT_TRUE(wrongShapes.nodes.empty());
    ASSERT_EQ(wrongShapes.meshes.size(), 2u);  // elements that are not objects keep defaults
    EXPECT_TRUE(wrongShapes.meshes[0].primitives.empty());
}
