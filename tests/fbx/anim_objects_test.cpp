// Stacks, layers and curve nodes in a scene: curve lookups by layer, node name and
// channel, curves made on demand, channel values, and blend-shape channel curves.
#include <gtest/gtest.h>

#include "fbx/fbx_anim.h"
#include "fbx/fbx_deformer.h"
#include "fbx/fbx_geometry.h"
#include "fbx/fbx_manager.h"
#include "fbx/fbx_node.h"
#include "fbx/fbx_status.h"

namespace {

class FbxAnimObjects : public ::testing::Test {
protected:
    void SetUp() override {
        manager = FbxManager::Create();
        scene = FbxScene::Create(manager, "scene");
        node = FbxNode::Create(scene, "node");
        node->LclTranslation.Set(FbxDouble3{1, 2, 3});
        FbxAnimStack* stack = FbxAnimStack::Create(scene, "Take 001");
        base = FbxAnimLayer::Create(scene, "Base Layer");
        second = FbxAnimLayer::Create(scene, "Layer 2");
        stack->ConnectSrcObject(base);
        stack->ConnectSrcObject(second);
    }
    void TearDown() override { manager->Destroy(); }

    // A curve node as files give it: named "T", channels d|X, d|Y, d|Z, a source of the
    // property and of the layer.
    FbxAnimCurveNode* FileNode(FbxAnimLayer* layer) {
        FbxAnimCurveNode* fileNode = FbxAnimCurveNode::Create(scene, "T");
        for (const char* axis : {"X", "Y", "Z"}) fileNode->AddChannel(axis, FbxNumberDT, 9.0);
        node->LclTranslation.ConnectSrcObject(fileNode);
        layer->ConnectSrcObject(fileNode);
        return fileNode;
    }

    FbxManager* manager = nullptr;
    FbxScene* scene = nullptr;
    FbxNode* node = nullptr;
    FbxAnimLayer* base = nullptr;
    FbxAnimLayer* second = nullptr;
};

TEST_F(FbxAnimObjects, CurvesAreMadeOnTheAskedLayerWithChannelsFromTheProperty) {
    FbxProperty& translation = node->LclTranslation;
    EXPECT_EQ(translation.GetCurve(base, "Lcl Translation", "Y", false), nullptr);
    EXPECT_EQ(translation.GetCurveNode(false), nullptr);

    FbxAnimCurve* y = translation.GetCurve(base, "Lcl Translation", "Y", true);
    ASSERT_NE(y, nullptr);
    EXPECT_EQ(y->KeyGetCount(), 0);
    EXPECT_EQ(translation.GetCurve(base, "Lcl Translation", "Y", false), y);
    EXPECT_EQ(translation.GetCurve(second, "Lcl Translation", "Y", false), nullptr);

    // Without a layer: the first layer of the scene's first stack.
    FbxAnimCurveNode* made = translation.GetCurveNode(false);
    ASSERT_NE(made, nullptr);
    EXPECT_EQ(made->GetChannelsCount(), 3);
    EXPECT_STREQ(made->GetChannelName(2), "Z");
    EXPECT_EQ(made->GetChannelValue("X", -1.0), 1.0);
    EXPECT_EQ(made->GetChannelValue("Z", -1.0), 3.0);
    EXPECT_EQ(made->GetChannelValue("W", -1.0), -1.0);
    EXPECT_EQ(made->GetCurve(1), y);
    EXPECT_EQ(made->GetCurve(0), nullptr);
}

TEST_F(FbxAnimObjects, TheNodeNameFiltersUnlessItIsThePropertyName) {
    FbxAnimCurveNode* fileNode = FileNode(base);
    FbxAnimCurve* z = fileNode->CreateCurve("T", 2);
    ASSERT_NE(z, nullptr);
    FbxProperty& translation = node->LclTranslation;
    struct Row {
        const char* nodeName;
        const char* channel;
        FbxAnimCurve* expected;
    };
    const Row rows[] = {
        {"Lcl Translation", "Z", z},
        {nullptr, "Z", z},
        {"T", "Z", z},
        {"R", "Z", nullptr},
        {"T", "W", nullptr},
        {"T", "X", nullptr},  // channel without a curve
    };
    for (const Row& row : rows) {
        EXPECT_EQ(translation.GetCurve(base, row.nodeName, row.channel, false), row.expected)
            << (row.nodeName ? row.nodeName : "null") << " " << row.channel;
    }
    // A null channel takes the first one, which gets its curve when asked to.
    FbxAnimCurve* x = translation.GetCurve(base, "Lcl Translation", nullptr, true);
    ASSERT_NE(x, nullptr);
    EXPECT_EQ(fileNode->GetCurve(0), x);
    EXPECT_EQ(fileNode->GetChannelValue(0, 0.0), 9.0);
}

TEST_F(FbxAnimObjects, ShapeChannelCurvesAreFoundOrMadeOnTheLayer) {
    FbxMesh* mesh = FbxMesh::Create(scene, "mesh");
    FbxBlendShape* blendShape = FbxBlendShape::Create(scene, "shapes");
    mesh->ConnectSrcObject(FbxSkin::Create(scene, "skin"));
    mesh->ConnectSrcObject(blendShape);
    FbxBlendShapeChannel* animated = FbxBlendShapeChannel::Create(scene, "smile");
    FbxBlendShapeChannel* still = FbxBlendShapeChannel::Create(scene, "blink");
    blendShape->ConnectSrcObject(animated);
    blendShape->ConnectSrcObject(still);

    FbxAnimCurve* smile = animated->DeformPercent.GetCurve(base, "DeformPercent", nullptr, true);
    ASSERT_NE(smile, nullptr);
    smile->KeySetValue(smile->KeyAdd(FbxTime(0)), 50.0f);

    FbxStatus status(kFbxFailure);
    EXPECT_EQ(mesh->GetShapeChannel(0, 0, base, true, &status), smile);
    EXPECT_EQ(status.GetCode(), kFbxSuccess);

    FbxAnimCurve* blink = mesh->GetShapeChannel(0, 1, second, true, &status);
    ASSERT_NE(blink, nullptr);
    EXPECT_EQ(blink->KeyGetCount(), 0);
    EXPECT_EQ(mesh->GetShapeChannel(0, 1, second, true, &status), blink);
    EXPECT_EQ(mesh->GetShapeChannel(0, 1, base, false, &status), nullptr);

    struct Refusal {
        int blendShape, channel;
        FbxAnimLayer* layer;
        FbxStatusCode code;
    };
    const Refusal refusals[] = {
        {0, 0, nullptr, kFbxFailure},
        {1, 0, base, kFbxIndexOutOfRange},  // the skin does not count as a blend shape
        {-1, 0, base, kFbxIndexOutOfRange},
        {0, 2, base, kFbxIndexOutOfRange},
    };
    for (const Refusal& r : refusals) {
        status.Clear();
        EXPECT_EQ(mesh->GetShapeChannel(r.blendShape, r.channel, r.layer, true, &status), nullptr);
        EXPECT_EQ(status.GetCode(), r.code) << r.blendShape << " " << r.channel;
    }
}

}  // namespace
