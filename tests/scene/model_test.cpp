// Ownership and bookkeeping rules of the scene records.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <memory>

#include "scene/scene.h"

namespace {
struct CountedNode : GraphNode {
    static inline int destroyed = 0;
    ~CountedNode() override { ++destroyed; }
};
}  // namespace

TEST(GraphNodeTest, RemoveChildDestroysSubtreeButNotGeometry) {
    CountedNode::destroyed = 0;
    Geometry geometry;
    auto* root = new CountedNode;
    auto* a = new CountedNode;
    auto* b = new CountedNode;
    auto* grandchild = new CountedNode;
    root->AddChild(a);
    root->AddChild(b);
    a->AddChild(grandchild);
    a->geometry = &geometry;
    grandchild->geometry = &geometry;
    EXPECT_EQ(a->GetParent(), root);

    GraphNode stranger;
    root->RemoveChild(&stranger);  // not a child: nothing happens
    EXPECT_EQ(root->GetChildCount(), 2u);

    root->RemoveChild(a);
    EXPECT_EQ(CountedNode::destroyed, 2);
    ASSERT_EQ(root->GetChildCount(), 1u);
    EXPECT_EQ(root->GetChild(0), b);
    geometry.name = "still alive";  // ASan would flag a freed geometry
    delete root;
    EXPECT_EQ(CountedNode::destroyed, 4);
}

TEST(MorphTargetTest, CompactKeepsStrictlyLargerDeltas) {
    const float eps = 1.1920929e-7f;
    MorphTarget t(5);
    t.deltaPositions = {0, 0, 0, eps, 0, 0, 2, 3, 4, 0, 0, 0, std::nanf(""), 0, 0};
    t.deltaNormals = {0, 0, 0, 0, 0, 0, 0, 0, 0, 0, -1, 0, 0, 0, 0};
    Compact(t, eps);
    EXPECT_EQ(t.count, 2u);
    EXPECT_EQ(t.sourceVertexCount, 5u);
    EXPECT_EQ(t.indices, (std::vector<uint32_t>{2, 3}));
    EXPECT_EQ(t.deltaPositions, (std::vector<float>{2, 3, 4, 0, 0, 0}));
    EXPECT_EQ(t.deltaNormals, (std::vector<float>{0, 0, 0, 0, -1, 0}));
    // The box holds the origin even though every kept delta is positive, and ignores normals.
    EXPECT_EQ(t.boundingBox.min, Vec3(0, 0, 0));
    EXPECT_EQ(t.boundingBox.max, Vec3(2, 3, 4));

    MorphTarget empty(3);
    Compact(empty, eps);
    EXPECT_EQ(empty.count, 0u);
    EXPECT_EQ(empty.sourceVertexCount, 3u);
    EXPECT_TRUE(empty.boundingBox.valid);
    EXPECT_EQ(empty.boundingBox.max, Vec3(0, 0, 0));
}

TEST(ObjectDictionaryTest, DuplicateIdKeepsFirstAndNamesTheNewcomer) {
    ObjectDictionary<Texture*> dict;
    EXPECT_EQ(CurrentDictionary<Texture*>::pointer, &dict);
    auto* first = new Texture;
    first->id = 7;
    first->name = "first";
    auto* second = new Texture;
    second->id = 7;
    second->name = "second";
    auto* other = new Texture;
    other->id = 3;
    testing::internal::CaptureStdout();
    dict.Add(first);
    dict.Add(second);
    dict.Add(other);
    EXPECT_EQ(testing::internal::GetCapturedStdout(),
              "ObjectDictionary::Add : New entry second already occurs in dictionary\n");
    ASSERT_EQ(dict.Size(), 2u);
    EXPECT_EQ(dict[0], first);
    EXPECT_EQ(dict[1], other);
    EXPECT_EQ(dict.Find(7), first);
    EXPECT_EQ(dict.Find(99), nullptr);
    delete second;  // never entered, so still the caller's
}

