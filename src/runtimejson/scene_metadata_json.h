// The scene metadata file: an entity list with components and an asset list.
// Private to the runtime JSON library.
#pragma once

#include <string>

#include "json/json.h"
#include "scene/scene.h"

JsonValue BuildSceneMetadataJson(const Scene& scene);

// Replaces the file at path, always in the indented layout; false if it could not be written.
bool WriteSceneMetadataJson(const std::string& path, const Scene& scene);
