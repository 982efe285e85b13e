// Writing a finished document to its file, and refusing a scene that cannot be written.
// Private to the runtime JSON library.
#pragma once

#include <string>

#include "json/json.h"

// Replaces the file at path with the document; false if the file could not be written.
bool WriteJsonDocument(const std::string& path, const JsonValue& document, const JsonFormat& format);

// Reports "ERROR: Cannot write '<path>': <problem>" on standard error and ends the run
// with exit code 1, before anything of the file is written.
[[noreturn]] void RefuseToWrite(const std::string& path, const std::string& problem);
