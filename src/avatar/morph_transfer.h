// The motion of the source meshes' blend-shape channels carried over to the avatar slots:
// each mesh group takes the curves of its source mesh's channels named in its morph list,
// and every slot of the group gets them as a weight track over its placeholder targets.
#pragma once

#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "avatar/avatar_slots.h"
#include "scene/scene.h"

class FbxAnimCurve;
class FbxScene;

// A map that walks in order of first insertion: a later value of a known key replaces the
// earlier one in its place. Keeps console lines and track order the same on every run.
template <class V>
class InsertionOrderedMap {
public:
    V& operator[](const std::string& key) {
        auto [it, inserted] = index_.try_emplace(key, entries_.size());
        if (inserted) entries_.emplace_back(key, V{});
        return entries_[it->second].second;
    }
    const V* Find(const std::string& key) const {
        auto it = index_.find(key);
        return it == index_.end() ? nullptr : &entries_[it->second].second;
    }
    size_t size() const { return entries_.size(); }
    auto begin() const { return entries_.begin(); }
    auto end() const { return entries_.end(); }

private:
    std::vector<std::pair<std::string, V>> entries_;
    std::unordered_map<std::string, size_t> index_;
};

// Channel name (cut at its first '.') to the curve of its weight; the curves belong to the
// FBX document.
using ChannelCurves = InsertionOrderedMap<FbxAnimCurve*>;
// Stripped mesh name (C_head_GEO gives head) to its channels.
using SourceChannels = InsertionOrderedMap<ChannelCurves>;

// A group's morph names and, in the same order, the curve of each, null when the source
// mesh has no channel of that name.
struct GroupChannelBinding {
    std::vector<std::string> names;
    std::vector<FbxAnimCurve*> curves;
};
using GroupChannelBindings = std::unordered_map<std::string, GroupChannelBinding>;

// The blend-shape channels of every C_<name>_GEO mesh, read on the first layer of the first
// stack whatever stack is being extracted; a channel without a curve gets an empty one made.
// Prints each mesh and channel. Empty when the document has no stack.
SourceChannels CollectSourceChannels(FbxScene* scene);

// One binding per accessory group, printing what was looked for and found. A group whose
// source mesh is missing falls back to the channels of head.
GroupChannelBindings BindGroupChannels(const SourceChannels& sources);

// The tracks of one take as they are made: the list, and each node's position in it.
struct TakeTracks {
    std::vector<AnimationTrack> tracks;
    std::unordered_map<uint64_t, size_t> index;

    // The track of the node, appended with empty channels when it has none yet.
    AnimationTrack& TrackFor(uint64_t nodeId);
};

// Samples a group's curves into one weight column each, at the take's times.
using WeightsSampler = std::function<WeightsChannel(std::span<FbxAnimCurve* const> curves)>;

// Gives every slot of every group, in group order, a weight track of its group's curves in
// output units (a hundredth of the FBX percentages) and a new Morph with a placeholder
// target per morph name. A slot without geometry gets the track only.
void TransferMorphAnimation(Scene& scene, const GroupNodes& groupNodes, const GroupChannelBindings& bindings,
                            TakeTracks& takeTracks, const WeightsSampler& sample);
