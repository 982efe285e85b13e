#include "avatar/node_order.h"

#include <unordered_set>

#include "fbx/fbx_node.h"

std::vector<FbxNode*> ChildNodes(const FbxNode& node) {
    std::vector<FbxNode*> children;
    for (const FbxProperty& source : node.RootProperty.Sources()) {
        if (!source.IsRoot()) continue;
        FbxObject* object = source.GetFbxObject();
        if (object && object->Is<FbxNode>()) children.push_back(static_cast<FbxNode*>(object));
    }
    return children;
}

std::vector<FbxNode*> NodesDepthFirst(FbxNode* root) {
    std::vector<FbxNode*> order;
    if (!root) return order;
    std::unordered_set<const FbxNode*> seen;
    std::vector<FbxNode*> pending{root};
    while (!pending.empty()) {
        FbxNode* node = pending.back();
        pending.pop_back();
        if (!seen.insert(node).second) continue;
        order.push_back(node);
        const std::vector<FbxNode*> children = ChildNodes(*node);
        pending.insert(pending.end(), children.rbegin(), children.rend());
    }
    return order;
}
