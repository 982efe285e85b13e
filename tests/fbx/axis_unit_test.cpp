#include <gtest/gtest.h>

#include <limits>

#include "fbx/fbx_axis_system.h"
#include "fbx/fbx_system_unit.h"

namespace {

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

}  // namespace
