// Hands records made by the avatar assembly to the scene that frees them.
// Private to the avatar library.
#pragma once

#include <memory>
#include <vector>

#include "scene/scene.h"

// The geometry takes its mesh records along: the scene frees each of them once.
inline void OwnPlaceholder(Scene& scene, Geometry* geometry) {
    for (MeshInstance* instance : geometry->meshInstances) {
        scene.Own(std::unique_ptr<VertexData>(instance->vertices));
        scene.Own(std::unique_ptr<std::vector<uint32_t>>(instance->indices));
        scene.Own(std::unique_ptr<MeshInstance>(instance));
    }
    scene.Own(std::unique_ptr<Geometry>(geometry));
}
inline void OwnPlaceholder(Scene& scene, MorphTarget* target) { scene.Own(std::unique_ptr<MorphTarget>(target)); }
