// The node walk on documents built in memory: compensation nodes, ignored keys, values
// from curve nodes, NaN replacement, attributes, the camera's turned local matrix, camera
// and light records.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "fbx/fbx_anim.h"
#include "fbximport/fbx_scene_conversion.h"
#include "import_test_support.h"

namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr float kInf = std::numeric_limits<float>::infinity();

// One walk's state over a test document.
struct Walk {
    explicit Walk(FbxTestScene& doc) : doc(doc) {
        parent.name = "parent";
        parent.id = 1;
    }
    ~Walk() {
        // The walk's nodes belong to `parent`, a stack object: hand them over to the scene.
        scene.root = new GraphNode;
        for (GraphNode* child : parent.children) scene.root->AddChild(child);
        parent.children.clear();
    }
    void Convert(FbxNode* node) { ConvertNode(node, &parent, conversion); }
    GraphNode* Only() const { return parent.children.size() == 1 ? parent.children[0] : nullptr; }

    FbxTestScene& doc;
    Scene scene;
    ConversionOptions options;
    RrsNodeSets rrs;
    SscNodes ssc;
    NodesByName byName;
    GraphNode parent;
    NodeConversion conversion{scene, doc.Scene(), options, rrs, ssc, byName};
};

// -- Compensation nodes and ignored keys --------------------------------------------------

struct SetsCase {
    const char* label;
    bool inherit, ignore;
    Vec3 parentScale;
    // Expected: compensation node made; its position and scale; the node's own values.
    bool ssc;
    Vec3 sscPosition, sscScale;
    Vec3 position, rotation, scale;
};

class ResourceSetsTest : public testing::TestWithParam<SetsCase> {};

TEST_P(ResourceSetsTest, PlaceTheLocalValues) {
    const SetsCase& c = GetParam();
    FbxTestScene doc;
    FbxNode* node = doc.Node("jaw");
    node->LclTranslation.Set({1.0, 2.0, 3.0});
    node->LclRotation.Set({10.0, 20.0, 30.0});
    node->LclScaling.Set({3.0, 3.0, 3.0});

    Walk walk(doc);
    walk.parent.scale = c.parentScale;
    if (c.inherit) walk.rrs.inheritRrsNodes.insert("jaw");
    if (c.ignore) walk.rrs.ignoreNodeKeys.insert("jaw");
    walk.Convert(node);

    GraphNode* top = walk.Only();
    ASSERT_NE(top, nullptr);
    GraphNode* converted = top;
    if (c.ssc) {
        EXPECT_EQ(top->name, "jaw_SSC");
        EXPECT_NE(top->id, node->GetUniqueID());
        ExpectVec3(top->position, c.sscPosition.x, c.sscPosition.y, c.sscPosition.z);
        ExpectVec3(top->scale, c.sscScale.x, c.sscScale.y, c.sscScale.z);
        ExpectVec3(top->rotation, 0, 0, 0);
        EXPECT_EQ(top->worldMatrix, Mat4()) << "a compensation node keeps identity matrices";
        ASSERT_EQ(top->children.size(), 1u);
        converted = top->children[0];
        ASSERT_EQ(walk.ssc.count(node), 1u);
        EXPECT_EQ(walk.ssc.at(node), top);
    } else {
        EXPECT_TRUE(walk.ssc.empty());
    }
    EXPECT_EQ(converted->name, "jaw");
    EXPECT_EQ(converted->id, node->GetUniqueID());
    ExpectVec3(converted->position, c.position.x, c.position.y, c.position.z);
    ExpectVec3(converted->rotation, c.rotation.x, c.rotation.y, c.rotation.z);
    ExpectVec3(converted->scale, c.scale.x, c.scale.y, c.scale.z);
    EXPECT_EQ(walk.byName.at("jaw"), converted);
    EXPECT_EQ(walk.byName.count("jaw_SSC"), 0u);
}

