#include "gltf/glb_writer.h"

// TEMPORARY: GLB output is not built yet; nothing is written.
bool WriteGlb(const std::string& /*fileName*/, const Scene& /*scene*/, const ExportOptions& /*options*/) { return false; }
