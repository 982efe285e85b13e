#include <cstdint>
#include <map>
#include <vector>

#include "fbximport/fbx_node_walk.h"
#include "scene/console.h"
#include "scene/scene.h"

namespace {
void MultiplyComponents(Vec3& v, float factor) {
    v.x *= factor;
    v.y *= factor;
    v.z *= factor;
}

// Stage one: the file's unit as a scale on the root, taken back out of the top nodes and
// their position and scale tracks.
void MoveUnitToRoot(Scene& scene, float unitScale) {
    const float applied = unitScale * 0.01f;
    const float inverse = 1.0f / applied;
    ConsolePrint("Unit scale applied: %f\n", static_cast<double>(applied));
    GraphNode& root = *scene.root;
    MultiplyComponents(root.scale, applied);

    std::map<uint64_t, GraphNode*> topNodes;
    for (GraphNode* child : root.children) {
        if (!child) continue;
        MultiplyComponents(child->scale, inverse);
        MultiplyComponents(child->position, inverse);
        topNodes.emplace(child->id, child);
    }
    for (Animation* animation : scene.animations) {
        if (!animation) continue;
        for (AnimationTrack& track : animation->tracks) {
            if (topNodes.find(track.nodeId) == topNodes.end()) continue;
            ScaleChannel(track.position, inverse);
            ScaleChannel(track.scale, inverse);
        }
    }
}

// Stage two: a root scaled to exactly one centimetre returns to 1, and every position,
// keyed or not, is brought down by 100 instead.
void MoveCentimetresIntoPositions(Scene& scene) {
    GraphNode& root = *scene.root;
    root.scale.Set(1.0f, 1.0f, 1.0f);
    std::vector<GraphNode*> queue{&root};
    for (size_t front = 0; front < queue.size(); ++front) {
        GraphNode* node = queue[front];
        ConsolePrint("Node: %s\n", node->name.c_str());
        for (int axis = 0; axis < 3; ++axis)
            node->position[axis] = static_cast<float>(static_cast<double>(node->position[axis]) / 100.0);
        for (GraphNode* child : node->children)
            if (child) queue.push_back(child);
    }
    for (Animation* animation : scene.animations) {
        if (!animation) continue;
        for (AnimationTrack& track : animation->tracks) ScaleChannel(track.position, 0.01f);
    }
}
}  // namespace

void ApplyUnitScale(Scene& scene, float unitScale) {
    if (!scene.root) return;
    // Exact float comparisons on purpose: only a file in metres skips stage one, and only a
    // root scale component of exactly 0.01f starts stage two.
    if (unitScale != 100.0f) MoveUnitToRoot(scene, unitScale);
    const Vec3& rootScale = scene.root->scale;
    if (rootScale.x != 0.01f && rootScale.y != 0.01f && rootScale.z != 0.01f) return;
    MoveCentimetresIntoPositions(scene);
}