INSTANTIATE_TEST_SUITE_P(
    Sets, ResourceSetsTest,
    testing::Values(
        SetsCase{"Plain", false, false, {2, 4, 8}, false, {}, {}, {1, 2, 3}, {10, 20, 30}, {3, 3, 3}},
        // 1/2, 1/4, 1/8: the compensation undoes the parent's scale; the translation moves up.
        SetsCase{"Inherit", true, false, {2, 4, 8}, true, {1, 2, 3}, {0.5f, 0.25f, 0.125f}, {0, 0, 0}, {10, 20, 30},
                 {3, 3, 3}},
        // Plain float division: 1/0 is infinite, no guard.
        SetsCase{"InheritZeroParentScale", true, false, {0, 1, 2}, true, {1, 2, 3}, {kInf, 1, 0.5f}, {0, 0, 0},
                 {10, 20, 30}, {3, 3, 3}},
        SetsCase{"Ignore", false, true, {2, 4, 8}, false, {}, {}, {0, 0, 0}, {0, 0, 0}, {1, 1, 1}},
        // In both sets: the compensation node is made, and neither node takes a value.
        SetsCase{"Both", true, true, {2, 4, 8}, true, {0, 0, 0}, {1, 1, 1}, {0, 0, 0}, {0, 0, 0}, {1, 1, 1}}),
    [](const testing::TestParamInfo<SetsCase>& info) { return info.param.label; });

TEST(ConvertNode, ChildrenGoBelowTheNodeNotItsCompensation) {
    FbxTestScene doc;
    FbxNode* node = doc.Node("neck");
    FbxNode* child = doc.Node("head", node);
    FbxNode* grandchild = doc.Node("jaw", child);
    child->LclScaling.Set({2.0, 2.0, 2.0});
    grandchild->LclTranslation.Set({0.0, 5.0, 0.0});
    Walk walk(doc);
    walk.rrs.inheritRrsNodes = {"head", "jaw"};
    walk.Convert(node);

    GraphNode* neck = walk.Only();
    ASSERT_NE(neck, nullptr);
    ASSERT_EQ(neck->children.size(), 1u);
    GraphNode* headSsc = neck->children[0];
    ASSERT_EQ(headSsc->children.size(), 1u);
    GraphNode* head = headSsc->children[0];
    ASSERT_EQ(head->children.size(), 1u);
    GraphNode* jawSsc = head->children[0];
    EXPECT_EQ(jawSsc->name, "jaw_SSC");
    // The compensation of jaw undoes the scale of head, its converted parent.
    ExpectVec3(jawSsc->scale, 0.5f, 0.5f, 0.5f);
    ExpectVec3(jawSsc->position, 0, 5, 0);
    EXPECT_EQ(walk.ssc.size(), 2u);
    EXPECT_EQ(walk.byName.size(), 3u);
}

// -- Values read from curve nodes, NaN ------------------------------------------------------

TEST(ConvertNode, ValuesComeFromTheCurveNodeChannelsWhenThereIsOne) {
    FbxTestScene doc;
    FbxNode* node = doc.Node("bone");
    node->LclTranslation.Set({1.0, 2.0, 3.0});
    node->LclRotation.Set({4.0, 5.0, 6.0});
    node->LclScaling.Set({7.0, 8.0, 9.0});

    FbxAnimStack* stack = FbxAnimStack::Create(doc.Scene(), "take");
    FbxAnimLayer* layer = FbxAnimLayer::Create(doc.Scene(), "layer");
    stack->ConnectSrcObject(layer);
    doc.Scene()->SetCurrentAnimationStack(stack);

    // Translation: a full curve node whose channels differ from the property.
    FbxAnimCurveNode* t = node->LclTranslation.GetCurveNode(layer, true);
    ASSERT_NE(t, nullptr);
    t->SetChannelValue(0, 10.0);
    t->SetChannelValue(1, 20.0);
    t->SetChannelValue(2, 30.0);
    // Rotation and scaling: curve nodes with X and Y only; a missing channel gives 0 for a
    // rotation and 1 for a scaling, not the property's value.
    for (FbxProperty* property : {static_cast<FbxProperty*>(&node->LclRotation), static_cast<FbxProperty*>(&node->LclScaling)}) {
        FbxAnimCurveNode* partial = FbxAnimCurveNode::Create(doc.Scene(), "partial");
        ASSERT_TRUE(partial->AddChannel("X", FbxDoubleDT, 40.0));
        ASSERT_TRUE(partial->AddChannel("Y", FbxDoubleDT, 50.0));
        property->ConnectSrcObject(partial);
        layer->ConnectSrcObject(partial);
    }

    Walk walk(doc);
    walk.Convert(node);
    GraphNode* converted = walk.Only();
    ASSERT_NE(converted, nullptr);
    ExpectVec3(converted->position, 10, 20, 30);
    ExpectVec3(converted->rotation, 40, 50, 0);
    ExpectVec3(converted->scale, 40, 50, 1);
}

