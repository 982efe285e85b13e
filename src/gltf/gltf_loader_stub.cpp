#include "gltf/gltf_loader.h"

// TEMPORARY: glTF input is not built yet; every .glb/.gltf input fails to load.
Scene* LoadGltf(const std::string& /*fileName*/, const ConversionOptions& /*options*/) { return nullptr; }
