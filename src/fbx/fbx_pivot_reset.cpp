// Baking pivots, offsets, pre/post-rotation, rotation order and limits into the Lcl
// properties and their curves, so that a node's transform reads from T, R, S alone.
#include <cmath>
#include <unordered_set>
#include <vector>

#include "fbx/fbx_anim.h"
#include "fbx/fbx_curve_edit.h"
#include "fbx/fbx_document.h"
#include "fbx/fbx_node.h"

namespace {

// Beyond this many samples per node and layer (about nine hours at 30 frames a second)
// a node's curves are left as they are rather than resampled.
constexpr uint64_t kMaxSamples = uint64_t(1) << 20;

// The node and everything below it, parents before children, each node once.
std::vector<FbxNode*> Subtree(FbxNode* top) {
    std::vector<FbxNode*> nodes{top};
    std::unordered_set<FbxNode*> seen{top};
    for (size_t k = 0; k < nodes.size(); ++k) {
        const int count = nodes[k]->GetChildCount();
        for (int i = 0; i < count; ++i) {
            FbxNode* child = nodes[k]->GetChild(i);
            if (child && seen.insert(child).second) nodes.push_back(child);
        }
    }
    return nodes;
}

struct Composer {
    FbxTransformRecord source;  // pivot set 0 with the node's limits
    FbxTransformRecord target;  // pivot set 1, no limits

    // The source transform of T, R, S decomposed for the target; false when the target
    // would give the same transform from the values as they are.
    bool Convert(FbxVector4& t, FbxVector4& r, FbxVector4& s) const {
        FbxVector4 lt = t, lr = r, ls = s;
        FbxApplyLimits(source, lt, lr, ls);
        const FbxAMatrix m = FbxComposeLocal(source, lt, lr, ls);
        if (m == FbxComposeLocal(target, t, r, s)) return false;
        t = m.GetT();
        r = m.GetR();
        s = m.GetS();
        return true;
    }
};

struct NodeCurves {
    FbxProperty property[3];  // Lcl Translation, Lcl Rotation, Lcl Scaling
    FbxLclCurves curves[3];
};

// Resamples the nine channels of one node on one layer where the node has an Lcl curve
// node and keys to sample. Missing curves are made first, each with the property's value
// as a single key at the earliest key time of the others.
void ResampleLayer(FbxNode& node, FbxAnimLayer* layer, const Composer& composer, FbxTime period,
                   std::unordered_set<FbxAnimCurve*>& done) {
    NodeCurves nc;
    nc.property[0] = node.LclTranslation;
    nc.property[1] = node.LclRotation;
    nc.property[2] = node.LclScaling;
    bool anyNode = false;
    for (int p = 0; p < 3; ++p) {
        nc.curves[p] = FbxFindLclCurves(nc.property[p], layer, false);
        anyNode = anyNode || nc.curves[p].node;
    }
    if (!anyNode) return;

    bool anyKey = false;
    FbxTime first, last;
    for (const FbxLclCurves& c : nc.curves) {
        for (FbxAnimCurve* curve : c.curve) {
            const int keys = curve ? FbxCurveKeyCount(curve) : 0;
            if (keys == 0) continue;
            const FbxTime a = FbxCurveKeyTime(curve, 0), b = FbxCurveKeyTime(curve, keys - 1);
            if (!anyKey || a < first) first = a;
            if (!anyKey || b > last) last = b;
            anyKey = true;
        }
    }
    if (!anyKey) return;
    const uint64_t span = uint64_t(last.Get()) - uint64_t(first.Get());
    const uint64_t step = uint64_t(period.Get());
    if (span / step + 2 > kMaxSamples) return;

    for (int p = 0; p < 3; ++p) {
        const FbxVector4 value(FbxPropertyT<FbxDouble3>(nc.property[p]).Get());
        FbxLclCurves made = FbxFindLclCurves(nc.property[p], layer, true);
        for (int c = 0; c < 3; ++c)
            if (!nc.curves[p].curve[c] && made.curve[c]) FbxCurveSetSingleKey(made.curve[c], first, float(value[c]));
        nc.curves[p] = made;
    }

    std::vector<FbxTime> times;
    times.reserve(size_t(span / step + 2));
    for (uint64_t offset = 0; offset < span; offset += step) times.push_back(FbxTime(first.Get() + FbxLongLong(offset)));
    times.push_back(last);

    std::vector<float> values[3][3];
    for (auto& group : values)
        for (auto& v : group) v.reserve(times.size());
    int index[3][3] = {};
    bool changed = false;
    FbxVector4 previousR;
    for (size_t k = 0; k < times.size(); ++k) {
        FbxVector4 trs[3];
        for (int p = 0; p < 3; ++p) {
            trs[p] = FbxVector4(FbxPropertyT<FbxDouble3>(nc.property[p]).Get());
            for (int c = 0; c < 3; ++c)
                if (FbxAnimCurve* curve = nc.curves[p].curve[c])
                    trs[p][c] = FbxCurveEvaluate(curve, times[k], &index[p][c]);
        }
        changed = composer.Convert(trs[0], trs[1], trs[2]) || changed;
        if (k > 0)
            for (int c = 0; c < 3; ++c) trs[1][c] = FbxUnwrapDegrees(trs[1][c], previousR[c]);
        previousR = trs[1];
        for (int p = 0; p < 3; ++p)
            for (int c = 0; c < 3; ++c) values[p][c].push_back(static_cast<float>(trs[p][c]));
    }
    if (!changed) return;  // the filter changes no key

    for (int p = 0; p < 3; ++p) {
        for (int c = 0; c < 3; ++c) {
            FbxAnimCurve* curve = nc.curves[p].curve[c];
            if (curve && done.insert(curve).second) FbxCurveSetLinearKeys(curve, times, values[p][c]);
        }
    }
}

}  // namespace

