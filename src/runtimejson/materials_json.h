// The materials file: textures, materials as typed parameter lists, and which
// material each mesh instance uses.
// Private to the runtime JSON library.
#pragma once

#include <string>

#include "json/json.h"
#include "scene/scene.h"

JsonValue BuildMaterialsJson(const Scene& scene);

// Replaces the file at path; false if it could not be written.
bool WriteMaterialsJson(const std::string& path, const Scene& scene, bool prettyPrint);
