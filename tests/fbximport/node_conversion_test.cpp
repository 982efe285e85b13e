// The node walk on documents built in memory: compensation nodes, ignored keys, values
// from curve nodes, NaN, the camera's turned local matrix, camera and light records. The
// case tables and their derivations are in data/node_*.txt and data/camera_matrices.txt.
#include <gtest/gtest.h>

#include <iomanip>
#include <limits>
#include <sstream>

#include "fbximport/fbx_scene_conversion.h"
#include "import_test_support.h"

namespace {

using testsupport::TableRow;

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

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

FbxDouble3 Double3(const std::vector<float>& xyz) { return {xyz.at(0), xyz.at(1), xyz.at(2)}; }

class ResourceSetsTest : public testing::TestWithParam<TableRow> {};

TEST_P(ResourceSetsTest, PlaceTheLocalValues) {
    const TableRow& c = GetParam();
    const bool ssc = c.Int(4) != 0;
    FbxTestScene doc;
    FbxNode* node = doc.Node("jaw");
    node->LclTranslation.Set({1.0, 2.0, 3.0});
    node->LclRotation.Set({10.0, 20.0, 30.0});
    node->LclScaling.Set({3.0, 3.0, 3.0});
    doc.Node("tip", node);
    Walk walk(doc);
    const std::vector<float> parentScale = c.Floats(3);
    walk.parent->scale = {parentScale.at(0), parentScale.at(1), parentScale.at(2)};
    if (c.Int(1)) walk.rrs.inheritRrsNodes.insert("jaw");
    if (c.Int(2)) walk.rrs.ignoreNodeKeys.insert("jaw");

    GraphNode* top = walk.Convert(node);
    GraphNode* converted = ssc ? top->children.at(0) : top;
    if (ssc) {
        EXPECT_EQ(top->name, "jaw_SSC");
        EXPECT_NE(top->id, node->GetUniqueID());
        ExpectVec3(top->position, c.Floats(5));
        ExpectVec3(top->scale, c.Floats(6));
        EXPECT_EQ(top->worldMatrix, Mat4()) << "a compensation node keeps identity matrices";
        EXPECT_EQ(walk.ssc.at(node), top);
        EXPECT_EQ(walk.byName.count("jaw_SSC"), 0u);
    }
    EXPECT_EQ(walk.ssc.size(), ssc ? 1u : 0u);
    EXPECT_EQ(converted->name, "jaw");
    EXPECT_EQ(converted->id, node->GetUniqueID());
    ExpectVec3(converted->position, c.Floats(7));
    ExpectVec3(converted->rotation, c.Floats(8));
    ExpectVec3(converted->scale, c.Floats(9));
    EXPECT_EQ(walk.byName.at("jaw"), converted);
    // Children go below the node, never below its compensation node.
    ASSERT_EQ(converted->children.size(), 1u);
    EXPECT_EQ(converted->children[0]->name, "tip");
}

INSTANTIATE_TEST_SUITE_P(Sets, ResourceSetsTest, testing::ValuesIn(Table("node_values.txt")), RowName);

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

    FbxAnimLayer* layer = doc.AddStack("take");
    doc.Scene()->SetCurrentAnimationStack(doc.Scene()->GetSrcObject<FbxAnimStack>(0));
    FbxAnimCurveNode* t = node->LclTranslation.GetCurveNode(layer, true);
    for (int k = 0; k < 3; ++k) t->SetChannelValue(k, 10.0 * (k + 1));
    // Curve nodes with X and Y only: a missing channel is 0 for a rotation and 1 for a
    // scaling, whatever the property holds.
    for (FbxProperty* property : std::initializer_list<FbxProperty*>{&node->LclRotation, &node->LclScaling}) {
        FbxAnimCurveNode* partial = FbxAnimCurveNode::Create(doc.Scene(), "partial");
        partial->AddChannel("X", FbxDoubleDT, 40.0);
        partial->AddChannel("Y", FbxDoubleDT, 50.0);
        property->ConnectSrcObject(partial);
        layer->ConnectSrcObject(partial);
    }

