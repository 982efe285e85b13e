// The glTF library's entry for reading: .glb and .gltf input into a Scene.
#pragma once

#include <string>

#include "scene/options.h"
#include "scene/scene.h"

// Loader of .glb and .gltf input.
Scene* LoadGltf(const std::string& fileName, const ConversionOptions& options);
