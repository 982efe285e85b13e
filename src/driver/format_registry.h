// Extension-keyed tables of loaders and writers.
#pragma once

#include <functional>
#include <map>
#include <string>

#include "scene/options.h"
#include "scene/scene.h"

using SceneLoader = std::function<Scene*(const std::string& fileName, const ConversionOptions& options)>;
using SceneWriter =
    std::function<bool(const std::string& fileName, const Scene& scene, const ExportOptions& options)>;

struct FormatRegistry {
    // Keys are lower-case extensions with the dot, searched in ascending byte order.
    std::map<std::string, SceneLoader> loaders;
    std::map<std::string, SceneWriter> writers;
};

void RegisterLoader(FormatRegistry& registry, const std::string& extension, SceneLoader loader);
void RegisterWriter(FormatRegistry& registry, const std::string& extension, SceneWriter writer);

// The first key (in key order) that occurs anywhere in the lower-cased name picks the
// entry; null / false when none does.
Scene* LoadScene(const FormatRegistry& registry, const std::string& inputFile, const ConversionOptions& options);
bool WriteScene(const FormatRegistry& registry, const std::string& outputFile, const Scene& scene,
                const ExportOptions& exportOptions);

// The registry of the tool: FBX and glTF loaders, .json and .glb writers.
FormatRegistry BuildFormatRegistry();

std::string ToLowerAscii(std::string text);
