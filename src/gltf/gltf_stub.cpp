#include "gltf/glb_writer.h"
#include "gltf/gltf_loader.h"

// TEMPORARY: glTF input and GLB output are not built yet.
Scene* LoadGltf(const std::string& /*fileName*/, const ConversionOptions& /*options*/) { return nullptr; }
bool WriteGlb(const std::string& /*fileName*/, const Scene& /*scene*/, const ExportOptions& /*options*/) { return false; }
