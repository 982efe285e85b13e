// One Animation per animation stack of the document, with the morph weight tracks of the
// avatar slots.
// Private to the fbximport library.
#pragma once

#include <array>
#include <cstdint>
#include <unordered_map>

#include "avatar/avatar_slots.h"
#include "avatar/morph_transfer.h"
#include "fbximport/fbx_scene_conversion.h"
#include "scene/options.h"
#include "scene/scene.h"

class FbxAnimCurve;
class FbxAnimLayer;
class FbxNode;
class FbxScene;
struct TakeRange;

// What the tracks need of a compensation node: its id and its parent's. Taken before the
// avatar slots are built, since removing head_GRP frees the nodes below it, whose tracks
// are still made.
struct SscLink {
    uint64_t id = 0;
    uint64_t parentId = 0;
    bool hasParent = false;
};
using SscLinks = std::unordered_map<const FbxNode*, SscLink>;

SscLinks LinkSscNodes(const SscNodes& sscNodes);

// Runs last in the conversion, after the slots stand: compensation nodes take the
// translation tracks of their nodes, slots the weights of their group's channels.
void ExtractAnimations(FbxScene* fbxScene, Scene& scene, const ConversionOptions& options, const SscLinks& sscLinks,
                       const GroupNodes& groupNodes);

// A node's local curves on one layer: translation, rotation, scaling, each X, Y, Z.
struct NodeCurves {
    FbxNode* node = nullptr;
    std::array<FbxAnimCurve*, 3> translation{}, rotation{}, scaling{};
};
NodeCurves LocalCurves(FbxNode* node, FbxAnimLayer* layer);

// The track of a node (after that of its compensation node, if it has one), thinned as the
// options ask. A node without keys in its range gets none of its own.
void ExtractNodeTrack(const NodeCurves& curves, const ConversionOptions& options, const TakeRange& take,
                      const SscLinks& sscLinks, TakeTracks& takeTracks);
