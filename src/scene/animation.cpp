#include "scene/animation.h"

#include <algorithm>

#include "scene/console.h"

AnimationDictionary::~AnimationDictionary() {
    for (auto& [name, animation] : byName) delete animation;
    byName.clear();
    animations.clear();
    if (current == this) current = nullptr;
}

void AnimationDictionary::AddAnimation(Animation* animation) {
    auto it = byName.find(animation->name);
    if (it != byName.end() && it->second != nullptr) {
        ConsolePrint("AnimationDictionary::AddAnimation : Animation %s occurs more than once in animation archive",
                     animation->name.c_str());
        return;
    }
    byName[animation->name] = animation;
    animations.push_back(animation);
}

void ScaleChannel(VectorChannel& channel, float factor) {
    channel.defaultValue *= factor;
    for (auto& v : channel.inTangents) v *= factor;
    for (auto& v : channel.values) v *= factor;
    for (auto& v : channel.outTangents) v *= factor;
}

namespace {
Vec3 Lerp(const Vec3& a, const Vec3& b, float f) { return Scaled(a, 1.0f - f) + Scaled(b, f); }
Quat Lerp(const Quat& a, const Quat& b, float f) { return a * (1.0f - f) + b * f; }
float Lerp(float a, float b, float f) { return a * (1.0f - f) + b * f; }
}  // namespace

template <typename V>
V EvaluateChannel(float time, const std::vector<float>& times, const std::vector<V>& values) {
    if (times.empty() || values.empty()) return V{};
    const size_t n = std::min(times.size(), values.size());
    if (n == 1 || time <= times[0]) return values[0];
    if (time >= times[n - 1]) return values[n - 1];
    auto it = std::lower_bound(times.begin(), times.begin() + static_cast<std::ptrdiff_t>(n), time);
    size_t i = static_cast<size_t>(it - times.begin());
    if (i == 0) return values[0];  // only a NaN time or key gets here; there is no earlier key
    if (times[i] == time) return values[i];
    float p = times[i - 1], q = times[i];
    float f = (time - p) / (q - p);
    return Lerp(values[i - 1], values[i], f);
}

template Vec3 EvaluateChannel<Vec3>(float, const std::vector<float>&, const std::vector<Vec3>&);
template Quat EvaluateChannel<Quat>(float, const std::vector<float>&, const std::vector<Quat>&);
template float EvaluateChannel<float>(float, const std::vector<float>&, const std::vector<float>&);

std::vector<float> MergeTimes(const std::vector<float>& a, const std::vector<float>& b) {
    std::vector<float> out;
    out.reserve(a.size() + b.size());
    size_t i = 0, j = 0;
    auto push = [&out](float t) { out.push_back(t); };
    while (i < a.size() && j < b.size()) {
        if (a[i] < b[j]) {
            push(a[i++]);
        } else if (b[j] < a[i]) {
            push(b[j++]);
        } else {  // equal (or unordered NaN): one of the pair is taken
            push(a[i++]);
            ++j;
        }
    }
    while (i < a.size()) push(a[i++]);
    while (j < b.size()) push(b[j++]);
    return out;
}