void FbxNode::ResetPivotSetAndConvertAnimation(double frameRate, bool /*keyReduce*/, bool /*toNodeCenter*/,
                                               bool forceResetLimits) {
    const std::vector<FbxNode*> nodes = Subtree(this);
    for (FbxNode* node : nodes) {
        FbxNodeTransformState& state = node->GetTransformState();
        state.pivotSets[eDestinationPivot].Reset();
        state.pivotSets[eSourcePivot].pivotState = 0;
    }

    if (!(frameRate > 0.0) || !std::isfinite(frameRate)) frameRate = 30.0;
    FbxTime period;
    period.SetSecondDouble(1.0 / frameRate);
    if (period.Get() < 1) period = FbxTime(1);
    const std::vector<FbxAnimLayer*> layers = FbxSceneLayers(GetScene());
    std::unordered_set<FbxAnimCurve*> done;

    for (FbxNode* node : nodes) {
        FbxNodeTransformState& state = node->GetTransformState();
        if (FbxPivotSetsAgree(state.pivotSets[eSourcePivot], state.pivotSets[eDestinationPivot])) continue;
        Composer composer;
        composer.source = node->MakeTransformRecord(eSourcePivot);
        composer.target = node->MakeTransformRecord(eDestinationPivot);
        composer.target.rotationOrder = state.pivotSets[eDestinationPivot].rotationOrder;
        composer.target.translationLimits = composer.target.rotationLimits = composer.target.scalingLimits = FbxLimits();
        for (FbxAnimLayer* layer : layers) ResampleLayer(*node, layer, composer, period, done);

        // The static pose follows the same composition.
        FbxVector4 t(node->LclTranslation.Get()), r(node->LclRotation.Get()), s(node->LclScaling.Get());
        if (composer.Convert(t, r, s)) {
            node->LclTranslation.Set(t.ToDouble3());
            node->LclRotation.Set(r.ToDouble3());
            node->LclScaling.Set(s.ToDouble3());
            FbxSetCurveNodeValues(node->LclTranslation, t);
            FbxSetCurveNodeValues(node->LclRotation, r);
            FbxSetCurveNodeValues(node->LclScaling, s);
        }
        // The limits now live in the keys.
        node->TranslationActive.Set(false);
        node->RotationActive.Set(false);
        node->ScalingActive.Set(false);
        state.record.translationLimits.active = false;
        state.record.rotationLimits.active = false;
        state.record.scalingLimits.active = false;
    }

    const FbxDouble3 zero{0.0, 0.0, 0.0};
    for (FbxNode* node : nodes) {
        FbxNodeTransformState& state = node->GetTransformState();
        FbxPivotSet& set = state.pivotSets[eSourcePivot];
        set.Reset();
        node->RotationOffset.Set(zero);
        node->RotationPivot.Set(zero);
        node->ScalingOffset.Set(zero);
        node->ScalingPivot.Set(zero);
        node->PreRotation.Set(set.preRotation.ToDouble3());
        node->PostRotation.Set(set.postRotation.ToDouble3());
        node->RotationOrder.Set(eFbxEulerXYZ);
        if (forceResetLimits) {
            state.record.translationLimits = state.record.rotationLimits = state.record.scalingLimits = FbxLimits();
            node->TranslationActive.Set(false);
            node->RotationActive.Set(false);
            node->ScalingActive.Set(false);
        }
        state.record.SetPivots(set);
    }
    GetTransformEvaluator().Reset();
}
