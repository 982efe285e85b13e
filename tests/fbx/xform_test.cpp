// Transforms: Euler angles and matrices, the node transform chain with pivots and limits,
// node evaluation and pivot reset, axis and unit conversion of scenes and their curves, and
// geometry clean-up.
#include <cmath>
#include <limits>
#include <sstream>

#include "fbx/fbx_anim.h"
#include "fbx/fbx_axis_system.h"
#include "fbx/fbx_deformer.h"
#include "fbx/fbx_geometry.h"
#include "fbx/fbx_geometry_converter.h"
#include "fbx/fbx_system_unit.h"
#include "fbx/fbx_transform.h"
#include "fbx_fixture.h"

namespace {

using namespace fbxtest;

// Three numbers of a table field.
FbxVector4 Vector(const std::string& field) {
    FbxVector4 v(0, 0, 0);
    std::stringstream in(field);
    in >> v[0] >> v[1] >> v[2];
    return v;
}

TEST(FbxMatrixTest, EulerToMatrixInEveryOrder) {
    const testsupport::Table rows = Table("euler_matrices.txt");
    ASSERT_GT(rows.size(), 10u);
    for (const testsupport::TableRow& row : rows) {
        SCOPED_TRACE(testing::Message() << "line " << row.line << ": " << row[0]);
        Rows3 expected;
        for (size_t r = 0; r < 3; ++r) {
            const FbxVector4 v = Vector(row[3 + r]);
            expected[r] = {v[0], v[1], v[2]};
        }
        ExpectRowsNear(FbxEulerToMatrix(Vector(row[2]), std::stoi(row[1])), expected);
    }
}

TEST(FbxMatrixTest, MatrixToEulerRoundTripsInEveryOrder) {
    // Second and third axis of orders 0 to 5 (see the order names).
    const int second[6] = {1, 2, 2, 0, 0, 1};
    const int third[6] = {2, 1, 0, 2, 1, 0};
    const FbxVector4 angles[] = {{10, 20, 30}, {-170, 45, 100}, {30, 90, 40}, {-60, -90, 10}, {90, 90, 90}};
    for (int order = eFbxEulerXYZ; order <= eFbxEulerZYX; ++order) {
        for (const FbxVector4& a : angles) {
            SCOPED_TRACE(testing::Message() << "order " << order << " angles " << a[0] << " " << a[1] << " " << a[2]);
            const FbxAMatrix m = FbxEulerToMatrix(a, order);
            const FbxVector4 back = FbxMatrixToEuler(m, order);
            ExpectMatrixNear(FbxEulerToMatrix(back, order), m, 1e-9);
            // Outside the principal range only the matrix has to survive.
            if (std::fabs(a[second[order]]) < 90.0) {
                ExpectVectorNear(back, a[0], a[1], a[2], 1e-9);
            } else if (std::fabs(a[second[order]]) == 90.0) {
                // Gimbal lock: the first axis takes the whole turn about the shared axis.
                EXPECT_EQ(back[third[order]], 0.0);
            }
        }
    }
}

TEST(FbxMatrixTest, Decomposition) {
    struct Case {
        const char* what;
        FbxVector4 t, r, s;
        FbxVector4 expectS;
        Rows3 rotation;  // SetR of GetR
    };
    const Case cases[] = {
        // Rz(30) Ry(0) Rx(90): x -> (c30, s30, 0); y -> +z; z -> -y -> (s30, -c30, 0).
        {"plain", {1, 2, 3}, {90, 0, 30}, {2, 3, 4}, {2, 3, 4},
         {{{0.8660254037844387, 0.5, 0}, {0, 0, 1}, {0.5, -0.8660254037844387, 0}}}},
        // With y at 90, Rz(40) Ry(90) Rx(30) equals Ry(90) Rx(-10): x -> -z, y -> Rx(-10) y
        // turned by Ry(90), z likewise.
        {"gimbal lock", {0, 0, 0}, {30, 90, 40}, {1, 1, 1}, {1, 1, 1},
         {{{0, 0, -1}, {-0.17364817766693033, 0.984807753012208, 0}, {0.984807753012208, 0.17364817766693033, 0}}}},
        // One negative scale makes the determinant negative: all three lengths are
        // negated and the rotation takes the rest, diag(-1, 1, 1) = -1 * Rx(180).
        {"mirror", {0, 0, 0}, {0, 0, 0}, {-1, 1, 1}, {-1, -1, -1}, {{{1, 0, 0}, {0, -1, 0}, {0, 0, -1}}}},
        // A zero scale leaves its row zero and out of the rotation.
        {"flat", {0, 0, 0}, {0, 0, 0}, {1, 1, 0}, {1, 1, 0}, {{{1, 0, 0}, {0, 1, 0}, {0, 0, 1}}}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        const FbxAMatrix m(c.t, c.r, c.s);
        ExpectVectorNear(m.GetT(), c.t[0], c.t[1], c.t[2]);
        ExpectVectorNear(m.GetS(), c.expectS[0], c.expectS[1], c.expectS[2]);
        ExpectRowsNear(FbxEulerToMatrix(m.GetR(), eFbxEulerXYZ), c.rotation, 1e-12);
    }
    FbxAMatrix locked;
    locked.SetR(FbxVector4(30, 90, 40));
    ExpectVectorNear(locked.GetR(), -10, 90, 0, 1e-9);  // the lock branch: rx = atan2(-m21, m11), rz = 0
}

TEST(FbxMatrixTest, SettersProductAndInverse) {
    FbxAMatrix m(FbxVector4(1, 2, 3), FbxVector4(0, 0, 90), FbxVector4(2, 2, 2));
    m.SetR(FbxVector4(90, 0, 0));  // scale 2 and translation stay
    ExpectRowsNear(m, {{{2, 0, 0}, {0, 0, 2}, {0, -2, 0}}});
    m.SetS(FbxVector4(1, 3, 1));  // rotation Rx(90) stays
    ExpectRowsNear(m, {{{1, 0, 0}, {0, 0, 3}, {0, -1, 0}}});
    ExpectVectorNear(m.GetT(), 1, 2, 3);

    // move * turn turns (1, 0, 0) to (0, 1, 0), then moves it to (1, 1, 0); turn * move
    // moves it to (2, 0, 0), then turns it to (0, 2, 0).
    const FbxAMatrix move = FbxTranslationMatrix(FbxVector4(1, 0, 0));
    const FbxAMatrix turn = FbxEulerToMatrix(FbxVector4(0, 0, 90), eFbxEulerXYZ);
    ExpectVectorNear((move * turn).MultT(FbxVector4(1, 0, 0)), 1, 1, 0);
    ExpectVectorNear((turn * move).MultT(FbxVector4(1, 0, 0)), 0, 2, 0);

    const FbxAMatrix regular(FbxVector4(4, -5, 6), FbxVector4(10, -20, 30), FbxVector4(2, 0.5, 3));
    ExpectMatrixNear(regular * regular.Inverse(), FbxAMatrix(), 1e-12);
    // Determinants within the double epsilon of 0 invert to the identity: a uniform scale
    // of 1e-6 has 1e-18, although it could be inverted. Not a number is no zero.
    for (const FbxVector4& scale : {FbxVector4(0, 1, 1), FbxVector4(1e-6, 1e-6, 1e-6)})
        EXPECT_EQ(FbxAMatrix(FbxVector4(7, 8, 9), FbxVector4(0, 0, 0), scale).Inverse(), FbxAMatrix());
    EXPECT_NEAR(FbxScaleMatrix(FbxVector4(1e-5, 1, 1)).Inverse().data[0][0], 1e5, 1e-6);
    FbxAMatrix broken;
    broken.data[1][1] = std::numeric_limits<double>::quiet_NaN();
    EXPECT_TRUE(std::isnan(broken.Inverse().data[0][0]));
}

FbxTransformRecord MakeRecord(const FbxPivotSet& set, bool rotationActive) {
    FbxTransformRecord record;
    record.SetPivots(set);
    record.rotationLimits.active = rotationActive;
    return record;
}

struct ComposeCase {
    const char* what;
    FbxPivotSet set;
    bool rotationActive;
    FbxVector4 t, r, s;
    FbxVector4 translation;  // expected row 3 of the composed matrix
    Rows3 rows;              // expected 3x3 part
};

const FbxVector4 kZero(0, 0, 0);
const FbxVector4 kOne(1, 1, 1);
const Rows3 kRz90{{{0, 1, 0}, {-1, 0, 0}, {0, 0, 1}}};

// The file's chain T * Ro * Rp * Pre * R * Post^-1 * Rp^-1 * So * Sp * S * Sp^-1, followed
// by hand for the origin (translation) and the axes (rows).
const ComposeCase kComposeCases[] = {
    // So (1, 0, 0) lies below the rotation: Rz(90) turns it to (0, 1, 0); T adds (0, 0, 5).
    {"scaling offset", FbxPivotSet{.scalingOffset = {1, 0, 0}}, true, {0, 0, 5}, {0, 0, 90}, kOne, {0, 1, 5}, kRz90},
    // All four, Rz(90), S 2: Sp: origin -> -Sp = (0, 0, -1) -> scaled (0, 0, -2) -> + Sp
    // = (0, 0, -1); + So = (1, 0, -1); - Rp = (1, -1, -1); Rz(90) -> (1, 1, -1); + Rp =
    // (1, 2, -1); + Ro = (1, 2, 2); + T = (11, 2, 2).
    {"all pivots",
     FbxPivotSet{.rotationOffset = {0, 0, 3}, .rotationPivot = {0, 1, 0}, .scalingOffset = {1, 0, 0},
                 .scalingPivot = {0, 0, 1}},
     true, {10, 0, 0}, {0, 0, 90}, {2, 2, 2},
     {11, 2, 2}, {{{0, 2, 0}, {-2, 0, 0}, {0, 0, 2}}}},
    // Post-rotation enters inverted: Post (0, 0, 90) gives Rz(-90): x -> -y, y -> +x.
    {"post inverted", FbxPivotSet{.postRotation = {0, 0, 90}}, true, kZero, kZero, kOne, kZero,
     {{{0, -1, 0}, {1, 0, 0}, {0, 0, 1}}}},
    // Pre Rx(90) then R: Pre * Rz(90): x -> +y -> +z; y -> -x -> -x; z -> z -> -y.
    {"pre then rotation", FbxPivotSet{.preRotation = {90, 0, 0}}, true, kZero, {0, 0, 90}, kOne, kZero,
     {{{0, 0, 1}, {-1, 0, 0}, {0, -1, 0}}}},
    // When the rotation space serves the limits only, pre-rotation and order stay out.
    {"limit space only",
     FbxPivotSet{.preRotation = {90, 0, 0}, .rotationOrder = eFbxEulerZYX, .rotationSpaceForLimitOnly = true}, true,
     kZero, {90, 90, 0}, kOne, kZero,
     {{{0, 0, -1}, {1, 0, 0}, {0, -1, 0}}}},
};

TEST(FbxTransformTest, ComposeWithoutParent) {
    for (const ComposeCase& c : kComposeCases) {
        SCOPED_TRACE(c.what);
        const FbxTransformRecord record = MakeRecord(c.set, c.rotationActive);
        const FbxAMatrix global = FbxComposeGlobal(record, c.t, c.r, c.s, nullptr, kOne);
        ExpectVectorNear(global.GetT(), c.translation[0], c.translation[1], c.translation[2]);
        ExpectRowsNear(global, c.rows);
        ExpectMatrixNear(FbxComposeLocal(record, c.t, c.r, c.s), global);
    }
}

TEST(FbxTransformTest, Limits) {
    // Translation: x has a min of -1, y a max of 1, z no bit. Scaling has a bit but is
    // not active. Rotation: z has a max of 45.
    FbxTransformRecord record;
    record.translationLimits.active = true;
    record.translationLimits.minEnabled[0] = true;
    record.translationLimits.maxEnabled[1] = true;
    record.translationLimits.min = FbxVector4(-1, -1, -1);
    record.translationLimits.max = FbxVector4(1, 1, 1);
    record.scalingLimits.minEnabled[2] = true;
    record.scalingLimits.min = FbxVector4(5, 5, 5);
    record.rotationLimits.active = true;
    record.rotationLimits.maxEnabled[2] = true;
    record.rotationLimits.max = FbxVector4(0, 0, 45);
    const double nan = std::numeric_limits<double>::quiet_NaN();
    struct Case {
        FbxVector4 t, r, expectT, expectR;
    };
    const Case cases[] = {
        {{-5, 5, 9}, {0, 0, 90}, {-1, 1, 9}, {0, 0, 45}},
        {{5, -5, -9}, {0, 0, -90}, {5, -5, -9}, {0, 0, -90}},
    };
    for (const Case& c : cases) {
        FbxVector4 t = c.t, r = c.r, s = kOne;
        FbxApplyLimits(record, t, r, s);
        ExpectVectorNear(t, c.expectT[0], c.expectT[1], c.expectT[2]);
        ExpectVectorNear(r, c.expectR[0], c.expectR[1], c.expectR[2]);
        ExpectVectorNear(s, 1, 1, 1);
    }
    // Not a number passes the comparisons untouched.
    FbxVector4 t(nan, nan, nan), r(0, 0, nan), s = kOne;
    FbxApplyLimits(record, t, r, s);
    EXPECT_TRUE(std::isnan(t[0]) && std::isnan(t[1]) && std::isnan(r[2]));
}

TEST(FbxTransformTest, RotationLimitsInTheirOwnSpace) {
    // The limits' angles L are those with Pre * R(L) = the node's rotation: with a
    // pre-rotation of 30 about z, a rotation of 80 is L = 50, clamped to the max of 45,
    // which is 30 + 45 = 75 in the node's own angles.
    const FbxPivotSet set{.preRotation = {0, 0, 30}, .rotationSpaceForLimitOnly = true};
    FbxTransformRecord record = MakeRecord(set, true);
    record.rotationLimits.maxEnabled[2] = true;
    record.rotationLimits.max = FbxVector4(0, 0, 45);
    FbxVector4 t = kZero, r(0, 0, 80), s = kOne;
    FbxApplyLimits(record, t, r, s);
    ExpectVectorNear(r, 0, 0, 75, 1e-9);
    // Inside the limits the angles keep their exact values, even those beyond 180.
    FbxVector4 wide(200, 0, 0);
    FbxApplyLimits(record, t, wide, s);
    EXPECT_EQ(wide, FbxVector4(200, 0, 0));
}

TEST(FbxTransformTest, LocalRotationEulerInvertsTheMatrix) {
    const FbxVector4 angles(10, -20, 30);
    for (int order = eFbxEulerXYZ; order <= eFbxEulerZYX; ++order) {
        SCOPED_TRACE(order);
        const FbxPivotSet set{.preRotation = {5, 0, 0}, .postRotation = {0, 0, -15}, .rotationOrder = order};
        const FbxTransformRecord record = MakeRecord(set, true);
        const FbxAMatrix m = FbxLocalRotationMatrix(record, angles);
        ExpectVectorNear(FbxLocalRotationEuler(record, m), angles[0], angles[1], angles[2], 1e-9);
    }
}

TEST(FbxTransformTest, PivotSetComparison) {
    FbxPivotSet a, b, c;
    b.rotationPivot = FbxVector4(0, 1e-7, 0);      // within 1e-6
    b.geometricTranslation = FbxVector4(5, 5, 5);  // not compared
    EXPECT_TRUE(FbxPivotSetsAgree(a, b));
    c.preRotation = FbxVector4(0, 0, 2e-6);
    EXPECT_FALSE(FbxPivotSetsAgree(a, c));
    c = FbxPivotSet();
    c.scalingOffset = FbxVector4(std::numeric_limits<double>::quiet_NaN(), 0, 0);
    EXPECT_FALSE(FbxPivotSetsAgree(a, c));
}

TEST(FbxAxisSystemTest, EnumsGiveTheSixWords) {
    struct Case {
        const char* what;
        FbxAxisSystem system;
        int words[6];  // up axis, up sign, front axis, front sign, coord axis, coord sign
    };
    using A = FbxAxisSystem;
    const Case cases[] = {
        // Of x and z, odd parity takes z; side x: x cross y = z, right handed.
        {"y up", A(A::eYAxis, A::eParityOdd, A::eRightHanded), {1, 1, 2, 1, 0, 1}},
        {"y up left handed", A(A::eYAxis, A::eParityOdd, A::eLeftHanded), {1, 1, 2, 1, 0, -1}},
        // Of x and y, odd takes y, pointing back; side x: x cross z = -y, which is front.
        {"z up", A(A::eZAxis, static_cast<A::EFrontVector>(-A::eParityOdd), A::eRightHanded), {2, 1, 1, -1, 0, 1}},
        // Of y and z, even takes y; side z: z cross x = y.
        {"x up", A(A::eXAxis, A::eParityEven, A::eRightHanded), {0, 1, 1, 1, 2, 1}},
        {"down y", A(static_cast<A::EUpVector>(-A::eYAxis), A::eParityOdd, A::eRightHanded), {1, -1, 2, 1, 0, -1}},
        {"bad up", A(static_cast<A::EUpVector>(7), A::eParityOdd, A::eRightHanded), {1, 1, 2, 1, 0, 1}},
        {"default", A(), {1, 1, 2, 1, 0, 1}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        const int got[6] = {c.system.UpAxis(),    c.system.UpSign(),    c.system.FrontAxis(),
                            c.system.FrontSign(), c.system.CoordAxis(), c.system.CoordSign()};
        for (int i = 0; i < 6; ++i) EXPECT_EQ(got[i], c.words[i]) << "word " << i;
    }
}

TEST(FbxAxisSystemTest, ComparisonsOfAxesAndUnits) {
    // Axis systems have no tolerance: a change of any of the six words counts.
    for (int word = 0; word < 6; ++word) {
        int w[6] = {1, 1, 2, 1, 0, 1};
        w[word] += 1;
        EXPECT_NE(FbxAxisSystem(), FbxAxisSystem(w[0], w[1], w[2], w[3], w[4], w[5])) << "word " << word;
    }
    // Units compare within 1e-6, factor and multiplier alike.
    EXPECT_TRUE(FbxSystemUnit(100.0000001, 1) == FbxSystemUnit::m);
    EXPECT_FALSE(FbxSystemUnit(100.00001, 1) == FbxSystemUnit::m);
    EXPECT_FALSE(FbxSystemUnit(100, 1.00001) == FbxSystemUnit::m);
    EXPECT_FALSE(FbxSystemUnit(std::numeric_limits<double>::quiet_NaN()) == FbxSystemUnit::m);
}

using NodeEvalTest = SceneTest;

const Rows3 kIdentityRows{{{1, 0, 0}, {0, 1, 0}, {0, 0, 1}}};

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

struct GeometryConverterTest : SceneTest {
    FbxLayerElement& Element(FbxMesh* mesh, FbxMappingMode mapping, FbxReferenceMode reference) {
        FbxLayerElement e;
        e.mapping = mapping;
        e.reference = reference;
        mesh->layerElements.push_back(e);
        return mesh->layerElements.back();
    }

    // A triangle (control points 0 1 2), a two-corner polygon (3 4) and a quad (5 6 7 8):
    // polygon vertices 0 to 8. Each layer element names its items so that their new
    // order can be read off: materials 10 11 12 per polygon, normals (pv, 0, 0) per
    // polygon vertex, UV indices pv, edge smoothing 100 + edge.
    FbxMesh* ThreePolygons() {
        FbxMesh* mesh = FbxMesh::Create(scene, "mesh");
        mesh->polygonVertexIndex = {0, 1, ~2, 3, ~4, 5, 6, 7, ~8};
        // One edge per side, named by its first polygon vertex.
        mesh->edges = {0, 1, 2, 3, 5, 6, 7, 8};
        Element(mesh, FbxMappingMode::ByPolygon, FbxReferenceMode::IndexToDirect).indices = {10, 11, 12};
        std::vector<double>& normals =
            Element(mesh, FbxMappingMode::ByPolygonVertex, FbxReferenceMode::Direct).directDoubles;
        for (int pv = 0; pv < 9; ++pv) normals.insert(normals.end(), {double(pv), 0.0, 0.0});
        FbxLayerElement& uv = Element(mesh, FbxMappingMode::ByPolygonVertex, FbxReferenceMode::IndexToDirect);
        uv.indices = {0, 1, 2, 3, 4, 5, 6, 7, 8};
        uv.directDoubles = {0.5, 0.5};  // the value pool never moves
        Element(mesh, FbxMappingMode::ByEdge, FbxReferenceMode::Direct).directInts = {100, 101, 102, 103,
                                                                                        104, 105, 106, 107};
        // Five values for nine polygon vertices follow no mapping and are left alone.
        Element(mesh, FbxMappingMode::ByPolygonVertex, FbxReferenceMode::Direct).directDoubles = {1, 2, 3, 4, 5};
        return mesh;
    }

    static std::vector<double> NormalX(const FbxMesh* mesh) {
        std::vector<double> x;
        const std::vector<double>& n = mesh->layerElements[1].directDoubles;
        for (size_t i = 0; i < n.size(); i += 3) x.push_back(n[i]);
        return x;
    }
};

TEST_F(GeometryConverterTest, RemoveThenTriangulate) {
    FbxMesh* mesh = ThreePolygons();
    FbxGeometryConverter converter(manager);
    std::vector<int> changed{42};
    EXPECT_EQ(converter.RemoveBadPolygonsFromMeshes(scene, &changed), 1);
    EXPECT_EQ(changed, std::vector<int>{0});
    // The two-corner polygon (vertices 3, 4) goes: the quad's vertices 5 to 8 become 3 to 6.
    EXPECT_EQ(mesh->polygonVertexIndex, (std::vector<int32_t>{0, 1, ~2, 5, 6, 7, ~8}));
    EXPECT_EQ(mesh->layerElements[0].indices, (std::vector<int32_t>{10, 12}));
    EXPECT_EQ(NormalX(mesh), (std::vector<double>{0, 1, 2, 5, 6, 7, 8}));
    EXPECT_EQ(mesh->layerElements[2].indices, (std::vector<int32_t>{0, 1, 2, 5, 6, 7, 8}));
    EXPECT_EQ(mesh->layerElements[2].directDoubles, (std::vector<double>{0.5, 0.5}));
    // Edge 3 lay on the removed polygon; the others follow their vertices.
    EXPECT_EQ(mesh->edges, (std::vector<int32_t>{0, 1, 2, 3, 4, 5, 6}));
    EXPECT_EQ(mesh->layerElements[3].directInts, (std::vector<int32_t>{100, 101, 102, 104, 105, 106, 107}));
    EXPECT_EQ(mesh->layerElements[4].directDoubles, (std::vector<double>{1, 2, 3, 4, 5}));

    EXPECT_TRUE(converter.Triangulate(scene, true, false));
    // The quad (control points 5 6 7 8, vertices 3 to 6) fans into 5 6 7 and 5 7 8.
    EXPECT_EQ(mesh->polygonVertexIndex, (std::vector<int32_t>{0, 1, ~2, 5, 6, ~7, 5, 7, ~8}));
    EXPECT_EQ(mesh->layerElements[0].indices, (std::vector<int32_t>{10, 12, 12}));
    EXPECT_EQ(NormalX(mesh), (std::vector<double>{0, 1, 2, 5, 6, 7, 5, 7, 8}));
    // Sides in order of the new polygons: 0-1, 1-2, 2-0, 5-6, 6-7, the new diagonal 7-5,
    // (5-7 again), 7-8, 8-5. The diagonal has no smoothing of its own.
    EXPECT_EQ(mesh->edges, (std::vector<int32_t>{0, 1, 2, 3, 4, 5, 7, 8}));
    EXPECT_EQ(mesh->layerElements[3].directInts, (std::vector<int32_t>{100, 101, 102, 104, 105, 0, 106, 107}));
    EXPECT_EQ(converter.RemoveBadPolygonsFromMeshes(scene, &changed), 0);
    EXPECT_TRUE(changed.empty());
}

TEST_F(GeometryConverterTest, PolygonShapes) {
    struct Case {
        const char* what;
        std::vector<int32_t> in;
        std::vector<int32_t> removed;      // after RemoveBadPolygons
        std::vector<int32_t> triangulated;  // after Triangulate of the original
    };
    const Case cases[] = {
        {"empty", {}, {}, {}},
        // An unterminated run at the end counts as a polygon; nothing removed leaves the
        // array as it is, a triangulation writes it terminated.
        {"unterminated quad", {0, 1, 2, 3}, {0, 1, 2, 3}, {0, 1, ~2, 0, 2, ~3}},
        {"unterminated pair", {4, 5}, {}, {4, 5}},
        {"single corners", {~0, ~1, 2, 3, ~4}, {2, 3, ~4}, {~0, ~1, 2, 3, ~4}},
        // A pentagon fans into three triangles from its first corner.
        {"pentagon", {9, 8, 7, 6, ~5}, {9, 8, 7, 6, ~5}, {9, 8, ~7, 9, 7, ~6, 9, 6, ~5}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        FbxMesh* mesh = FbxMesh::Create(scene, c.what);
        mesh->polygonVertexIndex = c.in;
        EXPECT_TRUE(FbxRemoveBadPolygons(*mesh));
        EXPECT_EQ(mesh->polygonVertexIndex, c.removed);
        mesh->polygonVertexIndex = c.in;
        EXPECT_TRUE(FbxTriangulateMesh(*mesh));
        EXPECT_EQ(mesh->polygonVertexIndex, c.triangulated);
    }
}

const FbxAxisSystem kYUp(FbxAxisSystem::eYAxis, FbxAxisSystem::eParityOdd, FbxAxisSystem::eRightHanded);

struct SceneConvertTest : SceneTest {
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

constexpr FbxLongLong kSecond = FbxTime::kTicksPerSecond;
constexpr FbxLongLong kFrame = 4704000;  // SetSecondDouble(1 / 30)

struct Key {
    FbxLongLong time;
    float value;
};

struct CurveConvertTest : SceneTest {
    FbxAnimStack* stack = FbxAnimStack::Create(scene, "Take 001");
    FbxAnimLayer* layer = FbxAnimLayer::Create(scene, "Base Layer");
    CurveConvertTest() { stack->ConnectSrcObject(layer); }
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
