// The node walk on documents built in memory: compensation nodes, ignored keys, values
// from curve nodes, NaN, the camera's turned local matrix, camera and light records.
#include <gtest/gtest.h>

#include <limits>

#include "fbx/fbx_anim.h"
#include "fbximport/fbx_scene_conversion.h"
#include "import_test_support.h"

namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr float kInf = std::numeric_limits<float>::infinity();

// One walk's state below a parent GraphNode that the scene frees at the end.
struct Walk {
    explicit Walk(FbxTestScene& document) : doc(document) {
        scene.root = new GraphNode;
        parent = new GraphNode;
        scene.root->AddChild(parent);
    }
    GraphNode* Convert(FbxNode* node) {
        ConvertNode(node, parent, conversion);
        return parent->children.back();
    }
    FbxTestScene& doc;
    Scene scene;
    GraphNode* parent;
    ConversionOptions options;
    RrsNodeSets rrs;
    SscNodes ssc;
    NodesByName byName;
    NodeConversion conversion{scene, doc.Scene(), options, rrs, ssc, byName};
};

struct SetsCase {
    const char* label;
    bool inherit, ignore;
    Vec3 parentScale;
    bool ssc;  // expected: a compensation node, with this position and scale
    Vec3 sscPosition, sscScale;
    Vec3 position, rotation, scale;  // expected on the node itself
};

class ResourceSetsTest : public testing::TestWithParam<SetsCase> {};

TEST_P(ResourceSetsTest, PlaceTheLocalValues) {
    const SetsCase& c = GetParam();
    FbxTestScene doc;
    FbxNode* node = doc.Node("jaw");
    node->LclTranslation.Set({1.0, 2.0, 3.0});
    node->LclRotation.Set({10.0, 20.0, 30.0});
    node->LclScaling.Set({3.0, 3.0, 3.0});
    doc.Node("tip", node);
    Walk walk(doc);
    walk.parent->scale = c.parentScale;
    if (c.inherit) walk.rrs.inheritRrsNodes.insert("jaw");
    if (c.ignore) walk.rrs.ignoreNodeKeys.insert("jaw");

    GraphNode* top = walk.Convert(node);
    GraphNode* converted = c.ssc ? top->children.at(0) : top;
    if (c.ssc) {
        EXPECT_EQ(top->name, "jaw_SSC");
        EXPECT_NE(top->id, node->GetUniqueID());
        ExpectVec3(top->position, c.sscPosition.x, c.sscPosition.y, c.sscPosition.z);
        ExpectVec3(top->scale, c.sscScale.x, c.sscScale.y, c.sscScale.z);
        EXPECT_EQ(top->worldMatrix, Mat4()) << "a compensation node keeps identity matrices";
        EXPECT_EQ(walk.ssc.at(node), top);
        EXPECT_EQ(walk.byName.count("jaw_SSC"), 0u);
    }
    EXPECT_EQ(walk.ssc.size(), c.ssc ? 1u : 0u);
    EXPECT_EQ(converted->name, "jaw");
    EXPECT_EQ(converted->id, node->GetUniqueID());
    ExpectVec3(converted->position, c.position.x, c.position.y, c.position.z);
    ExpectVec3(converted->rotation, c.rotation.x, c.rotation.y, c.rotation.z);
    ExpectVec3(converted->scale, c.scale.x, c.scale.y, c.scale.z);
    EXPECT_EQ(walk.byName.at("jaw"), converted);
    // Children go below the node, never below its compensation node.
    ASSERT_EQ(converted->children.size(), 1u);
    EXPECT_EQ(converted->children[0]->name, "tip");
}

