// Building scenes by hand in tests. Everything made here is handed to the scene: nodes
// through the tree below its root, the rest through the dictionaries or Scene::Own.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "scene/scene.h"

namespace testsupport {

// A record of the scene's pools, made and handed to the scene in one step.
template <typename T, typename... Args>
T* New(Scene& scene, Args&&... args) {
    return scene.Own(std::make_unique<T>(std::forward<Args>(args)...));
}

// A node, hung below `parent` when one is given (the parent owns it then).
inline GraphNode* NewNode(const std::string& name, uint64_t id, GraphNode* parent = nullptr) {
    auto* node = new GraphNode();
    node->name = name;
    node->id = id;
    if (parent) parent->AddChild(node);
    return node;
}

// A geometry entered in the scene's dictionary.
inline Geometry* NewGeometry(Scene& scene, const std::string& name, uint64_t id) {
    auto* geometry = new Geometry();
    geometry->name = name;
    geometry->id = id;
    scene.geometries.Add(geometry);
    return geometry;
}

// A mesh instance of the scene appended to the geometry; not indexed.
inline MeshInstance* NewInstance(Scene& scene, Geometry& geometry, VertexData* vertices) {
    MeshInstance* instance = New<MeshInstance>(scene);
    instance->vertices = vertices;
    geometry.meshInstances.push_back(instance);
    return instance;
}

// The same, indexed.
inline MeshInstance* NewInstance(Scene& scene, Geometry& geometry, VertexData* vertices,
                                 std::vector<uint32_t> indices) {
    MeshInstance* instance = NewInstance(scene, geometry, vertices);
    instance->indices = New<std::vector<uint32_t>>(scene, std::move(indices));
    return instance;
}

class NodeBuilder {
public:
    NodeBuilder(Scene& scene, GraphNode* node) : scene_(scene), node_(node) {}

    NodeBuilder& Position(float x, float y, float z) { node_->position = {x, y, z}; return *this; }
    NodeBuilder& Rotation(float x, float y, float z) { node_->rotation = {x, y, z}; return *this; }
    NodeBuilder& Scale(float x, float y, float z) { node_->scale = {x, y, z}; return *this; }
    NodeBuilder& ScaleCompensation(bool on = true) { node_->scaleCompensation = on; return *this; }
    NodeBuilder& WithGeometry(Geometry* geometry) { node_->geometry = geometry; return *this; }
    NodeBuilder& WithCamera(const Camera& camera) {
        node_->camera = New<Camera>(scene_, camera);
        return *this;
    }
    NodeBuilder& WithLight(const Light& light) {
        node_->light = New<Light>(scene_, light);
        return *this;
    }
    // A new child, appended after the existing ones.
    NodeBuilder Child(const std::string& name, uint64_t id) { return NodeBuilder(scene_, NewNode(name, id, node_)); }

    GraphNode* Get() const { return node_; }
    operator GraphNode*() const { return node_; }

private:
    Scene& scene_;
    GraphNode* node_;
};

class MeshBuilder {
public:
    MeshBuilder(Scene& scene, MeshInstance* instance) : scene_(scene), mesh_(instance) {}

    MeshBuilder& Type(uint32_t primitiveType) { mesh_->primitiveType = primitiveType; return *this; }
    MeshBuilder& Indices(std::initializer_list<uint32_t> indices) {
        mesh_->indices = New<std::vector<uint32_t>>(scene_, indices);
        return *this;
    }
    MeshBuilder& Vertices(VertexData* vertices) { mesh_->vertices = vertices; return *this; }
    MeshBuilder& WithSkin(Skin* skin) { mesh_->skin = skin; return *this; }
    MeshBuilder& WithMorph(Morph* morph) { mesh_->morph = morph; return *this; }
    MeshBuilder& WithMaterial(Material* material) { mesh_->material = material; return *this; }
    MeshBuilder& Box(Vec3 min, Vec3 max) {
        mesh_->boundingBox.valid = true;
        mesh_->boundingBox.min = min;
        mesh_->boundingBox.max = max;
        return *this;
    }
    MeshBuilder& Compressed() { mesh_->compressed.emplace(); return *this; }

    MeshInstance* Get() const { return mesh_; }
    operator MeshInstance*() const { return mesh_; }

private:
    Scene& scene_;
    MeshInstance* mesh_;
};

class SceneBuilder {
public:
    SceneBuilder() : scene_(std::make_unique<Scene>()) {}

    // Makes the root; call once.
    NodeBuilder Root(const std::string& name = "root", uint64_t id = 0) {
        scene_->root = NewNode(name, id);
        return NodeBuilder(*scene_, scene_->root);
    }
    NodeBuilder Node(GraphNode* node) { return NodeBuilder(*scene_, node); }

    Geometry* AddGeometry(const std::string& name, uint64_t id) { return NewGeometry(*scene_, name, id); }
    // A new mesh instance appended to the geometry.
    MeshBuilder AddMesh(Geometry* geometry) {
        return MeshBuilder(*scene_, NewInstance(*scene_, *geometry, nullptr));
    }
    VertexData* NewVertices() { return New<VertexData>(*scene_); }
    Skin* NewSkin(std::vector<int64_t> joints) {
        Skin* skin = New<Skin>(*scene_);
        skin->joints = std::move(joints);
        skin->inverseBindMatrices.resize(skin->joints.size());
        return skin;
    }
    Morph* NewMorph(std::initializer_list<MorphTarget*> targets) {
        Morph* morph = New<Morph>(*scene_);
        morph->targets = targets;
        return morph;
    }
    // A dense target: positions and normals three floats per vertex.
    MorphTarget* NewTarget(const std::string& name, std::vector<float> positions, std::vector<float> normals) {
        MorphTarget* target = New<MorphTarget>(*scene_, static_cast<uint32_t>(positions.size() / 3));
        target->name = name;
        target->deltaPositions = std::move(positions);
        target->deltaNormals = std::move(normals);
        return target;
    }

    Material* AddMaterial(const std::string& name, uint64_t id) {
        auto* material = new Material();
        material->name = name;
        material->id = id;
        scene_->materials.Add(material);
        return material;
    }
    Texture* AddTexture(const std::string& name, uint64_t id, const std::string& uri) {
        auto* texture = new Texture();
        texture->name = name;
        texture->id = id;
        texture->uri = uri;
        scene_->textures.Add(texture);
        return texture;
    }
    Animation* AddAnimation(const std::string& name, float duration) {
        auto* animation = new Animation();
        animation->name = name;
        animation->duration = duration;
        scene_->AddAnimation(animation);
        return animation;
    }

    Scene& scene() { return *scene_; }

private:
    std::unique_ptr<Scene> scene_;
};

// Keys and values of a channel in one call.
inline VectorChannel Channel(int32_t interpolation, std::vector<float> times, std::vector<Vec3> values,
                             Vec3 defaultValue = {}) {
    VectorChannel channel;
    channel.interpolation = interpolation;
    channel.times = std::move(times);
    channel.values = std::move(values);
    channel.defaultValue = defaultValue;
    return channel;
}

}  // namespace testsupport
