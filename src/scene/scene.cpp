#include "scene/scene.h"

#include <unordered_set>

GraphNode::~GraphNode() {
    for (GraphNode* child : children) delete child;
}

void GraphNode::AddChild(GraphNode* child) {
    children.push_back(child);
    if (child) child->parent = this;
}

void GraphNode::RemoveChild(GraphNode* child) {
    for (size_t i = 0; i < children.size(); ++i) {
        if (children[i] != child) continue;
        children.erase(children.begin() + static_cast<std::ptrdiff_t>(i));
        delete child;  // deleting null is a no-op
    }
}

namespace {
void CollectInstances(const Geometry* geometry, std::unordered_set<MeshInstance*>& out) {
    if (!geometry) return;
    for (MeshInstance* mi : geometry->meshInstances)
        if (mi) out.insert(mi);
}

void CollectNodeGeometry(const GraphNode* node, std::unordered_set<MeshInstance*>& out) {
    if (!node) return;
    CollectInstances(node->geometry, out);
    for (const GraphNode* child : node->children) CollectNodeGeometry(child, out);
}
}  // namespace

Scene::~Scene() {
    // Mesh records are shared freely between instances, so free each distinct one once.
    std::unordered_set<MeshInstance*> instances;
    for (Geometry* g : geometries.items) CollectInstances(g, instances);
    for (Geometry* g : ownedGeometries) CollectInstances(g, instances);
    CollectNodeGeometry(root, instances);

    std::unordered_set<std::vector<uint32_t>*> indexLists;
    std::unordered_set<VertexData*> vertexData;
    std::unordered_set<Skin*> skins;
    std::unordered_set<Morph*> morphs;
    std::unordered_set<MorphTarget*> targets;
    for (MeshInstance* mi : instances) {
        if (mi->indices) indexLists.insert(mi->indices);
        if (mi->vertices) vertexData.insert(mi->vertices);
        if (mi->skin) skins.insert(mi->skin);
        if (mi->morph) morphs.insert(mi->morph);
    }
    for (Morph* m : morphs)
        for (MorphTarget* t : m->targets)
            if (t) targets.insert(t);

    for (auto* p : indexLists) delete p;
    for (auto* p : vertexData) delete p;
    for (auto* p : skins) delete p;
    for (auto* p : targets) delete p;
    for (auto* p : morphs) delete p;
    for (auto* p : instances) delete p;

    for (Geometry* g : ownedGeometries) delete g;
    for (Camera* c : ownedCameras) delete c;
    for (Light* l : ownedLights) delete l;
    delete root;
    root = nullptr;
}
