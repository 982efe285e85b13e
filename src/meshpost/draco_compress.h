// Draco encoding of triangle mesh instances for the KHR_draco_mesh_compression output.
#pragma once

#include <cstdint>
#include <vector>

#include "scene/geometry.h"
#include "scene/options.h"

namespace draco {
class Mesh;
}

// Encodes one indexed triangle list. A failed encode gives empty data and zero counts.
DracoPayload CompressMesh(const VertexData& vertexData, const std::vector<uint32_t>& indices,
                          const DracoOptions& options);

// The encoder half of CompressMesh: quantisation and speeds from the options, the stream
// and the encoded counts into the payload (whose attribute records are left as they are).
void EncodeDracoMesh(const draco::Mesh& mesh, const DracoOptions& options, DracoPayload& payload);
