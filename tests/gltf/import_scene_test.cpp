// Import of nodes, meshes, morph targets, skins, cameras, lights and animations.
#include <cmath>

#include "read_test_util.h"

using namespace gltftest;
using namespace glbfixture;

namespace {

std::unique_ptr<Scene> ImportMembers(const ScratchFolder& dir, const GlbFixture& glb, const std::string& members) {
    return Import(dir, glb.Build(members));
}

// One mesh of one primitive with only positions.
std::string PositionMesh(int pos) { return R"({"primitives":[{"attributes":{"POSITION":)" + std::to_string(pos) + "}}]}"; }

// 0, 1, 2, ... n - 1.
std::vector<float> Iota(int n) {
    std::vector<float> v(static_cast<size_t>(n));
    for (int i = 0; i < n; ++i) v[size_t(i)] = float(i);
    return v;
}

}  // namespace

TEST(ImportNodes, RootsNamesAndSceneRoot) {
    ScratchFolder dir;
    GlbFixture glb;
    auto none = ImportMembers(dir, glb, "");
    ASSERT_TRUE(none);
    EXPECT_EQ(none->root, nullptr);

    auto single = ImportMembers(dir, glb, R"("nodes":[{"name":"top","children":[1]},{}])");
    ASSERT_TRUE(single && single->root);
    EXPECT_EQ(single->root->name, "top");
    ASSERT_EQ(single->root->children.size(), 1u);
    EXPECT_EQ(single->root->children[0]->name, "node_1");
    EXPECT_EQ(single->root->children[0]->id, 1u);

    // Every parentless node counts, whatever "scenes" says.
    auto several = ImportMembers(dir, glb, R"("scenes":[{"nodes":[0]}],"nodes":[{"children":[2]},{"name":"b"},{}])");
    ASSERT_TRUE(several && several->root);
    EXPECT_EQ(several->root->name, "SceneRoot");
    EXPECT_EQ(several->root->id, 0u);
    ASSERT_EQ(several->root->children.size(), 2u);
    EXPECT_EQ(several->root->children[0]->name, "node_0");
    EXPECT_EQ(several->root->children[1]->name, "b");
    EXPECT_EQ(several->root->children[0]->children[0]->name, "node_2");
}

TEST(ImportNodes, MatrixWinsOverTranslationRotationScale) {
    ScratchFolder dir;
    auto scene = ImportMembers(dir, GlbFixture(), R"("nodes":[
        {"name":"m","matrix":[2,0,0,0, 0,3,0,0, 0,0,4,0, 5,6,7,1],"translation":[9,9,9],"scale":[9,9,9]},
        {"name":"t","translation":[1,2,3],"rotation":[0,0.7071068,0,0.7071068],"scale":[1,2]}])");
    ASSERT_TRUE(scene);
    GraphNode* m = FindNode(scene->root, "m");
    GraphNode* t = FindNode(scene->root, "t");
    ASSERT_TRUE(m && t);
    EXPECT_EQ(m->position, Vec3(5, 6, 7));
    EXPECT_NEAR(m->scale.x, 2.0f, 1e-6f);
    EXPECT_NEAR(m->scale.y, 3.0f, 1e-6f);
    EXPECT_NEAR(m->scale.z, 4.0f, 1e-6f);
    EXPECT_EQ(t->position, Vec3(1, 2, 3));
    EXPECT_NEAR(t->rotation.y, 90.0f, 1e-3f);
    EXPECT_EQ(t->scale, Vec3(1, 1, 1));  // two numbers are not a scale
}

TEST(ImportNodes, MatrixRotationInDegreesAndSkinOfTheLastNode) {
    ScratchFolder dir;
    GlbFixture glb;
    glb.AddData(std::vector<float>(9, 0.0f), kFloat, "VEC3");  // 0: pos
    // A quarter turn about z, columns in file order; a skin on a node without mesh is unused.
    auto scene = ImportMembers(dir, glb,
        R"("meshes":[)" + PositionMesh(0) + R"(],
        "skins":[{"joints":[0]},{"joints":[1]}],
        "nodes":[{"mesh":0,"skin":0,"matrix":[0,1,0,0, -1,0,0,0, 0,0,1,0, 0,0,0,1]},{"mesh":0,"skin":1},{"skin":9}])");
    ASSERT_TRUE(scene && scene->root);
    const GraphNode* turned = scene->root->children[0];
    EXPECT_NEAR(turned->rotation.x, 0.0f, 1e-4f);
    EXPECT_NEAR(turned->rotation.y, 0.0f, 1e-4f);
    EXPECT_NEAR(turned->rotation.z, 90.0f, 1e-4f);
    EXPECT_NEAR(turned->scale.x, 1.0f, 1e-6f);
    // Both nodes share the geometry, which keeps the skin of the node read last.
    const Skin* skin = turned->geometry->meshInstances[0]->skin;
    ASSERT_TRUE(skin);
    EXPECT_EQ(skin->joints, (std::vector<int64_t>{1}));
    EXPECT_EQ(scene->root->children[2]->geometry, nullptr);
}

