// Animations of a GLB: up to four channels per track, time arrays shared file-wide.
// Private to the glTF library.
#pragma once

#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "gltf/glb_export_records.h"
#include "scene/scene.h"

// Equal time arrays (by float comparison) share one input accessor across the file.
using TimeAccessorCache = std::map<std::vector<float>, int32_t>;

const char* InterpolationName(int32_t interpolation);

void ExportAnimations(const std::set<std::string>& animationNames, GlbBuilder& builder,
                      std::vector<GlbAnimation>& animationsOut, const std::vector<GlbNode>& nodes,
                      const Scene& scene);
