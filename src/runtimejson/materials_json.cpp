#include "runtimejson/materials_json.h"

#include <unordered_map>
#include <vector>

#include "runtimejson/json_values.h"
#include "runtimejson/output_file.h"
#include "runtimejson/scene_walk.h"

namespace {

// Only "/" separates folders here: a back-slash path stays whole.
std::string UriOf(const std::string& path) {
    const size_t slash = path.rfind('/');
    if (slash == std::string::npos || slash + 1 == path.size()) return path;
    return path.substr(slash + 1);
}

// Modes and filters that no importer produces have no word and go out empty.
const char* AddressModeText(uint32_t mode) {
    switch (mode) {
        case 0: return "repeat";
        case 1:
        case 2: return "clamp";
        case 3: return "mirror_repeat";
        default: return "";
    }
}

const char* FilterText(uint32_t filter) {
    static const char* const kFilters[] = {"nearest",           "linear",
                                           "nearest_mip_nearest", "nearest_mip_linear",
                                           "linear_mip_nearest",  "linear_mip_linear"};
    return filter < 6 ? kFilters[filter] : "";
}

JsonValue TextureJson(const Texture& texture) {
    JsonValue record = JsonValue::Object();
    record.Add("name", JsonValue(texture.name));
    record.Add("uri", JsonValue(UriOf(texture.uri)));
    record.Add("addressu", JsonValue(AddressModeText(texture.addressU)));
    record.Add("addressv", JsonValue(AddressModeText(texture.addressV)));
    record.Add("minfilter", JsonValue(FilterText(texture.minFilter)));
    record.Add("magfilter", JsonValue(FilterText(texture.magFilter)));
    record.Add("anisotropy", JsonValue(int32_t(1)));
    return record;
}

class ParameterList {
public:
    void Add(const std::string& name, const char* type, const JsonValue& data) {
        JsonValue parameter = JsonValue::Object();
        parameter.Add("name", JsonValue(name));
        parameter.Add("type", JsonValue(type));
        parameter.Add("data", data);
        list_.Add(parameter);
    }
    void Bool(const char* name, bool value) { Add(name, "boolean", JsonValue(value)); }
    void Float(const char* name, float value) { Add(name, "float", JsonValue(value)); }
    void Enum(const std::string& name, int32_t value) { Add(name, "enum", JsonValue(value)); }
    void Vec2(const std::string& name, const float* v) { Add(name, "vec2", FloatsJson({v[0], v[1]})); }
    void Vec3(const char* name, const ::Vec3& v) { Add(name, "vec3", Vec3Json(v)); }
    const JsonValue& Json() const { return list_; }

private:
    JsonValue list_ = JsonValue::Array();
};

// Position of each dictionary texture in the written "textures" array, by dictionary
// position; null entries are not written and have none.
struct TextureIndex {
    const ObjectDictionary<Texture*>* dictionary;
    std::vector<int32_t> writtenPosition;