TEST(ImportNodes, BrokenHierarchiesAreRefused) {
    ScratchFolder dir;
    for (const char* nodes : {R"("nodes":[{"children":[1]},{"children":[0]}])", R"("nodes":[{"children":[0]}])",
                              R"("nodes":[{"children":[1]},{},{"children":[1]}])", R"("nodes":[{"children":[5]}])",
                              R"("nodes":[{"mesh":2}])", R"("nodes":[{"camera":0}])"}) {
        EXPECT_TRUE(ImportRefused(dir, GlbFixture().Build(nodes))) << nodes;
    }
    // A chain deeper than 4096 levels would overflow the recursive walks of the writers.
    for (int depth : {4096, 4097}) {
        std::string chain = R"("nodes":[)";
        for (int i = 0; i + 1 < depth; ++i) chain += R"({"children":[)" + std::to_string(i + 1) + "]},";
        chain += "{}]";
        EXPECT_EQ(ImportRefused(dir, GlbFixture().Build(chain)), depth > 4096) << depth;
    }
}

TEST(ImportMeshes, AttributesIndicesModesAndSharing) {
    ScratchFolder dir;
    GlbFixture glb;
    glb.AddData(std::vector<float>{0, 0, 0, 1, 0, 0, 0, 1, 0}, kFloat, "VEC3");  // 0: pos
    glb.AddData(std::vector<float>{0, 0, 1, 0, 0, 1}, kFloat, "VEC2");  // 1: uv1
    glb.AddData(std::vector<uint8_t>{1, 2, 0, 0, 1, 0, 0, 0, 3, 0, 0, 0}, kUByte, "VEC4");  // 2: joints
    glb.AddData(std::vector<uint16_t>{0, 1, 2, 0}, kUShort, "SCALAR");  // 3: idx
    auto scene = ImportMembers(dir, glb,
        R"("meshes":[{"primitives":[{"attributes":{"POSITION":0,"TEXCOORD_1":1,"JOINTS_0":2,"TANGENT":0},"indices":3,"mode":3},{"attributes":{}},{"attributes":{"POSITION":0},"mode":6}]}],
        "nodes":[{"mesh":0},{"mesh":0}])");
    ASSERT_TRUE(scene && scene->root);
    Geometry* g = scene->root->children[0]->geometry;
    ASSERT_TRUE(g);
    EXPECT_EQ(g, scene->root->children[1]->geometry);
    EXPECT_EQ(g->name, "mesh_0");
    EXPECT_EQ(scene->geometries.Size(), 1u);
    ASSERT_EQ(g->meshInstances.size(), 3u);
    const MeshInstance* a = g->meshInstances[0];
    EXPECT_EQ(a->primitiveType, 2u);
    ASSERT_TRUE(a->vertices && a->indices);
    EXPECT_EQ(*a->indices, (std::vector<uint32_t>{0, 1, 2, 0}));
    EXPECT_EQ(a->vertices->positions.size(), 9u);
    EXPECT_TRUE(a->vertices->texCoords[0].empty());
    EXPECT_EQ(a->vertices->texCoords[1].size(), 6u);
    EXPECT_EQ(a->vertices->joints, (std::vector<uint16_t>{1, 2, 0, 0, 1, 0, 0, 0, 3, 0, 0, 0}));
    EXPECT_TRUE(a->vertices->normals.empty());
    EXPECT_EQ(g->meshInstances[1]->vertices, nullptr);  // no attributes, no vertex data
    EXPECT_EQ(g->meshInstances[2]->primitiveType, 4u);
    EXPECT_EQ(g->meshInstances[2]->indices, nullptr);
}

