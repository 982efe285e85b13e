#include "gltf/glb_json_write.h"

#include <cmath>
#include <cstdio>

#include "gltf/glb_container_write.h"

namespace {
// One JSON value for each item, in order.
template <typename T, typename ToJson>
JsonValue ArrayOf(const std::vector<T>& items, ToJson toJson) {
    JsonValue array = JsonValue::Array();
    for (const T& item : items) array.Add(toJson(item));
    return array;
}

template <typename T>
JsonValue ValueArray(const std::vector<T>& values) {
    return ArrayOf(values, [](const T& v) { return JsonValue(v); });
}

JsonValue FloatArray(const float* values, size_t n) {
    JsonValue array = JsonValue::Array();
    for (size_t i = 0; i < n; ++i) array.Add(JsonValue(values[i]));
    return array;
}

JsonValue BoundArray(const std::vector<float>& values) {
    return ArrayOf(values, [](float v) { return JsonValue(uint32_t(kJsonNumber), FormatBoundValue(v)); });
}

// A transform member with a NaN anywhere is left out whole.
void AddTransform(JsonValue& object, const char* name, const float* values, size_t n) {
    for (size_t i = 0; i < n; ++i)
        if (std::isnan(values[i])) return;
    object.Add(name, FloatArray(values, n));
}

JsonValue NodeJson(const GlbNode& node) {
    JsonValue out = JsonValue::Object();
    out.Add("name", JsonValue(node.name));
    const float* t = node.translation;
    if (t[0] != 0.0f || t[1] != 0.0f || t[2] != 0.0f) AddTransform(out, "translation", t, 3);
    const float* r = node.rotation;
    if (r[0] != 0.0f || r[1] != 0.0f || r[2] != 0.0f || r[3] != 1.0f) AddTransform(out, "rotation", r, 4);
    const float* s = node.scale;
    if (s[0] != 1.0f || s[1] != 1.0f || s[2] != 1.0f) AddTransform(out, "scale", s, 3);
    if (!node.children.empty()) out.Add("children", ValueArray(node.children));
    if (node.flag == 0) {
        if (node.mesh >= 0) out.Add("mesh", JsonValue(node.mesh));
        if (!node.skeletons.empty()) out.Add("skeletons", ValueArray(node.skeletons));
        if (node.skin >= 0) out.Add("skin", JsonValue(node.skin));
        if (node.camera >= 0) out.Add("camera", JsonValue(node.camera));
        if (node.light >= 0) {
            JsonValue light = JsonValue::Object();
            light.Add("light", JsonValue(node.light));
            JsonValue extensions = JsonValue::Object();
            extensions.Add("KHR_lights_punctual", light);
            out.Add("extensions", extensions);
        }
    }
    if (!node.userProperties.empty()) {
        JsonValue properties = JsonValue::Object();
        JsonParser parser;
        for (const std::string& text : node.userProperties) {
            JsonValue entry = parser.ParseString(text);
            for (size_t i = 0; i < entry.Count(); ++i) properties.Add(entry.MemberName(i), entry.Member(i));
        }
        JsonValue fromFbx = JsonValue::Object();
        fromFbx.Add("userProperties", properties);
        JsonValue extras = JsonValue::Object();
        extras.Add("fromFBX", fromFbx);
        out.Add("extras", extras);
    }
    return out;
}

JsonValue NameMap(const std::map<std::string, int32_t>& map) {
    JsonValue out = JsonValue::Object();
    for (const auto& [name, index] : map) out.Add(name, JsonValue(index));
    return out;
}

JsonValue PrimitiveJson(const GlbPrimitive& p) {
    JsonValue out = JsonValue::Object();
    out.Add("mode", JsonValue(p.mode));
    out.Add("attributes", NameMap(p.attributes));
    if (p.indices >= 0) out.Add("indices", JsonValue(p.indices));
    if (!p.targets.empty()) {
        out.Add("targets", ArrayOf(p.targets, [](const GlbTargetPair& pair) {
                    JsonValue target = JsonValue::Object();
                    if (pair.position >= 0) target.Add("POSITION", JsonValue(pair.position));
                    if (pair.normal >= 0) target.Add("NORMAL", JsonValue(pair.normal));
                    return target;
                }));
    }
    if (p.dracoView >= 0) {
        JsonValue draco = JsonValue::Object();
        draco.Add("bufferView", JsonValue(p.dracoView));
        draco.Add("attributes", NameMap(p.dracoAttributes));
        JsonValue extensions = JsonValue::Object();
        extensions.Add("KHR_draco_mesh_compression", draco);
        out.Add("extensions", extensions);
    }
    return out;
}

JsonValue MeshJson(const GlbMesh& mesh) {
    JsonValue out = JsonValue::Object();
    out.Add("primitives", ArrayOf(mesh.primitives, PrimitiveJson));
    if (!mesh.weights.empty()) {
        out.Add("weights", FloatArray(mesh.weights.data(), mesh.weights.size()));
        JsonValue extras = JsonValue::Object();
        extras.Add("targetNames", ValueArray(mesh.targetNames));
        out.Add("extras", extras);
    }
    return out;
}

JsonValue SkinJson(const GlbSkin& skin) {
    JsonValue out = JsonValue::Object();
    out.Add("joints", ValueArray(skin.joints));
    out.Add("inverseBindMatrices", JsonValue(skin.inverseBindMatrices));
    out.Add("skeleton", JsonValue(skin.skeleton));
    return out;
}

JsonValue AnimationJson(const GlbAnimation& animation) {
    JsonValue out = JsonValue::Object();
    out.Add("name", JsonValue(animation.name));
    out.Add("channels", ArrayOf(animation.channels, [](const GlbChannel& c) {
                JsonValue target = JsonValue::Object();
                target.Add("node", JsonValue(c.node));
                target.Add("path", JsonValue(c.path));
                JsonValue channel = JsonValue::Object();
                channel.Add("sampler", JsonValue(c.sampler));
                channel.Add("target", target);
                return channel;
            }));
    out.Add("samplers", ArrayOf(animation.samplers, [](const GlbSampler& s) {
                JsonValue sampler = JsonValue::Object();
                sampler.Add("input", JsonValue(s.input));
                sampler.Add("interpolation", JsonValue(s.interpolation));
                sampler.Add("output", JsonValue(s.output));
                return sampler;
            }));
    return out;
}

JsonValue ViewJson(const GlbBufferView& v) {
    JsonValue out = JsonValue::Object();
    out.Add("buffer", JsonValue(v.buffer));
    out.Add("byteLength", JsonValue(v.byteLength));
    out.Add("byteOffset", JsonValue(v.byteOffset));
    if (v.byteStride != 0) out.Add("byteStride", JsonValue(v.byteStride));
    if (v.target != 0) out.Add("target", JsonValue(v.target));
    return out;
}

JsonValue AccessorJson(const GlbAccessor& a) {
    JsonValue out = JsonValue::Object();
    out.Add("type", JsonValue(a.format.type));
    out.Add("componentType", JsonValue(a.format.componentType));
    if (a.normalized) out.Add("normalized", JsonValue(true));
    if (!a.min.empty()) out.Add("min", BoundArray(a.min));
    if (!a.max.empty()) out.Add("max", BoundArray(a.max));
    if (a.sparseIndicesView == -1) {
        out.Add("count", JsonValue(a.count));
        if (a.bufferView >= 0) {
            out.Add("bufferView", JsonValue(a.bufferView));
            out.Add("byteOffset", JsonValue(a.byteOffset));
        }
    } else {
        out.Add("count", JsonValue(a.sparseTotal));
        JsonValue values = JsonValue::Object();
        values.Add("bufferView", JsonValue(a.bufferView));
        JsonValue indices = JsonValue::Object();
        indices.Add("bufferView", JsonValue(a.sparseIndicesView));
        indices.Add("componentType", JsonValue(uint32_t(5125)));
        JsonValue sparse = JsonValue::Object();
        sparse.Add("count", JsonValue(a.count));
        sparse.Add("values", values);
        sparse.Add("indices", indices);
        out.Add("sparse", sparse);
    }
    return out;
}
}  // namespace

