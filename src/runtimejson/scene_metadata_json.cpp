#include "runtimejson/scene_metadata_json.h"

#include <algorithm>
#include <array>
#include <map>
#include <set>
#include <unordered_map>
#include <vector>

#include "runtimejson/json_values.h"
#include "runtimejson/output_file.h"
#include "runtimejson/scene_walk.h"
#include "runtimejson/vertex_attributes.h"

namespace {

JsonValue RenderAssetJson(const Geometry& geometry, int32_t index) {
    bool skinned = false;
    bool compressed = false;
    uint64_t vertices = 0;
    uint64_t triangles = 0;
    int32_t meshes = 0;
    std::array<bool, kReportedAttributeCount> present{};
    for (const MeshInstance* instance : geometry.meshInstances) {
        if (!instance) continue;
        ++meshes;
        skinned = skinned || instance->skin;
        compressed = compressed || instance->compressed.has_value();
        vertices += VertexCount(instance->vertices);
        if (instance->primitiveType == kPrimitiveTriangles)
            triangles += instance->indices ? instance->indices->size() / 3 : VertexCount(instance->vertices) / 3;
        if (instance->vertices) {
            const auto has = ReportedAttributes(*instance->vertices);
            for (size_t a = 0; a < kReportedAttributeCount; ++a) present[a] = present[a] || has[a];
        }
    }
    static const char* const kAttributes[kReportedAttributeCount] = {
        "POSITION", "NORMAL", "COLOR", "BONEINDICES", "BONEWEIGHTS", "TEXCOORD_0", "TEXCOORD_1"};
    JsonValue attributes = JsonValue::Object();
    for (size_t a = 0; a < kReportedAttributeCount; ++a)
        if (present[a]) attributes.Add(kAttributes[a], JsonValue(int32_t(1)));

    JsonValue asset = JsonValue::Object();
    asset.Add("name", JsonValue(geometry.name));
    asset.Add("index", JsonValue(index));
    asset.Add("meshes", JsonValue(meshes));
    asset.Add("skinned", JsonValue(skinned));
    asset.Add("vertices", JsonValue(static_cast<uint32_t>(vertices)));
    asset.Add("triangles", JsonValue(static_cast<uint32_t>(triangles)));
    asset.Add("attributes", attributes);
    asset.Add("meshCompression", JsonValue(compressed ? "draco" : ""));
    return asset;
}

struct EntityIndex {
    const NodeList& list;
    std::unordered_map<const GraphNode*, int32_t> position;
    std::map<uint64_t, const GraphNode*> byId;

    explicit EntityIndex(const NodeList& entities) : list(entities), byId(NodesById(entities.nodes)) {
        for (size_t i = 0; i < entities.nodes.size(); ++i) position.emplace(entities.nodes[i], static_cast<int32_t>(i));
    }
    // A node outside the list (the scene root) gets the entity count.
    int32_t Of(const GraphNode* node) const {
        auto it = position.find(node);
        return it != position.end() ? it->second : static_cast<int32_t>(list.nodes.size());
    }
};

// The deepest node that is an ancestor of (or is) every known joint of the geometry's
// skins, taken in ascending order of the skins' addresses; null if there is none.
// The first known joint's chain is the candidate list; each later joint only strikes
// candidates off, so one walk up from each joint is all the work.
const GraphNode* CommonAncestorOfJoints(const Geometry& geometry, const EntityIndex& entities) {
    std::set<const Skin*> skins;
    for (const MeshInstance* instance : geometry.meshInstances)
        if (instance && instance->skin) skins.insert(instance->skin);

    std::vector<const GraphNode*> common;  // root first
    std::unordered_map<const GraphNode*, size_t> positionInCommon;
    std::vector<uint32_t> lastSeen;  // per candidate, the joint that last reached it
    std::vector<bool> alive;
    uint32_t joint = 0;
    // No real chain is longer than the entities plus the root; the bound stops a
    // malformed parent loop.
    const size_t maxChain = entities.list.nodes.size() + 1;
    for (const Skin* skin : skins) {
        for (int64_t jointId : skin->joints) {
            auto it = entities.byId.find(static_cast<uint64_t>(jointId));
            if (it == entities.byId.end()) continue;
            ++joint;
            if (joint == 1) {
                for (const GraphNode* node = it->second; node && common.size() < maxChain; node = node->parent)
                    common.push_back(node);
                std::reverse(common.begin(), common.end());
                for (size_t i = 0; i < common.size(); ++i) positionInCommon.emplace(common[i], i);
                lastSeen.assign(common.size(), 0);
                alive.assign(common.size(), true);
                continue;
            }
            size_t steps = 0;
            for (const GraphNode* node = it->second; node && steps < maxChain; node = node->parent, ++steps) {
                auto found = positionInCommon.find(node);
                if (found != positionInCommon.end()) lastSeen[found->second] = joint;
            }
            for (size_t i = 0; i < common.size(); ++i)
                if (lastSeen[i] != joint) alive[i] = false;
        }
    }
    for (size_t i = common.size(); i-- > 0;)
        if (alive[i]) return common[i];
    return nullptr;
}

JsonValue CameraJson(const Camera& camera) {
    JsonValue component = JsonValue::Object();
    component.Add("projection", JsonValue(int32_t(camera.projection == kProjectionPerspective ? 0 : 1)));
    component.Add("nearClip", JsonValue(camera.nearClip));
    component.Add("farClip", JsonValue(camera.farClip));
    component.Add("fov", JsonValue(camera.fov));
    component.Add("orthoHeight", JsonValue(camera.orthoHeight));
    component.Add("clearColor",
                  FloatsJson({camera.clearColor.x, camera.clearColor.y, camera.clearColor.z, camera.clearAlpha}));
    return component;
}

JsonValue LightJson(const Light& light) {
    static const char* const kTypes[] = {"directional", "point", "spot"};
    JsonValue component = JsonValue::Object();
    if (light.type >= kLightDirectional && light.type <= kLightSpot) component.Add("type", JsonValue(kTypes[light.type]));
    component.Add("enabled", JsonValue(light.enabled));
    component.Add("color", Vec3Json(light.color));
    component.Add("intensity", JsonValue(light.intensity));
    component.Add("castShadows", JsonValue(light.castShadows));
    // The runtime's reader expects the flag twice.
    component.Add("enabled", JsonValue(light.enabled));
    if (light.type == kLightSpot) {
        component.Add("innerConeAngle", JsonValue(light.innerConeAngle));
        component.Add("outerConeAngle", JsonValue(light.outerConeAngle));
    }
    return component;
}

// rootBone: the entity index of the joints' common ancestor, or -1 for no member.
JsonValue RenderJson(const GraphNode& node, int32_t assetIndex, int32_t rootBone) {
    JsonValue materials = JsonValue::Array();
    for (const MeshInstance* instance : node.geometry->meshInstances)
        if (instance && instance->material) materials.Add(JsonValue(instance->material->name));
    JsonValue component = JsonValue::Object();
    component.Add("id", JsonValue(assetIndex));
    component.Add("materials", materials);
    if (rootBone >= 0) component.Add("rootBone", JsonValue(rootBone));
    return component;
}

}  // namespace

