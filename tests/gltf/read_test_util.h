// Shared helpers of the glTF reading tests: loading from bytes written to a scratch folder.
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "glb_fixture.h"
#include "gltf/glb_container_read.h"
#include "gltf/gltf_context.h"
#include "gltf/gltf_document_read.h"
#include "gltf/gltf_import.h"
#include "gltf/gltf_loader.h"
#include "scratch_folder.h"

namespace gltftest {

using testsupport::ScratchFolder;

// Writes the bytes, reads the container and the document into `context`.
inline bool ReadBytes(const ScratchFolder& dir, const std::vector<uint8_t>& bytes, GltfContext& context,
                      const std::string& name = "in.glb") {
    const std::string path = dir.File(name);
    EXPECT_TRUE(glbfixture::WriteFile(path, bytes));
    context.path = path;
    if (!ReadGlbContainer(path, context)) return false;
    ReadGltfDocument(context.document, context.json);
    return true;
}

inline std::vector<uint8_t> Text(const std::string& s) { return std::vector<uint8_t>(s.begin(), s.end()); }

// Parses a JSON text into a document.
inline GltfDocument ParseDocument(const std::string& json) {
    GltfJsonDocument parsed;
    parsed.Parse(json.c_str());
    GltfDocument document;
    ReadGltfDocument(document, parsed);
    return document;
}

// Imports a GLB built by the fixture; the images are not saved.
inline std::unique_ptr<Scene> Import(const ScratchFolder& dir, const std::vector<uint8_t>& bytes) {
    GltfContext context;
    if (!ReadBytes(dir, bytes, context)) return nullptr;
    return std::unique_ptr<Scene>(ImportGltfScene(context));
}

// True when the bytes read but the import refuses them with a GltfError.
inline bool ImportRefused(const ScratchFolder& dir, const std::vector<uint8_t>& bytes) {
    GltfContext context;
    if (!ReadBytes(dir, bytes, context)) return false;
    try {
        delete ImportGltfScene(context);
    } catch (const GltfError&) {
        return true;
    }
    return false;
}

}  // namespace gltftest
