// Scenes with the odd content a loader can leave: nulls, mismatched array lengths,
// unknown ids, out-of-range enums, NaN and infinite values. Every writer must get
// through them; run under the sanitizers this is where a stray read shows.
#include <gtest/gtest.h>

#include <cfloat>
#include <cstdio>
#include <limits>
#include <random>

#include "expected_file.h"
#include "runtimejson/animation_json.h"
#include "runtimejson/materials_json.h"
#include "runtimejson/metadata_json.h"
#include "runtimejson/model_json.h"
#include "runtimejson/scene_metadata_json.h"
#include "runtimejson/scene_walk.h"
#include "scene_builder.h"

namespace {

using namespace testing_scene;
using namespace testsupport;

class Random {
public:
    explicit Random(uint32_t seed) : engine_(seed) {}
    int Int(int lo, int hi) { return std::uniform_int_distribution<int>(lo, hi)(engine_); }
    bool Chance(int percent) { return Int(0, 99) < percent; }
    float Float() {
        switch (Int(0, 9)) {
            case 0: return std::numeric_limits<float>::quiet_NaN();
            case 1: return -std::numeric_limits<float>::infinity();
            default: return std::uniform_real_distribution<float>(-3.0f, 3.0f)(engine_);
        }
    }
    std::vector<float> Floats(int maxCount) {
        std::vector<float> values(size_t(Int(0, maxCount)));
        for (float& v : values) v = Float();
        return values;
    }

private:
    std::mt19937 engine_;
};

// stray: a texture and a material outside the dictionaries.
void FillScene(SceneBuilder& b, Random& r, Texture* strayTexture, Material* strayMaterial) {
    std::vector<GraphNode*> nodes{b.Root("root", 0)};
    std::vector<Texture*> textures{nullptr, strayTexture};
    for (int i = 0; i < 2; ++i) textures.push_back(b.AddTexture("t", uint64_t(i), "a/b"));
    std::vector<Material*> materials{nullptr, strayMaterial};
    for (int i = 0; i < 2; ++i) {
        Material* m = b.AddMaterial("m", uint64_t(i));
        for (const MaterialSlotInfo& info : kMaterialSlots)
            if (r.Chance(30)) (m->*(info.slot)) = {textures[size_t(r.Int(0, 3))], "r", r.Int(-1, 2), {r.Float(), 1}, {0, r.Float()}, r.Float()};
        materials.push_back(m);
    }
    for (int g = 0; g < 4; ++g) {
        Geometry* geometry = b.AddGeometry("g", uint64_t(g));
        for (int m = r.Int(0, 3); m > 0; --m) {
            MeshBuilder mesh = b.AddMesh(geometry).Type(uint32_t(r.Int(0, 6))).WithMaterial(materials[size_t(r.Int(0, 3))]);
            if (r.Chance(80)) {
                VertexData* v = b.NewVertices();
                v->positions = r.Floats(10);
                v->normals = r.Floats(10);
                v->colors = r.Floats(10);
                v->weights = r.Floats(10);
                for (auto& set : v->texCoords) set = r.Floats(6);
                v->joints.assign(size_t(r.Int(0, 9)), uint16_t(r.Int(0, 65535)));
                mesh.Vertices(v);
            }
            if (r.Chance(50)) mesh.Indices({0, 1, 2, 7});
            if (r.Chance(40)) mesh.WithSkin(b.NewSkin({r.Int(-1, 12), r.Int(0, 12)}));
            if (r.Chance(40)) {
                MorphTarget* target = b.NewTarget("t", r.Floats(0), {});
                const int n = r.Int(0, 4);
                *target = MorphTarget(uint32_t(n));
                for (float& f : target->deltaPositions) f = r.Chance(50) ? r.Float() : 0.0f;
                if (r.Chance(70)) Compact(*target, FLT_EPSILON);
                mesh.WithMorph(b.NewMorph({target, nullptr}));
            }
        }
        if (r.Chance(20)) geometry->meshInstances.push_back(nullptr);
    }
    for (int i = 1; i < 14; ++i) {
        NodeBuilder node = b.Node(nodes[size_t(r.Int(0, i - 1))]).Child("n", uint64_t(r.Int(0, 12)));
        if (r.Chance(50)) node.WithGeometry(b.scene().geometries.items[size_t(r.Int(0, 3))]);
        if (r.Chance(20)) node.WithCamera(Camera());
        if (r.Chance(30)) {
            Light light;
            light.type = r.Int(-1, 4);
            light.range = r.Float();
            node.WithLight(light);
        }
        nodes.push_back(node);
    }
    Animation* animation = b.AddAnimation("a", r.Float());
    for (int t = 0; t < 6; ++t) {
        AnimationTrack track;
        track.nodeId = uint64_t(r.Int(0, 15));
        for (VectorChannel* c : {&track.position, &track.rotation, &track.scale}) {
            c->interpolation = r.Int(0, 3);
            c->times = r.Floats(5);
            c->values.resize(size_t(r.Int(0, 5)));
        }
        animation->tracks.push_back(track);
    }
}

TEST(MalformedScene, EveryWriterGetsThroughAndStreamsMatchTheTrees) {
    const std::string path = ScratchPath("malformed_scene.json");
    for (uint32_t seed = 1; seed <= 150; ++seed) {
        SCOPED_TRACE(seed);
        Texture strayTexture;
        strayTexture.id = seed % 3;  // sometimes the id of a texture in the dictionary
        Material strayMaterial;
        SceneBuilder b;
        Random r(seed);
        FillScene(b, r, &strayTexture, &strayMaterial);
        ::testing::internal::CaptureStdout();
        ASSERT_TRUE(WriteModelJson(path, b.scene(), seed % 2 == 0));
        const std::string tree = JsonWriter(seed % 2 == 0 ? StandardFormat : NoFormat).WriteString(BuildModelJson(b.scene()));
        ::testing::internal::GetCapturedStdout();
        EXPECT_EQ(ReadFileText(path), tree);
        ASSERT_TRUE(WriteAnimationsJson(path, b.scene(), {"a"}, false));
        std::map<uint64_t, std::string> names;
        for (const GraphNode* node : FlattenNodes(b.scene().root).nodes) names[node->id] = node->name;
        EXPECT_EQ(ReadFileText(path), JsonWriter(NoFormat).WriteString(BuildAnimationJson(*b.scene().animations[0], names)));
        // The other files are written straight from these trees.
        BuildMaterialsJson(b.scene());
        BuildMetadataJson(b.scene());
        BuildSceneMetadataJson(b.scene());
    }
    std::remove(path.c_str());
}

}  // namespace
