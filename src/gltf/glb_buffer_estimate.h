// An upper bound of the binary buffer a GLB of a scene needs, so that the buffer is
// allocated once instead of being copied as it grows.
// Private to the glTF library.
#pragma once

#include <cstddef>

#include "scene/options.h"
#include "scene/scene.h"

size_t EstimateGlbBufferBytes(const Scene& scene, const ExportOptions& options);
