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

}  // namespace
