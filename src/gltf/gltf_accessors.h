// Accessor data as flat vectors: f32 for attributes, u32 for indices, u16 for joints.
// Private to the glTF library.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "gltf/gltf_context.h"

// Each result holds count x components values. Throws GltfError when the accessor would
// read outside its buffer or a sparse list points outside the data.
std::vector<float> ReadAccessorAsFloat(const GltfAccessor& accessor, GltfContext& context);
std::vector<uint32_t> ReadAccessorAsIndex(const GltfAccessor& accessor, GltfContext& context);
std::vector<uint16_t> ReadAccessorAsJoint(const GltfAccessor& accessor, GltfContext& context);

// Looks `name` up in an attribute map and reads its accessor as floats ("COLOR_0" always
// normalised); an absent name gives an empty vector.
std::vector<float> ReadAttribute(const std::string& name, const GltfAttributeMap& attributes, GltfContext& context);

// The accessor at `index`, or GltfError when there is none.
const GltfAccessor& AccessorAt(const GltfContext& context, int32_t index);
