#include "runtimejson/animation_json.h"

#include "runtimejson/json_values.h"
#include "runtimejson/output_file.h"
#include "runtimejson/scene_walk.h"

namespace {

bool IsKeyed(const VectorChannel& channel) { return channel.times.size() >= 2; }

// Only linear channels are sampled; every other interpolation writes the channel's
// default value at each key, which is what the runtime has always been given.
Vec3 KeyValue(const VectorChannel& channel, float time) {
    if (channel.interpolation != 1) return channel.defaultValue;
    return EvaluateChannel(time, channel.times, channel.values);
}

Vec3 ConstantValue(const VectorChannel& channel) {
    if (channel.times.size() == 1 && !channel.values.empty()) return channel.values[0];
    return channel.defaultValue;
}

JsonValue BuildTrack(const AnimationTrack& track, const std::map<uint64_t, std::string>& nodeNames) {
    const VectorChannel* channels[3] = {&track.position, &track.rotation, &track.scale};
    static const char* const kKeys[3] = {"p", "r", "s"};

    const std::vector<float> times = MergeTimes(MergeTimes(track.rotation.times, track.scale.times), track.position.times);
    JsonValue keys = JsonValue::Array();
    for (float time : times) {
        JsonValue key = JsonValue::Object();
        key.Add("t", JsonValue(time));
        for (int c = 0; c < 3; ++c)
            if (IsKeyed(*channels[c])) key.Add(kKeys[c], Vec3Json(KeyValue(*channels[c], time)));
        keys.Add(key);
    }

    JsonValue defaults = JsonValue::Object();
    for (int c = 0; c < 3; ++c)
        if (!IsKeyed(*channels[c])) defaults.Add(kKeys[c], Vec3Json(ConstantValue(*channels[c])));

    auto name = nodeNames.find(track.nodeId);
    JsonValue record = JsonValue::Object();
    record.Add("name", JsonValue(name != nodeNames.end() ? name->second : std::string("missing")));
    record.Add("defaults", defaults);
    record.Add("keys", keys);
    return record;
}

}  // namespace

JsonValue BuildAnimationJson(const Animation& animation, const std::map<uint64_t, std::string>& nodeNames) {
    JsonValue nodes = JsonValue::Array();
    for (const AnimationTrack& track : animation.tracks) {
        // Tracks that only drive morph weights have no place in this format.
        if (track.position.times.empty() && track.rotation.times.empty() && track.scale.times.empty()) continue;
        nodes.Add(BuildTrack(track, nodeNames));
    }
    JsonValue body = JsonValue::Object();
    body.Add("version", JsonValue(int32_t(4)));
    body.Add("name", JsonValue(animation.name));
    body.Add("duration", JsonValue(animation.duration));
    body.Add("nodes", nodes);
    JsonValue document = JsonValue::Object();
    document.Add("animation", body);
    return document;
}

bool WriteAnimationsJson(const std::string& path, const Scene& scene, const std::set<std::string>& animationNames,
                         bool prettyPrint) {
    // Each named take replaces the file in archive order, so only the last one can remain.
    const Animation* last = nullptr;
    for (const Animation* animation : scene.animations)
        if (animation && animationNames.count(animation->name)) last = animation;
    if (!last) return true;

    std::map<uint64_t, std::string> nodeNames;
    for (const auto& [id, node] : NodesById(FlattenNodes(scene.root).nodes)) nodeNames.emplace(id, node->name);
    return WriteJsonDocument(path, BuildAnimationJson(*last, nodeNames), prettyPrint ? StandardFormat : NoFormat);
}
