#include "meshpost/draco_compress.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include <draco/compression/encode.h>
#include <draco/compression/expert_encode.h>
#include <draco/mesh/mesh.h>

#include "meshpost/meshpost.h"

namespace {

struct AttributeSpec {
    int32_t semantic;
    draco::GeometryAttribute::Type type;
    int32_t components;
    draco::DataType dataType;
    bool normalized;
};

// Adds one attribute with one value per point (identity mapping) and returns its record.
// `values` holds `valueCount` complete values; points past them (a malformed, short input)
// keep the zeros of the fresh buffer instead of reading past the data.
template <typename T>
DracoAttributeInfo AddAttribute(draco::Mesh& mesh, const AttributeSpec& spec, const std::vector<T>& data,
                                uint32_t pointCount, uint32_t byteOffset) {
    const size_t components = size_t(spec.components);
    const size_t valueCount = data.size() / components;

    draco::GeometryAttribute ga;
    ga.Init(spec.type, nullptr, uint8_t(components), spec.dataType, spec.normalized,
            int64_t(sizeof(T) * components), 0);
    const int id = mesh.AddAttribute(ga, true, pointCount);
    draco::PointAttribute* pa = mesh.attribute(id);
    const size_t written = std::min<size_t>(valueCount, pointCount) * components * sizeof(T);
    if (written) pa->buffer()->Write(0, data.data(), written);

    DracoAttributeInfo info;
    info.semantic = spec.semantic;
    info.componentType = spec.dataType == draco::DT_UINT16 ? kComponentUint16 : kComponentFloat;
    info.components = spec.components;
    info.normalized = spec.normalized ? 1 : 0;
    info.byteOffset = byteOffset;
    info.attributeId = id;
    if (valueCount > 0) {
        info.min.resize(components);
        info.max.resize(components);
        for (size_t c = 0; c < components; ++c) info.min[c] = info.max[c] = float(data[c]);
        for (size_t v = 1; v < valueCount; ++v) {
            const T* value = data.data() + v * components;
            for (size_t c = 0; c < components; ++c) {
                const float f = float(value[c]);
                info.min[c] = std::min(info.min[c], f);
                info.max[c] = std::max(info.max[c], f);
            }
        }
    }
    return info;
}

// Whether the encoder can take these values: all finite and, where they are quantised over
// their range, each component's largest minus smallest within the float range.
bool Encodable(const float* values, size_t count, size_t components, bool ranged) {
    float lo[4] = {0, 0, 0, 0}, hi[4] = {0, 0, 0, 0};
    for (size_t v = 0; v < count; ++v) {
        for (size_t c = 0; c < components; ++c) {
            const float f = values[v * components + c];
            if (!std::isfinite(f)) return false;
            if (v == 0 || f < lo[c]) lo[c] = f;
            if (v == 0 || f > hi[c]) hi[c] = f;
        }
    }
    if (ranged)
        for (size_t c = 0; c < components; ++c)
            if (!std::isfinite(hi[c] - lo[c])) return false;
    return true;
}

}  // namespace

void EncodeDracoMesh(const draco::Mesh& mesh, const DracoOptions& options, DracoPayload& payload) {
    draco::Encoder encoder;
    encoder.SetAttributeQuantization(draco::GeometryAttribute::POSITION, options.positionBits);
    encoder.SetAttributeQuantization(draco::GeometryAttribute::NORMAL, options.normalBits);
    encoder.SetAttributeQuantization(draco::GeometryAttribute::COLOR, options.colorBits);
    encoder.SetAttributeQuantization(draco::GeometryAttribute::TEX_COORD, options.texcoordBits);
    encoder.SetAttributeQuantization(draco::GeometryAttribute::GENERIC, options.genericBits);
    encoder.SetSpeedOptions(options.encodeSpeed, options.decodeSpeed);

    draco::ExpertEncoder expert(mesh);
    expert.Reset(encoder.CreateExpertEncoderOptions(mesh));

    // Edges added to close a mesh elsewhere carry no real data to predict from.
    if (mesh.GetMetadata()) {
        if (const draco::AttributeMetadata* added = mesh.GetAttributeMetadataByStringEntry("name", "added_edges")) {
            const int id = mesh.GetAttributeIdByUniqueId(added->att_unique_id());
            if (id >= 0) expert.SetAttributePredictionScheme(id, draco::PREDICTION_NONE);
        }
    }
    expert.SetTrackEncodedProperties(true);

    draco::EncoderBuffer buffer;
    payload.data.clear();
    payload.vertexCount = 0;
    payload.indexCount = 0;
    if (!expert.EncodeToBuffer(&buffer).ok()) return;  // a failed encode may leave a partial stream
    payload.data.assign(reinterpret_cast<const uint8_t*>(buffer.data()),
                        reinterpret_cast<const uint8_t*>(buffer.data()) + buffer.size());
    payload.vertexCount = int32_t(expert.num_encoded_points());
    payload.indexCount = int32_t(expert.num_encoded_faces() * 3);
}

