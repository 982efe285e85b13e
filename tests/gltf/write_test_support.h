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

// Every JSON chunk of ours starts so.
inline constexpr const char* kAsset =
    R"({"asset":{"generator":"Fernbright Converter v1.2.2","version":"2.0"},"scene":0,)";

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

// The errors that our output rules themselves produce, each only where its rule puts it.
const std::vector<std::string>& PrescribedValidatorErrors();

// Fails the current test unless every buffer view of the file is 4-aligned and lies within
// the one buffer, whose length is that of the binary chunk (a view of length 0 may start at
// the buffer's end).
void ExpectViewsInsideBuffer(const std::string& path);

// Runs ExpectViewsInsideBuffer, then tools/validator/validate.mjs: fails the current test on
// any error but the prescribed ones and those of `alsoAllowed` (CODE or CODE@POINTER-GLOB);
// skips it when node is absent.
void ExpectValidatorClean(const std::string& path, const std::vector<std::string>& alsoAllowed = {});

// The distinct codes of the errors the validator finds in a file; empty without node.
std::vector<std::string> ValidatorErrorCodes(const std::string& path);
bool IsDracoCompressed(const std::string& path);

// Little-endian bytes of values, for building expected binary chunks by hand.
template <typename T>
void PutBytes(std::vector<uint8_t>& out, std::initializer_list<T> values) {
    for (T v : values) {
        uint8_t b[sizeof(T)];
        std::memcpy(b, &v, sizeof(T));
        out.insert(out.end(), b, b + sizeof(T));
    }
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
