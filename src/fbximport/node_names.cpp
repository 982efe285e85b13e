#include <string>
#include <unordered_map>
#include <unordered_set>

#include "fbx/fbx_node.h"
#include "fbximport/fbx_node_walk.h"

namespace {
std::string Suffixed(const std::string& name, unsigned long counter) {
    std::string digits = std::to_string(counter);
    if (digits.size() < 3) digits.insert(0, 3 - digits.size(), '0');
    return name + "." + digits;
}
}  // namespace

void MakeNodeNamesUnique(FbxNode* root) {
    if (!root) return;
    std::unordered_set<std::string> seen;
    // Per name, the last counter that gave a free candidate. The set only grows, so every
    // candidate below it is still taken and the search can go on from there: a file with
    // many nodes of one name stays linear.
    std::unordered_map<std::string, unsigned long> lastCounter;
    std::vector<FbxNode*> queue{root};
    // A node reached a second time (two parents, or a cycle the reader left) is named once.
    std::unordered_set<const FbxNode*> queued{root};
    for (size_t front = 0; front < queue.size(); ++front) {
        FbxNode* node = queue[front];
        const std::string name = node->GetName();
        if (seen.insert(name).second) {
            // Free at the first try: the node keeps its name.
        } else {
            unsigned long& counter = lastCounter[name];
            std::string candidate;
            do {
                candidate = Suffixed(name, ++counter);
            } while (!seen.insert(candidate).second);
            // A name space in front of the name stays with the node.
            const std::string prefix = node->GetNameSpacePrefix();
            node->SetName((prefix.empty() ? candidate : prefix + "::" + candidate).c_str());
        }
        for (FbxNode* child : ChildNodes(*node))
            if (queued.insert(child).second) queue.push_back(child);
    }
}
