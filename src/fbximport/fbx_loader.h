#pragma once

#include <string>

#include "scene/options.h"
#include "scene/scene.h"

// Loader of .fbx (and .dae, .3ds, .obj, .dxf) input.
Scene* FbxLoadScene(const std::string& fileName, const ConversionOptions& options);