std::string FormatBoundValue(float value) {
    char text[48];
    int n = std::snprintf(text, sizeof text, "%.10g", static_cast<double>(value));
    return std::string(text, n > 0 ? size_t(n) : 0);
}

JsonValue BuildGltfJson(const ExportOptions& options, const GlbBuilder& builder, const std::vector<GlbNode>& nodes,
                        const std::vector<GlbMesh>& meshes, const std::vector<GlbSkin>& skins,
                        const std::vector<GlbAnimation>& animations) {
    JsonValue root = JsonValue::Object();

    JsonValue asset = JsonValue::Object();
    asset.Add("generator", JsonValue("Fernbright Converter v" + options.version));
    asset.Add("version", JsonValue("2.0"));
    root.Add("asset", asset);
    root.Add("scene", JsonValue(int32_t(0)));

    root.Add("nodes", ArrayOf(nodes, NodeJson));

    bool draco = false;
    for (const GlbMesh& m : meshes)
        for (const GlbPrimitive& p : m.primitives) draco = draco || p.dracoView >= 0;
    root.Add("meshes", ArrayOf(meshes, MeshJson));

    if (!skins.empty()) root.Add("skins", ArrayOf(skins, SkinJson));
    if (!animations.empty()) root.Add("animations", ArrayOf(animations, AnimationJson));

    JsonValue buffer = JsonValue::Object();
    buffer.Add("byteLength", JsonValue(static_cast<uint32_t>(builder.data.size())));
    JsonValue buffers = JsonValue::Array();
    buffers.Add(buffer);
    root.Add("buffers", buffers);

    root.Add("bufferViews", ArrayOf(builder.bufferViews, ViewJson));
    root.Add("accessors", ArrayOf(builder.accessors, AccessorJson));

    // A scene without nodes (an empty glTF input) lists no root node.
    JsonValue sceneNodes = JsonValue::Array();
    if (!nodes.empty()) sceneNodes.Add(JsonValue(int32_t(0)));
    JsonValue sceneEntry = JsonValue::Object();
    sceneEntry.Add("nodes", sceneNodes);
    JsonValue scenes = JsonValue::Array();
    scenes.Add(sceneEntry);
    root.Add("scenes", scenes);

    if (draco) {
        JsonValue used = JsonValue::Array();
        used.Add(JsonValue("KHR_draco_mesh_compression"));
        root.Add("extensionsUsed", used);
        root.Add("extensionsRequired", used);
    }
    return root;
}

void WriteGltfJson(const std::string& path, const ExportOptions& options, const GlbBuilder& builder,
                   const std::vector<GlbNode>& nodes, const std::vector<GlbMesh>& meshes,
                   const std::vector<GlbSkin>& skins, const std::vector<GlbAnimation>& animations) {
    WriteGlbFile(path, BuildGltfJson(options, builder, nodes, meshes, skins, animations), builder);
}