INSTANTIATE_TEST_SUITE_P(
    Sets, ResourceSetsTest,
    testing::Values(
        SetsCase{"Plain", false, false, {2, 4, 8}, false, {}, {}, {1, 2, 3}, {10, 20, 30}, {3, 3, 3}},
        // 1/2, 1/4, 1/8 undo the parent's scale; the translation moves to the compensation.
        SetsCase{"Inherit", true, false, {2, 4, 8}, true, {1, 2, 3}, {0.5f, 0.25f, 0.125f}, {0, 0, 0}, {10, 20, 30},
                 {3, 3, 3}},
        // Plain float division: 1/0 is infinite.
        SetsCase{"InheritZeroParentScale", true, false, {0, 1, 2}, true, {1, 2, 3}, {kInf, 1, 0.5f}, {0, 0, 0},
                 {10, 20, 30}, {3, 3, 3}},
        SetsCase{"Ignore", false, true, {2, 4, 8}, false, {}, {}, {0, 0, 0}, {0, 0, 0}, {1, 1, 1}},
        SetsCase{"Both", true, true, {2, 4, 8}, true, {0, 0, 0}, {1, 1, 1}, {0, 0, 0}, {0, 0, 0}, {1, 1, 1}}),
    [](const testing::TestParamInfo<SetsCase>& row) { return row.param.label; });

TEST(ConvertNode, CurveNodeChannelsOverPropertiesAndNaNReplaced) {
    FbxTestScene doc;
    FbxNode* node = doc.Node("bone");
    node->LclTranslation.Set({1.0, 2.0, 3.0});
    node->LclRotation.Set({4.0, 5.0, 6.0});
    node->LclScaling.Set({7.0, 8.0, 9.0});
    FbxNode* bad = doc.Node("bad");
    bad->LclTranslation.Set({kNaN, 2.0, kNaN});
    bad->LclRotation.Set({1.0, kNaN, 3.0});
    bad->LclScaling.Set({kNaN, 2.0, kNaN});

    FbxAnimStack* stack = FbxAnimStack::Create(doc.Scene(), "take");
    FbxAnimLayer* layer = FbxAnimLayer::Create(doc.Scene(), "layer");
    stack->ConnectSrcObject(layer);
    doc.Scene()->SetCurrentAnimationStack(stack);
    FbxAnimCurveNode* t = node->LclTranslation.GetCurveNode(layer, true);
    for (int k = 0; k < 3; ++k) t->SetChannelValue(k, 10.0 * (k + 1));
    // Curve nodes with X and Y only: a missing channel is 0 for a rotation and 1 for a
    // scaling, whatever the property holds.
    for (FbxProperty* property : {static_cast<FbxProperty*>(&node->LclRotation), static_cast<FbxProperty*>(&node->LclScaling)}) {
        FbxAnimCurveNode* partial = FbxAnimCurveNode::Create(doc.Scene(), "partial");
        partial->AddChannel("X", FbxDoubleDT, 40.0);
        partial->AddChannel("Y", FbxDoubleDT, 50.0);
        property->ConnectSrcObject(partial);
        layer->ConnectSrcObject(partial);
    }

    Walk walk(doc);
    GraphNode* converted = walk.Convert(node);
    ExpectVec3(converted->position, 10, 20, 30);
    ExpectVec3(converted->rotation, 40, 50, 0);
    ExpectVec3(converted->scale, 40, 50, 1);
    GraphNode* replaced = walk.Convert(bad);
    ExpectVec3(replaced->position, 0, 2, 0);
    ExpectVec3(replaced->rotation, 1, 0, 3);
    ExpectVec3(replaced->scale, 1, 2, 1);
}

struct CameraMatrixCase {
    const char* label;
    FbxDouble3 translation, rotation, rotationPivot, preRotation;
    float expected[16];
};

class CameraMatrixTest : public testing::TestWithParam<CameraMatrixCase> {};

