// The lists the model file indexes into: nodes, and the vertex data, skins, morphs
// and mesh instances they use, each in order of first occurrence.
// Private to the runtime JSON library.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "runtimejson/scene_walk.h"
#include "scene/scene.h"

inline constexpr uint32_t kNoIndex = UINT32_MAX;

struct MeshRef {
    const MeshInstance* instance;
    uint32_t vertices;
    uint32_t skin;   // kNoIndex without a skin
    uint32_t morph;  // kNoIndex without a morph
};

struct InstanceRef {
    uint32_t node;
    uint32_t mesh;
};

struct ModelLists {
    NodeList nodeList;
    std::vector<const VertexData*> vertices;  // a null vertex data is listed too, as an empty record
    std::vector<const Skin*> skins;
    std::vector<const Morph*> morphs;
    std::vector<MeshRef> meshes;
    std::vector<InstanceRef> instances;  // every (node, mesh instance) pair in walk order
};

ModelLists CollectModelLists(const Scene& scene);

// A target made dense and never compacted stores every vertex in order, so its
// indices are implicit.
inline bool HasImplicitIndices(const MorphTarget& target) { return target.indices.empty() && target.count > 0; }

// Empty if every listed morph target holds as much data as its count says; otherwise
// what is wrong with the first one that does not.
std::string FindMalformedMorph(const ModelLists& lists);
