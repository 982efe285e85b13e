// What importing a glTF document will decode, known before any of it is decoded.
#pragma once

#include <cstdint>

#include "gltf/gltf_context.h"

// Bytes the import's accessor reads produce, each accessor counted once for every time the
// import reads it (a mesh's primitives once however many nodes show the mesh, a morph
// target's accessors once per target that names them), plus the deltas each morph target
// keeps. A read the import will refuse (no such view, past the end of its buffer) counts 0,
// as does Draco data, whose size is known only once decoded. Loads the external buffers
// the reads need, as the import would; one that cannot be loaded counts 0 and is reported
// by the import.
uint64_t EstimateDecodedBytes(GltfContext& context);
