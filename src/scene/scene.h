// The one in-memory scene shared by every loader and writer.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "scene/animation.h"
#include "scene/base_object.h"
#include "scene/geometry.h"
#include "scene/material.h"
#include "scene/math.h"
#include "scene/object_dictionary.h"

struct Camera : BaseObject {
    int32_t projection = 0;  // 0 perspective, 1 orthographic
    float nearClip = 0.0f;
    float farClip = 0.0f;
    float fov = 0.0f;  // degrees
    float orthoHeight = 4.0f;
    Vec3 clearColor{0.0f, 0.0f, 0.0f};
    float clearAlpha = 1.0f;
};

struct Light : BaseObject {
    int32_t type = 0;  // 0 directional, 1 point, 2 spot
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

    // Records that belong to no dictionary (cameras, lights, placeholder geometry) are
    // handed to the scene here so that tearing it down frees them exactly once.
    std::vector<Camera*> ownedCameras;
    std::vector<Light*> ownedLights;
    std::vector<Geometry*> ownedGeometries;

    Scene() = default;
    // Frees everything the scene reaches; members then go in the order geometries,
    // materials, textures, animations.
    ~Scene() override;
};
