#include "gltf/gltf_draco_attributes.h"

#include <cstring>

#include <draco/point_cloud/point_cloud.h>

#include "gltf/gltf_context.h"
#include "gltf/gltf_convert.h"

namespace {

template <typename T, typename S>
std::vector<T> ReadPoints(const draco::PointAttribute& attribute, uint32_t points) {
    const size_t comps = size_t(attribute.num_components());
    const int64_t stride = attribute.byte_stride();
    const size_t dataSize = attribute.buffer() ? attribute.buffer()->data_size() : 0;
    if (points == 0 || comps == 0 || stride <= 0)
        throw GltfError("Draco attribute " + std::to_string(attribute.unique_id()) + " has no data");
    if (size_t(stride) < comps * sizeof(S))
        throw GltfError("Draco attribute " + std::to_string(attribute.unique_id()) + " has a short element");
    const bool normalized = attribute.normalized() || attribute.attribute_type() == draco::GeometryAttribute::COLOR;
    const uint8_t* data = attribute.buffer()->data();
    std::vector<T> out;
    out.resize(size_t(points) * comps);
    T* dst = out.data();
    // An explicit point-to-value map shorter than the point count would be read past its end.
    if (!attribute.is_mapping_identity() && attribute.indices_map_size() < points)
        throw GltfError("Draco attribute " + std::to_string(attribute.unique_id()) + " maps " +
                        std::to_string(attribute.indices_map_size()) + " of " + std::to_string(points) + " points");
    for (uint32_t p = 0; p < points; ++p) {
        const int64_t mapped = attribute.mapped_index(draco::PointIndex(p)).value();
        const int64_t position = attribute.byte_offset() + mapped * stride;
        if (position < 0 || uint64_t(position) + uint64_t(stride) > dataSize)
            throw GltfError("Draco attribute " + std::to_string(attribute.unique_id()) + " reads past its data");
        for (size_t c = 0; c < comps; ++c) {
            S value;
            std::memcpy(&value, data + position + c * sizeof(S), sizeof(S));
            *dst++ = gltfconvert::Convert<T, S>(value, normalized);
        }
    }
    return out;
}

template <typename T>
std::vector<T> ReadDracoAttribute(const std::string& name, const GltfAttributeMap& attributes,
                                  const draco::PointCloud& mesh) {
    auto it = attributes.find(name);
    if (it == attributes.end()) return {};
    const draco::PointAttribute* attribute = mesh.GetAttributeByUniqueId(uint32_t(it->second));
    if (!attribute) return {};
    const uint32_t points = mesh.num_points();
    switch (attribute->data_type()) {
        case draco::DT_INT8: return ReadPoints<T, int8_t>(*attribute, points);
        case draco::DT_UINT8: return ReadPoints<T, uint8_t>(*attribute, points);
        case draco::DT_INT16: return ReadPoints<T, int16_t>(*attribute, points);
        case draco::DT_UINT16: return ReadPoints<T, uint16_t>(*attribute, points);
        case draco::DT_INT32: return ReadPoints<T, int32_t>(*attribute, points);
        case draco::DT_UINT32: return ReadPoints<T, uint32_t>(*attribute, points);
        case draco::DT_INT64: return ReadPoints<T, int64_t>(*attribute, points);
        case draco::DT_UINT64: return ReadPoints<T, uint64_t>(*attribute, points);
        case draco::DT_FLOAT32: return ReadPoints<T, float>(*attribute, points);
        case draco::DT_FLOAT64: return ReadPoints<T, double>(*attribute, points);
        default: return {};
    }
}

}  // namespace

std::vector<float> ReadDracoAttributeAsFloat(const std::string& name, const GltfAttributeMap& attributes,
                                             const draco::PointCloud& mesh) {
    return ReadDracoAttribute<float>(name, attributes, mesh);
}

std::vector<uint16_t> ReadDracoAttributeAsJoint(const std::string& name, const GltfAttributeMap& attributes,
                                                const draco::PointCloud& mesh) {
    return ReadDracoAttribute<uint16_t>(name, attributes, mesh);
}
