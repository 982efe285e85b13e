// Helpers of the GLB writer tests: small scenes, the raw container read back by hand,
// and the Khronos validator as an independent client.
#pragma once

#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include "scene/options.h"
#include "scene/scene.h"
#include "scene_builder.h"

// The two chunks of a GLB file; `ok` only when the header, chunk types and lengths agree.
struct GlbParts {
    bool ok = false;
    std::string error;
    std::string json;           // with its padding
    std::vector<uint8_t> bin;   // with its padding
};

GlbParts ReadGlbParts(const std::string& path);
// The JSON text without the trailing blanks of the padding.
std::string TrimmedJson(const GlbParts& parts);

// A path in the test process's scratch folder.
std::string TempGlbPath(const std::string& stem);

// Writes the scene with WriteGlb, runs the validator on it and reads the file back.
GlbParts WriteAndRead(const Scene& scene, const ExportOptions& options, const std::string& stem,
                      std::string* pathOut = nullptr);

ExportOptions ModelOptions();
ExportOptions AnimationOptions(std::initializer_list<const char*> takes, bool model = false);

// Fails the current test unless every buffer view of the file is 4-aligned and lies within
// the one buffer, whose length is that of the binary chunk (a view of length 0 may start at
// the buffer's end).
void ExpectViewsInsideBuffer(const std::string& path);

// Runs ExpectViewsInsideBuffer, then tools/validator/validate.mjs: fails the current test on
// any error but those our output rules produce (tools/validator/prescribed.txt) and those of
// `alsoAllowed` (each a list of CODE or CODE@POINTER-GLOB, as --allow takes it);
// skips it when node is absent.
void ExpectValidatorClean(const std::string& path, const std::vector<std::string>& alsoAllowed = {});

// The distinct codes of the errors the validator finds in a file; empty without node.
std::vector<std::string> ValidatorErrorCodes(const std::string& path);
bool IsDracoCompressed(const std::string& path);

// Little-endian bytes of values, for building expected binary chunks by hand.
template <typename T>
void PutBytes(std::vector<uint8_t>& out, std::initializer_list<T> values) {
    if (values.size() == 0) return;
    const size_t at = out.size();
    out.resize(at + values.size() * sizeof(T));
    std::memcpy(out.data() + at, values.begin(), values.size() * sizeof(T));
}
inline void PadTo4(std::vector<uint8_t>& out) {
    while (out.size() % 4) out.push_back(0);
}

// Scene building: nodes are owned by their parents, everything else by the scene.
using testsupport::New;
using testsupport::NewGeometry;
using testsupport::NewInstance;
using testsupport::NewNode;
VertexData* Triangle(Scene& scene);  // positions (0,0,0) (1,0,0) (0,1,0)
