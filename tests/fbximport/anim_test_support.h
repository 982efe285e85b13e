// Animated documents built in memory for the extraction tests: stacks with their base
// layer, and curves with linear (or other) keys on node properties.
#pragma once

#include <cmath>
#include <string>
#include <vector>

#include "fbx/fbx_anim.h"
#include "import_test_support.h"

struct TestKey {
    double seconds;
    float value;
};

inline FbxTime Seconds(double seconds) {
    return FbxTime(static_cast<FbxLongLong>(std::llround(seconds * double(FbxTime::kTicksPerSecond))));
}

// A stack with one layer (the base layer), in the scene's stack list.
inline FbxAnimLayer* AddStack(FbxTestScene& doc, const std::string& name) {
    FbxAnimStack* stack = FbxAnimStack::Create(doc.Scene(), name.c_str());
    FbxAnimLayer* layer = FbxAnimLayer::Create(doc.Scene(), (name + " layer").c_str());
    stack->ConnectSrcObject(layer);
    return layer;
}

// Keys on a fresh curve of the channel ("X", "Y", "Z") of a node property on a layer, all
// with one interpolation (4 linear by default; 8 cubic keys get user tangents of slope 0).
inline FbxAnimCurve* Animate(FbxProperty& property, FbxAnimLayer* layer, const char* channel,
                             const std::vector<TestKey>& keys, int interpolation = 4) {
    FbxAnimCurve* curve = property.GetCurve(layer, property.GetName(), channel, true);
    for (const TestKey& key : keys) {
        const int index = curve->KeyAdd(Seconds(key.seconds));
        curve->KeySetValue(index, key.value);
        curve->KeySetInterpolation(index, interpolation);
        curve->KeySetTangentMode(index, interpolation == 8 ? 0x400 : 0);
    }
    return curve;
}

// Keys as whole-channel expectations.
inline std::vector<float> Xs(const std::vector<Vec3>& values) {
    std::vector<float> xs;
    for (const Vec3& v : values) xs.push_back(v.x);
    return xs;
}
