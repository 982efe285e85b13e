#include "fbximport/curve_thinning.h"

#include <cmath>
#include <utility>
#include <vector>

namespace {

float MaxAbsDifference(const Vec3& a, const Vec3& b) { return MaxComponent(Abs(a - b)); }

float MaxAbsDifference(const Quat& a, const Quat& b) {
    const Quat d = a - b;
    float largest = std::fabs(d.x);
    for (int k = 1; k < 4; ++k)
        if (std::fabs(d[k]) > largest) largest = std::fabs(d[k]);
    return largest;
}

// Component by component, so quaternions are blended without spherical interpolation.
Vec3 Blend(const Vec3& first, const Vec3& last, float f) {
    const float g = 1.0f - f;
    return {last.x * f + first.x * g, last.y * f + first.y * g, last.z * f + first.z * g};
}

Quat Blend(const Quat& first, const Quat& last, float f) {
    const float g = 1.0f - f;
    return {last.x * f + first.x * g, last.y * f + first.y * g, last.z * f + first.z * g, last.w * f + first.w * g};
}

template <class Channel>
void Simplify(Channel& channel, float threshold) {
    const auto& times = channel.times;
    const auto& values = channel.values;
    const size_t count = std::min(times.size(), values.size());
    if (channel.interpolation == 2 || count <= 2) return;

    // The split on the worst key recurses on the left part and loops on the right one; the
    // two parts never share an inner key, so a work list of spans gives the same marks
    // without a call depth that grows with the key count.
    std::vector<char> removed(count, 0);
    std::vector<std::pair<size_t, size_t>> spans{{0, count - 1}};
    while (!spans.empty()) {
        const auto [first, last] = spans.back();
        spans.pop_back();
        if (last - first <= 1) continue;
        const float span = times[last] - times[first];
        size_t worst = first + 1;
        float worstError = 0.0f;
        for (size_t i = first + 1; i < last; ++i) {
            const float f = (times[i] - times[first]) / span;
            const float error = MaxAbsDifference(Blend(values[first], values[last], f), values[i]);
            // The first candidate counts whatever its error, a later one only when strictly worse.
            if (i == first + 1 || error > worstError) {
                worst = i;
                worstError = error;
            }
        }
        if (worstError < threshold) {
            for (size_t i = first + 1; i < last; ++i) removed[i] = 1;
            continue;
        }
        spans.emplace_back(worst, last);
        spans.emplace_back(first, worst);
    }

    size_t kept = 0;
    for (size_t i = 0; i < count; ++i) {
        if (removed[i]) continue;
        channel.times[kept] = channel.times[i];
        channel.values[kept] = channel.values[i];
        ++kept;
    }
    channel.times.resize(kept);
    channel.values.resize(kept);
}

}  // namespace

QuatChannel MakeQuatChannel(const VectorChannel& rotation) {
    QuatChannel channel;
    channel.defaultValue = EulerToQuat(rotation.defaultValue);
    channel.interpolation = rotation.interpolation;
    channel.times = rotation.times;
    channel.values.reserve(rotation.values.size());
    const bool cubic = rotation.interpolation == 2;
    if (cubic) {
        channel.inTangents.reserve(rotation.values.size());
        channel.outTangents.reserve(rotation.values.size());
    }
    for (size_t k = 0; k < rotation.values.size(); ++k) {
        const Vec3& value = rotation.values[k];
        const Quat base = EulerToQuat(value);
        if (cubic && k < rotation.inTangents.size() && k < rotation.outTangents.size()) {
            channel.inTangents.push_back(EulerToQuat(value + rotation.inTangents[k]) - base);
            channel.outTangents.push_back(EulerToQuat(value + rotation.outTangents[k]) - base);
        }
        channel.values.push_back(base);
    }
    return channel;
}

void SimplifyVectorChannel(VectorChannel& channel, float threshold) { Simplify(channel, threshold); }
void SimplifyQuatChannel(QuatChannel& channel, float threshold) { Simplify(channel, threshold); }
