// File names for the images of a document, and the saving of embedded images into the
// "<input>.fbm" folder.
// Private to the glTF library.
#pragma once

#include <string>
#include <vector>

#include "gltf/gltf_context.h"

// Replaces path-hostile characters and control bytes by '_'; same length.
std::string SanitizeFileName(const std::string& name);

// One unique name per image, in document order. Throws GltfError for an image whose
// buffer view does not exist or lies outside its buffer.
std::vector<std::string> MakeImageFileNames(GltfContext& context);

// Writes every image that lies in a buffer view. Throws GltfError when the folder cannot
// be made; a file that cannot be opened is reported and skipped.
bool ExtractEmbeddedImages(GltfContext& context);
