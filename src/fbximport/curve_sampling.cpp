#include "fbximport/curve_sampling.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <utility>

#include "fbx/fbx_anim.h"
#include "fbx/fbx_property.h"
#include "scene/console.h"

namespace {

constexpr float kRedundantKeyTolerance = 1e-5f;

float Seconds(FbxTime time) { return static_cast<float>(time.GetSecondDouble()); }

bool HasKeys(const FbxAnimCurve* curve) { return curve && curve->KeyGetCount() > 0; }

// Largest absolute component of a, and of a - b.
float MaxAbs(const Vec3& a) { return MaxComponent(Abs(a)); }
float MaxAbsDifference(const Vec3& a, const Vec3& b) { return MaxAbs(a - b); }
float MaxAbs(const std::vector<float>& a) {
    float largest = 0.0f;
    for (float v : a) largest = std::max(largest, std::fabs(v));
    return largest;
}
float MaxAbsDifference(const std::vector<float>& a, const std::vector<float>& b) {
    const size_t n = std::min(a.size(), b.size());
    float largest = 0.0f;
    for (size_t k = 0; k < n; ++k) largest = std::max(largest, std::fabs(a[k] - b[k]));
    return largest;
}

template <class V>
bool AllNearFirst(const std::vector<V>& tangents, float tolerance) {
    if (tangents.empty()) return false;
    if (!(MaxAbs(tangents.front()) < tolerance)) return false;
    for (const V& tangent : tangents)
        if (!(MaxAbsDifference(tangent, tangents.front()) < tolerance)) return false;
    return true;
}

// Works on any channel record: times, values and tangent lists of one value type.
template <class Channel>
void RemoveRedundant(Channel& channel, float tolerance) {
    if (channel.interpolation == 2 && AllNearFirst(channel.inTangents, tolerance) &&
        AllNearFirst(channel.outTangents, tolerance)) {
        channel.interpolation = 1;
        channel.inTangents.clear();
        channel.outTangents.clear();
    }
    auto& values = channel.values;
    auto& times = channel.times;
    const size_t count = std::min(values.size(), times.size());
    if (channel.interpolation == 2 || count <= 2) return;
    // Erasing key i and testing the same index again compares each key with the last key
    // kept before it and the untouched key after it; one pass with a write index does the
    // same in linear time.
    size_t kept = 1;
    for (size_t i = 1; i + 1 < count; ++i) {
        if (MaxAbsDifference(values[i], values[kept - 1]) < tolerance &&
            MaxAbsDifference(values[i], values[i + 1]) < tolerance)
            continue;
        if (kept != i) {
            values[kept] = std::move(values[i]);
            times[kept] = times[i];
        }
        ++kept;
    }
    if (kept != count - 1) {
        values[kept] = std::move(values[count - 1]);
        times[kept] = times[count - 1];
    }
    ++kept;
    values.resize(kept);
    times.resize(kept);
}

float& Cell(Vec3& row, size_t column) { return row[static_cast<int>(column)]; }
float& Cell(std::vector<float>& row, size_t column) { return row[column]; }

// One row of values a time: each curve's value in its column (a NaN keeps the default)
// and, for a cubic channel, its left and right derivatives; a column without a curve keeps
// its default value and zero tangents.
template <typename Channel, typename Row>
void SampleRows(Channel& channel, std::span<FbxAnimCurve* const> curves, const std::vector<FbxTime>& times,
                const TakeRange& take, const Row& defaults, const Row& zeros) {
    const bool cubic = channel.interpolation == 2;
    channel.times.reserve(times.size());
    channel.values.reserve(times.size());
    if (cubic) {
        channel.inTangents.reserve(times.size());
        channel.outTangents.reserve(times.size());
    }
    for (const FbxTime t : times) {
        channel.times.push_back(Seconds(t - take.origin));
        Row sample = defaults;
        Row left = cubic ? zeros : Row();
        Row right = cubic ? zeros : Row();
        for (size_t column = 0; column < curves.size(); ++column) {
            const FbxAnimCurve* curve = curves[column];
            if (!curve) continue;
            const float v = curve->Evaluate(t);
            if (!std::isnan(v)) Cell(sample, column) = v;
            if (cubic) {
                Cell(left, column) = curve->EvaluateLeftDerivative(t);
                Cell(right, column) = curve->EvaluateRightDerivative(t);
            }
        }
        channel.values.push_back(std::move(sample));
        if (cubic) {
            channel.inTangents.push_back(std::move(left));
            channel.outTangents.push_back(std::move(right));
        }
    }
}

}  // namespace

