#include "runtimejson/model_json.h"

#include <algorithm>
#include <cstdint>
#include <map>
#include <string>
#include <type_traits>
#include <unordered_map>
#include <vector>

#include "json/json_emitter.h"
#include "runtimejson/json_tree_builder.h"
#include "runtimejson/scene_walk.h"
#include "runtimejson/output_file.h"
#include "scene/console.h"

namespace {

constexpr uint32_t kNone = UINT32_MAX;

struct MeshRef {
    const MeshInstance* instance;
    uint32_t vertices;
    uint32_t skin;   // kNone without a skin
    uint32_t morph;  // kNone without a morph
};

struct InstanceRef {
    uint32_t node;
    uint32_t mesh;
};

// First-occurrence lists of everything the meshes of the node list refer to.
struct ModelLists {
    NodeList nodeList;
    std::vector<const VertexData*> vertices;  // a null vertex data is listed too, as an empty record
    std::vector<const Skin*> skins;
    std::vector<const Morph*> morphs;
    std::vector<MeshRef> meshes;
    std::vector<InstanceRef> instances;
};

// Index of item in list, appending it on first sight. The map stands in for a linear
// search of the list, with the same result.
template <typename T>
uint32_t IndexOf(const T* item, std::vector<const T*>& list, std::unordered_map<const T*, uint32_t>& seen) {
    auto [it, inserted] = seen.emplace(item, static_cast<uint32_t>(list.size()));
    if (inserted) list.push_back(item);
    return it->second;
}

ModelLists CollectModelLists(const Scene& scene) {
    ModelLists lists;
    lists.nodeList = FlattenNodes(scene.root);
    std::unordered_map<const VertexData*, uint32_t> vertexSeen;
    std::unordered_map<const Skin*, uint32_t> skinSeen;
    std::unordered_map<const Morph*, uint32_t> morphSeen;
    std::unordered_map<const MeshInstance*, uint32_t> meshSeen;
    for (size_t n = 0; n < lists.nodeList.nodes.size(); ++n) {
        ForEachMeshInstance(lists.nodeList.nodes[n], [&](const MeshInstance* instance) {
            const uint32_t vertices = IndexOf(static_cast<const VertexData*>(instance->vertices), lists.vertices, vertexSeen);
            const uint32_t skin = instance->skin ? IndexOf(static_cast<const Skin*>(instance->skin), lists.skins, skinSeen) : kNone;
            const uint32_t morph =
                instance->morph ? IndexOf(static_cast<const Morph*>(instance->morph), lists.morphs, morphSeen) : kNone;
            auto [it, inserted] = meshSeen.emplace(instance, static_cast<uint32_t>(lists.meshes.size()));
            if (inserted) lists.meshes.push_back(MeshRef{instance, vertices, skin, morph});
            lists.instances.push_back(InstanceRef{static_cast<uint32_t>(n), it->second});
        });
    }
    return lists;
}

// A target made dense and never compacted stores every vertex in order, so its
// indices are implicit.
bool HasImplicitIndices(const MorphTarget& target) { return target.indices.empty() && target.count > 0; }

// What is wrong with a target whose arrays hold less than its count, or empty.
std::string MorphTargetProblem(const MorphTarget& target) {
    const size_t count = target.count;
    if (target.deltaPositions.size() / 3 < count || target.deltaNormals.size() / 3 < count ||
        (!HasImplicitIndices(target) && target.indices.size() < count))
        return "morph target '" + target.name + "' holds fewer deltas than its count of " + std::to_string(count);
    return {};
}

std::string FindMalformedMorph(const ModelLists& lists) {
    for (const Morph* morph : lists.morphs)
        for (const MorphTarget* target : morph->targets)
            if (target) {
                std::string problem = MorphTargetProblem(*target);
                if (!problem.empty()) return problem;
            }
    return {};
}

// The generator below is written once for both outputs: the tree builder and the
// streaming emitter offer the same calls.
template <typename Out>
void EmitFloats(Out& out, const float* values, size_t count) {
    out.BeginArray();
    for (size_t i = 0; i < count; ++i) out.Number(values[i]);
    out.EndArray();
}

template <typename Out>
void EmitVec3(Out& out, const Vec3& v) {
    out.BeginArray();
    out.Number(v.x);
    out.Number(v.y);
    out.Number(v.z);
    out.EndArray();
}

template <typename Out>
void EmitBox(Out& out, const BoundingBox& box) {
    out.BeginObject();
    out.Name("min");
    EmitVec3(out, box.min);
    out.Name("max");
    EmitVec3(out, box.max);
    out.EndObject();
}

// One member with a scalar value.
template <typename Out, typename T>
void Field(Out& out, const char* name, T value) {
    out.Name(name);
    if constexpr (std::is_same_v<T, bool>)
        out.Bool(value);
    else if constexpr (std::is_same_v<T, const char*> || std::is_same_v<T, std::string>)
        out.String(value);
    else
        out.Number(value);
}

template <typename Out>
void EmitCameraMembers(Out& out, const Camera& camera) {
    Field(out, "projection", camera.projection == 0 ? "perspective" : "orthographic");
    Field(out, "nearClip", camera.nearClip);
    Field(out, "farClip", camera.farClip);
    Field(out, "fov", camera.fov);
    Field(out, "orthoHeight", camera.orthoHeight);
    out.Name("clearColor");
    out.BeginArray();
    out.Number(camera.clearColor.x);
    out.Number(camera.clearColor.y);
    out.Number(camera.clearColor.z);
    out.Number(camera.clearAlpha);
    out.EndArray();
}

template <typename Out>
void EmitLightMembers(Out& out, const Light& light) {
    static const char* const kTypes[] = {"directional", "point", "spot"};
    if (light.type >= 0 && light.type <= 2) {
        Field(out, "lightType", kTypes[light.type]);
    }
    Field(out, "enabled", light.enabled);
    out.Name("color");
    EmitVec3(out, light.color);
    Field(out, "intensity", light.intensity);
    Field(out, "castShadows", light.castShadows);
    // The runtime's reader expects the flag twice.
    Field(out, "enabled", light.enabled);
    if (light.type == 2) {
        Field(out, "innerConeAngle", light.innerConeAngle);
        Field(out, "outerConeAngle", light.outerConeAngle);
    }
    if (light.type == 1 || light.type == 2) {
        Field(out, "falloffMode", int32_t(light.falloffMode != 0 ? 1 : 0));
        Field(out, "range", light.range);
    }
}

template <typename Out>
void EmitNode(Out& out, const GraphNode& node) {
    out.BeginObject();
    Field(out, "name", node.name);
    out.Name("position");
    EmitVec3(out, node.position);
    out.Name("rotation");
    EmitVec3(out, node.rotation);
    out.Name("scale");
    EmitVec3(out, node.scale);
    Field(out, "scaleCompensation", node.scaleCompensation);
    if (node.camera) EmitCameraMembers(out, *node.camera);
    if (node.light) EmitLightMembers(out, *node.light);
    out.EndObject();
}

template <typename Out>
void EmitSkin(Out& out, const Skin& skin, const std::map<uint64_t, const GraphNode*>& nodesById) {
    out.BeginObject();
    out.Name("inverseBindMatrices");
    out.BeginArray();
    for (const Mat4& matrix : skin.inverseBindMatrices) EmitFloats(out, matrix.m, 16);
    out.EndArray();
    out.Name("boneNames");
    out.BeginArray();
    for (int64_t joint : skin.joints) {
        auto it = nodesById.find(static_cast<uint64_t>(joint));
        if (it == nodesById.end()) {
            ConsolePrint("JSON skin conversion error");
            continue;
        }
        out.String(it->second->name);
    }
    out.EndArray();
    out.EndObject();
}

template <typename Out>
void EmitMorphTarget(Out& out, const MorphTarget& target) {
    // Clamped to the data present; a file writer refuses such a target beforehand.
    size_t count = std::min<size_t>(target.count, std::min(target.deltaPositions.size(), target.deltaNormals.size()) / 3);
    const bool implicitIndices = HasImplicitIndices(target);
    if (!implicitIndices) count = std::min(count, target.indices.size());
    out.BeginObject();
    Field(out, "name", target.name);
    out.Name("deltaPositions");
    EmitFloats(out, target.deltaPositions.data(), count * 3);
    out.Name("deltaNormals");
    EmitFloats(out, target.deltaNormals.data(), count * 3);
    out.Name("indices");
    out.BeginArray();
    for (size_t i = 0; i < count; ++i) out.Number(implicitIndices ? static_cast<uint32_t>(i) : target.indices[i]);
    out.EndArray();
    out.Name("aabb");
    EmitBox(out, target.boundingBox);
    out.EndObject();
}

template <typename Out>
void EmitMorph(Out& out, const Morph& morph) {
    out.BeginObject();
    out.Name("targets");
    out.BeginArray();
    for (const MorphTarget* target : morph.targets)
        if (target) EmitMorphTarget(out, *target);
    out.EndArray();
    out.EndObject();
}

template <typename Out>
void BeginAttribute(Out& out, const char* name, const char* type, int32_t components) {
    out.Name(name);
    out.BeginObject();
    Field(out, "type", type);
    Field(out, "components", components);
    out.Name("data");
}

template <typename Out>
void EmitFloatAttribute(Out& out, const char* name, int32_t components, const std::vector<float>& data) {
    if (data.empty()) return;
    BeginAttribute(out, name, "float32", components);
    EmitFloats(out, data.data(), data.size());
    out.EndObject();
}

// The runtime's texture space has v running downwards.
template <typename Out>
void EmitTexCoords(Out& out, const char* name, const std::vector<float>& data) {
    if (data.empty()) return;
    BeginAttribute(out, name, "float32", 2);
    out.BeginArray();
    for (size_t i = 0; i < data.size(); ++i) out.Number(i % 2 == 1 ? 1.0f - data[i] : data[i]);
    out.EndArray();
    out.EndObject();
}

// Colours go out as bytes; NaN counts as below range.
int32_t ColorByte(float value) {
    const float scaled = value * 255.0f;
    if (!(scaled > 0.0f)) return 0;
    if (scaled > 255.0f) return 255;
    return static_cast<int32_t>(scaled);
}

template <typename Out>
void EmitVertexData(Out& out, const VertexData* vertices) {
    out.BeginObject();
    if (vertices) {
        EmitFloatAttribute(out, "position", 3, vertices->positions);
        EmitFloatAttribute(out, "normal", 3, vertices->normals);
        if (!vertices->colors.empty()) {
            // Three components whatever the source stored per vertex: every value is converted.
            BeginAttribute(out, "color", "uint8", 3);
            out.BeginArray();
            for (float value : vertices->colors) out.Number(ColorByte(value));
            out.EndArray();
            out.EndObject();
        }
        if (!vertices->joints.empty()) {
            // Joint indices above 255 are not narrowed: the runtime reads them as they are.
            BeginAttribute(out, "blendIndices", "uint8", 4);
            out.BeginArray();
            for (uint16_t joint : vertices->joints) out.Number(static_cast<uint32_t>(joint));
            out.EndArray();
            out.EndObject();
        }
        EmitFloatAttribute(out, "blendWeight", 4, vertices->weights);
        EmitTexCoords(out, "texCoord0", vertices->texCoords[0]);
        EmitTexCoords(out, "texCoord1", vertices->texCoords[1]);
    }
    out.EndObject();
}

template <typename Out>
void EmitMesh(Out& out, const MeshRef& mesh) {
    const MeshInstance& instance = *mesh.instance;
    out.BeginObject();
    out.Name("aabb");
    EmitBox(out, instance.boundingBox);
    Field(out, "vertices", mesh.vertices);
    if (mesh.skin != kNone) {
        Field(out, "skin", mesh.skin);
    }
    if (mesh.morph != kNone) {
        Field(out, "morph", mesh.morph);
    }
    if (instance.indices) {
        out.Name("indices");
        out.BeginArray();
        for (uint32_t index : *instance.indices) out.Number(index);
        out.EndArray();
    }
    if (instance.primitiveType == 3 || instance.primitiveType == 4) {
        Field(out, "type", instance.primitiveType == 3 ? "triangles" : "trianglestrip");
    }
    Field(out, "base", int32_t(0));
    Field(out, "count", static_cast<uint32_t>(instance.indices ? instance.indices->size() : VertexCount(instance.vertices)));
    out.EndObject();
}

template <typename Out>
void EmitModel(Out& out, const ModelLists& lists) {
    const auto& nodes = lists.nodeList.nodes;
    out.BeginObject();
    out.Name("model");
    out.BeginObject();
    Field(out, "version", int32_t(3));
    out.Name("nodes");
    out.BeginArray();
    for (const GraphNode* node : nodes) EmitNode(out, *node);
    out.EndArray();
    out.Name("parents");
    out.BeginArray();
    for (int32_t parent : lists.nodeList.parents) out.Number(parent);
    out.EndArray();
    out.Name("skins");
    out.BeginArray();
    if (!lists.skins.empty()) {
        const auto nodesById = NodesById(nodes);
        for (const Skin* skin : lists.skins) EmitSkin(out, *skin, nodesById);
    }
    out.EndArray();
    out.Name("morphs");
    out.BeginArray();
    for (const Morph* morph : lists.morphs) EmitMorph(out, *morph);
    out.EndArray();
    out.Name("vertices");
    out.BeginArray();
    for (const VertexData* vertices : lists.vertices) EmitVertexData(out, vertices);
    out.EndArray();
    out.Name("meshes");
    out.BeginArray();
    for (const MeshRef& mesh : lists.meshes) EmitMesh(out, mesh);
    out.EndArray();
    out.Name("meshInstances");
    out.BeginArray();
    for (const InstanceRef& instance : lists.instances) {
        out.BeginObject();
        Field(out, "node", instance.node);
        Field(out, "mesh", instance.mesh);
        out.EndObject();
    }
    out.EndArray();
    out.EndObject();
    out.EndObject();
}

}  // namespace

JsonValue BuildModelJson(const Scene& scene) {
    JsonTreeBuilder builder;
    EmitModel(builder, CollectModelLists(scene));
    return builder.Result();
}

bool WriteModelJson(const std::string& path, const Scene& scene, bool prettyPrint) {
    const ModelLists lists = CollectModelLists(scene);
    const std::string problem = FindMalformedMorph(lists);
    if (!problem.empty()) RefuseToWrite(path, problem);
    JsonFileSink sink(path);
    if (!sink.IsOpen()) return false;
    JsonEmitter out(sink, prettyPrint ? StandardFormat : NoFormat);
    EmitModel(out, lists);
    return sink.Close();
}
