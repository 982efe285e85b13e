// Scaling a scene into another length unit, and the settings' view of their unit.
#include <cmath>
#include <unordered_set>
#include <vector>

#include "fbx/fbx_anim.h"
#include "fbx/fbx_curve_edit.h"
#include "fbx/fbx_deformer.h"
#include "fbx/fbx_document.h"
#include "fbx/fbx_node.h"
#include "fbx/fbx_system_unit.h"

namespace {

void ScaleProperty(FbxPropertyT<FbxDouble3>& property, double f, const std::vector<FbxAnimLayer*>& layers) {
    const FbxVector4 value = FbxVector4(property.Get()) * f;
    property.Set(value.ToDouble3());
    for (FbxAnimLayer* layer : layers) {
        const FbxLclCurves curves = FbxFindLclCurves(property, layer, false);
        for (FbxAnimCurve* curve : curves.curve)
            if (curve) FbxCurveScale(curve, f);
    }
    FbxSetCurveNodeValues(property, value);
}

// Limits of a length or a scale, scaled by f; a negative factor swaps the two sides.
void ScaleLimits(FbxLimits& limits, double f) {
    FbxLimits scaled = limits;
    for (int i = 0; i < 3; ++i) {
        if (f >= 0.0) {
            scaled.min[i] = limits.min[i] * f;
            scaled.max[i] = limits.max[i] * f;
        } else {
            scaled.min[i] = limits.max[i] * f;
            scaled.max[i] = limits.min[i] * f;
            scaled.minEnabled[i] = limits.maxEnabled[i];
            scaled.maxEnabled[i] = limits.minEnabled[i];
        }
    }
    limits = scaled;
}

void WriteLimits(const FbxLimits& limits, FbxPropertyT<FbxDouble3>& min, FbxPropertyT<FbxDouble3>& max,
                 FbxPropertyT<bool> (&&minBits)[3], FbxPropertyT<bool> (&&maxBits)[3]) {
    min.Set(limits.min.ToDouble3());
    max.Set(limits.max.ToDouble3());
    for (int i = 0; i < 3; ++i) {
        minBits[i].Set(limits.minEnabled[i]);
        maxBits[i].Set(limits.maxEnabled[i]);
    }
}

// Scales one node's lengths by f. With `absorb` the node's scaling takes the factor as
// well, so that everything below it follows without a change of its own; the scaling
// pivot then stays and the scaling offset makes up for it: the chain's
// So + (1 - S) Sp becomes f So + (1 - f S) Sp when So takes f So + (f - 1) Sp.
void ScaleNode(FbxNode& node, double f, bool absorb, const std::vector<FbxAnimLayer*>& layers) {
    FbxNodeTransformState& state = node.GetTransformState();
    FbxPivotSet& set = state.pivotSets[FbxNode::eSourcePivot];
    ScaleProperty(node.LclTranslation, f, layers);
    set.rotationOffset = set.rotationOffset * f;
    set.rotationPivot = set.rotationPivot * f;
    if (absorb) {
        ScaleProperty(node.LclScaling, f, layers);
        set.scalingOffset = set.scalingOffset * f + set.scalingPivot * (f - 1.0);
    } else {
        set.scalingOffset = set.scalingOffset * f;
        set.scalingPivot = set.scalingPivot * f;
    }
    for (FbxVector4* v : {&set.rotationOffset, &set.rotationPivot, &set.scalingOffset, &set.scalingPivot}) (*v)[3] = 1.0;
    node.RotationOffset.Set(set.rotationOffset.ToDouble3());
    node.RotationPivot.Set(set.rotationPivot.ToDouble3());
    node.ScalingOffset.Set(set.scalingOffset.ToDouble3());
    node.ScalingPivot.Set(set.scalingPivot.ToDouble3());
    state.record.SetPivots(set);

    ScaleLimits(state.record.translationLimits, f);
    WriteLimits(state.record.translationLimits, node.TranslationMin, node.TranslationMax,
                {node.TranslationMinX, node.TranslationMinY, node.TranslationMinZ},
                {node.TranslationMaxX, node.TranslationMaxY, node.TranslationMaxZ});
    if (absorb) {
        ScaleLimits(state.record.scalingLimits, f);
        WriteLimits(state.record.scalingLimits, node.ScalingMin, node.ScalingMax,
                    {node.ScalingMinX, node.ScalingMinY, node.ScalingMinZ},
                    {node.ScalingMaxX, node.ScalingMaxY, node.ScalingMaxZ});
    }
}

}  // namespace