TEST(ImportMeshes, InconsistentCountsAreRefused) {
    ScratchFolder dir;
    GlbFixture glb;
    glb.AddData(std::vector<float>{0, 0, 0, 1, 0, 0, 0, 1, 0}, kFloat, "VEC3");  // 0: pos
    glb.AddData(std::vector<uint16_t>{0, 1, 3, 0}, kUShort, "SCALAR");  // 1: badIdx
    glb.AddData(std::vector<float>{0, 0, 1, 0, 0, 1}, kFloat, "VEC3");  // 2: twoNormals
    glb.AddData(std::vector<float>{0, 0, 1, 0, 0, 1}, kFloat, "VEC3");  // 3: twoDeltas
    glb.AddData(std::vector<float>{0, 0, 1, 0}, kFloat, "VEC2");  // 4: flat
    const std::string position = R"("POSITION":0)";
    for (const std::string& primitive : std::vector<std::string>{
             R"({"attributes":{)" + position + R"(},"indices":1})",
             R"({"attributes":{)" + position + R"(,"NORMAL":2}})",
             R"({"attributes":{)" + position + R"(},"targets":[{"POSITION":3}]})",
             R"({"attributes":{"POSITION":4}})"}) {
        EXPECT_TRUE(ImportRefused(dir, glb.Build(R"("meshes":[{"primitives":[)" + primitive + R"(]}],"nodes":[{"mesh":0}])")))
            << primitive;
    }
}

TEST(ImportMeshes, MorphTargetsAreCompactedAndNamedByPosition) {
    ScratchFolder dir;
    GlbFixture glb;
    glb.AddData(std::vector<float>(9, 0.0f), kFloat, "VEC3");  // 0: pos
    glb.AddData(std::vector<float>{0, 0, 0, 1e-7f, 0, 0, 0, -0.5f, 0}, kFloat, "VEC3");  // 1: d1
    glb.AddData(std::vector<float>{0, 0, 1, 0, 0, 0, 0, 0, 0}, kFloat, "VEC3");  // 2: n1
    glb.AddData(std::vector<float>{1, 1, 1}, kFloat, "VEC3");  // 3: shortNormals
    auto scene = ImportMembers(dir, glb,
        R"("meshes":[{"name":"m","extras":{"targetNames":["none","first","second"]},"primitives":[{"attributes":{"POSITION":0},"targets":[{"NORMAL":2},{"POSITION":1,"NORMAL":2},{"POSITION":1,"NORMAL":3}]}]}],"nodes":[{"mesh":0}])");
    ASSERT_TRUE(scene && scene->root);
    const Morph* morph = scene->root->geometry->meshInstances[0]->morph;
    ASSERT_TRUE(morph);
    ASSERT_EQ(morph->targets.size(), 2u);  // the first entry has no positions
    const MorphTarget* first = morph->targets[0];
    EXPECT_EQ(first->name, "first");
    EXPECT_EQ(first->sourceVertexCount, 3u);
    // 1e-7 is below FLT_EPSILON; the normal delta alone keeps vertex 0.
    EXPECT_EQ(first->indices, (std::vector<uint32_t>{0, 2}));
    EXPECT_EQ(first->deltaNormals, (std::vector<float>{0, 0, 1, 0, 0, 0}));
    EXPECT_EQ(first->boundingBox.max, Vec3(0, 0, 0));
    EXPECT_EQ(first->boundingBox.min, Vec3(0, -0.5f, 0));
    const MorphTarget* second = morph->targets[1];
    EXPECT_EQ(second->name, "second");
    EXPECT_EQ(second->indices, (std::vector<uint32_t>{2}));
    EXPECT_EQ(second->deltaNormals, (std::vector<float>{0, 0, 0}));  // normals of another count are skipped
}

