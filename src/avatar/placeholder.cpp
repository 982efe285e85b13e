#include "avatar/placeholder.h"

#include "avatar/scene_ownership.h"

namespace {
// Edge length of the placeholder triangle (the float with bits 0x38D1B717).
constexpr float kTiny = 0.0001f;
constexpr float kTargetThreshold = 1e-6f;
}  // namespace

Geometry* MakePlaceholderGeometry(Scene& scene) {
    auto* vertices = new VertexData;
    vertices->positions = {0.0f, 0.0f, 0.0f, kTiny, 0.0f, 0.0f, kTiny, kTiny, kTiny};
    vertices->normals = {0.0f, 0.0f, 1.0f, 0.0f, 0.0f, 1.0f, 0.0f, 0.0f, 1.0f};

    auto* instance = new MeshInstance;
    instance->indices = new std::vector<uint32_t>{0, 1, 2};
    instance->vertices = vertices;

    auto* geometry = new Geometry;
    geometry->name = "dummy_mesh";
    geometry->id = 1;
    geometry->meshInstances.push_back(instance);
    OwnPlaceholder(scene, geometry);
    return geometry;
}

MorphTarget* MakePlaceholderMorphTarget(Scene& scene, const std::string& morphName) {
    auto* target = new MorphTarget(3);
    target->name = "face_shapes." + morphName;
    // The first delta moves along z while the mesh's first vertex sits at the origin: the
    // runtime only needs a target that is not empty, not one that matches the mesh.
    target->deltaPositions = {0.0f, 0.0f, kTiny, kTiny, 0.0f, 0.0f, kTiny, kTiny, kTiny};
    target->deltaNormals = {0.0f, 0.0f, 1.0f, 0.0f, 0.0f, 1.0f, 0.0f, 0.0f, 1.0f};
    Compact(*target, kTargetThreshold);
    OwnPlaceholder(scene, target);
    return target;
}
