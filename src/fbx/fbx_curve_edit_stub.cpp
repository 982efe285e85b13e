// TEMPORARY: curve access without the curve classes: every property reads as unanimated
// and edits do nothing. Replaced once the animation curves are on main.
#include "fbx/fbx_curve_edit.h"

#include <unordered_set>

#include "fbx/fbx_anim.h"
#include "fbx/fbx_document.h"

FbxLclCurves FbxFindLclCurves(FbxProperty, FbxAnimLayer*, bool) { return {}; }

FbxVector4 FbxAnimatedValue(FbxProperty property, FbxTime) {
    return FbxVector4(FbxPropertyT<FbxDouble3>(property).Get());
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

int FbxCurveKeyCount(const FbxAnimCurve*) { return 0; }
FbxTime FbxCurveKeyTime(const FbxAnimCurve*, int) { return FbxTime(); }
float FbxCurveEvaluate(const FbxAnimCurve*, FbxTime, int*) { return 0.0f; }
void FbxCurveSetLinearKeys(FbxAnimCurve*, const std::vector<FbxTime>&, const std::vector<float>&) {}
void FbxCurveSetSingleKey(FbxAnimCurve*, FbxTime, float) {}
void FbxCurveScale(FbxAnimCurve*, double) {}
void FbxCurveCopy(FbxAnimCurve*, const FbxAnimCurve*) {}
void FbxCurvePermuteChannels(FbxProperty, FbxAnimLayer*, const int*, const double*) {}
void FbxCurveRemove(FbxAnimCurve*) {}
void FbxCurveNodeSetValue(FbxAnimCurveNode*, const FbxVector4&) {}
void FbxSetCurveNodeValues(FbxProperty, const FbxVector4&) {}
