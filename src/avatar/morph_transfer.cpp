#include "avatar/morph_transfer.h"

#include <memory>

#include "avatar/avatar_tables.h"
#include "avatar/node_order.h"
#include "avatar/placeholder.h"
#include "fbx/fbx_anim.h"
#include "fbx/fbx_deformer.h"
#include "fbx/fbx_geometry.h"
#include "fbx/fbx_node.h"
#include "scene/console.h"

namespace {

bool StartsWith(const std::string& text, const char* prefix, size_t length) {
    return text.size() >= length && text.compare(0, length, prefix) == 0;
}

bool EndsWith(const std::string& text, const char* suffix, size_t length) {
    return text.size() >= length && text.compare(text.size() - length, length, suffix) == 0;
}

// "blendShape1.ai_jawOpen" gives "ai_jawOpen", "a.b.c" gives "b.c"; a name without a dot
// stays whole.
std::string ChannelName(const std::string& name) {
    const size_t dot = name.find('.');
    return dot == std::string::npos ? name : name.substr(dot + 1);
}

FbxMesh* MeshOf(const FbxNode& node) {
    FbxNodeAttribute* attribute = node.GetNodeAttribute();
    if (!attribute || attribute->GetAttributeType() != FbxNodeAttribute::eMesh || !attribute->Is<FbxMesh>())
        return nullptr;
    return static_cast<FbxMesh*>(attribute);
}

void Scale(std::vector<std::vector<float>>& rows) {
    // FBX weights run from 0 to 100, the runtime's from 0 to 1; the product is taken in double.
    for (std::vector<float>& row : rows)
        for (float& v : row) v = static_cast<float>(static_cast<double>(v) * 0.01);
}

}  // namespace

SourceChannels CollectSourceChannels(FbxScene* scene) {
    SourceChannels sources;
    if (!scene) return sources;
    for (FbxNode* node : NodesDepthFirst(scene->GetRootNode())) {
        FbxMesh* mesh = MeshOf(*node);
        if (!mesh) continue;
        FbxAnimStack* stack = scene->GetSrcObject<FbxAnimStack>(0);
        if (!stack) continue;
        // Channels are read on this layer for every stack of the file.
        FbxAnimLayer* layer = stack->GetSrcObject<FbxAnimLayer>(0);

        const std::string name = node->GetName();
        if (!StartsWith(name, "C_", 2) || !EndsWith(name, "_GEO", 4)) continue;
        // C_GEO, where the two affixes overlap, gives GEO.
        const std::string stripped = name.substr(2, name.size() - 6);
        ConsolePrint("SOURCE MESH NAME: %s\n", stripped.c_str());

        const int blendShapes = mesh->GetDeformerCount(FbxDeformer::eBlendShape);
        if (blendShapes <= 0) continue;
        ChannelCurves channels;
        for (int b = 0; b < blendShapes; ++b) {
            auto* blendShape = static_cast<FbxBlendShape*>(mesh->GetDeformer(b, FbxDeformer::eBlendShape));
            if (!blendShape) continue;
            const int count = blendShape->GetBlendShapeChannelCount();
            for (int c = 0; c < count; ++c) {
                FbxBlendShapeChannel* channel = blendShape->GetBlendShapeChannel(c);
                if (!channel) continue;
                FbxAnimCurve* curve = mesh->GetShapeChannel(b, c, layer, true);
                const std::string channelName = ChannelName(channel->GetName());
                channels[channelName] = curve;
                ConsolePrint("  %s\n", channelName.c_str());
            }
        }
        sources[stripped] = std::move(channels);
    }
    return sources;
}

GroupChannelBindings BindGroupChannels(const SourceChannels& sources) {
    GroupChannelBindings bindings;
    for (std::string_view groupView : AccessoryGroupNames) {
        const std::string group(groupView);
        ConsolePrint("TargetName : %s\n", group.c_str());
        auto row = MorphTransferTable.find(group);
        const std::string sourceMesh = row == MorphTransferTable.end() ? std::string() : row->second.sourceMesh;
        ConsolePrint("SourceName : %s\n", sourceMesh.c_str());
        const std::vector<std::string>& morphNames = MorphNamesForGroup(group);
        ConsolePrint("targetMorphTargets size: %zu\n", morphNames.size());

        const ChannelCurves* channels = sources.Find(sourceMesh);
        if (!channels) {
            ConsolePrint("Trying to use head\n");
            for (const auto& [mesh, meshChannels] : sources) ConsolePrint("%s %zu\n", mesh.c_str(), meshChannels.size());
            ConsolePrint("%zu\n", sources.size());
            // Without a head either, every name is simply not found.
            channels = sources.Find("head");
        }
        ConsolePrint("sourceMorphTargets size: %zu\n", channels ? channels->size() : size_t{0});

        GroupChannelBinding binding;
        binding.names.reserve(morphNames.size());
        binding.curves.reserve(morphNames.size());
        for (const std::string& morph : morphNames) {
            ConsolePrint("  %s", morph.c_str());
            FbxAnimCurve* const* curve = channels ? channels->Find(morph) : nullptr;
            ConsolePrint(curve ? "  FOUND\n" : "  NOT FOUND\n");
            binding.curves.push_back(curve ? *curve : nullptr);
            binding.names.push_back(morph);
        }
        bindings[group] = std::move(binding);
    }
    return bindings;
}

AnimationTrack& TakeTracks::TrackFor(uint64_t nodeId) {
    auto [it, inserted] = index.try_emplace(nodeId, tracks.size());
    if (inserted) tracks.emplace_back().nodeId = nodeId;
    return tracks[it->second];
}

void TransferMorphAnimation(Scene& scene, const GroupNodes& groupNodes, const GroupChannelBindings& bindings,
                            TakeTracks& takeTracks, const WeightsSampler& sample) {
    for (const SlotGroup& group : groupNodes) {
        auto found = bindings.find(group.name);
        if (found == bindings.end()) continue;
        const GroupChannelBinding& binding = found->second;
        // Every slot of a group carries the same curves: sampled once, copied to each track.
        WeightsChannel weights = sample(binding.curves);
        Scale(weights.values);
        Scale(weights.inTangents);
        Scale(weights.outTangents);

        for (GraphNode* slot : group.nodes) {
            takeTracks.TrackFor(slot->id).weights = weights;
            // A slot taken over from the file has no placeholder and so no targets to drive.
            if (!slot->geometry) continue;
            Morph* morph = scene.Own(std::make_unique<Morph>());
            // A Morph of an earlier take is replaced; the scene still frees it.
            for (MeshInstance* instance : slot->geometry->meshInstances) instance->morph = morph;
            morph->targets.reserve(binding.names.size());
            for (const std::string& name : binding.names) morph->targets.push_back(MakePlaceholderMorphTarget(scene, name));
        }
    }
}