void TimeRange::Add(const FbxAnimCurve* curve) {
    if (!HasKeys(curve)) return;
    start = std::min(start, Seconds(curve->KeyGetTime(0)));
    end = std::max(end, Seconds(curve->KeyGetTime(curve->KeyGetCount() - 1)));
}

void TimeRange::Add(const TimeRange& other) {
    start = std::min(start, other.start);
    end = std::max(end, other.end);
}

std::array<FbxAnimCurve*, 3> PropertyCurves(FbxProperty& property, FbxAnimLayer* layer) {
    // What GetCurve(layer, property name, channel, false) finds for each channel: the first
    // curve node of the property on the layer, then the channel's first curve. The node is
    // found once for the three, in one pass over the property's sources: a property has a
    // curve node for every take, and fetching them by index would walk the list once each.
    std::array<FbxAnimCurve*, 3> curves{};
    if (!property.IsValid() || !layer) return curves;
    FbxAnimCurveNode* node = nullptr;
    for (const FbxProperty& source : property.Sources()) {
        FbxObject* object = source.IsRoot() ? source.GetFbxObject() : nullptr;
        if (object && object->Is<FbxAnimCurveNode>() && object->IsConnectedDstObject(layer)) {
            node = static_cast<FbxAnimCurveNode*>(object);
            break;
        }
    }
    if (!node) return curves;
    static constexpr const char* kChannels[3] = {"X", "Y", "Z"};
    for (size_t axis = 0; axis < 3; ++axis) {
        const int channel = node->GetChannelIndex(kChannels[axis]);
        if (channel >= 0 && channel < node->GetChannelsCount()) curves[axis] = node->GetCurve(channel, 0);
    }
    return curves;
}

TimeRange CurveTimeRange(FbxProperty& property, FbxAnimLayer* layer) { return CurveTimeRange(PropertyCurves(property, layer)); }

TimeRange CurveTimeRange(const std::array<FbxAnimCurve*, 3>& curves) {
    TimeRange range;
    for (const FbxAnimCurve* curve : curves) range.Add(curve);
    return range;
}

TakeRange::TakeRange(float rangeStart, float rangeEnd, std::string takeName)
    : start(rangeStart), end(rangeEnd), name(std::move(takeName)) {
    origin.SetSecondDouble(static_cast<double>(rangeStart));
}

int32_t ChooseInterpolation(std::span<FbxAnimCurve* const> curves, bool cubicCurves) {
    if (!cubicCurves) return 1;
    // FBX interpolation words: 2 constant, 4 linear, 8 cubic.
    int largest = 2;
    for (const FbxAnimCurve* curve : curves) {
        const int keys = curve ? curve->KeyGetCount() : 0;
        for (int k = 0; k < keys; ++k) largest = std::max(largest, curve->KeyGetInterpolation(k));
    }
    return largest == 2 ? 0 : (largest == 8 ? 2 : 1);
}

