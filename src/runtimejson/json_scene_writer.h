// The runtime JSON library's entry: the engine's JSON files of a Scene.
#pragma once

#include <string>

#include "scene/options.h"
#include "scene/scene.h"

// The .json writer: model, materials, animation, metadata, scene metadata, each
// when its flag is set, each truncating the same file.
bool WriteJsonScene(const std::string& fileName, const Scene& scene, const ExportOptions& options);
