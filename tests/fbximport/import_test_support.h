// Helpers of the FBX import tests: documents and animated curves built in memory, scratch
// folders for the fixture files written with the project's FBX writer.
#pragma once

#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <string>
#include <vector>

#include "fbx_test_scene.h"
#include "scene/animation.h"
#include "scene/math.h"
#include "scratch_folder.h"
#include "text_table.h"

// A folder of its own in the test process's scratch folder, made empty.
inline std::string ScratchDir(const std::string& label) {
    const std::filesystem::path dir = testsupport::ProcessScratchFolder().Path() / label;
    std::filesystem::remove_all(dir);
    std::filesystem::create_directories(dir);
    return dir.string();
}

inline std::vector<testsupport::TableRow> Table(const std::string& name) {
    return testsupport::ReadTable(std::string(VURL_TEST_DATA_DIR) + "/" + name);
}
using testsupport::RowName;

inline void ExpectVec3(const Vec3& v, const std::vector<float>& xyz) {
    for (int k = 0; k < 3; ++k) EXPECT_FLOAT_EQ(v[k], xyz.at(size_t(k))) << "component " << k;
}

// -- Animated documents: stacks with their base layer, curves with keys on node properties.

struct TestKey {
    double seconds;
    float value;
};

// Keys on a fresh curve of the channel ("X", "Y", "Z") of a node property on a layer, all
// with one interpolation (4 linear by default; 8 cubic keys get user tangents of slope 0).
inline FbxAnimCurve* Animate(FbxProperty& property, FbxAnimLayer* layer, const char* channel,
                             const std::vector<TestKey>& keys, int interpolation = 4) {
    FbxAnimCurve* curve = property.GetCurve(layer, property.GetName(), channel, true);
    for (const TestKey& key : keys) {
        const int index = curve->KeyAdd(FbxTime(std::llround(key.seconds * double(FbxTime::kTicksPerSecond))));
        curve->KeySetValue(index, key.value);
        curve->KeySetInterpolation(index, interpolation);
        curve->KeySetTangentMode(index, interpolation == 8 ? 0x400 : 0);
    }
    return curve;
}

inline std::vector<float> Xs(const std::vector<Vec3>& values) {
    std::vector<float> xs;
    for (const Vec3& v : values) xs.push_back(v.x);
    return xs;
}

// A channel with keys at 0, 1, 2... s whose x components are `xs`.
inline VectorChannel XChannel(int interpolation, const std::vector<float>& xs) {
    VectorChannel channel;
    channel.interpolation = interpolation;
    for (size_t k = 0; k < xs.size(); ++k) {
        channel.times.push_back(float(k));
        channel.values.push_back({xs[k], 0.0f, 0.0f});
    }
    return channel;
}
