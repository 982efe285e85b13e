// Index and vertex blocks of a GLB primitive.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "gltf/glb_export_records.h"
#include "scene/geometry.h"

// "POSITION", "TEXCOORD_3", ...; empty for a value outside the table.
const char* AttributeName(uint32_t semantic);
uint32_t ComponentKindSize(uint32_t kind);
uint32_t ComponentKindValue(uint32_t kind);  // the JSON componentType
const char* AccessorTypeName(uint32_t components);  // "SCALAR" .. "VEC4"
AccessorFormat FormatOf(uint32_t kind, uint32_t components);

// One attribute before interleaving. Float data is referenced where it lies; converted
// data (colours, narrowed joints) is held in `converted`.
struct VertexStream {
    uint32_t semantic = kAttributePosition;
    uint32_t kind = kComponentFloat;
    uint32_t components = 0;
    bool normalized = false;
    const uint8_t* bytes = nullptr;
    size_t byteCount = 0;
    std::vector<uint8_t> converted;
};

// The streams of a VertexData in writing order; POSITION is always first, even empty.
std::vector<VertexStream> BuildVertexStreams(const VertexData& vertices);

// The interleaved block's shape; its bytes are written straight into the builder's data.
struct InterleavedVertices {
    uint32_t count = 0;
    uint32_t stride = 0;
    std::vector<uint32_t> offsets;  // one per stream
};

InterleavedVertices LayoutStreams(const std::vector<VertexStream>& streams);

// u16 indices up to a largest index of 65,535, u32 from 65,536; gives the accessor.
int32_t ExportIndices(GlbBuilder& builder, const std::vector<uint32_t>& indices);

// One interleaved block with one accessor per stream; gives name -> accessor.
std::map<std::string, int32_t> ExportVertexData(GlbBuilder& builder, const VertexData& vertices);