TEST(ImportObjects, SkinsCamerasAndLights) {
    ScratchFolder dir;
    GlbFixture glb;
    glb.AddData(Iota(32), kFloat, "MAT4");  // 0: ibmAccessor
    glb.AddData(std::vector<float>(9, 0.0f), kFloat, "VEC3");  // 1: pos
    auto scene = ImportMembers(dir, glb,
        R"("skins":[{"inverseBindMatrices":0,"joints":[2,1]},{"joints":[1]}],
        "meshes":[)" + PositionMesh(1) + "," + PositionMesh(1) + R"(],
        "cameras":[{"name":"p","type":"perspective","perspective":{"yfov":0.5,"znear":0.5,"zfar":50,"aspectRatio":2}},
                   {"type":"orthographic","orthographic":{"ymag":3,"xmag":9,"znear":1,"zfar":2}},
                   {"type":"orthographic"}],
        "extensions":{"KHR_lights_punctual":{"lights":[{"name":"sun","type":"spot","intensity":40,"color":[1,0,0],
            "spot":{"innerConeAngle":0.1,"outerConeAngle":0.2}},{"intensity":-2,"range":5}]}},
        "nodes":[{"children":[1,2],"mesh":0,"skin":0,"camera":0},{"camera":1,"extensions":{"KHR_lights_punctual":{"light":0}}},
                 {"camera":2,"mesh":1,"skin":1,"extensions":{"KHR_lights_punctual":{"light":7}}}])");
    ASSERT_TRUE(scene && scene->root);
    const Skin* skin = scene->root->geometry->meshInstances[0]->skin;
    ASSERT_TRUE(skin);
    ASSERT_EQ(skin->inverseBindMatrices.size(), 2u);
    EXPECT_EQ(skin->inverseBindMatrices[1][0], 16.0f);
    EXPECT_EQ(skin->inverseBindMatrices[1][15], 31.0f);
    EXPECT_EQ(skin->joints, (std::vector<int64_t>{2, 1}));
    // Without inverse bind matrices each joint binds with the identity.
    const Skin* identity = scene->root->children[1]->geometry->meshInstances[0]->skin;
    ASSERT_TRUE(identity);
    ASSERT_EQ(identity->inverseBindMatrices.size(), 1u);
    EXPECT_EQ(identity->inverseBindMatrices[0], Mat4());

    const Camera* p = scene->root->camera;
    ASSERT_TRUE(p);
    EXPECT_EQ(p->name, "p");
    EXPECT_EQ(p->projection, 0);
    EXPECT_FLOAT_EQ(p->fov, 28.64789f);
    EXPECT_EQ(p->nearClip, 0.5f);
    const Camera* o = scene->root->children[0]->camera;
    EXPECT_EQ(o->projection, 1);
    EXPECT_EQ(o->orthoHeight, 1.5f);
    EXPECT_EQ(o->farClip, 2.0f);
    const Camera* bare = scene->root->children[1]->camera;
    EXPECT_EQ(bare->projection, 0);  // the orthographic sub-object is missing: defaults stay
    EXPECT_EQ(bare->nearClip, 0.1f);
    EXPECT_EQ(bare->farClip, 1000.0f);
    EXPECT_EQ(bare->fov, 45.0f);

    const Light* spot = scene->root->children[0]->light;
    ASSERT_TRUE(spot);
    EXPECT_EQ(spot->type, 2);
    EXPECT_EQ(spot->intensity, 1.0f);
    EXPECT_EQ(spot->name, "");
    EXPECT_EQ(spot->falloffMode, 1);
    EXPECT_EQ(spot->range, -1.0f);
    EXPECT_EQ(spot->color, Vec3(1, 0, 0));
    EXPECT_EQ(spot->outerConeAngle, 0.2f);
    EXPECT_EQ(scene->root->children[1]->light, nullptr);  // index past the list
    ASSERT_EQ(scene->Owned<Light>().size(), 2u);
    EXPECT_EQ(scene->Owned<Light>()[1]->intensity, 0.0f);
    EXPECT_EQ(scene->Owned<Light>()[1]->range, 5.0f);
}

TEST(ImportObjects, SkinMatricesMustCoverTheJoints) {
    ScratchFolder dir;
    GlbFixture glb;
    std::vector<float> two(32, 0.0f);
    two[16] = 7.0f;
    glb.AddData(two, kFloat, "MAT4");  // 0: ibm
    glb.AddData(std::vector<float>(9, 0.0f), kFloat, "VEC3");  // 1: pos
    const std::string mesh = R"("meshes":[)" + PositionMesh(1) + "],";
    // More matrices than joints is valid glTF: every whole matrix is kept, in file order.
    auto scene = ImportMembers(dir, glb, mesh + R"("nodes":[{"mesh":0,"skin":0}],"skins":[{"joints":[0],"inverseBindMatrices":0}])");
    ASSERT_TRUE(scene && scene->root);
    const Skin* skin = scene->root->geometry->meshInstances[0]->skin;
    ASSERT_TRUE(skin);
    ASSERT_EQ(skin->inverseBindMatrices.size(), 2u);
    EXPECT_EQ(skin->inverseBindMatrices[1][0], 7.0f);
    EXPECT_EQ(skin->joints, (std::vector<int64_t>{0}));
    // Fewer matrices than joints would leave joints without a bind pose.
    EXPECT_TRUE(ImportRefused(dir, glb.Build(R"("nodes":[{},{},{}],"skins":[{"joints":[0,1,2],"inverseBindMatrices":0}])")));
}

