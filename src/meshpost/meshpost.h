#pragma once

#include "scene/options.h"
#include "scene/scene.h"

// Lightmap UV set for every suitable geometry, at the given texel density.
void UnwrapScene(Scene& scene, float texelsPerMeter);
// Draco payload on every suitable mesh instance.
void CompressScene(Scene& scene, const DracoOptions& options);
