// Comparisons shared by the transform tests.
#pragma once

#include <gtest/gtest.h>

#include <array>

#include "fbx/fbx_matrix.h"

using Rows3 = std::array<std::array<double, 3>, 3>;

// The 3x3 part row by row (row i = image of axis i) within a tolerance.
inline void ExpectRowsNear(const FbxAMatrix& m, const Rows3& rows, double tolerance = 1e-12) {
    for (int r = 0; r < 3; ++r)
        for (int c = 0; c < 3; ++c)
            EXPECT_NEAR(m.data[r][c], rows[r][c], tolerance) << "row " << r << " column " << c;
}

inline void ExpectVectorNear(const FbxVector4& v, double x, double y, double z, double tolerance = 1e-12) {
    EXPECT_NEAR(v[0], x, tolerance);
    EXPECT_NEAR(v[1], y, tolerance);
    EXPECT_NEAR(v[2], z, tolerance);
}

inline void ExpectMatrixNear(const FbxAMatrix& a, const FbxAMatrix& b, double tolerance = 1e-12) {
    for (int r = 0; r < 4; ++r)
        for (int c = 0; c < 4; ++c) EXPECT_NEAR(a.data[r][c], b.data[r][c], tolerance) << "row " << r << " column " << c;
}
