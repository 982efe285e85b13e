#include "runtimejson/animation_json.h"

#include <string_view>

#include "json/json_emitter.h"
#include "runtimejson/emit_helpers.h"
#include "runtimejson/json_tree_builder.h"
#include "runtimejson/scene_walk.h"

namespace {

bool IsKeyed(const VectorChannel& channel) { return channel.times.size() >= 2; }

// Only linear channels are sampled; every other interpolation writes the channel's
// default value at each key, which is what the runtime has always been given.
Vec3 KeyValue(const VectorChannel& channel, float time) {
    if (channel.interpolation != kInterpolationLinear) return channel.defaultValue;
    return EvaluateChannel(time, channel.times, channel.values);
}

Vec3 ConstantValue(const VectorChannel& channel) {
    if (channel.times.size() == 1 && !channel.values.empty()) return channel.values[0];
    return channel.defaultValue;
}

template <typename Out>
void EmitTrack(Out& out, const AnimationTrack& track, const std::map<uint64_t, std::string>& nodeNames) {
    const VectorChannel* channels[3] = {&track.position, &track.rotation, &track.scale};
    static const char* const kKeys[3] = {"p", "r", "s"};

    auto name = nodeNames.find(track.nodeId);
    out.BeginObject();
    Field(out, "name", name != nodeNames.end() ? std::string_view(name->second) : std::string_view("missing"));
    out.Name("defaults");
    out.BeginObject();
    for (int c = 0; c < 3; ++c) {
        if (IsKeyed(*channels[c])) continue;
        out.Name(kKeys[c]);
        EmitVec3(out, ConstantValue(*channels[c]));
    }
    out.EndObject();

    out.Name("keys");
    out.BeginArray();
    for (float time : MergeTimes(MergeTimes(track.rotation.times, track.scale.times), track.position.times)) {
        out.BeginObject();
        Field(out, "t", time);
        for (int c = 0; c < 3; ++c) {
            if (!IsKeyed(*channels[c])) continue;
            out.Name(kKeys[c]);
            EmitVec3(out, KeyValue(*channels[c], time));
        }
        out.EndObject();
    }
    out.EndArray();
    out.EndObject();
}

template <typename Out>
void EmitAnimation(Out& out, const Animation& animation, const std::map<uint64_t, std::string>& nodeNames) {
    out.BeginObject();
    out.Name("animation");
    out.BeginObject();
    Field(out, "version", int32_t(4));
    Field(out, "name", animation.name);
    Field(out, "duration", animation.duration);
    out.Name("nodes");
    out.BeginArray();
    for (const AnimationTrack& track : animation.tracks) {
        // Tracks that only drive morph weights have no place in this format.
        if (track.position.times.empty() && track.rotation.times.empty() && track.scale.times.empty()) continue;
        EmitTrack(out, track, nodeNames);
    }
    out.EndArray();
    out.EndObject();
    out.EndObject();
}

}  // namespace

JsonValue BuildAnimationJson(const Animation& animation, const std::map<uint64_t, std::string>& nodeNames) {
    JsonTreeBuilder builder;
    EmitAnimation(builder, animation, nodeNames);
    return builder.Result();
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
    JsonFileSink sink(path);
    if (!sink.IsOpen()) return false;
    JsonEmitter out(sink, prettyPrint ? StandardFormat : NoFormat);
    EmitAnimation(out, *last, nodeNames);
    return sink.Close();
}
