// The fixed slot layout of an avatar: 62 placeholder nodes below geo_GRP, each in a group
// node of its kind, gathered into the ten mesh groups that the morph transfer drives.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "scene/scene.h"

// Converted nodes by name; not owning. New slots overwrite entries of their name.
using NodesByName = std::unordered_map<std::string, GraphNode*>;

// Gives the id of a node made here: the unique id of a fresh document node, so that the
// new nodes' ids never clash with the converted ones.
using NewNodeId = std::function<uint64_t()>;

// The slot nodes of one mesh group, in order of creation; not owning.
struct SlotGroup {
    std::string name;
    std::vector<GraphNode*> nodes;
};

// Groups in the order they were first filled, which fixes the order of the weight tracks.
using GroupNodes = std::vector<SlotGroup>;

// The child of parent with that exact name, as it stands; or a new last child carrying a
// placeholder geometry, entered in nodesByName.
GraphNode* FindOrCreateChild(Scene& scene, const NewNodeId& newId, NodesByName& nodesByName,
                             GraphNode* parent, const std::string& name);

// geo_GRP/<groupName>_GRP/<mesh node>, made where missing. The mesh node is
// C_<meshName>_GEO, except universal_head_eyelash_GEO for "eyelash". Null, with an error
// line, when there is no geo_GRP.
GraphNode* EnsureSlot(Scene& scene, const NewNodeId& newId, NodesByName& nodesByName,
                      std::string_view groupName, std::string_view meshName);

// Makes all 62 slots and removes head_GRP from below geo_GRP. Without geo_GRP the run ends
// with exit status 1.
GroupNodes BuildAvatarSlots(Scene& scene, const NewNodeId& newId, NodesByName& nodesByName);
