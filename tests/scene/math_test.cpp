#include <gtest/gtest.h>

#include <cmath>

#include "scene/math.h"

TEST(MathTest, NormalizeAndBox) {
    Vec3 zero;
    zero.Normalize();
    EXPECT_EQ(zero, Vec3(0, 0, 0));
    Vec3 v(3, 0, 4);
    v.Normalize();
    EXPECT_FLOAT_EQ(v.x, 0.6f);
    EXPECT_FLOAT_EQ(v.z, 0.8f);
    EXPECT_EQ(Cross(Vec3(1, 0, 0), Vec3(0, 1, 0)), Vec3(0, 0, 1));

    BoundingBox box;
    box.min = Vec3(-100, -100, -100);  // stale values of an invalid box are ignored
    box.max = Vec3(100, 100, 100);
    box.Extend(Vec3(1, 2, 3));
    EXPECT_TRUE(box.valid);
    EXPECT_EQ(box.min, Vec3(1, 2, 3));
    box.Extend(Vec3(-1, 5, 3));
    EXPECT_EQ(box.min, Vec3(-1, 2, 3));
    EXPECT_EQ(box.max, Vec3(1, 5, 3));
    box.Reset();
    EXPECT_FALSE(box.valid);
    EXPECT_EQ(box.max, Vec3(1, 5, 3));  // Reset touches only the flag
}

TEST(MathTest, QuatToEulerBranches) {
    Vec3 up = QuatToEuler(Quat(0.0f, 0.70710677f, 0.0f, 0.70710677f));
    EXPECT_FLOAT_EQ(up.y, 90.0f);
    EXPECT_EQ(up.z, 0.0f);
    Vec3 down = QuatToEuler(Quat(0.0f, -0.70710677f, 0.0f, 0.70710677f));
    EXPECT_FLOAT_EQ(down.y, -90.0f);
    // General branch round trip with the single precision Euler conversion.
    Vec3 e(10.0f, 20.0f, 30.0f);
    Vec3 back = QuatToEuler(EulerToQuat(e));
    EXPECT_NEAR(back.x, 10.0f, 1e-3);
    EXPECT_NEAR(back.y, 20.0f, 1e-3);
    EXPECT_NEAR(back.z, 30.0f, 1e-3);
    // 90 degrees about X: (sin 45, 0, 0, cos 45).
    Quat q = EulerToQuatPrecise(Vec3(90, 0, 0));
    EXPECT_FLOAT_EQ(q.x, 0.70710677f);
    EXPECT_FLOAT_EQ(q.w, 0.70710677f);
    EXPECT_EQ(Quat().w, 0.0f);  // default quaternion is all zero
}

TEST(MathTest, DecomposeTranslationRotationScale) {
    Mat4 m;  // scale 2 about x, rotated 90 degrees about z, translated
    m(0, 0) = 0; m(0, 1) = 2; m(0, 2) = 0;
    m(1, 0) = -3; m(1, 1) = 0; m(1, 2) = 0;
    m(2, 0) = 0; m(2, 1) = 0; m(2, 2) = 4;
    m(3, 0) = 5; m(3, 1) = 6; m(3, 2) = 7;
    MatrixParts p = Decompose(m);
    EXPECT_FLOAT_EQ(p.scale.x, 2);
    EXPECT_FLOAT_EQ(p.scale.y, 3);
    EXPECT_FLOAT_EQ(p.scale.z, 4);
    EXPECT_EQ(p.translation, Vec3(5, 6, 7));
    EXPECT_NEAR(p.rotation.z, 1.5707964f, 1e-6);
    EXPECT_NEAR(p.rotation.x, 0.0f, 1e-6);
}

TEST(MathTest, DecomposeMirrorZeroAndHomogeneous) {
    Mat4 mirror;
    mirror(0, 0) = -1;
    MatrixParts p = Decompose(mirror);
    // A mirror flips all three scales, not one.
    EXPECT_EQ(p.scale, Vec3(-1, -1, -1));

    Mat4 zero;
    zero(3, 3) = 0;
    MatrixParts z = Decompose(zero);
    EXPECT_EQ(z.scale, Vec3(0, 0, 0));

    Mat4 singular;
    singular(1, 1) = 0;
    EXPECT_EQ(Decompose(singular).scale, Vec3(0, 0, 0));

    // Everything is divided by m[3][3] first.
    Mat4 h;
    h(0, 0) = 4; h(1, 1) = 4; h(2, 2) = 4;
    h(3, 0) = 8;
    h(3, 3) = 2;
    MatrixParts q = Decompose(h);
    EXPECT_EQ(q.scale, Vec3(2, 2, 2));
    EXPECT_FLOAT_EQ(q.translation.x, 4);
}