DracoPayload CompressMesh(const VertexData& vertexData, const std::vector<uint32_t>& indices,
                          const DracoOptions& options) {
    DracoPayload payload;
    const uint32_t pointCount = uint32_t(vertexData.positions.size() / 3);
    const size_t faceCount = indices.size() / 3;

    // An index past the vertices would make the encoder read outside the attribute data.
    for (size_t i = 0; i < faceCount * 3; ++i)
        if (indices[i] >= pointCount) return payload;

    draco::Mesh mesh;
    mesh.SetNumFaces(faceCount);
    for (size_t f = 0; f < faceCount; ++f) {
        const draco::Mesh::Face face = {draco::PointIndex(indices[f * 3]), draco::PointIndex(indices[f * 3 + 1]),
                                        draco::PointIndex(indices[f * 3 + 2])};
        mesh.SetFace(draco::FaceIndex(uint32_t(f)), face);
    }
    mesh.set_num_points(pointCount);

    uint32_t byteOffset = 0;
    // The encoder crashes on a NaN it has to quantise, on an infinite normal and on values
    // whose spread overflows a float, and fails on other infinities: any of them makes the
    // encode fail, before the encoder sees it. Normals are not quantised over their range.
    bool encodable = true;
    auto addFloat = [&](const std::vector<float>& data, const AttributeSpec& spec) {
        if (data.empty()) return;
        payload.attributes.push_back(AddAttribute(mesh, spec, data, pointCount, byteOffset));
        byteOffset += 4 * uint32_t(spec.components);
        const size_t components = size_t(spec.components);
        const size_t stored = std::min<size_t>(data.size() / components, pointCount) * components;
        encodable = encodable && Encodable(data.data(), stored / components, components,
                                     spec.type != draco::GeometryAttribute::NORMAL);
    };
    addFloat(vertexData.positions, {kAttributePosition, draco::GeometryAttribute::POSITION, 3, draco::DT_FLOAT32, false});
    addFloat(vertexData.normals, {kAttributeNormal, draco::GeometryAttribute::NORMAL, 3, draco::DT_FLOAT32, false});
    addFloat(vertexData.colors, {kAttributeColor0, draco::GeometryAttribute::COLOR, 4, draco::DT_FLOAT32, true});
    if (!vertexData.joints.empty()) {
        const AttributeSpec spec{kAttributeJoints0, draco::GeometryAttribute::GENERIC, 4, draco::DT_UINT16, false};
        payload.attributes.push_back(AddAttribute(mesh, spec, vertexData.joints, pointCount, byteOffset));
        byteOffset += 8;
    }
    addFloat(vertexData.weights, {kAttributeWeights0, draco::GeometryAttribute::GENERIC, 4, draco::DT_FLOAT32, false});
    for (int32_t set = 0; set < 8; ++set)
        addFloat(vertexData.texCoords[set],
                 {int32_t(kAttributeTexCoord0) + set, draco::GeometryAttribute::TEX_COORD, 2, draco::DT_FLOAT32, false});

    if (!encodable) return payload;

    mesh.DeduplicateAttributeValues();
    mesh.DeduplicatePointIds();

    EncodeDracoMesh(mesh, options, payload);
    return payload;
}

void CompressScene(Scene& scene, const DracoOptions& options) {
    for (Geometry* geometry : scene.geometries.items) {
        if (!geometry) continue;
        for (MeshInstance* mi : geometry->meshInstances) {
            if (!mi || mi->compressed || !mi->vertices || !mi->indices || mi->primitiveType != kPrimitiveTriangles || mi->morph)
                continue;
            mi->compressed = CompressMesh(*mi->vertices, *mi->indices, options);
        }
    }
}