void FbxSystemUnit::ConvertScene(FbxScene* scene, const ConversionOptions& options) const {
    if (!scene) return;
    FbxGlobalSettings& settings = scene->GetGlobalSettings();
    const FbxSystemUnit source = settings.GetSystemUnit();
    if (source == *this) return;
    const double f = GetConversionFactorFrom(source);
    if (!std::isfinite(f)) return;

    const std::vector<FbxAnimLayer*> layers = FbxSceneLayers(scene);
    FbxNode* root = scene->GetRootNode();
    std::unordered_set<FbxNode*> rootChildren;
    if (root) {
        const int count = root->GetChildCount();
        for (int i = 0; i < count; ++i)
            if (FbxNode* child = root->GetChild(i); child && child != root) rootChildren.insert(child);
    }
    if (options.convertRrsNodes) {
        // Only the top nodes change: their scaling carries the factor to every node below.
        std::unordered_set<FbxNode*> done;
        const int count = root ? root->GetChildCount() : 0;
        for (int i = 0; i < count; ++i) {
            FbxNode* child = root->GetChild(i);
            if (child && child != root && done.insert(child).second) ScaleNode(*child, f, true, layers);
        }
    } else {
        const int count = scene->GetSrcObjectCount<FbxNode>();
        for (int i = 0; i < count; ++i)
            if (FbxNode* node = scene->GetSrcObject<FbxNode>(i)) ScaleNode(*node, f, false, layers);
    }

    if (options.convertCameraClipPlanes) {
        const int count = scene->GetSrcObjectCount<FbxCamera>();
        for (int i = 0; i < count; ++i) {
            FbxCamera* camera = scene->GetSrcObject<FbxCamera>(i);
            if (!camera) continue;
            camera->NearPlane.Set(camera->NearPlane.Get() * f);
            camera->FarPlane.Set(camera->FarPlane.Get() * f);
        }
    }

    // Poses hold global matrices, and local ones that change only for the top nodes.
    const FbxAMatrix scale = FbxScaleMatrix(FbxVector4(f, f, f));
    const int poseCount = scene->GetSrcObjectCount<FbxPose>();
    for (int i = 0; i < poseCount; ++i) {
        FbxPose* pose = scene->GetSrcObject<FbxPose>(i);
        if (!pose) continue;
        for (FbxPose::Entry& entry : pose->entries) {
            if (entry.local && !(options.convertRrsNodes ? rootChildren.count(entry.node) : true)) continue;
            FbxAMatrix matrix;
            for (int k = 0; k < 16; ++k) matrix.data[k / 4][k % 4] = entry.matrix[k];
            matrix = scale * matrix;
            for (int k = 0; k < 16; ++k) entry.matrix[k] = matrix.data[k / 4][k % 4];
        }
    }

    settings.SetSystemUnit(*this);
    scene->GetTransformEvaluator().Reset();
}

FbxSystemUnit FbxGlobalSettings::GetSystemUnit() const { return FbxSystemUnit(UnitScaleFactor.Get(), 1.0); }

void FbxGlobalSettings::SetSystemUnit(const FbxSystemUnit& unit) { UnitScaleFactor.Set(unit.GetScaleFactor()); }

FbxSystemUnit FbxGlobalSettings::GetOriginalSystemUnit() const {
    return FbxSystemUnit(OriginalUnitScaleFactor.Get(), 1.0);
}

void FbxGlobalSettings::SetOriginalSystemUnit(const FbxSystemUnit& unit) {
    OriginalUnitScaleFactor.Set(unit.GetScaleFactor());
}
