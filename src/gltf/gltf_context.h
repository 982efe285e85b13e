// State of one glTF load: the input path, the parsed JSON, the binary chunk and the document.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>


#include "gltf/gltf_document.h"
#include "gltf/gltf_json.h"

struct GltfContext {
    std::string path;
    GltfJsonDocument json;
    std::vector<uint8_t> binaryChunk;  // empty for a plain .gltf file
    GltfDocument document;
    // Bytes of buffers that name a "uri" (external file or data URI), loaded on first use.
    std::vector<std::unique_ptr<std::vector<uint8_t>>> uriBuffers;
};

// A file that would read out of bounds or index a missing record; LoadGltf turns it
// into one "ERROR:" line and a failed load.
class GltfError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

struct ByteRange {
    const uint8_t* data = nullptr;
    size_t size = 0;
};

// The bytes a buffer view addresses: from the view's byteOffset to the end of its buffer
// (reads are bounded by the buffer, as the view's byteLength is not authoritative).
// Throws GltfError for a missing view or buffer, or an offset past the buffer.
ByteRange ViewBytes(GltfContext& context, int32_t viewIndex);

// The bytes of buffer `index`: the binary chunk when the file has one or the buffer has no
// "uri", else the external file (relative to the input) or the decoded data URI.
ByteRange BufferBytes(GltfContext& context, int32_t index);
