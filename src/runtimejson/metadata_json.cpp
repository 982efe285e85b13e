#include "runtimejson/metadata_json.h"

#include <unordered_set>

#include "runtimejson/output_file.h"
#include "runtimejson/scene_walk.h"
#include "runtimejson/vertex_attributes.h"

JsonValue BuildMetadataJson(const Scene& scene) {
    const NodeList nodeList = FlattenNodes(scene.root);
    std::unordered_set<const MeshInstance*> instances;
    std::unordered_set<const VertexData*> vertexData;
    std::unordered_set<const Skin*> skins;
    std::unordered_set<const Morph*> morphs;
    uint32_t pairs = 0;
    for (const GraphNode* node : nodeList.nodes) {
        ForEachMeshInstance(node, [&](const MeshInstance* instance) {
            ++pairs;
            instances.insert(instance);
            if (instance->vertices) vertexData.insert(instance->vertices);
            if (instance->skin) skins.insert(instance->skin);
            if (instance->morph) morphs.insert(instance->morph);
        });
    }

    uint64_t vertices = 0;
    uint32_t attributeCounts[kReportedAttributeCount] = {};
    for (const VertexData* data : vertexData) {
        vertices += VertexCount(data);
        const auto present = ReportedAttributes(*data);
        for (size_t a = 0; a < kReportedAttributeCount; ++a) attributeCounts[a] += present[a] ? 1 : 0;
    }
    uint64_t triangles = 0;
    for (const MeshInstance* instance : instances)
        triangles += instance->indices ? instance->indices->size() / 3 : VertexCount(instance->vertices) / 3;

    static const char* const kAttributes[kReportedAttributeCount] = {
        "position", "normal", "color", "blendIndices", "blendWeight", "texCoord0", "texCoord1"};
    JsonValue attributes = JsonValue::Object();
    for (size_t a = 0; a < kReportedAttributeCount; ++a)
        if (attributeCounts[a] > 0) attributes.Add(kAttributes[a], JsonValue(attributeCounts[a]));

    JsonValue document = JsonValue::Object();
    document.Add("meshes", JsonValue(static_cast<uint32_t>(instances.size())));
    document.Add("meshInstances", JsonValue(pairs));
    document.Add("nodes", JsonValue(static_cast<uint32_t>(nodeList.nodes.size())));
    document.Add("skins", JsonValue(static_cast<uint32_t>(skins.size())));
    document.Add("morphs", JsonValue(static_cast<uint32_t>(morphs.size())));
    document.Add("vertices", JsonValue(static_cast<uint32_t>(vertices)));
    document.Add("triangles", JsonValue(static_cast<uint32_t>(triangles)));
    document.Add("attributes", attributes);
    return document;
}

bool WriteMetadataJson(const std::string& path, const Scene& scene, bool prettyPrint) {
    return WriteJsonDocument(path, BuildMetadataJson(scene), prettyPrint ? StandardFormat : NoFormat);
}
