// Attribute data of a decoded Draco mesh as flat vectors, converted like accessor data.
// Private to the glTF library.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "gltf/gltf_document.h"

namespace draco {
class PointCloud;
}

// num_points x components values; an absent name, missing attribute or unknown data type
// gives an empty vector. Throws GltfError for an attribute without points or components.
std::vector<float> ReadDracoAttributeAsFloat(const std::string& name, const GltfAttributeMap& attributes,
                                             const draco::PointCloud& mesh);
std::vector<uint16_t> ReadDracoAttributeAsJoint(const std::string& name, const GltfAttributeMap& attributes,
                                                const draco::PointCloud& mesh);