    int32_t Of(const Texture* texture) const {
        auto it = dictionary->index.find(texture->id);
        if (it == dictionary->index.end() || it->second >= writtenPosition.size()) return -1;
        return writtenPosition[it->second];
    }
};

void AddSlot(ParameterList& parameters, const MaterialSlotInfo& info, const TextureSlot& slot,
             const TextureIndex& textures) {
    if (!slot.texture) return;
    const std::string name = info.name;
    parameters.Add(name, "texture", JsonValue(textures.Of(slot.texture)));
    if (!slot.channel.empty()) parameters.Add(name + "Channel", "string", JsonValue(slot.channel));
    if (slot.uv != 0) parameters.Enum(name + "Uv", slot.uv);
    // These three are placed by the runtime itself and take no transform.
    if (name == "lightMap" || name == "cubeMap" || name == "sphereMap") return;
    if (slot.offset[0] != 0.0f || slot.offset[1] != 0.0f) parameters.Vec2(name + "Offset", slot.offset);
    if (slot.tiling[0] != 1.0f || slot.tiling[1] != 1.0f) parameters.Vec2(name + "Tiling", slot.tiling);
    if (slot.rotation != 0.0f) parameters.Float((name + "Rotation").c_str(), slot.rotation);
}

JsonValue MaterialJson(const Material& m, const TextureIndex& textures) {
    ParameterList p;
    p.Enum("blendType", m.blendType != 0 ? 2 : 3);
    p.Enum("cull", m.cull == 1 ? 1 : 0);
    p.Bool("useLighting", m.useLighting);
    p.Bool("twoSidedLighting", m.twoSidedLighting);
    p.Bool("useMetalness", m.useMetalness);
    p.Bool("useMetalnessSpecularColor", m.useMetalnessSpecularColor);
    p.Bool("depthWrite", m.depthWrite);
    p.Bool("emissiveTint", m.emissiveTint);
    p.Bool("glossInvert", m.glossInvert);
    p.Bool("clearCoatGlossInvert", m.clearCoatGlossInvert);
    p.Bool("sheenGlossInvert", m.sheenGlossInvert);
    p.Bool("useDynamicRefraction", m.useDynamicRefraction);
    p.Bool("useSheen", m.useSheen);
    p.Bool("diffuseTint", m.diffuseTint);
    p.Bool("specularTint", m.specularTint);
    p.Bool("sheenTint", m.sheenTint);
    p.Bool("useIridescence", m.useIridescence);
    p.Float("metalness", m.metalness);
    p.Float("shininess", m.shininess * 100.0f);
    p.Float("opacity", m.opacity);
    p.Float("bumpMapFactor", m.bumpMapFactor);
    p.Float("reflectivity", m.reflectivity);
    p.Float("alphaTest", m.alphaTest);
    p.Float("clearCoat", m.clearCoat);
    p.Float("clearCoatGloss", m.clearCoatGloss);
    p.Float("clearCoatBumpiness", m.clearCoatBumpiness);
    p.Float("specularityFactor", m.specularityFactor);
    p.Float("refractionIndex", m.refractionIndex);
    p.Float("refraction", m.refraction);
    p.Float("sheenGloss", m.sheenGloss);
    p.Float("thickness", m.thickness);
    p.Float("attenuationDistance", m.attenuationDistance);
    p.Float("emissiveIntensity", m.emissiveIntensity);
    p.Float("iridescence", m.iridescence);
    p.Float("iridescenceRefractionIndex", m.iridescenceRefractionIndex);
    p.Float("iridescenceThicknessMin", m.iridescenceThicknessMin);
    p.Float("iridescenceThicknessMax", m.iridescenceThicknessMax);
    p.Vec3("ambient", m.ambient);
    p.Vec3("diffuse", m.diffuse);
    p.Vec3("emissive", m.emissive);
    p.Vec3("specular", m.specular);
    p.Vec3("sheen", m.sheen);
    p.Vec3("attenuation", m.attenuation);
    for (const MaterialSlotInfo& info : kMaterialSlots) AddSlot(p, info, m.*(info.slot), textures);

    JsonValue record = JsonValue::Object();
    record.Add("name", JsonValue(m.name));
    record.Add("shader", JsonValue(m.shadingModel != 0 ? "blinn" : "phong"));
    record.Add("parameters", p.Json());
    return record;
}

}  // namespace

JsonValue BuildMaterialsJson(const Scene& scene) {
    TextureIndex textureIndex{&scene.textures, {}};
    JsonValue textures = JsonValue::Array();
    int32_t written = 0;
    for (const Texture* texture : scene.textures.items) {
        textureIndex.writtenPosition.push_back(texture ? written : -1);
        if (!texture) continue;
        textures.Add(TextureJson(*texture));
        ++written;
    }

    JsonValue materials = JsonValue::Array();
    std::unordered_map<const Material*, int32_t> materialPosition;
    int32_t materialCount = 0;
    for (const Material* material : scene.materials.items) {
        if (!material) continue;
        materialPosition.emplace(material, materialCount++);
        materials.Add(MaterialJson(*material, textureIndex));
    }

    // An instance whose material is not in the dictionary, or that has none, points
    // one past the last material.
    JsonValue mappings = JsonValue::Array();
    for (const GraphNode* node : FlattenNodes(scene.root).nodes) {
        ForEachMeshInstance(node, [&](const MeshInstance* instance) {
            auto it = materialPosition.find(instance->material);
            JsonValue mapping = JsonValue::Object();
            mapping.Add("material", JsonValue(it != materialPosition.end() ? it->second : materialCount));
            mappings.Add(mapping);
        });
    }

    JsonValue info = JsonValue::Object();
    info.Add("version", JsonValue(int32_t(1)));
    info.Add("textures", textures);
    info.Add("materials", materials);
    info.Add("mappings", mappings);
    JsonValue document = JsonValue::Object();
    document.Add("materialInfo", info);
    return document;
}

bool WriteMaterialsJson(const std::string& path, const Scene& scene, bool prettyPrint) {
    return WriteJsonDocument(path, BuildMaterialsJson(scene), prettyPrint ? StandardFormat : NoFormat);
}