TEST(ConvertNode, NaNBecomesZeroOrOne) {
    FbxTestScene doc;
    FbxNode* node = doc.Node("bad");
    node->LclTranslation.Set({kNaN, 2.0, kNaN});
    node->LclRotation.Set({1.0, kNaN, 3.0});
    node->LclScaling.Set({kNaN, 2.0, kNaN});
    Walk walk(doc);
    walk.rrs.inheritRrsNodes.insert("bad");
    walk.Convert(node);
    GraphNode* ssc = walk.Only();
    ASSERT_NE(ssc, nullptr);
    ExpectVec3(ssc->position, 0, 2, 0);
    GraphNode* converted = ssc->children[0];
    ExpectVec3(converted->rotation, 1, 0, 3);
    ExpectVec3(converted->scale, 1, 2, 1);
}

// -- Matrices ---------------------------------------------------------------------------------

TEST(ConvertNode, WorldMatrixIsTheGlobalTransform) {
    FbxTestScene doc;
    FbxNode* node = doc.Node("outer");
    node->LclTranslation.Set({0.0, 5.0, 0.0});
    node->LclScaling.Set({2.0, 2.0, 2.0});
    FbxNode* child = doc.Node("inner", node);
    child->LclTranslation.Set({1.0, 0.0, 0.0});
    Walk walk(doc);
    walk.Convert(node);
    GraphNode* outer = walk.Only();
    ASSERT_NE(outer, nullptr);
    GraphNode* inner = outer->children[0];
    // inner sits at 1 along x in a frame scaled by 2 and moved 5 up: (2, 5, 0).
    const float outerWorld[16] = {2, 0, 0, 0, 0, 2, 0, 0, 0, 0, 2, 0, 0, 5, 0, 1};
    const float innerWorld[16] = {2, 0, 0, 0, 0, 2, 0, 0, 0, 0, 2, 0, 2, 5, 0, 1};
    const float innerLocal[16] = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 1, 0, 0, 1};
    ExpectMatrixNear(outer->worldMatrix, outerWorld);
    ExpectMatrixNear(outer->localMatrix, outerWorld);
    ExpectMatrixNear(inner->worldMatrix, innerWorld);
    ExpectMatrixNear(inner->localMatrix, innerLocal);
}

struct CameraMatrixCase {
    const char* label;
    FbxDouble3 translation, rotation, rotationPivot, preRotation;
    float expected[16];
};

class CameraMatrixTest : public testing::TestWithParam<CameraMatrixCase> {};

// The camera's post-rotation gains -90 degrees about y: R_y(-90) takes x to z, keeps y and
// takes z to -x (rows (0,0,1), (0,1,0), (-1,0,0)).
TEST_P(CameraMatrixTest, LocalMatrixTurnsAQuarterAboutY) {
    const CameraMatrixCase& c = GetParam();
    FbxTestScene doc;
    FbxNode* node = doc.Node("cam");
    node->SetNodeAttribute(FbxCamera::Create(doc.Scene(), "camShape"));
    node->LclTranslation.Set(c.translation);
    node->LclRotation.Set(c.rotation);
    node->RotationPivot.Set(c.rotationPivot);
    node->PreRotation.Set(c.preRotation);
    ExpectMatrixNear(ComputeLocalMatrix(node), c.expected);

    // Without --convert-cameras the matrix is the same, and no Camera is made.
    Walk walk(doc);
    walk.Convert(node);
    ASSERT_NE(walk.Only(), nullptr);
    ExpectMatrixNear(walk.Only()->localMatrix, c.expected);
    EXPECT_EQ(walk.Only()->camera, nullptr);
}

