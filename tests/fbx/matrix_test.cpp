#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "fbx/fbx_matrix.h"
#include "xform_test_util.h"

namespace {

struct EulerCase {
    const char* what;
    int order;
    FbxVector4 degrees;
    Rows3 rows;  // images of x, y, z worked out by turning the axes by hand
};

// Quarter turns keep every entry at 0 or +-1, so each row can be followed axis by axis.
const EulerCase kEulerCases[] = {
    // Rx(90): y -> +z, z -> -y.
    {"XYZ x only", eFbxEulerXYZ, {90, 0, 0}, {{{1, 0, 0}, {0, 0, 1}, {0, -1, 0}}}},
    // x first: x stays, then Ry(90) sends it to -z; y -> +z -> +x; z -> -y -> -y.
    {"XYZ x then y", eFbxEulerXYZ, {90, 90, 0}, {{{0, 0, -1}, {1, 0, 0}, {0, -1, 0}}}},
    // Ry(90) then Rz(90): x -> -z -> -z; y -> y -> -x; z -> +x -> +y.
    {"XYZ y then z", eFbxEulerXYZ, {0, 90, 90}, {{{0, 0, -1}, {-1, 0, 0}, {0, 1, 0}}}},
    // ZYX takes z first: x -> +y -> +y; y -> -x -> +z; z -> z -> +x.
    {"ZYX z then y", eFbxEulerZYX, {0, 90, 90}, {{{0, 1, 0}, {0, 0, 1}, {1, 0, 0}}}},
    // YXZ takes y first: x -> -z -> +y; y -> y -> +z; z -> +x -> +x.
    {"YXZ y then x", eFbxEulerYXZ, {90, 90, 0}, {{{0, 1, 0}, {0, 0, 1}, {1, 0, 0}}}},
    // XZY: x first, then z, then y. Rx(90) then Rz(90): x -> x -> +y; y -> +z -> +z;
    // z -> -y -> +x.
    {"XZY x then z", eFbxEulerXZY, {90, 0, 90}, {{{0, 1, 0}, {0, 0, 1}, {1, 0, 0}}}},
    // YZX: y first, then z. Ry(90) then Rz(90): x -> -z -> -z; y -> y -> -x; z -> +x -> +y.
    {"YZX y then z", eFbxEulerYZX, {0, 90, 90}, {{{0, 0, -1}, {-1, 0, 0}, {0, 1, 0}}}},
    // ZXY: z first, then x. Rz(90) then Rx(90): x -> +y -> +z; y -> -x -> -x; z -> z -> -y.
    {"ZXY z then x", eFbxEulerZXY, {90, 0, 90}, {{{0, 0, 1}, {-1, 0, 0}, {0, -1, 0}}}},
    // Spheric, z only: half angle 45 gives w = cos 45, z = sin 45, a plain Rz(90).
    {"spheric z only", eFbxSphericXYZ, {0, 0, 90}, {{{0, 1, 0}, {-1, 0, 0}, {0, 0, 1}}}},
    // Spheric (90, 90, 0): a = b = 45, c = 0 gives (x, y, z, w) = (.5, .5, -.5, .5), a unit
    // quaternion whose matrix is row0 (1-2(y2+z2), 2(xy+wz), 2(xz-wy)) = (0, 0, -1),
    // row1 (2(xy-wz), 1-2(x2+z2), 2(yz+wx)) = (1, 0, 0), row2 (0, -1, 0).
    {"spheric x and y", eFbxSphericXYZ, {90, 90, 0}, {{{0, 0, -1}, {1, 0, 0}, {0, -1, 0}}}},
    // Spheric (0, 90, 90): b = c = 45 gives (0, .7071, .7071, .5), of squared length 1.25.
    // Normalised: y2 + z2 = 2 * .5 / 1.25 = .8, wz = wy = .5 * .7071 / 1.25 = .28284,
    // yz = .5 / 1.25 = .4, so row0 = (1 - 1.6, .56569, -.56569),
    // row1 = (-.56569, 1 - 2 * .4, 2 * .4) = (-.56569, .2, .8), row2 = (.56569, .8, .2).
    {"spheric normalised", eFbxSphericXYZ, {0, 90, 90},
     {{{-0.6, 0.565685424949238, -0.565685424949238},
       {-0.565685424949238, 0.2, 0.8},
       {0.565685424949238, 0.8, 0.2}}}},
    // Orders outside 0 to 6 read as XYZ.
    {"unknown order", 9, {90, 90, 0}, {{{0, 0, -1}, {1, 0, 0}, {0, -1, 0}}}},
};

TEST(FbxMatrixTest, EulerToMatrixInEveryOrder) {
    for (const EulerCase& c : kEulerCases) {
        SCOPED_TRACE(c.what);
        ExpectRowsNear(FbxEulerToMatrix(c.degrees, c.order), c.rows);
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

TEST(FbxMatrixTest, GetRInGimbalLockFoldsZIntoX) {
    // With y at 90, Rz(40) Ry(90) Rx(30) equals Ry(90) Rx(30 - 40): the lock branch returns
    // rx = atan2(-m21, m11) = -10 and rz = 0.
    FbxAMatrix m;
    m.SetR(FbxVector4(30, 90, 40));
    ExpectVectorNear(m.GetR(), -10, 90, 0, 1e-9);
}

TEST(FbxMatrixTest, TrsDecomposition) {
    struct Case {
        const char* what;
        FbxVector4 t, r, s;
        FbxVector4 expectR, expectS;
    };
    const Case cases[] = {
        {"plain", {1, 2, 3}, {10, 20, 30}, {2, 3, 4}, {10, 20, 30}, {2, 3, 4}},
        // One negative scale makes the determinant negative: GetS negates all three
        // lengths, and the rotation absorbs the two extra flips: diag(-1, 1, 1) =
        // diag(-1, -1, -1) * Rx(180).
        {"mirror", {0, 0, 0}, {0, 0, 0}, {-1, 1, 1}, {180, 0, 0}, {-1, -1, -1}},
        // A zero scale leaves its row zero; the rotation of the other rows survives.
        {"flat", {0, 0, 0}, {0, 0, 0}, {1, 1, 0}, {0, 0, 0}, {1, 1, 0}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        FbxAMatrix m(c.t, c.r, c.s);
        ExpectVectorNear(m.GetT(), c.t[0], c.t[1], c.t[2]);
        ExpectVectorNear(m.GetS(), c.expectS[0], c.expectS[1], c.expectS[2]);
        const FbxVector4 r = m.GetR();
        ExpectRowsNear(FbxEulerToMatrix(r, eFbxEulerXYZ), [&] {
            const FbxAMatrix e = FbxEulerToMatrix(c.expectR, eFbxEulerXYZ);
            return Rows3{{{e.data[0][0], e.data[0][1], e.data[0][2]},
                          {e.data[1][0], e.data[1][1], e.data[1][2]},
                          {e.data[2][0], e.data[2][1], e.data[2][2]}}};
        }(), 1e-12);
    }
}

TEST(FbxMatrixTest, SettersKeepTheOtherParts) {
    FbxAMatrix m(FbxVector4(1, 2, 3), FbxVector4(0, 0, 90), FbxVector4(2, 2, 2));
    m.SetR(FbxVector4(90, 0, 0));  // scale 2 and translation stay
    ExpectRowsNear(m, {{{2, 0, 0}, {0, 0, 2}, {0, -2, 0}}});
    ExpectVectorNear(m.GetT(), 1, 2, 3);
    m.SetS(FbxVector4(1, 3, 1));  // rotation Rx(90) stays
    ExpectRowsNear(m, {{{1, 0, 0}, {0, 0, 3}, {0, -1, 0}}});
    m.SetT(FbxVector4(-1, 0, 0));
    ExpectRowsNear(m, {{{1, 0, 0}, {0, 0, 3}, {0, -1, 0}}});
    ExpectVectorNear(m.GetT(), -1, 0, 0);
}

TEST(FbxMatrixTest, ProductAppliesTheRightFactorFirst) {
    const FbxAMatrix move = FbxTranslationMatrix(FbxVector4(1, 0, 0));
    const FbxAMatrix turn = FbxEulerToMatrix(FbxVector4(0, 0, 90), eFbxEulerXYZ);
    // move * turn: (1, 0, 0) turns to (0, 1, 0), then moves to (1, 1, 0).
    ExpectVectorNear((move * turn).MultT(FbxVector4(1, 0, 0)), 1, 1, 0);
    // turn * move: (1, 0, 0) moves to (2, 0, 0), then turns to (0, 2, 0).
    ExpectVectorNear((turn * move).MultT(FbxVector4(1, 0, 0)), 0, 2, 0);
    const FbxAMatrix product = turn * move;
    EXPECT_EQ(product.data[0][3], 0.0);
    EXPECT_EQ(product.data[3][3], 1.0);
}

TEST(FbxMatrixTest, InverseAndItsIdentityFallback) {
    const FbxAMatrix m(FbxVector4(4, -5, 6), FbxVector4(10, -20, 30), FbxVector4(2, 0.5, 3));
    ExpectMatrixNear(m * m.Inverse(), FbxAMatrix(), 1e-12);
    ExpectMatrixNear(m.Inverse() * m, FbxAMatrix(), 1e-12);

    struct Case {
        const char* what;
        FbxVector4 scale;
        bool identity;
    };
    // The determinant of a uniform scale k is k^3: 1e-6 gives 1e-18, below the double
    // epsilon, which counts as singular although the matrix could be inverted.
    const Case cases[] = {
        {"zero scale", {0, 1, 1}, true},
        {"all zero", {0, 0, 0}, true},
        {"tiny uniform", {1e-6, 1e-6, 1e-6}, true},
        {"small but regular", {1e-5, 1, 1}, false},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        const FbxAMatrix s(FbxVector4(7, 8, 9), FbxVector4(0, 0, 0), c.scale);
        if (c.identity) {
            EXPECT_EQ(s.Inverse(), FbxAMatrix());
        } else {
            EXPECT_NEAR(s.Inverse().data[0][0], 1.0 / c.scale[0], 1e-6);
            EXPECT_NEAR(s.Inverse().data[3][0], -7.0 / c.scale[0], 1e-3);
        }
    }

    // Not a number never counts as singular; the result is not a number, not a crash.
    FbxAMatrix broken;
    broken.data[1][1] = std::numeric_limits<double>::quiet_NaN();
    EXPECT_TRUE(std::isnan(broken.Inverse().data[0][0]));
}

}  // namespace
