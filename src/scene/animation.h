// Animation takes in the form the writers want: per-node tracks of separate channels.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "scene/math.h"

// Codes of a channel's `interpolation`. Cubic channels carry one in- and one out-tangent
// per key.
enum Interpolation : int32_t {
    kInterpolationConstant = 0,
    kInterpolationLinear = 1,
    kInterpolationCubic = 2,
};

struct VectorChannel {
    Vec3 defaultValue;
    int32_t interpolation = kInterpolationConstant;  // an Interpolation code
    std::vector<float> times;
    std::vector<Vec3> inTangents;  // one per key for cubic, else empty
    std::vector<Vec3> values;
    std::vector<Vec3> outTangents;
};

struct QuatChannel {
    Quat defaultValue;
    int32_t interpolation = kInterpolationConstant;
    std::vector<float> times;
    std::vector<Quat> inTangents;
    std::vector<Quat> values;
    std::vector<Quat> outTangents;
};

struct WeightsChannel {
    std::vector<float> defaults;  // one per morph target
    int32_t interpolation = kInterpolationConstant;
    std::vector<float> times;
    std::vector<std::vector<float>> inTangents;
    std::vector<std::vector<float>> values;
    std::vector<std::vector<float>> outTangents;
};

struct AnimationTrack {
    uint64_t nodeId = 0;
    VectorChannel position;
    VectorChannel rotation;  // Euler degrees
    QuatChannel rotationQuat;
    VectorChannel scale;
    WeightsChannel weights;
};

struct Animation {
    std::string name;
    float duration = 0.0f;
    std::vector<AnimationTrack> tracks;
};

class AnimationDictionary {
public:
    std::map<std::string, Animation*> byName;
    std::vector<Animation*> animations;

    // Process-wide pointer to the most recently constructed dictionary.
    static inline AnimationDictionary* current = nullptr;

    AnimationDictionary() { current = this; }
    AnimationDictionary(const AnimationDictionary&) = delete;
    AnimationDictionary& operator=(const AnimationDictionary&) = delete;
    virtual ~AnimationDictionary();

    // A second animation of a known name is reported and dropped (the caller keeps it).
    void AddAnimation(Animation* animation);
    Animation* GetAnimation(int32_t i) const { return animations[size_t(i)]; }
    int32_t GetAnimationCount() const { return static_cast<int32_t>(byName.size()); }
};

void ScaleChannel(VectorChannel& channel, float factor);

// Value of a channel at a time: holds the ends, interpolates linearly between keys.
template <typename V>
V EvaluateChannel(float time, const std::vector<float>& times, const std::vector<V>& values);

std::vector<float> MergeTimes(const std::vector<float>& a, const std::vector<float>& b);