TEST(ImportAnimations, ChannelsGroupsAndEmptyTracks) {
    ScratchFolder dir;
    GlbFixture glb;
    glb.AddData(std::vector<float>{0, 1}, kFloat, "SCALAR");  // 0: t2
    glb.AddData(std::vector<float>{1, 2, 3, 4, 5, 6}, kFloat, "VEC3");  // 1: trans
    glb.AddData(Iota(24), kFloat, "VEC4");  // 2: rot
    glb.AddData(std::vector<float>{1, 2, 3, 4, 5, 6}, kFloat, "SCALAR");  // 3: weights
    auto scene = ImportMembers(dir, glb,
        R"("nodes":[{},{},{}],"animations":[{"name":"take","samplers":[
            {"input":0,"output":1,"interpolation":"STEP"},
            {"input":0,"output":2,"interpolation":"CUBICSPLINE"},
            {"input":0,"output":3},
            {"input":-1,"output":1}],
          "channels":[{"sampler":0,"target":{"node":2,"path":"translation"}},
            {"sampler":1,"target":{"node":2,"path":"rotation"}},
            {"sampler":2,"target":{"node":0,"path":"weights"}},
            {"sampler":0,"target":{"node":1,"path":"pointer"}},
            {"sampler":0,"target":{"node":-1,"path":"translation"}},
            {"sampler":3,"target":{"node":1,"path":"scale"}}]},
          {"name":"take"}])");
    ASSERT_TRUE(scene);
    ASSERT_EQ(scene->GetAnimationCount(), 1);
    const Animation* a = scene->GetAnimation(0);
    EXPECT_EQ(a->duration, 0.0f);
    ASSERT_EQ(a->tracks.size(), 2u);  // node 1 got no data and is removed
    const AnimationTrack& w = a->tracks[0];
    EXPECT_EQ(w.nodeId, 0u);
    EXPECT_EQ(w.weights.interpolation, 1);
    ASSERT_EQ(w.weights.values.size(), 2u);  // three weights per key
    EXPECT_EQ(w.weights.values[1], (std::vector<float>{4, 5, 6}));
    const AnimationTrack& n2 = a->tracks[1];
    EXPECT_EQ(n2.nodeId, 2u);
    EXPECT_EQ(n2.position.interpolation, 0);
    ASSERT_EQ(n2.position.values.size(), 2u);
    EXPECT_EQ(n2.position.values[1], Vec3(4, 5, 6));
    EXPECT_EQ(n2.rotationQuat.interpolation, 2);
    ASSERT_EQ(n2.rotationQuat.values.size(), 2u);
    EXPECT_EQ(n2.rotationQuat.inTangents[1], Quat(12, 13, 14, 15));
    EXPECT_EQ(n2.rotationQuat.values[1], Quat(16, 17, 18, 19));
    EXPECT_EQ(n2.rotationQuat.outTangents[1], Quat(20, 21, 22, 23));
    EXPECT_TRUE(n2.rotation.times.empty());
}

TEST(ImportAnimations, CubicVectorsAndLaterChannelsAppend) {
    ScratchFolder dir;
    GlbFixture glb;
    glb.AddData(std::vector<float>{0, 1}, kFloat, "SCALAR");  // 0: t2
    glb.AddData(std::vector<float>{2}, kFloat, "SCALAR");  // 1: t1
    glb.AddData(Iota(18), kFloat, "VEC3");  // 2: translation, 2 keys x (in, value, out) x 3
    glb.AddData(std::vector<float>{1, 1, 1, 2, 2, 2}, kFloat, "VEC3");  // 3: scale2
    glb.AddData(std::vector<float>{3, 3, 3}, kFloat, "VEC3");  // 4: scale1
    auto scene = ImportMembers(dir, glb,
        R"("nodes":[{}],"animations":[{"samplers":[
            {"input":0,"output":2,"interpolation":"CUBICSPLINE"},
            {"input":0,"output":3},
            {"input":1,"output":4,"interpolation":"STEP"}],
          "channels":[{"sampler":0,"target":{"node":0,"path":"translation"}},
            {"sampler":1,"target":{"node":0,"path":"scale"}},
            {"sampler":2,"target":{"node":0,"path":"scale"}}]}])");
    ASSERT_TRUE(scene);
    ASSERT_EQ(scene->GetAnimation(0)->tracks.size(), 1u);
    const AnimationTrack& track = scene->GetAnimation(0)->tracks[0];
    const VectorChannel& t = track.position;
    EXPECT_EQ(t.interpolation, 2);
    ASSERT_EQ(t.values.size(), 2u);
    EXPECT_EQ(t.inTangents[0], Vec3(0, 1, 2));
    EXPECT_EQ(t.values[0], Vec3(3, 4, 5));
    EXPECT_EQ(t.outTangents[0], Vec3(6, 7, 8));
    EXPECT_EQ(t.values[1], Vec3(12, 13, 14));
    // The second scale channel adds its key behind the first two; its interpolation wins.
    const VectorChannel& s = track.scale;
    EXPECT_EQ(s.times, (std::vector<float>{0, 1, 2}));
    ASSERT_EQ(s.values.size(), 3u);
    EXPECT_EQ(s.values[2], Vec3(3, 3, 3));
    EXPECT_EQ(s.interpolation, 0);
    EXPECT_TRUE(s.inTangents.empty());
}

