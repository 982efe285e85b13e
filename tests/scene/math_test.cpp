#include <gtest/gtest.h>

#include "scene/math.h"

TEST(MathTest, QuatToEulerGimbalBranch) {
    Vec3 e = QuatToEuler(Quat(0.0f, 0.70710677f, 0.0f, 0.70710677f));
    EXPECT_FLOAT_EQ(e.y, 90.0f);
    EXPECT_EQ(e.z, 0.0f);
}
