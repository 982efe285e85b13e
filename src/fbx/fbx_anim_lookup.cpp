// Curve lookups from the animated side: the curve node of a property on a layer, the
// curve of one of its channels, and the curve of a blend-shape channel's weight.
#include <cstring>

#include "fbx/fbx_anim.h"
#include "fbx/fbx_deformer.h"
#include "fbx/fbx_geometry.h"
#include "fbx/fbx_status.h"

namespace {

// The stack whose first layer GetCurveNode(create) looks at: the scene's current stack,
// else its first; an object outside a scene uses the first stack of its own document,
// else the first among its own sources.
FbxAnimStack* DefaultStack(const FbxObject& object) {
    if (FbxScene* scene = object.GetScene()) {
        if (FbxAnimStack* current = scene->GetCurrentAnimationStack()) return current;
        return scene->GetSrcObject<FbxAnimStack>(0);
    }
    if (FbxDocument* document = object.GetDocument()) return document->GetSrcObject<FbxAnimStack>(0);
    return object.GetSrcObject<FbxAnimStack>(0);
}

}  // namespace

FbxAnimCurveNode* FbxProperty::GetCurveNode(bool create) {
    FbxObject* object = GetFbxObject();
    if (!object) return nullptr;
    FbxAnimStack* stack = DefaultStack(*object);
    FbxAnimLayer* layer = stack ? stack->GetSrcObject<FbxAnimLayer>(0) : nullptr;
    return layer ? GetCurveNode(layer, create) : nullptr;
}

FbxAnimCurveNode* FbxProperty::GetCurveNode(FbxAnimLayer* layer, bool create) {
    if (!IsValid() || !layer) return nullptr;
    const int count = GetSrcObjectCount<FbxAnimCurveNode>();
    for (int k = 0; k < count; ++k) {
        FbxAnimCurveNode* node = GetSrcObject<FbxAnimCurveNode>(k);
        if (node->IsConnectedDstObject(layer)) return node;
    }
    if (!create) return nullptr;
    FbxAnimCurveNode* node = FbxAnimCurveNode::CreateTypedCurveNode(*this, GetFbxObject()->GetScene());
    if (!node) return nullptr;
    ConnectSrcObject(node);
    layer->ConnectSrcObject(node);
    ModifyFlag(FbxPropertyFlag::Animated, true);
    return node;
}

FbxAnimCurve* FbxProperty::GetCurve(FbxAnimLayer* layer, const char* nodeName, const char* channelName, bool create) {
    if (!IsValid() || !layer) return nullptr;
    // The property's own name (or none) takes the first node of the layer, whatever the
    // node is called in the file ("T", "R", "S" and the like).
    const bool anyNode = !nodeName || std::strcmp(nodeName, GetName()) == 0;
    FbxAnimCurveNode* node = nullptr;
    const int count = GetSrcObjectCount<FbxAnimCurveNode>();
    for (int k = 0; k < count && !node; ++k) {
        FbxAnimCurveNode* candidate = GetSrcObject<FbxAnimCurveNode>(k);
        if (candidate->IsConnectedDstObject(layer) && (anyNode || std::strcmp(candidate->GetName(), nodeName) == 0)) {
            node = candidate;
        }
    }
    if (!node && create) node = GetCurveNode(layer, true);
    if (!node) return nullptr;
    const int channel = channelName ? node->GetChannelIndex(channelName) : 0;
    if (channel < 0 || channel >= node->GetChannelsCount()) return nullptr;
    FbxAnimCurve* curve = node->GetCurve(channel, 0);
    if (!curve && create) curve = node->CreateCurve(node->GetName(), channel);
    return curve;
}

FbxAnimCurve* FbxGeometry::GetShapeChannel(int blendShapeIndex, int channelIndex, FbxAnimLayer* layer, bool create,
                                           FbxStatus* status) {
    if (!layer) {
        if (status) status->SetCode(kFbxFailure);
        return nullptr;
    }
    if (blendShapeIndex < 0 || blendShapeIndex >= GetDeformerCount(FbxDeformer::eBlendShape)) {
        if (status) status->SetCode(kFbxIndexOutOfRange);
        return nullptr;
    }
    auto* blendShape = static_cast<FbxBlendShape*>(GetDeformer(blendShapeIndex, FbxDeformer::eBlendShape));
    if (!blendShape || channelIndex < 0 || channelIndex >= blendShape->GetBlendShapeChannelCount()) {
        if (status) status->SetCode(kFbxIndexOutOfRange);
        return nullptr;
    }
    if (status) status->Clear();
    FbxBlendShapeChannel* channel = blendShape->GetBlendShapeChannel(channelIndex);
    if (!channel) return nullptr;
    FbxProperty weight = channel->DeformPercent;
    return weight.GetCurve(layer, weight.GetName(), nullptr, create);
}