TEST(ImportAnimations, CubicWeightsStopAtTheEndOfTheData) {
    ScratchFolder dir;
    GlbFixture glb;
    glb.AddData(std::vector<float>{0, 1}, kFloat, "SCALAR");  // 0: t2
    glb.AddData(Iota(12), kFloat, "SCALAR");  // 1: weights, 2 keys x 3 runs x 2 weights
    auto scene = ImportMembers(dir, glb,
        R"("nodes":[{}],"animations":[{"samplers":[{"input":0,"output":1,"interpolation":"CUBICSPLINE"}],"channels":[{"sampler":0,"target":{"node":0,"path":"weights"}}]}])");
    ASSERT_TRUE(scene);
    const WeightsChannel& w = scene->GetAnimation(0)->tracks[0].weights;
    ASSERT_EQ(w.values.size(), 2u);
    EXPECT_EQ(w.inTangents[0], (std::vector<float>{0, 1}));
    EXPECT_EQ(w.values[0], (std::vector<float>{2, 3}));
    EXPECT_EQ(w.outTangents[1], (std::vector<float>{10, 11}));
}

TEST(ImportAnimations, MismatchedKeysAndMissingSamplersAreRefused) {
    ScratchFolder dir;
    GlbFixture glb;
    glb.AddData(std::vector<float>{0, 1, 2}, kFloat, "SCALAR");  // 0: t3
    glb.AddData(std::vector<float>{1, 2, 3, 4, 5, 6}, kFloat, "VEC3");  // 1: trans
    glb.AddAccessor(-1, 0, kFloat, 0, "SCALAR");  // 2: none
    const std::string nodes = R"("nodes":[{}],)";
    for (const std::string& animation : std::vector<std::string>{
             R"("animations":[{"samplers":[{"input":0,"output":1}],"channels":[{"sampler":0,"target":{"node":0,"path":"translation"}}]}])",
          R"("animations":[{"samplers":[],"channels":[{"sampler":0,"target":{"node":0,"path":"scale"}}]}])",
          R"("animations":[{"samplers":[{"input":2,"output":1}],"channels":[{"sampler":0,"target":{"node":0,"path":"weights"}}]}])"}) {
        EXPECT_TRUE(ImportRefused(dir, glb.Build(nodes + animation))) << animation;
    }
}

TEST(LoadGltf, RefusalIsOneErrorLineAndNoScene) {
    ScratchFolder dir;
    const std::string path = dir.File("bad.glb");
    ASSERT_TRUE(WriteFile(path, GlbFixture().Build(R"("images":[{"bufferView":0}],"nodes":[{"mesh":0}])")));
    ::testing::internal::CaptureStderr();
    ::testing::internal::CaptureStdout();
    Scene* scene = LoadGltf(path, ConversionOptions());
    const std::string out = ::testing::internal::GetCapturedStdout();
    const std::string err = ::testing::internal::GetCapturedStderr();
    EXPECT_EQ(scene, nullptr);
    EXPECT_EQ(err.rfind("ERROR: '" + path + "': ", 0), 0u) << err;
    EXPECT_EQ(std::count(err.begin(), err.end(), '\n'), 1);
    EXPECT_EQ(out, "");
    EXPECT_FALSE(std::filesystem::exists(path + ".fbm"));  // nothing written for a refused file
}
