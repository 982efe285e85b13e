#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "fbx/fbx_document.h"
#include "fbx/fbx_manager.h"
#include "fbx/fbx_node.h"
#include "xform_test_util.h"

namespace {

struct NodeEvalTest : ::testing::Test {
    FbxManager* manager = FbxManager::Create();
    FbxScene* scene = FbxScene::Create(manager, "My Scene");
    ~NodeEvalTest() override { manager->Destroy(); }

    FbxNode* Child(FbxNode* parent, const char* name) {
        FbxNode* node = FbxNode::Create(scene, name);
        parent->AddChild(node);
        return node;
    }
};

const Rows3 kIdentityRows{{{1, 0, 0}, {0, 1, 0}, {0, 0, 1}}};
const Rows3 kRz90{{{0, 1, 0}, {-1, 0, 0}, {0, 0, 1}}};

TEST_F(NodeEvalTest, PropertyCases) {
    struct Case {
        const char* what;
        void (*setUp)(FbxNode&);
        FbxVector4 translation;
        Rows3 rows;
    };
    const Case cases[] = {
        // Rp (0, 1, 0), Rz(90): -Rp = (0, -1, 0) turns to (1, 0, 0), plus Rp: (1, 1, 0).
        {"rotation pivot", [](FbxNode& n) { n.RotationPivot.Set({0, 1, 0}), n.LclRotation.Set({0, 0, 90}); },
         {1, 1, 0}, kRz90},
        {"pre-rotation without RotationActive", [](FbxNode& n) { n.PreRotation.Set({90, 0, 0}); }, {0, 0, 0},
         kIdentityRows},
        // Rx(90): y -> +z, z -> -y.
        {"pre-rotation with RotationActive",
         [](FbxNode& n) { n.PreRotation.Set({90, 0, 0}), n.RotationActive.Set(true); }, {0, 0, 0},
         {{{1, 0, 0}, {0, 0, 1}, {0, -1, 0}}}},
        // Order 5 (z, y, x) is ignored without RotationActive: (90, 90, 0) as x then y.
        {"order without RotationActive", [](FbxNode& n) { n.RotationOrder.Set(5), n.LclRotation.Set({90, 90, 0}); },
         {0, 0, 0}, {{{0, 0, -1}, {1, 0, 0}, {0, -1, 0}}}},
        // A max of 1 on x clamps T = 5.
        {"translation limit",
         [](FbxNode& n) {
             n.TranslationActive.Set(true), n.TranslationMaxX.Set(true);
             n.TranslationMax.Set({1, 1, 1}), n.LclTranslation.Set({5, 0, 0});
         },
         {1, 0, 0}, kIdentityRows},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        FbxNode* node = Child(scene->GetRootNode(), c.what);
        c.setUp(*node);
        const FbxAMatrix& global = node->EvaluateGlobalTransform();
        ExpectVectorNear(global.GetT(), c.translation[0], c.translation[1], c.translation[2]);
        ExpectRowsNear(global, c.rows);
        // A root child's local matrix is its composed matrix; the root stays identity.
        ExpectMatrixNear(node->EvaluateLocalTransform(), global);
    }
    EXPECT_EQ(scene->GetRootNode()->EvaluateGlobalTransform(), FbxAMatrix());
}

TEST_F(NodeEvalTest, ParentsAndInheritTypes) {
    FbxNode* parent = Child(scene->GetRootNode(), "parent");
    parent->LclScaling.Set(FbxDouble3{2, 1, 1});
    parent->LclTranslation.Set(FbxDouble3{0, 0, 3});
    struct Case {
        int inherit;
        Rows3 rows;
    };
    // Child T (1, 0, 0), Rz(90) below a parent of scale (2, 1, 1) at (0, 0, 3).
    const Case cases[] = {
        {0, {{{0, 2, 0}, {-1, 0, 0}, {0, 0, 1}}}},  // Rz(90) diag(2, 1, 1)
        {1, {{{0, 1, 0}, {-2, 0, 0}, {0, 0, 1}}}},  // diag(2, 1, 1) Rz(90)
        {2, {{{0, 1, 0}, {-1, 0, 0}, {0, 0, 1}}}},  // the parent's scaling left out
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.inherit);
        FbxNode* child = Child(parent, "child");
        child->InheritType.Set(c.inherit);
        child->LclTranslation.Set(FbxDouble3{1, 0, 0});
        child->LclRotation.Set(FbxDouble3{0, 0, 90});
        const FbxAMatrix& global = child->EvaluateGlobalTransform();
        ExpectRowsNear(global, c.rows);
        ExpectVectorNear(global.GetT(), 2, 0, 3);  // the parent maps (1, 0, 0) to (2, 0, 3)
        // Local = P^-1 G: the parent's inverse takes the translation back to (1, 0, 0).
        ExpectVectorNear(child->EvaluateLocalTransform().GetT(), 1, 0, 0);
    }
}

