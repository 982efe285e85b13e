#include "gltf/glb_node_export.h"

#include <utility>

namespace {
GlbNode MakeNode(const GraphNode& source, int32_t index) {
    GlbNode node;
    node.index = index;
    node.id = source.id;
    node.name = source.name;
    node.translation[0] = source.position.x;
    node.translation[1] = source.position.y;
    node.translation[2] = source.position.z;
    Quat q = EulerToQuatPrecise(source.rotation);
    node.rotation[0] = q.x;
    node.rotation[1] = q.y;
    node.rotation[2] = q.z;
    node.rotation[3] = q.w;
    node.scale[0] = source.scale.x;
    node.scale[1] = source.scale.y;
    node.scale[2] = source.scale.z;
    node.graphNode = &source;
    return node;
}
}  // namespace

std::vector<GlbNode> ExportNodes(const GraphNode* root) {
    std::vector<GlbNode> nodes;
    if (!root) return nodes;
    // An explicit stack keeps very deep hierarchies off the call stack; children are
    // pushed in reverse so that they are visited, and numbered, in their own order.
    std::vector<std::pair<const GraphNode*, int32_t>> pending{{root, -1}};
    while (!pending.empty()) {
        auto [source, parent] = pending.back();
        pending.pop_back();
        int32_t index = static_cast<int32_t>(nodes.size());
        nodes.push_back(MakeNode(*source, index));
        if (parent >= 0) nodes[size_t(parent)].children.push_back(index);
        for (size_t i = source->children.size(); i-- > 0;)
            if (source->children[i]) pending.emplace_back(source->children[i], index);
    }
    return nodes;
}
