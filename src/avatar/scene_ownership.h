// Hands records made by the avatar assembly to the scene that frees them.
// Private to the avatar library.
//
// TEMPORARY: stands in for the scene's per-type ownership pools until they exist. Until
// then the scene frees a placeholder geometry through its owned list and finds mesh
// records and morph targets by walking what it owns.
#pragma once

#include "scene/scene.h"

inline void OwnPlaceholder(Scene& scene, Geometry* geometry) { scene.ownedGeometries.push_back(geometry); }
inline void OwnPlaceholder(Scene&, MorphTarget*) {}
