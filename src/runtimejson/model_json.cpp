#include "runtimejson/model_json.h"

#include <algorithm>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "json/json_emitter.h"
#include "runtimejson/emit_helpers.h"
#include "runtimejson/json_tree_builder.h"
#include "runtimejson/model_lists.h"
#include "runtimejson/output_file.h"
#include "runtimejson/scene_walk.h"
#include "scene/console.h"

namespace {

template <typename Out>
void EmitBox(Out& out, const BoundingBox& box) {
    out.BeginObject();
    out.Name("min");
    EmitVec3(out, box.min);
    out.Name("max");
    EmitVec3(out, box.max);
    out.EndObject();
}

template <typename Out>
void EmitCameraMembers(Out& out, const Camera& camera) {
    Field(out, "projection", camera.projection == kProjectionPerspective ? "perspective" : "orthographic");
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
    if (light.type >= kLightDirectional && light.type <= kLightSpot) {
        Field(out, "lightType", kTypes[light.type]);
    }
    Field(out, "enabled", light.enabled);
    out.Name("color");
    EmitVec3(out, light.color);
    Field(out, "intensity", light.intensity);
    Field(out, "castShadows", light.castShadows);
    // The runtime's reader expects the flag twice.
    Field(out, "enabled", light.enabled);
    if (light.type == kLightSpot) {
        Field(out, "innerConeAngle", light.innerConeAngle);
        Field(out, "outerConeAngle", light.outerConeAngle);
    }
    if (light.type == kLightPoint || light.type == kLightSpot) {
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
    if (mesh.skin != kNoIndex) {
        Field(out, "skin", mesh.skin);
    }
    if (mesh.morph != kNoIndex) {
        Field(out, "morph", mesh.morph);
    }
    if (instance.indices) {
        out.Name("indices");
        out.BeginArray();
        for (uint32_t index : *instance.indices) out.Number(index);
        out.EndArray();
    }
    if (instance.primitiveType == kPrimitiveTriangles || instance.primitiveType == kPrimitiveTriangleStrip) {
        Field(out, "type", instance.primitiveType == kPrimitiveTriangles ? "triangles" : "trianglestrip");
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