TEST_F(NodeEvalTest, ZeroParentScaleInvertsToIdentity) {
    FbxNode* parent = Child(scene->GetRootNode(), "parent");
    parent->LclScaling.Set(FbxDouble3{0, 0, 0});
    parent->LclTranslation.Set(FbxDouble3{4, 5, 6});
    FbxNode* child = Child(parent, "child");
    child->LclTranslation.Set(FbxDouble3{1, 2, 3});
    // Every point of the child collapses onto the parent's origin; the singular P leaves
    // P^-1 as the identity, so the local matrix is the global one.
    const FbxAMatrix global = child->EvaluateGlobalTransform();
    ExpectVectorNear(global.GetT(), 4, 5, 6);
    ExpectRowsNear(global, {{{0, 0, 0}, {0, 0, 0}, {0, 0, 0}}});
    EXPECT_EQ(child->EvaluateLocalTransform(), global);
}

TEST_F(NodeEvalTest, CacheLivesUntilResetOrForce) {
    FbxNode* node = Child(scene->GetRootNode(), "node");
    node->LclTranslation.Set(FbxDouble3{1, 0, 0});
    EXPECT_EQ(node->EvaluateGlobalTransform().GetT()[0], 1.0);
    node->LclTranslation.Set(FbxDouble3{2, 0, 0});
    EXPECT_EQ(node->EvaluateGlobalTransform().GetT()[0], 1.0);  // a property change keeps the cache
    EXPECT_EQ(node->EvaluateGlobalTransform(FbxTime::Infinite(), FbxNode::eSourcePivot, false, true).GetT()[0], 2.0);
    node->LclTranslation.Set(FbxDouble3{3, 0, 0});
    scene->GetTransformEvaluator().Reset();
    EXPECT_EQ(node->EvaluateGlobalTransform().GetT()[0], 3.0);
    node->LclTranslation.Set(FbxDouble3{4, 0, 0});
    EXPECT_EQ(node->EvaluateGlobalTransform(FbxTime(0)).GetT()[0], 4.0);  // another time clears it
}

TEST_F(NodeEvalTest, HostileTreesAndValues) {
    // A parent cycle: each node is the other's parent. The walk cuts the cycle.
    FbxNode* a = Child(scene->GetRootNode(), "a");
    FbxNode* b = Child(a, "b");
    b->AddChild(a);
    a->LclTranslation.Set(FbxDouble3{1, 0, 0});
    b->LclTranslation.Set(FbxDouble3{0, 1, 0});
    ExpectVectorNear(a->EvaluateGlobalTransform().GetT(), 1, 1, 0);
    FbxNode* self = FbxNode::Create(scene, "self");
    self->ConnectSrcObject(self);
    ExpectVectorNear(self->EvaluateGlobalTransform().GetT(), 0, 0, 0);

    // A chain far deeper than any call stack would take.
    FbxNode* leaf = scene->GetRootNode();
    for (int i = 0; i < 10000; ++i) {
        leaf = Child(leaf, "deep");
        leaf->LclTranslation.Set(FbxDouble3{0, 0, 1});
    }
    EXPECT_EQ(leaf->EvaluateGlobalTransform().GetT()[2], 10000.0);

    // Not-a-number values stay in the numbers, never in the control flow.
    const double nan = std::numeric_limits<double>::quiet_NaN();
    FbxNode* broken = Child(scene->GetRootNode(), "nan");
    broken->LclRotation.Set(FbxDouble3{nan, 0, 0});
    broken->RotationOrder.Set(77);
    broken->InheritType.Set(-3);
    FbxNode* below = Child(broken, "below");
    below->LclScaling.Set(FbxDouble3{nan, 1, 1});
    EXPECT_TRUE(std::isnan(below->EvaluateGlobalTransform().data[1][1]));
    EXPECT_TRUE(std::isnan(below->EvaluateLocalTransform().data[0][0]));
}

