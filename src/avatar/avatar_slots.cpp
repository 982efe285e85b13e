#include "avatar/avatar_slots.h"

#include <array>

#include "avatar/placeholder.h"
#include "scene/console.h"

namespace {
GraphNode* Lookup(const NodesByName& nodesByName, const std::string& name) {
    auto it = nodesByName.find(name);
    return it == nodesByName.end() ? nullptr : it->second;
}

std::string MeshNodeName(std::string_view meshName) {
    if (meshName == "eyelash") return "universal_head_eyelash_GEO";
    std::string name = "C_";
    name += meshName;
    name += "_GEO";
    return name;
}

// Makes slots of one group, filing them under their collecting group.
class SlotMaker {
public:
    SlotMaker(Scene& scene, const NewNodeId& newId, NodesByName& nodesByName)
        : scene_(scene), newId_(newId), nodesByName_(nodesByName) {}

    void Make(std::string_view collectedUnder, std::string_view groupName, std::string_view meshName) {
        GraphNode* slot = EnsureSlot(scene_, newId_, nodesByName_, groupName, meshName);
        if (!slot) EndRun();
        GroupFor(collectedUnder).nodes.push_back(slot);
    }

    GroupNodes Take() { return std::move(groups_); }

private:
    SlotGroup& GroupFor(std::string_view name) {
        for (SlotGroup& group : groups_)
            if (group.name == name) return group;
        groups_.push_back(SlotGroup{std::string(name), {}});
        return groups_.back();
    }

    Scene& scene_;
    const NewNodeId& newId_;
    NodesByName& nodesByName_;
    GroupNodes groups_;
};

std::string Concat(std::initializer_list<std::string_view> parts) {
    std::string text;
    for (std::string_view part : parts) text += part;
    return text;
}

constexpr std::array<std::string_view, 2> kSides = {"L", "R"};
constexpr std::array<std::string_view, 4> kLetters = {"A", "B", "C", "D"};
constexpr std::array<std::string_view, 3> kBrowRingParts = {"Ring", "Top", "Bottom"};
constexpr std::array<std::string_view, 3> kThreeWay = {"L", "Center", "R"};
constexpr std::array<std::string_view, 2> kNumbers = {"1", "2"};
constexpr std::array<std::string_view, 8> kEarPositions = {
    "cartilage1", "cartilage2", "cartilage3", "lobe1", "lobe2", "tragus1", "industrial1", "hearingAid",
};
constexpr std::array<std::string_view, 5> kNoseRings = {
    "noseringseptum", "noseringnostrilL", "noseringnostrilR", "noseringnostrilHighL", "noseringnostrilHighR",
};
}  // namespace

GraphNode* FindOrCreateChild(Scene& scene, const NewNodeId& newId, NodesByName& nodesByName,
                             GraphNode* parent, const std::string& name) {
    for (GraphNode* child : parent->children)
        if (child && child->name == name) return child;

    auto* node = new GraphNode;
    node->name = name;
    node->id = newId();
    parent->AddChild(node);
    nodesByName[name] = node;
    node->geometry = MakePlaceholderGeometry(scene);
    return node;
}

GraphNode* EnsureSlot(Scene& scene, const NewNodeId& newId, NodesByName& nodesByName,
                      std::string_view groupName, std::string_view meshName) {
    GraphNode* geo = Lookup(nodesByName, "geo_GRP");
    if (!geo) {
        ConsoleError("Couldn't find 'geo_GRP' node?");
        return nullptr;
    }
    GraphNode* group = FindOrCreateChild(scene, newId, nodesByName, geo, Concat({groupName, "_GRP"}));
    return FindOrCreateChild(scene, newId, nodesByName, group, MeshNodeName(meshName));
}

GroupNodes BuildAvatarSlots(Scene& scene, const NewNodeId& newId, NodesByName& nodesByName) {
    SlotMaker slots(scene, newId, nodesByName);
    slots.Make("head", "universal_head_head", "head");
    slots.Make("headMouth", "universal_head_mouth", "headMouth");
    slots.Make("brow", "universal_head_head", "brow");
    slots.Make("eyelash", "universal_head_head", "eyelash");
    slots.Make("facial_hair", "universal_head_facial_hair", "facial_hair");

    for (std::string_view side : kSides)
        for (std::string_view letter : kLetters)
            for (std::string_view part : kBrowRingParts)
                slots.Make("browring", Concat({"browring", side}), Concat({"browring", side, letter, part}));

    for (std::string_view side : kSides)
        for (std::string_view position : kEarPositions)
            slots.Make("earring", Concat({"earring", side}), Concat({"earring", side, position}));

    for (std::string_view mesh : kNoseRings) slots.Make("nosering", "nosering", mesh);

    for (std::string_view where : kThreeWay) slots.Make("mouthring", "mouthring", Concat({"mouthringtop", where}));
    for (std::string_view number : kNumbers)
        for (std::string_view side : kSides)
            slots.Make("mouthring", "mouthring", Concat({"mouthringbottomRing", number, side}));
    for (std::string_view where : kThreeWay)
        slots.Make("mouthring", "mouthring", Concat({"mouthringbottomStud", where}));
    slots.Make("mouthring", "mouthring", "mouthringbottomRingC1");

    slots.Make("tonguering", "tonguering", "tongueringmid");

    // The source's own head meshes are replaced by the slots; only the copy directly below
    // geo_GRP goes, with its subtree.
    GraphNode* geo = Lookup(nodesByName, "geo_GRP");
    GraphNode* head = Lookup(nodesByName, "head_GRP");
    if (geo && head) geo->RemoveChild(head);
    return slots.Take();
}
