// The glTF library's entry for writing: a Scene into one binary glTF file.
#pragma once

#include <string>

#include "scene/options.h"
#include "scene/scene.h"

// The .glb writer: model and takes of the file merged into one binary glTF.
bool WriteGlb(const std::string& fileName, const Scene& scene, const ExportOptions& options);