TEST_F(NodeEvalTest, PivotSetsFollowTheProperties) {
    FbxNode* node = Child(scene->GetRootNode(), "node");
    node->RotationPivot.Set(FbxDouble3{0, 1, 0});
    EXPECT_EQ(node->GetRotationPivot(FbxNode::eSourcePivot), FbxVector4(0, 1, 0));  // read on first use
    node->RotationPivot.Set(FbxDouble3{0, 2, 0});
    EXPECT_EQ(node->GetRotationPivot(FbxNode::eSourcePivot), FbxVector4(0, 1, 0));  // until asked again
    node->UpdatePivotsFromProperties();
    EXPECT_EQ(node->GetRotationPivot(FbxNode::eSourcePivot), FbxVector4(0, 2, 0));
    EXPECT_TRUE(node->GetRotationPivot(FbxNode::eDestinationPivot).IsZero3());

    // The quick test: with every vector set, GeometricScaling not one and orders 0, the
    // pivot set keeps what it had.
    for (FbxPropertyT<FbxDouble3>* p :
         {&node->RotationOffset, &node->RotationPivot, &node->ScalingOffset, &node->ScalingPivot, &node->PreRotation,
          &node->PostRotation, &node->GeometricTranslation, &node->GeometricRotation, &node->GeometricScaling})
        p->Set(FbxDouble3{3, 3, 3});
    node->UpdatePivotsFromProperties();
    EXPECT_EQ(node->GetRotationPivot(FbxNode::eSourcePivot), FbxVector4(0, 2, 0));
    node->RotationOrder.Set(1);  // any order but 0 lets the copy happen
    node->UpdatePivotsFromProperties();
    EXPECT_EQ(node->GetRotationPivot(FbxNode::eSourcePivot), FbxVector4(3, 3, 3));
}

