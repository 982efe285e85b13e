// Fixed names of the avatar rig: joints, the mesh groups of the face and its accessories,
// and the morph targets each group carries. Constant data, built before main runs.
#pragma once

#include <array>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

// Joint names of the rig. Kept as data only: no conversion step reads them, so a joint's
// name never decides whether a node is kept or what it is called.
extern const std::array<std::string_view, 4> FacialAnchorJointNames;
extern const std::array<std::string_view, 73> BindJointNames;

struct MorphTransferEntry {
    std::string sourceMesh;               // stripped name of the mesh whose channels feed the group
    std::vector<std::string> morphNames;  // order of the slots' morph targets and weight columns
};

extern const std::unordered_map<std::string, MorphTransferEntry> MorphTransferTable;

// The ten mesh groups. Walked in this order, so diagnostic lines come out the same everywhere.
inline constexpr std::array<std::string_view, 10> AccessoryGroupNames = {
    "head", "facial_hair", "headMouth", "brow", "browring",
    "tonguering", "eyelash", "earring", "nosering", "mouthring",
};

// Morph names of the group a slot or group name belongs to. The ring-type names carry a
// position behind the group name (earringLlobe1), so those five prefixes are narrowed to
// the group; other names must match a group exactly. Unknown names give an empty list.
const std::vector<std::string>& MorphNamesForGroup(std::string name);
