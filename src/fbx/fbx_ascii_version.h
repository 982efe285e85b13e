// Version line of text FBX files. Private to the FBX library.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

// Scans the first line of a text file, "; FBX 7.4.0 project file" or the older
// "; FBX 6.1 project file", into major*1000 + minor*100 + revision. False when
// the line has neither form.
bool FbxScanAsciiVersionLine(std::string_view line, int32_t& version);

// The same for the first line of a file's bytes (up to '\n', a '\r' before it
// not counted).
bool FbxScanAsciiVersion(const uint8_t* data, size_t size, int32_t& version);
