#include "fbximport/animation_extraction.h"

#include <algorithm>
#include <cfloat>
#include <memory>
#include <vector>

#include "avatar/node_order.h"
#include "fbx/fbx_anim.h"
#include "fbx/fbx_document.h"
#include "fbx/fbx_node.h"
#include "fbximport/curve_sampling.h"
#include "fbximport/curve_thinning.h"
#include "fbximport/fbx_node_walk.h"

namespace {

Vec3 Reciprocal(const Vec3& v) { return {1.0f / v.x, 1.0f / v.y, 1.0f / v.z}; }

std::vector<Vec3> Reciprocals(const std::vector<Vec3>& values) {
    std::vector<Vec3> result;
    result.reserve(values.size());
    for (const Vec3& v : values) result.push_back(Reciprocal(v));
    return result;
}

// The spread of all components of all keys, which scales the position and scale tolerance.
float ValueSpread(const std::vector<Vec3>& values) {
    if (values.empty()) return 0.0f;
    float largest = values.front().x;
    float smallest = values.front().x;
    for (const Vec3& v : values) {
        largest = std::max(largest, MaxComponent(v));
        smallest = std::min(smallest, MinComponent(v));
    }
    return largest - smallest;
}

// The compensation node cancels its parent's animated scale: the parent's scale keys,
// inverted key by key. The default and the tangents are copied as plain reciprocals.
void CompensateScale(VectorChannel& scale, const VectorChannel& parentScale) {
    scale.interpolation = parentScale.interpolation;
    scale.times = parentScale.times;
    scale.defaultValue = parentScale.defaultValue;
    scale.inTangents = Reciprocals(parentScale.inTangents);
    scale.values = Reciprocals(parentScale.values);
    scale.outTangents = Reciprocals(parentScale.outTangents);
}

}  // namespace

SscLinks LinkSscNodes(const SscNodes& sscNodes) {
    SscLinks links;
    links.reserve(sscNodes.size());
    for (const auto& [node, ssc] : sscNodes) {
        if (!ssc) continue;
        const GraphNode* parent = ssc->GetParent();
        links[node] = SscLink{ssc->id, parent ? parent->id : 0, parent != nullptr};
    }
    return links;
}

NodeCurves LocalCurves(FbxNode* node, FbxAnimLayer* layer) {
    NodeCurves curves;
    curves.node = node;
    curves.translation = PropertyCurves(node->LclTranslation, layer);
    curves.rotation = PropertyCurves(node->LclRotation, layer);
    curves.scaling = PropertyCurves(node->LclScaling, layer);
    return curves;
}

void ExtractNodeTrack(const NodeCurves& curves, const ConversionOptions& options, const TakeRange& take,
                      const SscLinks& sscLinks, TakeTracks& takeTracks) {
    FbxNode* node = curves.node;
    const auto link = sscLinks.find(node);
    const bool compensated = link != sscLinks.end();
    if (compensated) {
        AnimationTrack ssc;
        ssc.nodeId = link->second.id;
        ssc.position = SampleVectorChannel(node->LclTranslation, curves.translation, options, take);
        if (link->second.hasParent) {
            const auto parent = takeTracks.index.find(link->second.parentId);
            if (parent != takeTracks.index.end()) {
                const VectorChannel& parentScale = takeTracks.tracks[parent->second].scale;
                if (!parentScale.times.empty()) CompensateScale(ssc.scale, parentScale);
            }
        }
        // Kept even without keys, and never looked up by id.
        takeTracks.tracks.push_back(std::move(ssc));
    }

    AnimationTrack track;
    track.nodeId = node->GetUniqueID();
    // With a compensation node the translation is animated there.
    if (!compensated) track.position = SampleVectorChannel(node->LclTranslation, curves.translation, options, take);
    track.rotation = SampleVectorChannel(node->LclRotation, curves.rotation, options, take);
    track.rotationQuat = MakeQuatChannel(track.rotation);
    track.scale = SampleVectorChannel(node->LclScaling, curves.scaling, options, take);

    if (options.positionTolerance > 0.0f)
        SimplifyVectorChannel(track.position, ValueSpread(track.position.values) * options.positionTolerance / 100.0f);
    if (options.rotationTolerance > 0.0f) {
        // Degrees for the Euler channel, quaternion units for the other, unscaled: the two
        // are thinned apart and may keep different keys.
        const float threshold = options.rotationTolerance / 100.0f;
        SimplifyVectorChannel(track.rotation, threshold);
        SimplifyQuatChannel(track.rotationQuat, threshold);
    }
    if (options.scaleTolerance > 0.0f)
        SimplifyVectorChannel(track.scale, ValueSpread(track.scale.values) * options.scaleTolerance / 100.0f);

    if (track.position.times.empty() && track.rotation.times.empty() && track.scale.times.empty()) return;
    takeTracks.index[track.nodeId] = takeTracks.tracks.size();
    takeTracks.tracks.push_back(std::move(track));
}

void ExtractAnimations(FbxScene* fbxScene, Scene& scene, const ConversionOptions& options, const SscLinks& sscLinks,
                       const GroupNodes& groupNodes) {
    if (!fbxScene) return;
    const GroupChannelBindings bindings = BindGroupChannels(CollectSourceChannels(fbxScene));
    // A parent's track is made before its children's, which the compensation tracks rely on.
    const std::vector<FbxNode*> nodes = NodesDepthFirst(fbxScene->GetRootNode());

    const int stackCount = fbxScene->GetSrcObjectCount<FbxAnimStack>();
    for (int s = 0; s < stackCount; ++s) {
        FbxAnimStack* stack = fbxScene->GetSrcObject<FbxAnimStack>(s);
        if (!stack) continue;
        // Only the base layer is read.
        FbxAnimLayer* layer = stack->GetSrcObject<FbxAnimLayer>(0);

        // Each node's curves are looked up once a stack, for the range and for the samples.
        std::vector<NodeCurves> nodeCurves;
        nodeCurves.reserve(nodes.size());
        TimeRange range;
        for (FbxNode* node : nodes) {
            const NodeCurves& curves = nodeCurves.emplace_back(LocalCurves(node, layer));
            range.Add(CurveTimeRange(curves.translation));
            range.Add(CurveTimeRange(curves.rotation));
            range.Add(CurveTimeRange(curves.scaling));
        }
        const float userEnd = options.animationEnd == -1.0f ? FLT_MAX : options.animationEnd;
        const float rangeStart = std::max(range.start, options.animationStart);
        const float rangeEnd = std::min(range.end, userEnd);
        // A stack without keys ends here too: its range runs from the largest float down.
        if (rangeStart > rangeEnd) continue;

        const TakeRange take(rangeStart, rangeEnd, stack->GetName());
        TakeTracks takeTracks;
        for (const NodeCurves& curves : nodeCurves) ExtractNodeTrack(curves, options, take, sscLinks, takeTracks);
        TransferMorphAnimation(scene, groupNodes, bindings, takeTracks, [&](std::span<FbxAnimCurve* const> curves) {
            return SampleWeightsChannel(curves, options, take);
        });
        if (takeTracks.tracks.empty()) continue;

        auto animation = std::make_unique<Animation>();
        animation->name = stack->GetName();
        animation->duration = rangeEnd - rangeStart;
        animation->tracks = std::move(takeTracks.tracks);
        Animation* added = animation.get();
        scene.AddAnimation(added);
        // A second take of a known name is reported and dropped by the dictionary.
        if (scene.animations.empty() || scene.animations.back() != added) continue;
        animation.release();
    }
}
