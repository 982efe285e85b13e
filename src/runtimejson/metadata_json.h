// The metadata file: plain counts over the scene's meshes.
// Private to the runtime JSON library.
#pragma once

#include <string>

#include "json/json.h"
#include "scene/scene.h"

JsonValue BuildMetadataJson(const Scene& scene);

// Replaces the file at path; false if it could not be written.
bool WriteMetadataJson(const std::string& path, const Scene& scene, bool prettyPrint);
