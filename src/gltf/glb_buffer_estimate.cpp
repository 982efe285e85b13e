#include "gltf/glb_buffer_estimate.h"

#include <unordered_set>
#include <vector>

namespace {
size_t VertexBlockBytes(const VertexData& v) {
    size_t stride = 12;
    if (!v.normals.empty()) stride += 12;
    if (!v.colors.empty()) stride += 4;
    if (!v.joints.empty()) stride += 8;
    if (!v.weights.empty()) stride += 16;
    for (const std::vector<float>& set : v.texCoords)
        if (!set.empty()) stride += 8;
    return v.positions.size() / 3 * stride;
}

struct MeshWalk {
    std::unordered_set<const Geometry*> geometries;
    std::unordered_set<const void*> seen;  // instances, index lists, vertex data, targets, skins
    size_t bytes = 0;

    bool First(const void* p) { return p && seen.insert(p).second; }

    void Instance(const MeshInstance& mi) {
        if (mi.compressed) {
            bytes += mi.compressed->data.size() + 3;
            return;
        }
        if (First(mi.indices)) bytes += mi.indices->size() * 4 + 3;
        if (First(mi.vertices)) bytes += VertexBlockBytes(*mi.vertices);
        if (mi.morph) {
            for (const MorphTarget* t : mi.morph->targets)
                if (First(t)) bytes += size_t(t->count) * 28 + 12;
        }
    }

    void Node(const GraphNode& node) {
        const Geometry* g = node.geometry;
        if (g && geometries.insert(g).second) {
            for (const MeshInstance* mi : g->meshInstances) {
                if (!mi) continue;
                if (First(mi)) Instance(*mi);
                if (First(mi->skin)) bytes += mi->skin->joints.size() * 64 + 3;
            }
        }
    }
};

template <typename Channel>
size_t KeyedBytes(const Channel& c, size_t valueBytes) {
    if (c.times.empty()) return 0;
    size_t values = c.interpolation == kInterpolationCubic ? c.times.size() * 3 : c.values.size();
    return values * valueBytes + c.times.size() * 4 + 8;
}

size_t WeightsBytes(const WeightsChannel& c) {
    if (c.times.empty()) return 0;
    size_t floats = 0;
    for (const auto* list : {&c.inTangents, &c.values, &c.outTangents})
        for (const std::vector<float>& key : *list) floats += key.size();
    return floats * 4 + c.times.size() * 4 + 8;
}
}  // namespace

size_t EstimateGlbBufferBytes(const Scene& scene, const ExportOptions& options) {
    size_t bytes = 0;
    if (options.exportModel && scene.root) {
        MeshWalk walk;
        std::vector<const GraphNode*> pending{scene.root};
        while (!pending.empty()) {
            const GraphNode* node = pending.back();
            pending.pop_back();
            walk.Node(*node);
            for (const GraphNode* child : node->children)
                if (child) pending.push_back(child);
        }
        bytes += walk.bytes;
    }
    for (const Animation* animation : scene.animations) {
        if (!animation || !options.animations.count(animation->name)) continue;
        for (const AnimationTrack& t : animation->tracks) {
            bytes += KeyedBytes(t.position, 12) + KeyedBytes(t.rotationQuat, 16) + KeyedBytes(t.scale, 12) +
                     WeightsBytes(t.weights);
        }
    }
    return bytes;
}