TEST(AnimationDictionaryTest, DuplicateNameIsReportedWithoutLineEnd) {
    Scene scene;
    EXPECT_EQ(AnimationDictionary::current, &scene);
    auto* a = new Animation;
    a->name = "Walk";
    auto* dup = new Animation;
    dup->name = "Walk";
    testing::internal::CaptureStdout();
    scene.AddAnimation(a);
    scene.AddAnimation(dup);
    EXPECT_EQ(testing::internal::GetCapturedStdout(),
              "AnimationDictionary::AddAnimation : Animation Walk occurs more than once in animation archive");
    EXPECT_EQ(scene.GetAnimationCount(), 1);
    EXPECT_EQ(scene.GetAnimation(0), a);
    delete dup;
}

TEST(AnimationTest, EvaluateHoldsEndsAndInterpolates) {
    std::vector<float> times = {1.0f, 2.0f, 4.0f};
    std::vector<Vec3> values = {Vec3(0, 0, 0), Vec3(10, 0, 0), Vec3(20, 4, 0)};
    EXPECT_EQ(EvaluateChannel<Vec3>(0.0f, {}, {}), Vec3());
    EXPECT_EQ(EvaluateChannel(0.5f, times, values), values[0]);
    EXPECT_EQ(EvaluateChannel(9.0f, times, values), values[2]);
    EXPECT_EQ(EvaluateChannel(2.0f, times, values), values[1]);
    Vec3 mid = EvaluateChannel(3.0f, times, values);
    EXPECT_FLOAT_EQ(mid.x, 15.0f);
    EXPECT_FLOAT_EQ(mid.y, 2.0f);
    EXPECT_EQ(EvaluateChannel(5.0f, std::vector<float>{3.0f}, std::vector<float>{7.0f}), 7.0f);

    EXPECT_EQ(MergeTimes({0.0f, 1.0f, 3.0f}, {1.0f, 2.0f, 3.0f, 4.0f}),
              (std::vector<float>{0.0f, 1.0f, 2.0f, 3.0f, 4.0f}));

    VectorChannel c;
    c.defaultValue = Vec3(1, 1, 1);
    c.values = {Vec3(2, 0, 0)};
    c.inTangents = {Vec3(0, 3, 0)};
    ScaleChannel(c, 0.5f);
    EXPECT_EQ(c.defaultValue, Vec3(0.5f, 0.5f, 0.5f));
    EXPECT_EQ(c.values[0], Vec3(1, 0, 0));
    EXPECT_EQ(c.inTangents[0], Vec3(0, 1.5f, 0));
}

TEST(SceneTest, TearDownOfSharedRecords) {
    // Two geometries sharing vertex data, a morph and a skin, a placeholder geometry that no
    // dictionary holds, a camera on two nodes: the scene frees each record once.
    auto* scene = new Scene;
    auto* vd = scene->Own(std::make_unique<VertexData>());
    auto* morph = scene->Own(std::make_unique<Morph>());
    morph->targets.push_back(scene->Own(std::make_unique<MorphTarget>(1)));
    auto* skin = scene->Own(std::make_unique<Skin>());
    for (uint64_t id = 0; id < 2; ++id) {
        auto* g = new Geometry;
        g->id = id;
        auto* mi = scene->Own(std::make_unique<MeshInstance>());
        mi->vertices = vd;
        mi->morph = morph;
        mi->skin = skin;
        mi->indices = scene->Own(std::make_unique<std::vector<uint32_t>>(3, 0u));
        g->meshInstances.push_back(mi);
        scene->geometries.Add(g);
    }
    auto* placeholder = scene->Own(std::make_unique<Geometry>());
    placeholder->meshInstances.push_back(scene->geometries[0]->meshInstances[0]);
    auto* camera = scene->Own(std::make_unique<Camera>());
    scene->root = new GraphNode;
    scene->root->geometry = scene->geometries[0];
    scene->root->camera = camera;
    scene->root->AddChild(new GraphNode);
    scene->root->children[0]->geometry = placeholder;
    scene->root->children[0]->camera = camera;
    ASSERT_EQ(scene->Owned<MeshInstance>().size(), 2u);
    EXPECT_EQ(scene->Owned<MeshInstance>()[1].get(), scene->geometries[1]->meshInstances[0]);
    delete scene;  // the sanitizer build catches a double free or leak here
}
