#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "fbx/fbx_axis_system.h"
#include "fbx/fbx_deformer.h"
#include "fbx/fbx_document.h"
#include "fbx/fbx_manager.h"
#include "fbx/fbx_node.h"
#include "fbx/fbx_system_unit.h"
#include "xform_test_util.h"

namespace {

const FbxAxisSystem kYUp(FbxAxisSystem::eYAxis, FbxAxisSystem::eParityOdd, FbxAxisSystem::eRightHanded);

struct SceneConvertTest : ::testing::Test {
    FbxManager* manager = FbxManager::Create();
    FbxScene* scene = FbxScene::Create(manager, "My Scene");
    ~SceneConvertTest() override { manager->Destroy(); }

    FbxNode* Child(FbxNode* parent, const char* name, FbxDouble3 t) {
        FbxNode* node = FbxNode::Create(scene, name);
        parent->AddChild(node);
        node->LclTranslation.Set(t);
        return node;
    }
    void SetAxes(int up, int upSign, int front, int frontSign, int coord, int coordSign) {
        FbxGlobalSettings& s = scene->GetGlobalSettings();
        s.UpAxis.Set(up);
        s.UpAxisSign.Set(upSign);
        s.FrontAxis.Set(front);
        s.FrontAxisSign.Set(frontSign);
        s.CoordAxis.Set(coord);
        s.CoordAxisSign.Set(coordSign);
    }
    static void ExpectDouble3Near(const FbxDouble3& v, double x, double y, double z, double tolerance = 1e-12) {
        EXPECT_NEAR(v[0], x, tolerance);
        EXPECT_NEAR(v[1], y, tolerance);
        EXPECT_NEAR(v[2], z, tolerance);
    }
};

TEST_F(SceneConvertTest, ZUpCentimetresBecomeYUpMetres) {
    // Z up, front -y, side x, centimetres. A point (x, y, z) of the file is (x, z, -y)
    // in Y up, so C = Rx(-90), and a metre is 100 of its units.
    SetAxes(2, 1, 1, -1, 0, 1);
    scene->GetGlobalSettings().UnitScaleFactor.Set(1.0);
    scene->GetGlobalSettings().OriginalUnitScaleFactor.Set(2.54);
    FbxNode* hips = Child(scene->GetRootNode(), "hips", {1, 2, 3});
    FbxNode* spine = Child(hips, "spine", {0, 0, 10});
    // Pivot (1, 0, 0) turning by Rz(90): the pivot term is Rp + Rz(90) (-Rp) = (1, -1, 0).
    FbxNode* arm = Child(scene->GetRootNode(), "arm", {0, 0, 0});
    arm->RotationPivot.Set(FbxDouble3{1, 0, 0});
    arm->LclRotation.Set(FbxDouble3{0, 0, 90});
    FbxNode* cameraNode = Child(scene->GetRootNode(), "camera", {0, 0, 0});
    FbxCamera* camera = FbxCamera::Create(scene, "camera");
    cameraNode->SetNodeAttribute(camera);
    camera->NearPlane.Set(10.0);
    camera->FarPlane.Set(4000.0);
    FbxPose* pose = FbxPose::Create(scene, "bind");
    FbxPose::Entry entry;
    entry.node = spine;
    entry.matrix[12] = 100.0;  // global, translation (100, 0, 0)
    pose->entries.push_back(entry);

    kYUp.ConvertScene(scene);
    ExpectDouble3Near(hips->LclTranslation.Get(), 1, 3, -2);
    ExpectDouble3Near(hips->LclRotation.Get(), -90, 0, 0);
    ExpectDouble3Near(spine->LclTranslation.Get(), 0, 0, 10);  // deeper nodes keep their values
    // Rx(-90) Rz(90) has rows (0, 0, -1), (-1, 0, 0), (0, 1, 0): in gimbal lock GetR gives
    // rx = atan2(-m21, m11) = atan2(-1, 0) = -90, ry = atan2(-m02, 0) = 90, rz = 0. The new
    // pivot term is Rp - row 0 = (1, 0, 1), and C (1, -1, 0) = (1, 0, 1) too: the
    // translation stays 0.
    ExpectDouble3Near(arm->LclRotation.Get(), -90, 90, 0, 1e-9);
    ExpectDouble3Near(arm->LclTranslation.Get(), 0, 0, 0, 1e-12);
    EXPECT_EQ(scene->GetGlobalSettings().GetAxisSystem(), kYUp);
    EXPECT_EQ(pose->entries[0].matrix[12], 100.0);  // poses are not turned

    FbxSystemUnit::m.ConvertScene(scene);
    ExpectDouble3Near(hips->LclTranslation.Get(), 0.01, 0.03, -0.02);
    ExpectDouble3Near(hips->LclScaling.Get(), 0.01, 0.01, 0.01);
    ExpectDouble3Near(spine->LclTranslation.Get(), 0, 0, 10);
    ExpectDouble3Near(spine->LclScaling.Get(), 1, 1, 1);
    ExpectDouble3Near(arm->RotationPivot.Get(), 0.01, 0, 0);
    EXPECT_NEAR(camera->NearPlane.Get(), 0.1, 1e-12);
    EXPECT_NEAR(camera->FarPlane.Get(), 40.0, 1e-12);
    EXPECT_NEAR(pose->entries[0].matrix[12], 1.0, 1e-12);
    EXPECT_EQ(scene->GetGlobalSettings().UnitScaleFactor.Get(), 100.0);
    EXPECT_EQ(scene->GetGlobalSettings().OriginalUnitScaleFactor.Get(), 2.54);

    // The spine stood at (1, 2, 3) + (0, 0, 10) cm with Z up: (1, 13, -2) cm with Y up.
    ExpectVectorNear(spine->EvaluateGlobalTransform().GetT(), 0.01, 0.13, -0.02, 1e-12);
    // The arm's pivot term (1, -1, 0) cm turned: (1, 0, 1) cm.
    ExpectVectorNear(arm->EvaluateGlobalTransform().GetT(), 0.01, 0, 0.01, 1e-12);
}

TEST_F(SceneConvertTest, AxisSystemsAsRead) {
    struct Case {
        const char* what;
        int words[6];
        FbxVector4 translation;  // of a root child at (1, 2, 3) after the conversion to Y up
        Rows3 rows;              // its 3x3 part
    };
    const Case cases[] = {
        // Axis words beyond 0 to 2 read as 0: up and side both x name no system, and the
        // scene stays as it is.
        {"up axis 7", {7, 1, 2, 1, 0, 1}, {1, 2, 3}, {{{1, 0, 0}, {0, 1, 0}, {0, 0, 1}}}},
        // Negative side: x flips. The mirror C = diag(-1, 1, 1) becomes Rx(180) with all
        // scales -1, whose product is C again.
        {"left handed", {1, 1, 2, 1, 0, -1}, {-1, 2, 3}, {{{-1, 0, 0}, {0, 1, 0}, {0, 0, 1}}}},
        // X up, front y, side z: the file's x is up (y), its y is front (z), its z is side
        // (x): (1, 2, 3) -> (3, 1, 2).
        {"x up", {0, 1, 1, 1, 2, 1}, {3, 1, 2}, {{{0, 1, 0}, {0, 0, 1}, {1, 0, 0}}}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        const int* w = c.words;
        SetAxes(w[0], w[1], w[2], w[3], w[4], w[5]);
        FbxNode* node = Child(scene->GetRootNode(), c.what, {1, 2, 3});
        kYUp.ConvertScene(scene);
        const FbxAMatrix& g = node->EvaluateGlobalTransform();
        ExpectVectorNear(g.GetT(), c.translation[0], c.translation[1], c.translation[2], 1e-12);
        ExpectRowsNear(g, c.rows, 1e-12);
        EXPECT_EQ(scene->GetGlobalSettings().GetAxisSystem(), kYUp);
        scene->GetRootNode()->RemoveChild(node);
    }
    SetAxes(7, -5, 1, 1, 2, 0);
    EXPECT_EQ(scene->GetGlobalSettings().GetAxisSystem(), FbxAxisSystem(0, -1, 1, 1, 2, 1));
    kYUp.ConvertScene(nullptr);  // nothing to do, no crash
}

TEST_F(SceneConvertTest, UnitFactors) {
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const double inf = std::numeric_limits<double>::infinity();
    struct Case {
        const char* what;
        double unit;
        double x;      // translation x of a root child at (100, 0, 0), factor unit / 100
        double scale;  // its scaling
        double unitAfter;
    };
    const Case cases[] = {
        {"metres", 100.0, 100, 1, 100.0},
        {"near metres", 100.0000001, 100, 1, 100.0000001},
        {"centimetres", 1.0, 1, 0.01, 100.0},
        // A zero unit stands for the smallest one: 2.2e-16 / 100 per unit.
        {"zero", 0.0, 100 * 2.220446049250313e-16 / 100, 2.220446049250313e-16 / 100, 100.0},
        {"negative", -1.0, -1, -0.01, 100.0},
        {"huge", 1e300, 1e300, 1e298, 100.0},
        // Factors that are not numbers leave the scene, and its unit, as they were.
        {"not a number", nan, 100, 1, nan},
        {"infinite", inf, 100, 1, inf},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        scene->GetGlobalSettings().UnitScaleFactor.Set(c.unit);
        FbxNode* node = Child(scene->GetRootNode(), c.what, {100, 0, 0});
        FbxNode* below = Child(node, "below", {100, 0, 0});
        FbxSystemUnit::m.ConvertScene(scene);
        EXPECT_DOUBLE_EQ(node->LclTranslation.Get()[0], c.x);
        EXPECT_DOUBLE_EQ(node->LclScaling.Get()[1], c.scale);
        EXPECT_EQ(below->LclTranslation.Get()[0], 100.0);
        const double after = scene->GetGlobalSettings().UnitScaleFactor.Get();
        if (std::isnan(c.unitAfter)) {
            EXPECT_TRUE(std::isnan(after));
        } else {
            EXPECT_EQ(after, c.unitAfter);
        }
        scene->GetRootNode()->RemoveChild(node);
    }
    FbxSystemUnit::m.ConvertScene(nullptr);
}

}  // namespace
