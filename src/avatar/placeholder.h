// The stand-in mesh of every avatar slot: the FBX path reads no geometry, so each slot
// carries one tiny triangle, and one token morph target per morph name of its group for
// the weight tracks to drive.
#pragma once

#include <string>

#include "scene/scene.h"

// A new "dummy_mesh" (id 1) with one triangle mesh instance. The scene owns it and its
// records; it is reached only through the node that stores it, never through the
// scene's geometry dictionary.
Geometry* MakePlaceholderGeometry(Scene& scene);

// A compacted target named "face_shapes." + morphName with three small deltas, owned by
// the scene; the caller appends it to a Morph.
MorphTarget* MakePlaceholderMorphTarget(Scene& scene, const std::string& morphName);
