#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "fbx/fbx_transform.h"
#include "xform_test_util.h"

namespace {

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

FbxPivotSet Pivots(FbxVector4 ro, FbxVector4 rp, FbxVector4 so, FbxVector4 sp) {
    FbxPivotSet set;
    set.rotationOffset = ro;
    set.rotationPivot = rp;
    set.scalingOffset = so;
    set.scalingPivot = sp;
    return set;
}

FbxPivotSet Rotations(FbxVector4 pre, FbxVector4 post, int order = eFbxEulerXYZ, bool limitOnly = false) {
    FbxPivotSet set;
    set.preRotation = pre;
    set.postRotation = post;
    set.rotationOrder = order;
    set.rotationSpaceForLimitOnly = limitOnly;
    return set;
}

const FbxVector4 kZero(0, 0, 0);
const FbxVector4 kOne(1, 1, 1);
const Rows3 kRz90{{{0, 1, 0}, {-1, 0, 0}, {0, 0, 1}}};

// The file's chain T * Ro * Rp * Pre * R * Post^-1 * Rp^-1 * So * Sp * S * Sp^-1, followed
// by hand for the origin (translation) and the axes (rows).
const ComposeCase kComposeCases[] = {
    // So (1, 0, 0) lies below the rotation: Rz(90) turns it to (0, 1, 0); T adds (0, 0, 5).
    {"scaling offset", Pivots(kZero, kZero, {1, 0, 0}, kZero), true, {0, 0, 5}, {0, 0, 90}, kOne, {0, 1, 5}, kRz90},
    // All four, Rz(90), S 2: Sp: origin -> -Sp = (0, 0, -1) -> scaled (0, 0, -2) -> + Sp
    // = (0, 0, -1); + So = (1, 0, -1); - Rp = (1, -1, -1); Rz(90) -> (1, 1, -1); + Rp =
    // (1, 2, -1); + Ro = (1, 2, 2); + T = (11, 2, 2).
    {"all pivots", Pivots({0, 0, 3}, {0, 1, 0}, {1, 0, 0}, {0, 0, 1}), true, {10, 0, 0}, {0, 0, 90}, {2, 2, 2},
     {11, 2, 2}, {{{0, 2, 0}, {-2, 0, 0}, {0, 0, 2}}}},
    // Post-rotation enters inverted: Post (0, 0, 90) gives Rz(-90): x -> -y, y -> +x.
    {"post inverted", Rotations(kZero, {0, 0, 90}), true, kZero, kZero, kOne, kZero,
     {{{0, -1, 0}, {1, 0, 0}, {0, 0, 1}}}},
    // Pre Rx(90) then R: Pre * Rz(90): x -> +y -> +z; y -> -x -> -x; z -> z -> -y.
    {"pre then rotation", Rotations({90, 0, 0}, kZero), true, kZero, {0, 0, 90}, kOne, kZero,
     {{{0, 0, 1}, {-1, 0, 0}, {0, -1, 0}}}},
    // When the rotation space serves the limits only, pre-rotation and order stay out.
    {"limit space only", Rotations({90, 0, 0}, kZero, eFbxEulerZYX, true), true, kZero, {90, 90, 0}, kOne, kZero,
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
    FbxPivotSet set = Rotations({0, 0, 30}, kZero, eFbxEulerXYZ, true);
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
        const FbxTransformRecord record = MakeRecord(Rotations({5, 0, 0}, {0, 0, -15}, order), true);
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

}  // namespace
