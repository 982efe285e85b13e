// Sampling of FBX animation curves into the scene's channels: at the keys of the source or
// at a fixed interval, with the interpolation the writers will announce, followed by the
// removal of keys that add nothing.
// Private to the fbximport library.
#pragma once

#include <array>
#include <cfloat>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "fbx/fbx_time.h"
#include "scene/animation.h"
#include "scene/options.h"

class FbxAnimCurve;
class FbxAnimLayer;
class FbxProperty;

// Seconds covered by some curves: the earliest first key and the latest last key. The start
// values stand when no curve has a key; the end starts at the smallest normal float, not
// the most negative one, so a range whose keys all lie at or before 0 ends just above 0.
struct TimeRange {
    float start = FLT_MAX;
    float end = FLT_MIN;

    void Add(const FbxAnimCurve* curve);
    void Add(const TimeRange& other);
};

// The curves of the "X", "Y", "Z" channels of a double3 property on a layer, null where the
// layer has none.
std::array<FbxAnimCurve*, 3> PropertyCurves(FbxProperty& property, FbxAnimLayer* layer);
TimeRange CurveTimeRange(FbxProperty& property, FbxAnimLayer* layer);
TimeRange CurveTimeRange(const std::array<FbxAnimCurve*, 3>& curves);

// The take being sampled: its clipped range in seconds, and its start in ticks, the origin
// of every channel time.
struct TakeRange {
    float start = 0.0f;
    float end = 0.0f;
    FbxTime origin;
    std::string name;  // for the refusal of a runaway sample count

    TakeRange(float rangeStart, float rangeEnd, std::string takeName);
};

// A channel with the property's value as default and, when a curve has keys, one key per
// sample time with the curves' values (the default where a curve is missing or gives NaN).
VectorChannel SampleVectorChannel(FbxProperty& property, FbxAnimLayer* layer, const ConversionOptions& options,
                                  const TakeRange& take);
// The same with the property's curves looked up already.
VectorChannel SampleVectorChannel(const FbxProperty& property, const std::array<FbxAnimCurve*, 3>& curves,
                                  const ConversionOptions& options, const TakeRange& take);

// One weight column per curve (0 where a curve is null or gives NaN), over the union of the
// curves' keys or ranges.
WeightsChannel SampleWeightsChannel(std::span<FbxAnimCurve* const> curves, const ConversionOptions& options,
                                    const TakeRange& take);

// 0 constant, 1 linear, 2 cubic. Without cubic output every channel is linear; with it the
// most demanding key of the curves decides, a missing or empty curve counting as constant.
int32_t ChooseInterpolation(std::span<FbxAnimCurve* const> curves, bool cubicCurves);

// The sample times in ticks: the sorted union of the curves' keys, uncut, or with a
// positive interval the steps from the clipped range's start and its end in any case.
// False when the interval path leaves nothing of the range. Ends the run on an interval so
// fine that a channel would need more than kMaxSamplesPerChannel keys.
bool SampleTimes(std::span<FbxAnimCurve* const> curves, const ConversionOptions& options, const TakeRange& take,
                 std::vector<FbxTime>& times);
inline constexpr uint64_t kMaxSamplesPerChannel = 10'000'000;

// A cubic channel whose tangents are all (nearly) zero becomes linear; then inner keys within
// tolerance of the key kept before them and of the one after them are dropped.
void RemoveRedundantKeys(VectorChannel& channel, float tolerance);
// The same on rows; distances are taken over the shorter row of a pair.
void RemoveRedundantKeys(WeightsChannel& channel, float tolerance);
