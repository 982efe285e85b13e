// Flattened views of the node tree that every runtime JSON file is built from.
// Private to the runtime JSON library.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "scene/scene.h"

// The root, then for each child of the root its depth-first preorder walk.
struct NodeList {
    std::vector<const GraphNode*> nodes;
    // Parent index of each node, -1 for the root. The index passes through 16 bits on
    // its way down, so trees of more than 65535 nodes wrap around.
    std::vector<int32_t> parents;
};

NodeList FlattenNodes(const GraphNode* root);

// The preorder walk below the root, without the root itself. Parents are indices in
// this list, -1 for a child of the root.
NodeList FlattenEntities(const GraphNode* root);

// Id to node; a later node with the same id replaces an earlier one.
std::map<uint64_t, const GraphNode*> NodesById(const std::vector<const GraphNode*>& nodes);

// The mesh instances of a node's geometry, null entries left out.
template <typename F>
void ForEachMeshInstance(const GraphNode* node, F&& visit) {
    if (!node->geometry) return;
    for (const MeshInstance* instance : node->geometry->meshInstances)
        if (instance) visit(instance);
}

inline size_t VertexCount(const VertexData* vertices) { return vertices ? vertices->positions.size() / 3 : 0; }
