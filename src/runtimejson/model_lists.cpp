#include "runtimejson/model_lists.h"

#include <unordered_map>

namespace {

// Index of item in list, appending it on first sight. The map stands in for a linear
// search of the list, with the same result.
template <typename T>
uint32_t IndexOf(const T* item, std::vector<const T*>& list, std::unordered_map<const T*, uint32_t>& seen) {
    auto [it, inserted] = seen.emplace(item, static_cast<uint32_t>(list.size()));
    if (inserted) list.push_back(item);
    return it->second;
}

std::string MorphTargetProblem(const MorphTarget& target) {
    const size_t count = target.count;
    if (target.deltaPositions.size() / 3 < count || target.deltaNormals.size() / 3 < count ||
        (!HasImplicitIndices(target) && target.indices.size() < count))
        return "morph target '" + target.name + "' holds fewer deltas than its count of " + std::to_string(count);
    return {};
}

}  // namespace

ModelLists CollectModelLists(const Scene& scene) {
    ModelLists lists;
    lists.nodeList = FlattenNodes(scene.root);
    std::unordered_map<const VertexData*, uint32_t> vertexSeen;
    std::unordered_map<const Skin*, uint32_t> skinSeen;
    std::unordered_map<const Morph*, uint32_t> morphSeen;
    std::unordered_map<const MeshInstance*, uint32_t> meshSeen;
    for (size_t n = 0; n < lists.nodeList.nodes.size(); ++n) {
        ForEachMeshInstance(lists.nodeList.nodes[n], [&](const MeshInstance* instance) {
            const VertexData* vertexData = instance->vertices;
            const Skin* skin = instance->skin;
            const Morph* morph = instance->morph;
            const uint32_t vertices = IndexOf(vertexData, lists.vertices, vertexSeen);
            const uint32_t skinIndex = skin ? IndexOf(skin, lists.skins, skinSeen) : kNoIndex;
            const uint32_t morphIndex = morph ? IndexOf(morph, lists.morphs, morphSeen) : kNoIndex;
            auto [it, inserted] = meshSeen.emplace(instance, static_cast<uint32_t>(lists.meshes.size()));
            if (inserted) lists.meshes.push_back(MeshRef{instance, vertices, skinIndex, morphIndex});
            lists.instances.push_back(InstanceRef{static_cast<uint32_t>(n), it->second});
        });
    }
    return lists;
}

std::string FindMalformedMorph(const ModelLists& lists) {
    for (const Morph* morph : lists.morphs)
        for (const MorphTarget* target : morph->targets)
            if (target) {
                std::string problem = MorphTargetProblem(*target);
                if (!problem.empty()) return problem;
            }
    return {};
}