JsonValue BuildSceneMetadataJson(const Scene& scene) {
    const NodeList entityList = FlattenEntities(scene.root);
    const EntityIndex entities(entityList);

    std::unordered_map<const Geometry*, int32_t> assetIndex;
    JsonValue renders = JsonValue::Array();
    for (const GraphNode* node : entityList.nodes) {
        if (!node->geometry) continue;
        auto [it, inserted] = assetIndex.emplace(node->geometry, static_cast<int32_t>(assetIndex.size()));
        if (inserted) renders.Add(RenderAssetJson(*node->geometry, it->second));
    }
    // The root bone depends on the geometry alone: found once for all the nodes that share it.
    constexpr int32_t kNotYetFound = -2;
    std::vector<int32_t> rootBones(assetIndex.size(), kNotYetFound);
    auto rootBoneOf = [&](const Geometry* geometry, int32_t asset) {
        int32_t& rootBone = rootBones[static_cast<size_t>(asset)];
        if (rootBone == kNotYetFound) {
            const GraphNode* common = CommonAncestorOfJoints(*geometry, entities);
            rootBone = common ? entities.Of(common) : -1;
        }
        return rootBone;
    };
    JsonValue materialNames = JsonValue::Array();
    for (const Material* material : scene.materials.items)
        if (material) materialNames.Add(JsonValue(material->name));
    JsonValue assets = JsonValue::Object();
    assets.Add("renders", renders);
    assets.Add("materials", materialNames);

    JsonValue entityObjects = JsonValue::Object();
    for (size_t i = 0; i < entityList.nodes.size(); ++i) {
        const GraphNode& node = *entityList.nodes[i];
        JsonValue children = JsonValue::Array();
        for (const GraphNode* child : node.children) {
            auto it = entities.position.find(child);
            if (child && it != entities.position.end()) children.Add(JsonValue(it->second));
        }
        JsonValue entity = JsonValue::Object();
        entity.Add("name", JsonValue(node.name));
        entity.Add("parent", JsonValue(entityList.parents[i]));
        entity.Add("position", Vec3Json(node.position));
        entity.Add("rotation", Vec3Json(node.rotation));
        entity.Add("scale", Vec3Json(node.scale));
        entity.Add("scaleCompensation", JsonValue(node.scaleCompensation));
        entity.Add("children", children);

        JsonValue components = JsonValue::Object();
        if (node.camera) {
            components.Add("camera", CameraJson(*node.camera));
        } else if (node.light) {
            // Point and spot lights carry their falloff on the entity, not in the component.
            if (node.light->type == kLightPoint || node.light->type == kLightSpot) {
                entity.Add("falloffMode", JsonValue(int32_t(node.light->falloffMode != 0 ? 1 : 0)));
                entity.Add("range", JsonValue(node.light->range));
            }
            components.Add("light", LightJson(*node.light));
        } else if (node.geometry) {
            const int32_t asset = assetIndex.at(node.geometry);
            components.Add("render", RenderJson(node, asset, rootBoneOf(node.geometry, asset)));
        }
        if (components.Count() > 0) entity.Add("components", components);
        entityObjects.Add(std::to_string(i), entity);
    }

    JsonValue body = JsonValue::Object();
    body.Add("version", JsonValue(int32_t(1)));
    body.Add("assets", assets);
    body.Add("entities", entityObjects);
    JsonValue document = JsonValue::Object();
    document.Add("scene", body);
    return document;
}

bool WriteSceneMetadataJson(const std::string& path, const Scene& scene) {
    return WriteJsonDocument(path, BuildSceneMetadataJson(scene), StandardFormat);
}
