// Writing the GLB container: header, JSON chunk padded with blanks, binary chunk
// padded with zeros, lengths patched in once the data is out.
#pragma once

#include <string>

#include "gltf/glb_export_records.h"
#include "json/json.h"

// Failures to open or write leave the stream failed and are not reported, except a
// file too large for the container's 32-bit lengths, which is refused before writing.
void WriteGlbFile(const std::string& path, const JsonValue& json, const GlbBuilder& builder);
