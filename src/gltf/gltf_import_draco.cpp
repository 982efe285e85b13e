// Primitives stored with KHR_draco_mesh_compression, decoded with the Draco library.
#include <draco/compression/decode.h>

#include <memory>

#include "gltf/gltf_draco_attributes.h"
#include "gltf/gltf_import.h"

bool GltfImporter::DecodeDracoPrimitive(const GltfPrimitive& primitive, MeshInstance& instance) {
    if (!primitive.extensionsPresent || !primitive.dracoPresent) return false;
    const GltfDracoExtension& draco = primitive.draco;
    if (draco.bufferView < 0) return false;
    const auto& views = context_.document.bufferViews;
    if (size_t(draco.bufferView) >= views.size())
        throw GltfError("Draco data refers to missing buffer view " + std::to_string(draco.bufferView));
    const GltfBufferView& view = views[size_t(draco.bufferView)];
    if (view.buffer != 0) return false;
    const ByteRange bytes = ViewBytes(context_, draco.bufferView);
    if (view.byteLength > bytes.size)
        throw GltfError("Draco buffer view " + std::to_string(draco.bufferView) + " reaches past the end of its buffer");

    draco::DecoderBuffer buffer;
    buffer.Init(reinterpret_cast<const char*>(bytes.data), view.byteLength);
    auto type = draco::Decoder::GetEncodedGeometryType(&buffer);
    if (!type.ok()) return true;
    draco::Decoder decoder;
    if (type.value() == draco::TRIANGULAR_MESH) {
        auto decoded = decoder.DecodeMeshFromBuffer(&buffer);
        if (!decoded.ok()) return true;
        const draco::Mesh& mesh = *decoded.value();
        const uint32_t points = mesh.num_points();
        auto* indices = scene_.Own(std::make_unique<std::vector<uint32_t>>());
        instance.indices = indices;
        indices->reserve(size_t(mesh.num_faces()) * 3);
        for (draco::FaceIndex f(0); f < mesh.num_faces(); ++f) {
            const auto& face = mesh.face(f);
            for (int c = 0; c < 3; ++c) {
                if (face[c].value() >= points) throw GltfError("Draco mesh has a face index past its points");
                indices->push_back(face[c].value());
            }
        }
        VertexData* vertices = scene_.Own(std::make_unique<VertexData>());
        instance.vertices = vertices;
        const GltfAttributeMap& names = draco.attributes;
        FillVertexData(
            *vertices, [&](const char* name) { return ReadDracoAttributeAsFloat(name, names, mesh); },
            [&](const char* name) { return ReadDracoAttributeAsJoint(name, names, mesh); });
    } else if (type.value() == draco::POINT_CLOUD) {
        (void)decoder.DecodePointCloudFromBuffer(&buffer);  // decoded and discarded
    }
    return true;
}