    Walk walk(doc);
    GraphNode* converted = walk.Convert(node);
    ExpectVec3(converted->position, {10, 20, 30});
    ExpectVec3(converted->rotation, {40, 50, 0});
    ExpectVec3(converted->scale, {40, 50, 1});
    GraphNode* replaced = walk.Convert(bad);
    ExpectVec3(replaced->position, {0, 2, 0});
    ExpectVec3(replaced->rotation, {1, 0, 3});
    ExpectVec3(replaced->scale, {1, 2, 1});
}

class CameraMatrixTest : public testing::TestWithParam<TableRow> {};

TEST_P(CameraMatrixTest, LocalMatrixTurnsAQuarterAboutY) {
    const TableRow& c = GetParam();
    FbxTestScene doc;
    FbxNode* node = doc.Node("cam");
    node->SetNodeAttribute(FbxCamera::Create(doc.Scene(), "camShape"));
    node->LclTranslation.Set(Double3(c.Floats(1)));
    node->LclRotation.Set(Double3(c.Floats(2)));
    node->RotationPivot.Set(Double3(c.Floats(3)));
    node->PreRotation.Set(Double3(c.Floats(4)));
    // Without --convert-cameras the matrix is the same, and no Camera is made.
    Walk walk(doc);
    GraphNode* converted = walk.Convert(node);
    const std::vector<float> expected = c.Floats(5);
    ASSERT_EQ(expected.size(), 16u);
    for (int k = 0; k < 16; ++k) EXPECT_NEAR(converted->localMatrix[k], expected[size_t(k)], 1e-6f) << "element " << k;
    EXPECT_EQ(converted->camera, nullptr);
}

INSTANTIATE_TEST_SUITE_P(Cameras, CameraMatrixTest, testing::ValuesIn(Table("camera_matrices.txt")), RowName);

// The record's fields as text, 7 digits each.
std::string Fields(std::initializer_list<float> values) {
    std::ostringstream text;
    for (float v : values) text << std::setprecision(7) << v << ' ';
    return text.str();
}

class NodeAttributeTest : public testing::TestWithParam<TableRow> {};

TEST_P(NodeAttributeTest, TakesTheRuntimeFields) {
    const TableRow& c = GetParam();
    const std::vector<float> in = c.Floats(2);
    FbxTestScene doc;
    FbxNode* node = doc.Node("n");
    Walk walk(doc);
    walk.options.convertCameras = walk.options.convertLights = true;
    if (c.Text(1) == "camera") {
        FbxCamera* camera = FbxCamera::Create(doc.Scene(), "camShape");
        node->SetNodeAttribute(camera);
        camera->ApertureMode.Set(int(in.at(0)));
        camera->CameraProjectionType.Set(int(in.at(1)));
        camera->FieldOfView.Set(48.0);
        camera->FieldOfViewY.Set(30.0);
        camera->NearPlane.Set(0.5);
        camera->FarPlane.Set(250.0);
        camera->BackgroundColor.Set({0.25, 0.5, 0.75});
        const Camera* r = walk.Convert(node)->camera;
        ASSERT_NE(r, nullptr);
        EXPECT_EQ(Fields({r->fov, float(r->projection), r->nearClip, r->farClip, r->clearColor.x, r->clearColor.y,
                          r->clearColor.z, r->orthoHeight}),
                  c.Text(3) + " ");
        return;
    }
    FbxLight* light = FbxLight::Create(doc.Scene(), "lampShape");
    node->SetNodeAttribute(light);
    light->LightType.Set(int(in.at(0)));
    light->DecayType.Set(int(in.at(1)));
    light->CastLightOnObject.Set(in.at(2) != 0);
    light->InnerAngle.Set(20.0);
    light->OuterAngle.Set(50.0);
    light->Color.Set({1.0, 0.5, 0.25});
    light->Intensity.Set(250.0);
    light->CastShadows.Set(true);
    light->FarAttenuationEnd.Set(42.0);
    const Light* r = walk.Convert(node)->light;
    ASSERT_NE(r, nullptr);
    EXPECT_EQ(Fields({float(r->type), r->innerConeAngle, r->outerConeAngle, float(r->falloffMode), r->color.x,
                      r->color.y, r->color.z, r->intensity, float(r->castShadows), float(r->enabled), r->range}),
              c.Text(3) + " ");
}

INSTANTIATE_TEST_SUITE_P(Attributes, NodeAttributeTest, testing::ValuesIn(Table("node_attributes.txt")), RowName);

}  // namespace
