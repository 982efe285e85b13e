#include "avatar/placeholder.h"

#include <memory>

namespace {
// Edge length of the placeholder triangle (the float with bits 0x38D1B717).
constexpr float kTiny = 0.0001f;
constexpr float kTargetThreshold = 1e-6f;
}  // namespace

Geometry* MakePlaceholderGeometry(Scene& scene) {
    VertexData* vertices = scene.Own(std::make_unique<VertexData>());
    vertices->positions = {0.0f, 0.0f, 0.0f, kTiny, 0.0f, 0.0f, kTiny, kTiny, kTiny};
    vertices->normals = {0.0f, 0.0f, 1.0f, 0.0f, 0.0f, 1.0f, 0.0f, 0.0f, 1.0f};

    MeshInstance* instance = scene.Own(std::make_unique<MeshInstance>());
    instance->indices = scene.Own(std::make_unique<std::vector<uint32_t>>(std::vector<uint32_t>{0, 1, 2}));
    instance->vertices = vertices;

    Geometry* geometry = scene.Own(std::make_unique<Geometry>());
    geometry->name = "dummy_mesh";
    geometry->id = 1;
    geometry->meshInstances.push_back(instance);
    return geometry;
}

MorphTarget* MakePlaceholderMorphTarget(Scene& scene, const std::string& morphName) {
    MorphTarget* target = scene.Own(std::make_unique<MorphTarget>(3));
    target->name = "face_shapes." + morphName;
    // The first delta moves along z while the mesh's first vertex sits at the origin: the
    // runtime only needs a target that is not empty, not one that matches the mesh.
    target->deltaPositions = {0.0f, 0.0f, kTiny, kTiny, 0.0f, 0.0f, kTiny, kTiny, kTiny};
    target->deltaNormals = {0.0f, 0.0f, 1.0f, 0.0f, 0.0f, 1.0f, 0.0f, 0.0f, 1.0f};
    Compact(*target, kTargetThreshold);
    return target;
}
