// The model file: nodes, skins, morphs, vertex data, meshes and mesh instances.
// Private to the runtime JSON library.
#pragma once

#include <string>

#include "json/json.h"
#include "scene/scene.h"

// The whole document as a value tree; meant for small scenes.
JsonValue BuildModelJson(const Scene& scene);

// Streams the document to path, replacing the file, without building a tree first;
// the bytes equal those of BuildModelJson written by JsonWriter. False if the file
// could not be written.
bool WriteModelJson(const std::string& path, const Scene& scene, bool prettyPrint);
