#pragma once

#include <string>

#include "scene/options.h"
#include "scene/scene.h"

// Loader of .glb and .gltf input.
Scene* LoadGltf(const std::string& fileName, const ConversionOptions& options);
