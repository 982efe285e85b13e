#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

#include "fbx/fbx_anim.h"
#include "fbx/fbx_axis_system.h"
#include "fbx/fbx_document.h"
#include "fbx/fbx_manager.h"
#include "fbx/fbx_node.h"
#include "fbx/fbx_system_unit.h"
#include "xform_test_util.h"

namespace {

constexpr FbxLongLong kSecond = FbxTime::kTicksPerSecond;
constexpr FbxLongLong kFrame = 4704000;  // SetSecondDouble(1 / 30)

struct Key {
    FbxLongLong time;
    float value;
};

struct CurveConvertTest : ::testing::Test {
    FbxManager* manager = FbxManager::Create();
    FbxScene* scene = FbxScene::Create(manager, "My Scene");
    FbxAnimStack* stack = FbxAnimStack::Create(scene, "Take 001");
    FbxAnimLayer* layer = FbxAnimLayer::Create(scene, "Base Layer");
    CurveConvertTest() { stack->ConnectSrcObject(layer); }
    ~CurveConvertTest() override { manager->Destroy(); }

    FbxNode* Child(FbxNode* parent, const char* name) {
        FbxNode* node = FbxNode::Create(scene, name);
        parent->AddChild(node);
        return node;
    }
    FbxAnimCurve* Curve(FbxProperty property, const char* channel, const std::vector<Key>& keys,
                        int interpolation = kFbxInterpolationLinear) {
        FbxAnimCurve* curve = property.GetCurve(layer, property.GetName(), channel, true);
        for (const Key& k : keys) {
            const int i = curve->KeyAdd(FbxTime(k.time));
            curve->KeySetValue(i, k.value);
            curve->KeySetInterpolation(i, interpolation);
            curve->KeySetTangentMode(i, kFbxTangentUser);
        }
        return curve;
    }
    FbxAnimCurve* Find(FbxProperty property, const char* channel) {
        return property.GetCurve(layer, property.GetName(), channel, false);
    }
    static void ExpectKeys(const FbxAnimCurve* curve, const std::vector<Key>& expected, float tolerance = 1e-6f) {
        ASSERT_NE(curve, nullptr);
        ASSERT_EQ(size_t(curve->KeyGetCount()), expected.size());
        for (int i = 0; i < curve->KeyGetCount(); ++i) {
            EXPECT_EQ(curve->KeyGetTime(i).Get(), expected[size_t(i)].time) << "key " << i;
            EXPECT_NEAR(curve->KeyGetValue(i), expected[size_t(i)].value, tolerance) << "key " << i;
        }
    }
};

TEST_F(CurveConvertTest, MatrixFilterResamplesAPivotedTurn) {
    // Rotation pivot (1, 0, 0), z turning linearly from 0 to 90 over a second. Each frame
    // k of 30 turns by 3k degrees, and the pivot term Rp + Rz(a) (-Rp) becomes the
    // translation: (1 - cos a, -sin a, 0).
    FbxNode* node = Child(scene->GetRootNode(), "arm");
    node->RotationPivot.Set(FbxDouble3{1, 0, 0});
    Curve(node->LclRotation, "Z", {{0, 0.0f}, {kSecond, 90.0f}});
    scene->GetRootNode()->ResetPivotSetAndConvertAnimation(30.0, false, true, false);

    std::vector<Key> tx, ty, rz, zero, one;
    for (int k = 0; k <= 30; ++k) {
        const double a = 3.0 * k * kFbxDegreesToRadians;
        const FbxLongLong t = k == 30 ? kSecond : k * kFrame;
        tx.push_back({t, float(1.0 - std::cos(a))});
        ty.push_back({t, float(-std::sin(a))});
        rz.push_back({t, float(3.0 * k)});
        zero.push_back({t, 0.0f});
        one.push_back({t, 1.0f});
    }
    ExpectKeys(Find(node->LclTranslation, "X"), tx);
    ExpectKeys(Find(node->LclTranslation, "Y"), ty);
    ExpectKeys(Find(node->LclTranslation, "Z"), zero);
    ExpectKeys(Find(node->LclRotation, "X"), zero);
    ExpectKeys(Find(node->LclRotation, "Z"), rz, 1e-4f);
    ExpectKeys(Find(node->LclScaling, "Y"), one);
    EXPECT_EQ(Find(node->LclRotation, "Z")->KeyGetInterpolation(7), kFbxInterpolationLinear);
    EXPECT_TRUE(FbxVector4(node->RotationPivot.Get()).IsZero3());
}

TEST_F(CurveConvertTest, MatrixFilterLeavesEqualTransformsAlone) {
    // No pivots: the sets agree, nothing is touched or made.
    FbxNode* plain = Child(scene->GetRootNode(), "plain");
    Curve(plain->LclRotation, "Z", {{0, 10.0f}, {kSecond / 2, 20.0f}}, kFbxInterpolationCubic);
    // A pre-rotation that RotationActive false ignores: the sets differ, but source and
    // target give the same transform, so the keys stay; the missing channels get their
    // single key at the first key time.
    FbxNode* ignored = Child(scene->GetRootNode(), "ignored");
    ignored->PreRotation.Set(FbxDouble3{0, 45, 0});
    ignored->LclTranslation.Set(FbxDouble3{7, 8, 9});
    Curve(ignored->LclRotation, "X", {{kFrame, 5.0f}, {3 * kFrame, 6.0f}}, kFbxInterpolationCubic);
    scene->GetRootNode()->ResetPivotSetAndConvertAnimation(30.0, false, true, false);

    ExpectKeys(Find(plain->LclRotation, "Z"), {{0, 10.0f}, {kSecond / 2, 20.0f}}, 0.0f);
    EXPECT_EQ(Find(plain->LclRotation, "Z")->KeyGetInterpolation(0), kFbxInterpolationCubic);
    EXPECT_EQ(Find(plain->LclTranslation, "X"), nullptr);
    ExpectKeys(Find(ignored->LclRotation, "X"), {{kFrame, 5.0f}, {3 * kFrame, 6.0f}}, 0.0f);
    EXPECT_EQ(Find(ignored->LclRotation, "X")->KeyGetInterpolation(0), kFbxInterpolationCubic);
    ExpectKeys(Find(ignored->LclTranslation, "Y"), {{kFrame, 8.0f}}, 0.0f);
    ExpectKeys(Find(ignored->LclScaling, "Z"), {{kFrame, 1.0f}}, 0.0f);
}

TEST_F(CurveConvertTest, AxisConversionMovesTranslationChannelsAndTurnsRotationKeys) {
    // Z up, front -y: (x, y, z) -> (x, z, -y), C = Rx(-90).
    FbxGlobalSettings& settings = scene->GetGlobalSettings();
    settings.UpAxis.Set(2);
    settings.FrontAxis.Set(1);
    settings.FrontAxisSign.Set(-1);
    FbxNode* hips = Child(scene->GetRootNode(), "hips");
    Curve(hips->LclTranslation, "X", {{0, 1.0f}, {kSecond, 2.0f}});
    Curve(hips->LclTranslation, "Y", {{0, 5.0f}});
    Curve(hips->LclTranslation, "Z", {{0, 0.0f}}, kFbxInterpolationCubic);
    hips->LclTranslation.Set(FbxDouble3{1, 5, 0});
    Curve(hips->LclRotation, "Z", {{0, 0.0f}, {kSecond, 90.0f}});
    FbxNode* spine = Child(hips, "spine");
    Curve(spine->LclTranslation, "Y", {{0, 3.0f}});

    FbxAxisSystem(FbxAxisSystem::eYAxis, FbxAxisSystem::eParityOdd, FbxAxisSystem::eRightHanded)
        .ConvertScene(scene);
    ExpectKeys(Find(hips->LclTranslation, "X"), {{0, 1.0f}, {kSecond, 2.0f}}, 0.0f);
    ExpectKeys(Find(hips->LclTranslation, "Y"), {{0, 0.0f}}, 0.0f);  // old Z
    ExpectKeys(Find(hips->LclTranslation, "Z"), {{0, -5.0f}}, 0.0f);  // minus old Y
    EXPECT_EQ(Find(hips->LclTranslation, "Y")->KeyGetInterpolation(0), kFbxInterpolationCubic);
    // At 0: C itself, Rx(-90). At 1 s: C Rz(90), whose rows (0, 0, -1), (-1, 0, 0),
    // (0, 1, 0) decompose in gimbal lock to (-90, 90, 0).
    ExpectKeys(Find(hips->LclRotation, "X"), {{0, -90.0f}, {kSecond, -90.0f}}, 1e-4f);
    ExpectKeys(Find(hips->LclRotation, "Y"), {{0, 0.0f}, {kSecond, 90.0f}}, 1e-4f);
    ExpectKeys(Find(hips->LclRotation, "Z"), {{0, 0.0f}, {kSecond, 0.0f}}, 1e-4f);
    // The curve nodes' values follow the properties: T (1, 0, -5), R (-90, 0, 0).
    FbxAnimCurveNode* t = hips->LclTranslation.GetCurveNode(layer, false);
    EXPECT_DOUBLE_EQ(t->GetChannelValue("Z", 0.0), -5.0);
    EXPECT_NEAR(hips->LclRotation.GetCurveNode(layer, false)->GetChannelValue("X", 0.0), -90.0, 1e-9);
    ExpectKeys(Find(spine->LclTranslation, "Y"), {{0, 3.0f}}, 0.0f);  // below the root's children
}

TEST_F(CurveConvertTest, UnitConversionScalesTopTranslationAndScalingCurves) {
    scene->GetGlobalSettings().UnitScaleFactor.Set(1.0);
    FbxNode* hips = Child(scene->GetRootNode(), "hips");
    FbxAnimCurve* x = Curve(hips->LclTranslation, "X", {{0, 100.0f}, {kSecond, 300.0f}}, kFbxInterpolationCubic);
    x->KeySetRightDerivative(0, 50.0f);
    x->KeySetTangentMode(0, kFbxTangentUser);
    Curve(hips->LclScaling, "Y", {{0, 2.0f}});
    FbxNode* spine = Child(hips, "spine");
    Curve(spine->LclTranslation, "X", {{0, 100.0f}});

    FbxSystemUnit::m.ConvertScene(scene);
    ExpectKeys(Find(hips->LclTranslation, "X"), {{0, 1.0f}, {kSecond, 3.0f}});
    EXPECT_NEAR(Find(hips->LclTranslation, "X")->KeyGetRightDerivative(0), 0.5f, 1e-6f);
    ExpectKeys(Find(hips->LclScaling, "Y"), {{0, 0.02f}});
    ExpectKeys(Find(spine->LclTranslation, "X"), {{0, 100.0f}}, 0.0f);
}

TEST_F(CurveConvertTest, FiniteTimeEvaluationReadsTheCurves) {
    FbxNode* node = Child(scene->GetRootNode(), "node");
    node->LclTranslation.Set(FbxDouble3{0, 7, 0});
    Curve(node->LclTranslation, "X", {{0, 0.0f}, {kSecond, 10.0f}});
    FbxNode* child = Child(node, "child");
    child->LclTranslation.Set(FbxDouble3{1, 0, 0});
    // Half a second into a linear 0 to 10: x = 5; y keeps the curve node's value 7.
    ExpectVectorNear(child->EvaluateGlobalTransform(FbxTime(kSecond / 2)).GetT(), 6, 7, 0, 1e-6);
    ExpectVectorNear(node->EvaluateGlobalTransform().GetT(), 0, 7, 0);  // the infinite time reads properties
}

TEST(FbxUnwrapTest, WholeTurns) {
    // (angle, previous, result): whole turns until within 180; exactly 180 stays.
    const double cases[][3] = {{350, 0, -10}, {-190, 0, 170}, {180, 0, 180}, {540, 0, -180}, {10, 720, 730}};
    for (const auto& c : cases) EXPECT_DOUBLE_EQ(FbxUnwrapDegrees(c[0], c[1]), c[2]) << c[0] << " near " << c[1];
    const double nan = std::numeric_limits<double>::quiet_NaN();
    EXPECT_TRUE(std::isnan(FbxUnwrapDegrees(nan, 0)));
    EXPECT_EQ(FbxUnwrapDegrees(5, nan), 5.0);
}

}  // namespace
