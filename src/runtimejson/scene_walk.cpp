#include "runtimejson/scene_walk.h"

#include <unordered_set>
#include <utility>

namespace {

// Iterative preorder so that deep chains cannot exhaust the stack. A node reached a
// second time (a malformed tree with a cycle or a shared child) is not walked again.
void WalkBelow(const GraphNode* top, int32_t topIndex, bool wrapParents, NodeList& out,
               std::unordered_set<const GraphNode*>& seen) {
    std::vector<std::pair<const GraphNode*, int32_t>> stack;  // node, parent index
    for (size_t i = top->children.size(); i-- > 0;) stack.emplace_back(top->children[i], topIndex);
    while (!stack.empty()) {
        auto [node, parent] = stack.back();
        stack.pop_back();
        if (!node || !seen.insert(node).second) continue;
        const auto index = static_cast<int32_t>(out.nodes.size());
        out.nodes.push_back(node);
        out.parents.push_back(wrapParents && parent >= 0 ? int32_t(static_cast<uint16_t>(parent)) : parent);
        for (size_t i = node->children.size(); i-- > 0;) stack.emplace_back(node->children[i], index);
    }
}

}  // namespace

NodeList FlattenNodes(const GraphNode* root) {
    NodeList out;
    if (!root) return out;
    std::unordered_set<const GraphNode*> seen{root};
    out.nodes.push_back(root);
    out.parents.push_back(-1);
    WalkBelow(root, 0, true, out, seen);
    return out;
}

NodeList FlattenEntities(const GraphNode* root) {
    NodeList out;
    if (!root) return out;
    std::unordered_set<const GraphNode*> seen{root};
    WalkBelow(root, -1, false, out, seen);
    return out;
}

std::map<uint64_t, const GraphNode*> NodesById(const std::vector<const GraphNode*>& nodes) {
    std::map<uint64_t, const GraphNode*> byId;
    for (const GraphNode* node : nodes) byId[node->id] = node;
    return byId;
}