// The post-rotation gains -90 degrees about y: R_y(-90) takes x to z, keeps y, takes z to -x.
TEST_P(CameraMatrixTest, LocalMatrixTurnsAQuarterAboutY) {
    const CameraMatrixCase& c = GetParam();
    FbxTestScene doc;
    FbxNode* node = doc.Node("cam");
    node->SetNodeAttribute(FbxCamera::Create(doc.Scene(), "camShape"));
    node->LclTranslation.Set(c.translation);
    node->LclRotation.Set(c.rotation);
    node->RotationPivot.Set(c.rotationPivot);
    node->PreRotation.Set(c.preRotation);
    // Without --convert-cameras the matrix is the same, and no Camera is made.
    Walk walk(doc);
    GraphNode* converted = walk.Convert(node);
    ExpectMatrixNear(converted->localMatrix, c.expected);
    EXPECT_EQ(converted->camera, nullptr);
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
        // The pivot set's pre-rotation enters, whatever RotationActive says.
        CameraMatrixCase{"PreRotation", {0, 0, 5}, {0, 0, 0}, {0, 0, 0}, {0, 0, 90},
                         {0, 0, 1, 0, -1, 0, 0, 0, 0, -1, 0, 0, 0, 0, 5, 1}}),
    [](const testing::TestParamInfo<CameraMatrixCase>& row) { return row.param.label; });

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
    const Camera* out = walk.Convert(node)->camera;
    ASSERT_NE(out, nullptr);
    EXPECT_FLOAT_EQ(out->fov, c.fov);
    EXPECT_EQ(out->projection, c.projection);
    EXPECT_FLOAT_EQ(out->nearClip, 0.5f);
    EXPECT_FLOAT_EQ(out->farClip, 250.0f);
    ExpectVec3(out->clearColor, 0.25f, 0.5f, 0.75f);
    EXPECT_FLOAT_EQ(out->orthoHeight, 4.0f);
}

INSTANTIATE_TEST_SUITE_P(
    Apertures, ConvertCameraTest,
    testing::Values(CameraCase{"HorizontalAndVertical", 0, 0, 30.0f, 0},  // FieldOfViewY
                    CameraCase{"Horizontal", 1, 1, 36.0f, 1},             // FieldOfView * 0.75 = 48 * 0.75
                    CameraCase{"Vertical", 2, 0, 48.0f, 0},               // FieldOfView
                    CameraCase{"FocalLength", 3, 2, 45.0f, 0}),           // no reading: 45; projection 2 is not 1
    [](const testing::TestParamInfo<CameraCase>& row) { return row.param.label; });

struct LightCase {
    const char* label;
    int lightType, decayType;
    bool castLight;
    int32_t type;  // expected
    float inner, outer;
    int32_t falloff;
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
    const Light* out = walk.Convert(node)->light;
    ASSERT_NE(out, nullptr);
    EXPECT_EQ(out->type, c.type);
    EXPECT_FLOAT_EQ(out->innerConeAngle, c.inner);
    EXPECT_FLOAT_EQ(out->outerConeAngle, c.outer);
    ExpectVec3(out->color, 1.0f, 0.5f, 0.25f);
    EXPECT_FLOAT_EQ(out->intensity, 2.5f);  // 250 * 0.01
    EXPECT_TRUE(out->castShadows);
    EXPECT_EQ(out->enabled, c.castLight);
    EXPECT_EQ(out->falloffMode, c.falloff);
    EXPECT_FLOAT_EQ(out->range, 42.0f);
}

constexpr float kDefaultOuter = 0.7853982f;  // the record's own default, pi/4

INSTANTIATE_TEST_SUITE_P(
    Types, ConvertLightTest,
    testing::Values(
        // FBX point 0 is runtime point 1; linear decay (1) is falloff 0.
        LightCase{"Point", 0, 1, true, 1, 0.0f, kDefaultOuter, 0},
        LightCase{"Directional", 1, 2, true, 0, 0.0f, kDefaultOuter, 1},
        // Spot angles in the file's degrees, unconverted.
        LightCase{"Spot", 2, 0, false, 2, 20.0f, 50.0f, 1},
        LightCase{"Area", 3, 3, true, 0, 0.0f, kDefaultOuter, 1}),
    [](const testing::TestParamInfo<LightCase>& row) { return row.param.label; });

}  // namespace