INSTANTIATE_TEST_SUITE_P(
    Cameras, CameraMatrixTest,
    testing::Values(
        CameraMatrixCase{"Translated", {1, 2, 3}, {0, 0, 0}, {0, 0, 0}, {0, 0, 0},
                         {0, 0, 1, 0, 0, 1, 0, 0, -1, 0, 0, 0, 1, 2, 3, 1}},
        // R_z(90) after R_y(-90): x -> z -> z, y -> y -> -x, z -> -x -> -y. Around the pivot
        // (0,1,0) the translation is pivot - R pivot = (0,1,0) - (-1,0,0) = (1,1,0).
        CameraMatrixCase{"RotatedAboutPivot", {0, 0, 0}, {0, 0, 90}, {0, 1, 0}, {0, 0, 0},
                         {0, 0, 1, 0, -1, 0, 0, 0, 0, -1, 0, 0, 1, 1, 0, 1}},
        // The pre-rotation of the pivot set enters whatever RotationActive says.
        CameraMatrixCase{"PreRotation", {0, 0, 5}, {0, 0, 0}, {0, 0, 0}, {0, 0, 90},
                         {0, 0, 1, 0, -1, 0, 0, 0, 0, -1, 0, 0, 0, 0, 5, 1}}),
    [](const testing::TestParamInfo<CameraMatrixCase>& info) { return info.param.label; });

// -- Attributes ---------------------------------------------------------------------------------

TEST(ConvertNode, SkeletonRootIsMarked) {
    FbxTestScene doc;
    FbxNode* root = doc.Node("hips");
    FbxSkeleton* rootSkeleton = FbxSkeleton::Create(doc.Scene(), "hipsAttr");
    rootSkeleton->SetSkeletonType(FbxSkeleton::eRoot);
    root->SetNodeAttribute(rootSkeleton);
    FbxNode* limb = doc.Node("spine", root);
    FbxSkeleton* limbSkeleton = FbxSkeleton::Create(doc.Scene(), "spineAttr");
    limbSkeleton->SetSkeletonType(FbxSkeleton::eLimbNode);
    limb->SetNodeAttribute(limbSkeleton);
    Walk walk(doc);
    walk.Convert(root);
    EXPECT_TRUE(walk.byName.at("hips")->isSkeletonRoot);
    EXPECT_FALSE(walk.byName.at("spine")->isSkeletonRoot);
}

struct CameraCase {
    const char* label;
    int apertureMode, projectionType;
    float fov;
    int32_t projection;
};

class ConvertCameraTest : public testing::TestWithParam<CameraCase> {};

TEST_P(ConvertCameraTest, TakesTheRuntimeFields) {
    const CameraCase& c = GetParam();
    FbxTestScene doc;
    FbxNode* node = doc.Node("cam");
    FbxCamera* camera = FbxCamera::Create(doc.Scene(), "camShape");
    node->SetNodeAttribute(camera);
    camera->ApertureMode.Set(c.apertureMode);
    camera->FieldOfView.Set(48.0);
    camera->FieldOfViewY.Set(30.0);
    camera->CameraProjectionType.Set(c.projectionType);
    camera->NearPlane.Set(0.5);
    camera->FarPlane.Set(250.0);
    camera->BackgroundColor.Set({0.25, 0.5, 0.75});

    Walk walk(doc);
    walk.options.convertCameras = true;
    walk.Convert(node);
    ASSERT_NE(walk.Only(), nullptr);
    const Camera* out = walk.Only()->camera;
    ASSERT_NE(out, nullptr);
    EXPECT_FLOAT_EQ(out->fov, c.fov);
    EXPECT_EQ(out->projection, c.projection);
    EXPECT_FLOAT_EQ(out->nearClip, 0.5f);
    EXPECT_FLOAT_EQ(out->farClip, 250.0f);
    ExpectVec3(out->clearColor, 0.25f, 0.5f, 0.75f);
    EXPECT_FLOAT_EQ(out->clearAlpha, 1.0f);
    EXPECT_FLOAT_EQ(out->orthoHeight, 4.0f);
    EXPECT_EQ(out->name, "");
    EXPECT_EQ(out->id, 0u);
}

