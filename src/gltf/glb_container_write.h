// Writing the GLB container: header, JSON chunk padded with blanks, binary chunk
// padded with zeros, lengths patched in once the data is out.
#pragma once

#include <cstdint>
#include <string>

#include "gltf/glb_export_records.h"
#include "json/json.h"

// Whether a GLB with a JSON text and binary data of these lengths (before padding) fits the
// container's 32-bit length fields: the whole file, header and both chunks, at most 2^32 - 1.
bool GlbLengthsFit(uint64_t jsonLength, uint64_t binaryLength);

// Failures to open or write leave the stream failed and are not reported. A file too large
// for the container's 32-bit lengths is not written (or, when only the JSON text shows it,
// removed again) and ends the run with an "ERROR: Cannot write" line.
void WriteGlbFile(const std::string& path, const JsonValue& json, const GlbBuilder& builder);

// Reports "ERROR: Cannot write '<path>': <problem>" and ends the run with exit code 1.
[[noreturn]] void RefuseGlb(const std::string& path, const std::string& problem);
