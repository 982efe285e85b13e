#include "gltf/glb_mesh_export.h"

#include <algorithm>
#include <cstring>

#include "gltf/glb_builder.h"
#include "gltf/glb_skin_export.h"
#include "gltf/glb_vertex_export.h"
#include "scene/scene.h"

namespace {
// Copies the first length bytes of the source; a source shorter than that leaves zeros.
template <typename T>
void AppendFirstBytes(GlbBuilder& builder, int32_t view, const std::vector<T>& source, size_t length) {
    uint8_t* out = GrowView(builder, view, length);
    size_t available = std::min(length, source.size() * sizeof(T));
    if (available) std::memcpy(out, source.data(), available);
}

GlbPrimitive ExportPlainPrimitive(const MeshInstance& instance, GlbBuilder& builder, MeshExportCaches& caches,
                                  GlbMesh& mesh) {
    GlbPrimitive primitive;
    if (instance.indices) {
        auto found = caches.indices.find(instance.indices);
        if (found == caches.indices.end())
            found = caches.indices.emplace(instance.indices, ExportIndices(builder, *instance.indices)).first;
        primitive.indices = found->second;
    }
    // An instance without vertex data (a stream that failed to decode) is written as
    // an empty one rather than dropped, so that primitive numbering stays intact.
    static const VertexData kEmpty;
    const VertexData* vertices = instance.vertices ? instance.vertices : &kEmpty;
    auto found = caches.vertexData.find(vertices);
    if (found == caches.vertexData.end())
        found = caches.vertexData.emplace(vertices, ExportVertexData(builder, *vertices)).first;
    primitive.attributes = found->second;
    primitive.mode = instance.primitiveType == kPrimitiveTriangleStrip ? 5 : 4;  // glTF TRIANGLE_STRIP, TRIANGLES

    if (instance.morph) {
        const std::vector<MorphTarget*>& targets = instance.morph->targets;
        mesh.weights.assign(targets.size(), 0.0f);
        mesh.targetNames.assign(targets.size(), std::string());
        for (size_t t = 0; t < targets.size(); ++t) {
            const MorphTarget* target = targets[t];
            if (!target) {
                primitive.targets.push_back(GlbTargetPair{});
                continue;
            }
            auto cached = caches.targets.find(target);
            if (cached == caches.targets.end())
                cached = caches.targets.emplace(target, ExportMorphTarget(*target, builder)).first;
            primitive.targets.push_back(cached->second);
            mesh.weights[t] = target->defaultWeight;
            mesh.targetNames[t] = target->name;
        }
    }
    return primitive;
}
}  // namespace

GlbTargetPair ExportMorphTarget(const MorphTarget& target, GlbBuilder& builder) {
    uint32_t n = target.count;
    int32_t indexView = AddBufferView(builder, 0);
    AppendFirstBytes(builder, indexView, target.indices, size_t(n) * 4);

    GlbTargetPair pair;
    int32_t positionView = AddBufferView(builder, 0);
    AppendFirstBytes(builder, positionView, target.deltaPositions, size_t(n) * 12);
    pair.position = AddAccessor(builder, positionView, kFormatVec3F32);
    {
        GlbAccessor& a = builder.accessors[size_t(pair.position)];
        a.count = n;
        const BoundingBox& box = target.boundingBox;
        a.min = {box.min.x, box.min.y, box.min.z};
        a.max = {box.max.x, box.max.y, box.max.z};
        a.sparseIndicesView = indexView;
        a.sparseTotal = target.sourceVertexCount;
    }

    int32_t normalView = AddBufferView(builder, 0);
    AppendFirstBytes(builder, normalView, target.deltaNormals, size_t(n) * 12);
    pair.normal = AddAccessor(builder, normalView, kFormatVec3F32);
    {
        GlbAccessor& a = builder.accessors[size_t(pair.normal)];
        a.count = n;
        a.sparseIndicesView = indexView;
        a.sparseTotal = target.sourceVertexCount;
    }
    return pair;
}

GlbPrimitive ExportDracoPrimitive(const DracoPayload& payload, GlbBuilder& builder) {
    GlbPrimitive primitive;
    primitive.dracoView = AddDataView(builder, payload.data.data(), payload.data.size());
    primitive.indices = AddAccessor(builder, kFormatScalarU32);
    builder.accessors[size_t(primitive.indices)].count = static_cast<uint32_t>(payload.indexCount);
    primitive.mode = 4;
    for (const DracoAttributeInfo& info : payload.attributes) {
        uint32_t kind = info.componentType >= 0 ? static_cast<uint32_t>(info.componentType) : 0;
        int32_t index = AddAccessor(builder, FormatOf(kind, static_cast<uint32_t>(info.components)));
        GlbAccessor& a = builder.accessors[size_t(index)];
        a.count = static_cast<uint32_t>(payload.vertexCount);
        a.byteOffset = info.byteOffset;
        a.min = info.min;
        a.max = info.max;
        const char* name = AttributeName(static_cast<uint32_t>(info.semantic));
        primitive.attributes[name] = index;
        primitive.dracoAttributes[name] = info.attributeId;
    }
    return primitive;
}

GlbMesh ExportMesh(const Geometry& geometry, GlbBuilder& builder, MeshExportCaches& caches) {
    GlbMesh mesh;
    for (const MeshInstance* instance : geometry.meshInstances) {
        if (!instance) continue;
        auto cached = caches.primitives.find(instance);
        if (cached == caches.primitives.end()) {
            GlbPrimitive primitive = instance->compressed ? ExportDracoPrimitive(*instance->compressed, builder)
                                                          : ExportPlainPrimitive(*instance, builder, caches, mesh);
            cached = caches.primitives.emplace(instance, std::move(primitive)).first;
        }
        mesh.primitives.push_back(cached->second);
    }
    return mesh;
}

void ExportMeshes(std::vector<GlbNode>& nodes, GlbBuilder& builder, std::vector<GlbMesh>& meshes,
                  std::vector<GlbSkin>& skins) {
    MeshExportCaches caches;
    std::unordered_map<uint64_t, int32_t> nodeIndexById;
    bool idsMapped = false;
    for (GlbNode& node : nodes) {
        const Geometry* geometry = node.graphNode ? node.graphNode->geometry : nullptr;
        if (!geometry) continue;
        auto mesh = caches.meshes.find(geometry);
        if (mesh == caches.meshes.end()) {
            mesh = caches.meshes.emplace(geometry, static_cast<int32_t>(meshes.size())).first;
            meshes.push_back(ExportMesh(*geometry, builder, caches));
        }
        node.mesh = mesh->second;
        for (const MeshInstance* instance : geometry->meshInstances) {
            if (!instance || !instance->skin) continue;
            auto skin = caches.skins.find(instance->skin);
            if (skin == caches.skins.end()) {
                if (!idsMapped) {
                    nodeIndexById = MapNodeIds(nodes);
                    idsMapped = true;
                }
                skin = caches.skins.emplace(instance->skin, static_cast<int32_t>(skins.size())).first;
                skins.push_back(ExportSkin(*instance->skin, builder, nodeIndexById));
            }
            node.skin = skin->second;
            skins[size_t(skin->second)].skeleton = node.index;
        }
    }
}