INSTANTIATE_TEST_SUITE_P(
    Apertures, ConvertCameraTest,
    testing::Values(CameraCase{"HorizontalAndVertical", 0, 0, 30.0f, 0},  // FieldOfViewY
                    CameraCase{"Horizontal", 1, 1, 36.0f, 1},             // FieldOfView * 0.75 = 48 * 0.75
                    CameraCase{"Vertical", 2, 0, 48.0f, 0},               // FieldOfView
                    CameraCase{"FocalLength", 3, 2, 45.0f, 0}),           // no reading: 45; projection 2 is not 1
    [](const testing::TestParamInfo<CameraCase>& info) { return info.param.label; });

struct LightCase {
    const char* label;
    int lightType, decayType;
    bool castLight;
    // Expected.
    int32_t type;
    float inner, outer;
    int32_t falloff;
    float range;
};

class ConvertLightTest : public testing::TestWithParam<LightCase> {};

TEST_P(ConvertLightTest, TakesTheRuntimeFields) {
    const LightCase& c = GetParam();
    FbxTestScene doc;
    FbxNode* node = doc.Node("lamp");
    FbxLight* light = FbxLight::Create(doc.Scene(), "lampShape");
    node->SetNodeAttribute(light);
    light->LightType.Set(c.lightType);
    light->InnerAngle.Set(20.0);
    light->OuterAngle.Set(50.0);
    light->Color.Set({1.0, 0.5, 0.25});
    light->Intensity.Set(250.0);
    light->CastShadows.Set(true);
    light->CastLightOnObject.Set(c.castLight);
    light->DecayType.Set(c.decayType);
    light->FarAttenuationEnd.Set(42.0);

    Walk walk(doc);
    walk.options.convertLights = true;
    walk.Convert(node);
    ASSERT_NE(walk.Only(), nullptr);
    const Light* out = walk.Only()->light;
    ASSERT_NE(out, nullptr);
    EXPECT_EQ(out->type, c.type);
    EXPECT_FLOAT_EQ(out->innerConeAngle, c.inner);
    EXPECT_FLOAT_EQ(out->outerConeAngle, c.outer);
    ExpectVec3(out->color, 1.0f, 0.5f, 0.25f);
    EXPECT_FLOAT_EQ(out->intensity, 2.5f);  // 250 * 0.01
    EXPECT_TRUE(out->castShadows);
    EXPECT_EQ(out->enabled, c.castLight);
    EXPECT_EQ(out->falloffMode, c.falloff);
    EXPECT_FLOAT_EQ(out->range, c.range);
}

constexpr float kDefaultOuter = 0.7853982f;  // the record's own default, pi/4

INSTANTIATE_TEST_SUITE_P(
    Types, ConvertLightTest,
    testing::Values(
        // FBX point 0 is runtime point 1; linear decay (1) is falloff 0, with the range read.
        LightCase{"Point", 0, 1, true, 1, 0.0f, kDefaultOuter, 0, 42.0f},
        LightCase{"Directional", 1, 2, true, 0, 0.0f, kDefaultOuter, 1, 42.0f},
        // Spot angles in the file's degrees, unconverted.
        LightCase{"Spot", 2, 0, false, 2, 20.0f, 50.0f, 1, 42.0f},
        LightCase{"Area", 3, 3, true, 0, 0.0f, kDefaultOuter, 1, 42.0f}),
    [](const testing::TestParamInfo<LightCase>& info) { return info.param.label; });

TEST(ConvertNode, CamerasAndLightsOnlyOnRequest) {
    FbxTestScene doc;
    FbxNode* cam = doc.Node("cam");
    cam->SetNodeAttribute(FbxCamera::Create(doc.Scene(), "camShape"));
    FbxNode* lamp = doc.Node("lamp");
    lamp->SetNodeAttribute(FbxLight::Create(doc.Scene(), "lampShape"));
    Walk walk(doc);
    walk.options.convertLights = true;
    walk.Convert(cam);
    walk.Convert(lamp);
    EXPECT_EQ(walk.byName.at("cam")->camera, nullptr);
    EXPECT_NE(walk.byName.at("lamp")->light, nullptr);
}

}  // namespace
