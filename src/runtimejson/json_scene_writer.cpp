#include "runtimejson/json_scene_writer.h"

// TEMPORARY: the runtime JSON formats are not built yet; nothing is written.
bool WriteJsonScene(const std::string& /*fileName*/, const Scene& /*scene*/, const ExportOptions& /*options*/) {
    return false;
}
