#include "gltf/glb_animation_export.h"

#include <algorithm>
#include <cstring>
#include <unordered_map>

#include "gltf/glb_builder.h"
#include "gltf/glb_skin_export.h"

namespace {
struct ExportContext {
    GlbBuilder& builder;
    TimeAccessorCache times;
};

int32_t TimeAccessor(ExportContext& ctx, const std::vector<float>& times) {
    auto found = ctx.times.find(times);
    if (found != ctx.times.end()) return found->second;
    int32_t view = AddDataView(ctx.builder, times.data(), times.size() * sizeof(float));
    int32_t accessor = AddAccessor(ctx.builder, view, kFormatScalarF32);
    GlbAccessor& a = ctx.builder.accessors[size_t(accessor)];
    a.count = static_cast<uint32_t>(times.size());
    if (!times.empty()) {
        auto [lo, hi] = std::minmax_element(times.begin(), times.end());
        a.min = {*lo};
        a.max = {*hi};
    }
    ctx.times.emplace(times, accessor);
    return accessor;
}

// Vectors of N floats (Vec3, Quat) written as they lie, or as in, value, out per key.
template <typename V>
int32_t ValueAccessor(ExportContext& ctx, int32_t interpolation, const std::vector<float>& times,
                      const std::vector<V>& inTangents, const std::vector<V>& values,
                      const std::vector<V>& outTangents, const AccessorFormat& format) {
    static_assert(sizeof(V) % sizeof(float) == 0);
    GlbBuilder& b = ctx.builder;
    int32_t view = AddBufferView(b, 0);
    uint32_t count;
    if (interpolation == kInterpolationCubic) {
        count = static_cast<uint32_t>(times.size() * 3);
        // Sized from the key count itself, so that the loop below can never pass the end.
        uint8_t* out = GrowView(b, view, times.size() * 3 * sizeof(V));
        // Keys beyond a short tangent or value list stay zero.
        for (size_t k = 0; k < times.size(); ++k, out += 3 * sizeof(V)) {
            if (k < inTangents.size()) std::memcpy(out, &inTangents[k], sizeof(V));
            if (k < values.size()) std::memcpy(out + sizeof(V), &values[k], sizeof(V));
            if (k < outTangents.size()) std::memcpy(out + 2 * sizeof(V), &outTangents[k], sizeof(V));
        }
    } else {
        count = static_cast<uint32_t>(values.size());
        AppendToView(b, view, values.data(), values.size() * sizeof(V));
    }
    int32_t accessor = AddAccessor(b, view, format);
    b.accessors[size_t(accessor)].count = count;
    return accessor;
}

int32_t WeightsAccessor(ExportContext& ctx, const WeightsChannel& channel) {
    GlbBuilder& b = ctx.builder;
    std::vector<const std::vector<float>*> parts;
    if (channel.interpolation == kInterpolationCubic) {
        parts.reserve(channel.times.size() * 3);
        for (size_t k = 0; k < channel.times.size(); ++k) {
            if (k < channel.inTangents.size()) parts.push_back(&channel.inTangents[k]);
            if (k < channel.values.size()) parts.push_back(&channel.values[k]);
            if (k < channel.outTangents.size()) parts.push_back(&channel.outTangents[k]);
        }
    } else {
        parts.reserve(channel.values.size());
        for (const std::vector<float>& v : channel.values) parts.push_back(&v);
    }
    size_t total = 0;
    for (const auto* p : parts) total += p->size();

    int32_t view = AddBufferView(b, 0);
    uint8_t* out = GrowView(b, view, total * sizeof(float));
    bool any = false;
    float lo = 0.0f, hi = 0.0f;
    for (const auto* p : parts) {
        if (p->empty()) continue;
        std::memcpy(out, p->data(), p->size() * sizeof(float));
        out += p->size() * sizeof(float);
        for (float f : *p) {
            if (!any) {
                lo = hi = f;
                any = true;
            } else {
                if (f < lo) lo = f;
                if (f > hi) hi = f;
            }
        }
    }
    int32_t accessor = AddAccessor(b, view, kFormatScalarF32);
    GlbAccessor& a = b.accessors[size_t(accessor)];
    a.count = static_cast<uint32_t>(total);
    if (any) {
        a.min = {lo};
        a.max = {hi};
    }
    return accessor;
}

void AddChannel(GlbAnimation& animation, int32_t node, const char* path, int32_t input, int32_t output,
                int32_t interpolation) {
    GlbSampler sampler;
    sampler.input = input;
    sampler.output = output;
    sampler.interpolation = InterpolationName(interpolation);
    GlbChannel channel;
    channel.sampler = static_cast<int32_t>(animation.samplers.size());
    channel.node = node;
    channel.path = path;
    animation.samplers.push_back(std::move(sampler));
    animation.channels.push_back(std::move(channel));
}

template <typename Channel>
void ExportKeyedChannel(ExportContext& ctx, const Channel& c, const AccessorFormat& format, int32_t node,
                        const char* path, GlbAnimation& animation) {
    if (c.times.empty()) return;
    // The value block of a channel goes before its (possibly shared) time block.
    int32_t output = ValueAccessor(ctx, c.interpolation, c.times, c.inTangents, c.values, c.outTangents, format);
    AddChannel(animation, node, path, TimeAccessor(ctx, c.times), output, c.interpolation);
}

void ExportTrack(ExportContext& ctx, const AnimationTrack& track, int32_t node, GlbAnimation& animation) {
    ExportKeyedChannel(ctx, track.position, kFormatVec3F32, node, "translation", animation);
    ExportKeyedChannel(ctx, track.rotationQuat, kFormatVec4F32, node, "rotation", animation);
    ExportKeyedChannel(ctx, track.scale, kFormatVec3F32, node, "scale", animation);
    if (!track.weights.times.empty()) {
        int32_t output = WeightsAccessor(ctx, track.weights);
        AddChannel(animation, node, "weights", TimeAccessor(ctx, track.weights.times), output,
                   track.weights.interpolation);
    }
}
}  // namespace

const char* InterpolationName(int32_t interpolation) {
    switch (interpolation) {
        case kInterpolationConstant: return "STEP";
        case kInterpolationLinear: return "LINEAR";
        case kInterpolationCubic: return "CUBICSPLINE";
        default: return "";
    }
}

void ExportAnimations(const std::set<std::string>& animationNames, GlbBuilder& builder,
                      std::vector<GlbAnimation>& animationsOut, const std::vector<GlbNode>& nodes,
                      const Scene& scene) {
    std::unordered_map<uint64_t, int32_t> nodeIndexById = MapNodeIds(nodes);
    ExportContext ctx{builder, {}};
    for (const Animation* animation : scene.animations) {
        if (!animation || !animationNames.count(animation->name)) continue;
        GlbAnimation out;
        out.name = animation->name;
        for (const AnimationTrack& track : animation->tracks) {
            auto node = nodeIndexById.find(track.nodeId);
            if (node == nodeIndexById.end()) continue;
            ExportTrack(ctx, track, node->second, out);
        }
        animationsOut.push_back(std::move(out));
    }
}
