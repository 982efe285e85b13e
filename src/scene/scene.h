// The one in-memory scene shared by every loader and writer.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <tuple>
#include <vector>

#include "scene/animation.h"
#include "scene/base_object.h"
#include "scene/geometry.h"
#include "scene/material.h"
#include "scene/math.h"
#include "scene/object_dictionary.h"

// Codes of Camera::projection.
enum Projection : int32_t {
    kProjectionPerspective = 0,
    kProjectionOrthographic = 1,
};

// Codes of Light::type.
enum LightType : int32_t {
    kLightDirectional = 0,
    kLightPoint = 1,
    kLightSpot = 2,
};

struct Camera : BaseObject {
    int32_t projection = kProjectionPerspective;  // a Projection code
    float nearClip = 0.0f;
    float farClip = 0.0f;
    float fov = 0.0f;  // degrees
    float orthoHeight = 4.0f;
    Vec3 clearColor{0.0f, 0.0f, 0.0f};
    float clearAlpha = 1.0f;
};

struct Light : BaseObject {
    int32_t type = kLightDirectional;  // a LightType code
    bool enabled = true;
    Vec3 color{0.8f, 0.8f, 0.8f};
    float intensity = 1.0f;
    bool castShadows = false;
    int32_t falloffMode = 0;
    float range = 10.0f;
    float innerConeAngle = 0.0f;
    float outerConeAngle = 0.7853982f;
};

class GraphNode : public BaseObject {
public:
    Vec3 position;
    Vec3 rotation;  // Euler degrees
    Vec3 scale{1.0f, 1.0f, 1.0f};
    Mat4 localMatrix;
    Mat4 worldMatrix;
    bool isSkeletonRoot = false;
    GraphNode* parent = nullptr;         // not owning
    std::vector<GraphNode*> children;    // owning, in order of addition
    Camera* camera = nullptr;            // not owned
    Light* light = nullptr;              // not owned
    Geometry* geometry = nullptr;        // not owned (shared between nodes)
    bool scaleCompensation = false;

    GraphNode() = default;
    GraphNode(const GraphNode&) = delete;
    GraphNode& operator=(const GraphNode&) = delete;
    virtual ~GraphNode();

    void AddChild(GraphNode* child);
    size_t GetChildCount() const { return children.size(); }
    GraphNode* GetChild(size_t i) const { return children[i]; }
    GraphNode* GetParent() const { return parent; }
    // Removes (and destroys, with its subtree) every entry equal to child.
    void RemoveChild(GraphNode* child);
};

class Scene : public AnimationDictionary {
public:
    ObjectDictionary<Texture*> textures;
    ObjectDictionary<Material*> materials;
    ObjectDictionary<Geometry*> geometries;
    GraphNode* root = nullptr;

    Scene() = default;
    Scene(const Scene&) = delete;
    Scene& operator=(const Scene&) = delete;
    // Deletes the node tree, then every record handed to Own; the members then go in the
    // order geometries, materials, textures, animations.
    ~Scene() override;

    // Takes a record that no dictionary holds (mesh records, cameras, lights, placeholder
    // geometry) and keeps it until the scene goes; the raw pointer is for the scene's
    // fields, which never own what they point at. Every such record is made through here,
    // once, so that nothing is freed twice however freely the fields share it.
    template <typename T>
    T* Own(std::unique_ptr<T> record) {
        T* raw = record.get();
        std::get<Pool<T>>(pools_).push_back(std::move(record));
        return raw;
    }

    // The records of one type handed to Own, in order of handing.
    template <typename T>
    const std::vector<std::unique_ptr<T>>& Owned() const {
        return std::get<Pool<T>>(pools_);
    }

private:
    template <typename T>
    using Pool = std::vector<std::unique_ptr<T>>;
    std::tuple<Pool<MeshInstance>, Pool<std::vector<uint32_t>>, Pool<VertexData>, Pool<Skin>, Pool<Morph>,
               Pool<MorphTarget>, Pool<Camera>, Pool<Light>, Pool<Geometry>>
        pools_;
};
