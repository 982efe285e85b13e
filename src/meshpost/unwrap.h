// Lightmap UV unwrapping of the scene's geometry with xatlas.
#pragma once

#include <cstdint>
#include <unordered_map>
#include <vector>

#include "scene/scene.h"

namespace xatlas {
struct Mesh;
}

// For each geometry that a node of the tree uses, the largest signed scale component of
// the world matrices of those nodes.
std::unordered_map<const Geometry*, float> GeometryWorldScales(const GraphNode* root);

// Size in texels of the atlas an unwrap laid out; zero when the geometry was left alone.
struct AtlasSize {
    uint32_t width = 0;
    uint32_t height = 0;
};

// One atlas for all instances of one geometry. Leaves every instance as it is when any of
// them is unsuitable (not indexed triangles with vertex data, no positions or no indices,
// or texture set 1 in use). The records made for the unwrapped instances are handed to `scene`.
AtlasSize UnwrapGeometry(Scene& scene, const std::vector<MeshInstance*>& instances, float worldScale,
                         float texelsPerMeter);

// Replaces the instance's vertex data and indices by the seam-split vertices of the xatlas
// output mesh, with the new UV set (divided by width and height) in the first free set.
// A morph of the instance is replaced by one whose targets follow the new vertices.
// The new records are handed to `scene`; the old ones stay with it too, since other
// instances may share them.
void ApplyUnwrap(Scene& scene, MeshInstance& instance, const xatlas::Mesh& mesh, float width, float height);
