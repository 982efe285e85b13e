#include "fbx/fbx_curve_edit.h"

#include <optional>
#include <unordered_set>

#include "fbx/fbx_anim.h"
#include "fbx/fbx_document.h"

namespace {

const char* const kChannelNames[3] = {"X", "Y", "Z"};

// A curve node's channel of a vector component, added when a file left it out.
int ChannelOf(FbxAnimCurveNode* node, int component, bool create, double value) {
    int channel = node->GetChannelIndex(kChannelNames[component]);
    if (channel < 0 && create && node->AddChannel(kChannelNames[component], FbxDoubleDT, value))
        channel = node->GetChannelIndex(kChannelNames[component]);
    return channel;
}

}  // namespace

FbxLclCurves FbxFindLclCurves(FbxProperty property, FbxAnimLayer* layer, bool create) {
    FbxLclCurves out;
    out.node = property.GetCurveNode(layer, create);
    if (!out.node) return out;
    const FbxDouble3 value = FbxPropertyT<FbxDouble3>(property).Get();
    for (int c = 0; c < 3; ++c) {
        const int channel = ChannelOf(out.node, c, create, value[size_t(c)]);
        if (channel < 0) continue;
        out.curve[c] = out.node->GetCurve(channel, 0);
        if (!out.curve[c] && create) out.curve[c] = out.node->CreateCurve(out.node->GetName(), channel);
    }
    return out;
}

FbxVector4 FbxAnimatedValue(FbxProperty property, FbxTime time) {
    FbxVector4 value(FbxPropertyT<FbxDouble3>(property).Get());
    FbxObject* object = property.GetFbxObject();
    FbxScene* scene = object ? object->GetScene() : nullptr;
    FbxAnimStack* stack = scene ? scene->GetCurrentAnimationStack() : nullptr;
    if (!stack && scene) stack = scene->GetSrcObject<FbxAnimStack>(0);
    if (!stack) return value;
    bool first = true;
    const int layerCount = stack->GetSrcObjectCount<FbxAnimLayer>();
    for (int l = 0; l < layerCount; ++l) {
        FbxAnimLayer* layer = stack->GetSrcObject<FbxAnimLayer>(l);
        if (!layer || layer->Mute.Get()) continue;
        FbxAnimCurveNode* node = property.GetCurveNode(layer, false);
        if (!node) continue;
        FbxVector4 layerValue = value;
        for (int c = 0; c < 3; ++c) {
            const int channel = node->GetChannelIndex(kChannelNames[c]);
            if (channel < 0) continue;
            const FbxAnimCurve* curve = node->GetCurve(channel, 0);
            layerValue[c] = curve ? double(curve->Evaluate(time)) : node->GetChannelValue(channel, layerValue[c]);
        }
        if (first) {
            value = layerValue;
            first = false;
            continue;
        }
        const double weight = layer->Weight.Get() / 100.0;
        const bool additive = layer->BlendMode.Get() == 1;
        for (int c = 0; c < 3; ++c)
            value[c] = additive ? value[c] + weight * layerValue[c] : value[c] + weight * (layerValue[c] - value[c]);
    }
    return value;
}

std::vector<FbxAnimLayer*> FbxSceneLayers(FbxScene* scene) {
    std::vector<FbxAnimLayer*> layers;
    if (!scene) return layers;
    std::unordered_set<FbxAnimLayer*> seen;
    const int stacks = scene->GetSrcObjectCount<FbxAnimStack>();
    for (int i = 0; i < stacks; ++i) {
        FbxAnimStack* stack = scene->GetSrcObject<FbxAnimStack>(i);
        const int count = stack ? stack->GetSrcObjectCount<FbxAnimLayer>() : 0;
        for (int l = 0; l < count; ++l) {
            FbxAnimLayer* layer = stack->GetSrcObject<FbxAnimLayer>(l);
            if (layer && seen.insert(layer).second) layers.push_back(layer);
        }
    }
    return layers;
}

int FbxCurveKeyCount(const FbxAnimCurve* curve) { return curve ? curve->KeyGetCount() : 0; }

FbxTime FbxCurveKeyTime(const FbxAnimCurve* curve, int index) { return curve ? curve->KeyGetTime(index) : FbxTime(); }

float FbxCurveEvaluate(const FbxAnimCurve* curve, FbxTime time, int* index) {
    return curve ? curve->Evaluate(time, index) : 0.0f;
}

void FbxCurveSetLinearKeys(FbxAnimCurve* curve, const std::vector<FbxTime>& times, const std::vector<float>& values) {
    if (!curve || times.size() != values.size()) return;
    FbxAnimKeyStore& store = curve->KeyStore();
    store.Clear();
    if (times.empty()) return;
    store.Reserve(int(times.size()), 1);
    FbxAnimKeyAttr linear;
    linear.flags = kFbxInterpolationLinear;
    const uint32_t attr = store.AddAttr(linear);
    for (size_t i = 0; i < times.size(); ++i) store.AppendKey(times[i].Get(), values[i], attr);
}

void FbxCurveSetSingleKey(FbxAnimCurve* curve, FbxTime time, float value) {
    FbxCurveSetLinearKeys(curve, {time}, {value});
}

void FbxCurveScale(FbxAnimCurve* curve, double factor) {
    if (curve) curve->KeyStore().Scale(factor);
}

void FbxCurveCopy(FbxAnimCurve* to, const FbxAnimCurve* from) {
    if (to && from && to != from) to->KeyStore() = from->KeyStore();
}

void FbxCurveRemove(FbxAnimCurve* curve) {
    if (curve) curve->Destroy();
}

void FbxCurvePermuteChannels(FbxProperty property, FbxAnimLayer* layer, const int source[3], const double sign[3]) {
    const FbxLclCurves curves = FbxFindLclCurves(property, layer, false);
    if (!curves.node) return;
    std::optional<FbxAnimKeyStore> held[3];
    for (int c = 0; c < 3; ++c)
        if (curves.curve[c]) held[c] = std::move(curves.curve[c]->KeyStore());
    const FbxDouble3 value = FbxPropertyT<FbxDouble3>(property).Get();
    for (int c = 0; c < 3; ++c) {
        const int from = source[c];
        if (from < 0 || from > 2 || !held[from]) {
            FbxCurveRemove(curves.curve[c]);
            continue;
        }
        FbxAnimCurve* curve = curves.curve[c];
        if (!curve) {
            const int channel = ChannelOf(curves.node, c, true, value[size_t(c)]);
            if (channel < 0) continue;
            curve = curves.node->CreateCurve(curves.node->GetName(), channel);
            if (!curve) continue;
        }
        curve->KeyStore() = *held[from];
        if (sign[c] != 1.0) curve->KeyStore().Scale(sign[c]);
    }
}

void FbxCurveNodeSetValue(FbxAnimCurveNode* node, const FbxVector4& value) {
    if (!node) return;
    for (int c = 0; c < 3; ++c) {
        const int channel = node->GetChannelIndex(kChannelNames[c]);
        if (channel >= 0) node->SetChannelValue(channel, value[c]);
    }
}

void FbxSetCurveNodeValues(FbxProperty property, const FbxVector4& value) {
    const int count = property.GetSrcObjectCount<FbxAnimCurveNode>();
    for (int i = 0; i < count; ++i) FbxCurveNodeSetValue(property.GetSrcObject<FbxAnimCurveNode>(i), value);
}
