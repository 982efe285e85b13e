#include "runtimejson/output_file.h"

#include <cstdio>
#include <cstdlib>
#include <fstream>

bool WriteJsonDocument(const std::string& path, const JsonValue& document, const JsonFormat& format) {
    std::ofstream file(path, std::ios::binary | std::ios::trunc);
    if (!file) return false;
    JsonWriter(format).WriteStream(document, file);
    file.close();
    return !file.fail();
}

void RefuseToWrite(const std::string& path, const std::string& problem) {
    std::fflush(stdout);
    std::fprintf(stderr, "ERROR: Cannot write '%s': %s\n", path.c_str(), problem.c_str());
    std::exit(1);
}