bool SampleTimes(std::span<FbxAnimCurve* const> curves, const ConversionOptions& options, const TakeRange& take,
                 std::vector<FbxTime>& times) {
    times.clear();
    if (options.keyframeInterval > 0.0f) {
        TimeRange range;
        for (const FbxAnimCurve* curve : curves) range.Add(curve);
        const float first = std::max(range.start, take.start);
        const float last = std::min(range.end, take.end);
        if (first > last) return false;
        FbxTime firstTime, lastTime, step;
        firstTime.SetSecondDouble(static_cast<double>(first));
        lastTime.SetSecondDouble(static_cast<double>(last));
        step.SetSecondDouble(static_cast<double>(options.keyframeInterval));
        // Steps are whole ticks, so the samples never drift. Counted before anything is
        // stored: an interval below one tick, or one far finer than the range, is refused.
        const uint64_t span = static_cast<uint64_t>(lastTime.Get()) - static_cast<uint64_t>(firstTime.Get());
        const uint64_t stepTicks = step.Get() > 0 ? static_cast<uint64_t>(step.Get()) : 0;
        uint64_t below = 0;  // samples first + i * step that lie below last
        if (span > 0) {
            below = stepTicks == 0 ? UINT64_MAX : span / stepTicks + (span % stepTicks != 0 ? 1 : 0);
        }
        if (below >= kMaxSamplesPerChannel) {
            EndRun("keyframe interval of %g seconds samples take '%s' at more than %llu times a channel.",
                   static_cast<double>(options.keyframeInterval), take.name.c_str(),
                   static_cast<unsigned long long>(kMaxSamplesPerChannel));
        }
        times.reserve(static_cast<size_t>(below) + 1);
        FbxTime t = firstTime;
        for (uint64_t k = 0; k < below; ++k, t += step) times.push_back(t);
        times.push_back(lastTime);
        return true;
    }
    // Each curve's keys are in time order already: merge them one curve at a time. Curves
    // of one property usually share their key times, and then there is nothing to merge.
    std::vector<FbxTime> keys, merged;
    for (const FbxAnimCurve* curve : curves) {
        const int count = curve ? curve->KeyGetCount() : 0;
        if (count <= 0) continue;
        keys.resize(static_cast<size_t>(count));
        for (int k = 0; k < count; ++k) keys[static_cast<size_t>(k)] = curve->KeyGetTime(k);
        // Keys out of order (a curve edited in memory) are put in order like any other.
        if (!std::is_sorted(keys.begin(), keys.end())) std::sort(keys.begin(), keys.end());
        keys.erase(std::unique(keys.begin(), keys.end()), keys.end());
        if (times.empty()) {
            times.swap(keys);
        } else if (keys != times) {
            merged.clear();
            merged.reserve(times.size() + keys.size());
            std::set_union(times.begin(), times.end(), keys.begin(), keys.end(), std::back_inserter(merged));
            times.swap(merged);
        }
    }
    return true;
}

VectorChannel SampleVectorChannel(FbxProperty& property, FbxAnimLayer* layer, const ConversionOptions& options,
                                  const TakeRange& take) {
    return SampleVectorChannel(property, PropertyCurves(property, layer), options, take);
}

VectorChannel SampleVectorChannel(const FbxProperty& property, const std::array<FbxAnimCurve*, 3>& curves,
                                  const ConversionOptions& options, const TakeRange& take) {
    VectorChannel channel;
    const FbxDouble3 value = property.Get<FbxDouble3>();
    channel.defaultValue.Set(static_cast<float>(value[0]), static_cast<float>(value[1]), static_cast<float>(value[2]));

    if (!HasKeys(curves[0]) && !HasKeys(curves[1]) && !HasKeys(curves[2])) return channel;

    std::vector<FbxTime> times;
    if (!SampleTimes(curves, options, take, times)) return channel;
    channel.interpolation = ChooseInterpolation(curves, options.cubicCurves);
    SampleRows(channel, curves, times, take, channel.defaultValue, Vec3());
    RemoveRedundantKeys(channel, kRedundantKeyTolerance);
    return channel;
}

WeightsChannel SampleWeightsChannel(std::span<FbxAnimCurve* const> curves, const ConversionOptions& options,
                                    const TakeRange& take) {
    WeightsChannel channel;
    channel.defaults.assign(curves.size(), 0.0f);

    std::vector<FbxTime> times;
    if (!SampleTimes(curves, options, take, times)) return channel;
    channel.interpolation = ChooseInterpolation(curves, options.cubicCurves);
    SampleRows(channel, curves, times, take, channel.defaults, std::vector<float>(curves.size(), 0.0f));
    RemoveRedundantKeys(channel, kRedundantKeyTolerance);
    return channel;
}

void RemoveRedundantKeys(VectorChannel& channel, float tolerance) { RemoveRedundant(channel, tolerance); }
void RemoveRedundantKeys(WeightsChannel& channel, float tolerance) { RemoveRedundant(channel, tolerance); }
