#include "driver/format_registry.h"

#include "fbximport/fbx_loader.h"
#include "gltf/glb_writer.h"
#include "gltf/gltf_loader.h"
#include "runtimejson/json_scene_writer.h"

std::string ToLowerAscii(std::string text) {
    for (char& c : text)
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    return text;
}

void RegisterLoader(FormatRegistry& registry, const std::string& extension, SceneLoader loader) {
    registry.loaders[ToLowerAscii(extension)] = std::move(loader);
}

void RegisterWriter(FormatRegistry& registry, const std::string& extension, SceneWriter writer) {
    registry.writers[ToLowerAscii(extension)] = std::move(writer);
}

namespace {
template <typename Map>
typename Map::const_iterator FindByName(const Map& table, const std::string& name) {
    const std::string lower = ToLowerAscii(name);
    for (auto it = table.begin(); it != table.end(); ++it)
        if (lower.rfind(it->first) != std::string::npos) return it;
    return table.end();
}
}  // namespace

Scene* LoadScene(const FormatRegistry& registry, const std::string& inputFile, const ConversionOptions& options) {
    auto it = FindByName(registry.loaders, inputFile);
    if (it == registry.loaders.end() || !it->second) return nullptr;
    return it->second(inputFile, options);
}

bool WriteScene(const FormatRegistry& registry, const std::string& outputFile, const Scene& scene,
                const ExportOptions& exportOptions) {
    auto it = FindByName(registry.writers, outputFile);
    if (it == registry.writers.end() || !it->second) return false;
    return it->second(outputFile, scene, exportOptions);
}

FormatRegistry BuildFormatRegistry() {
    FormatRegistry registry;
    for (const char* ext : {".fbx", ".dae", ".3ds", ".obj", ".dxf"}) RegisterLoader(registry, ext, FbxLoadScene);
    for (const char* ext : {".glb", ".gltf"}) RegisterLoader(registry, ext, LoadGltf);
    RegisterWriter(registry, ".json", WriteJsonScene);
    RegisterWriter(registry, ".glb", WriteGlb);
    return registry;
}
