// Fills a GltfDocument from parsed JSON. Tolerant: nothing is required or validated;
// what a file lacks keeps its default.
#pragma once

#include "gltf/gltf_document.h"
#include "gltf/gltf_json.h"

bool ReadGltfDocument(GltfDocument& document, const GltfJsonValue& root);
