#include "runtimejson/output_file.h"

#include <fstream>

#include "scene/console.h"

bool WriteJsonDocument(const std::string& path, const JsonValue& document, const JsonFormat& format) {
    std::ofstream file(path, std::ios::binary | std::ios::trunc);
    if (!file) return false;
    JsonWriter(format).WriteStream(document, file);
    file.close();
    return !file.fail();
}

void RefuseToWrite(const std::string& path, const std::string& problem) {
    EndRun("Cannot write '%s': %s", path.c_str(), problem.c_str());
}