TEST_F(NodeEvalTest, PivotResetKeepsTheStaticPose) {
    struct Case {
        const char* what;
        void (*setUp)(FbxNode&);
        FbxVector4 t, r;  // Lcl Translation and Rotation afterwards
        Rows3 rows;       // the global 3x3 part, the same before and after
        FbxVector4 pre;   // PreRotation afterwards
    };
    const double h = std::sqrt(0.5);
    const Case cases[] = {
        // The pivot term Rp + Rz(90) (-Rp) = (1, 0, 0) + (0, -1, 0) moves into T.
        {"rotation pivot", [](FbxNode& n) { n.RotationPivot.Set({1, 0, 0}), n.LclRotation.Set({0, 0, 90}); },
         {1, -1, 0}, {0, 0, 90}, kRz90, {0, 0, 0}},
        // Rx(90) Rz(90) has rows (0, 0, 1), (-1, 0, 0), (0, -1, 0); in gimbal lock GetR gives
        // rx = atan2(-m21, m11) = 90, ry = atan2(-m02, 0) = -90.
        {"pre-rotation",
         [](FbxNode& n) {
             n.RotationActive.Set(true), n.PreRotation.Set({90, 0, 0}), n.LclRotation.Set({0, 0, 90});
         },
         {0, 0, 0}, {90, -90, 0}, {{{0, 0, 1}, {-1, 0, 0}, {0, -1, 0}}}, {0, 0, 0}},
        // Pre-rotation for the limits only stays, and still doesn't count.
        {"limit space",
         [](FbxNode& n) {
             n.RotationActive.Set(true), n.RotationSpaceForLimitOnly.Set(true);
             n.PreRotation.Set({90, 0, 0}), n.LclRotation.Set({0, 0, 90});
         },
         {0, 0, 0}, {0, 0, 90}, kRz90, {90, 0, 0}},
        // Order ZYX (90, 90, 0) has rows (0, 1, 0), (0, 0, 1), (1, 0, 0); as XYZ: h = 1,
        // rx = atan2(m12, m22) = 90, ry = atan2(-m02, h) = 0, rz = atan2(m01, m00) = 90.
        {"rotation order",
         [](FbxNode& n) { n.RotationActive.Set(true), n.RotationOrder.Set(5), n.LclRotation.Set({90, 90, 0}); },
         {0, 0, 0}, {90, 0, 90}, {{{0, 1, 0}, {0, 0, 1}, {1, 0, 0}}}, {0, 0, 0}},
        // Sets that agree within 1e-6 leave the node alone, limits included: the
        // evaluation still clamps 90 to 45.
        {"agreeing sets",
         [](FbxNode& n) {
             n.RotationActive.Set(true), n.RotationMaxZ.Set(true), n.RotationMax.Set({0, 0, 45});
             n.LclRotation.Set({0, 0, 90}), n.PreRotation.Set({0, 0, 1e-7});
         },
         {0, 0, 0}, {0, 0, 90}, {{{h, h, 0}, {-h, h, 0}, {0, 0, 1}}}, {0, 0, 0}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        FbxNode* node = Child(scene->GetRootNode(), c.what);
        c.setUp(*node);
        scene->GetRootNode()->ResetPivotSetAndConvertAnimation(30.0, false, true, false);
        ExpectVectorNear(FbxVector4(node->LclTranslation.Get()), c.t[0], c.t[1], c.t[2], 1e-12);
        ExpectVectorNear(FbxVector4(node->LclRotation.Get()), c.r[0], c.r[1], c.r[2], 1e-9);
        ExpectVectorNear(FbxVector4(node->PreRotation.Get()), c.pre[0], c.pre[1], c.pre[2], 0);
        EXPECT_TRUE(FbxVector4(node->RotationPivot.Get()).IsZero3());
        EXPECT_TRUE(node->GetRotationPivot(FbxNode::eSourcePivot).IsZero3());
        EXPECT_EQ(node->RotationOrder.Get(), 0);
        const FbxAMatrix& g = node->EvaluateGlobalTransform();
        ExpectRowsNear(g, c.rows, 1e-12);
        ExpectVectorNear(g.GetT(), c.t[0], c.t[1], c.t[2], 1e-12);
        scene->GetRootNode()->RemoveChild(node);
    }
}

TEST_F(NodeEvalTest, PivotResetFoldsLimits) {
    FbxNode* node = Child(scene->GetRootNode(), "limited");
    node->RotationActive.Set(true);
    node->RotationMaxZ.Set(true);
    node->RotationMax.Set(FbxDouble3{0, 0, 45});
    node->LclRotation.Set(FbxDouble3{0, 0, 90});
    node->RotationPivot.Set(FbxDouble3{0, 0, 5});  // on the z axis: no translation
    scene->GetRootNode()->ResetPivotSetAndConvertAnimation(30.0, false, true, false);
    ExpectVectorNear(FbxVector4(node->LclRotation.Get()), 0, 0, 45, 1e-9);
    ExpectVectorNear(FbxVector4(node->LclTranslation.Get()), 0, 0, 0, 1e-12);
    EXPECT_FALSE(node->RotationActive.Get());
}

}  // namespace
