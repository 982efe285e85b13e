// Evaluation of node transforms, the pivot sets and their update from the properties.
#include <atomic>
#include <vector>

#include "fbx/fbx_curve_edit.h"
#include "fbx/fbx_document.h"
#include "fbx/fbx_node.h"

namespace {

// Nodes outside any scene share this evaluator.
FbxTransformEvaluator& DetachedEvaluator() {
    static FbxTransformEvaluator evaluator;
    return evaluator;
}

uint64_t NextWalkMark() {
    static std::atomic<uint64_t> mark{0};
    return ++mark;
}

FbxVector4 Read3(const FbxPropertyT<FbxDouble3>& property) { return FbxVector4(property.Get()); }

FbxLimits ReadLimits(const FbxPropertyT<bool>& active, const FbxPropertyT<bool> (&minBits)[3],
                     const FbxPropertyT<bool> (&maxBits)[3], const FbxPropertyT<FbxDouble3>& min,
                     const FbxPropertyT<FbxDouble3>& max) {
    FbxLimits limits;
    limits.active = active.Get();
    for (int i = 0; i < 3; ++i) {
        limits.minEnabled[i] = minBits[i].Get();
        limits.maxEnabled[i] = maxBits[i].Get();
    }
    limits.min = Read3(min);
    limits.max = Read3(max);
    return limits;
}

}  // namespace

uint64_t FbxTransformEvaluator::NextGeneration() {
    static std::atomic<uint64_t> generation{0};
    return ++generation;
}

FbxTransformEvaluator& FbxNode::GetTransformEvaluator() const {
    FbxScene* scene = GetScene();
    return scene ? scene->GetTransformEvaluator() : DetachedEvaluator();
}

FbxNodeTransformState& FbxNode::GetTransformState() const {
    if (!transformState_.pivotsRead) const_cast<FbxNode*>(this)->UpdatePivotsFromProperties();
    return transformState_;
}

void FbxNode::UpdatePivotsFromProperties() {
    FbxNodeTransformState& state = transformState_;
    const FbxVector4 rotationOffset = Read3(RotationOffset), rotationPivot = Read3(RotationPivot);
    const FbxVector4 scalingOffset = Read3(ScalingOffset), scalingPivot = Read3(ScalingPivot);
    const FbxVector4 preRotation = Read3(PreRotation), postRotation = Read3(PostRotation);
    const FbxVector4 geometricTranslation = Read3(GeometricTranslation);
    const FbxVector4 geometricRotation = Read3(GeometricRotation);
    const FbxVector4 geometricScaling = Read3(GeometricScaling);
    // The quick test lets a node whose vectors are all set, with a rotation order and
    // quaternion mode of 0, keep the state it has.
    const bool keep = !rotationOffset.IsZero3() && !rotationPivot.IsZero3() && !scalingOffset.IsZero3() &&
                      !scalingPivot.IsZero3() && !preRotation.IsZero3() && !postRotation.IsZero3() &&
                      !geometricTranslation.IsZero3() && !geometricRotation.IsZero3() &&
                      geometricScaling != FbxVector4(1.0, 1.0, 1.0) && RotationOrder.Get() == 0 &&
                      QuaternionInterpolate.Get() == 0;
    if (!keep) {
        FbxPivotSet& set = state.pivotSets[eSourcePivot];
        set.rotationOffset = rotationOffset;
        set.rotationPivot = rotationPivot;
        set.scalingOffset = scalingOffset;
        set.scalingPivot = scalingPivot;
        set.preRotation = preRotation;
        set.postRotation = postRotation;
        set.geometricTranslation = geometricTranslation;
        set.geometricRotation = geometricRotation;
        set.geometricScaling = geometricScaling;
        set.rotationOrder = RotationOrder.Get();
        set.rotationSpaceForLimitOnly = RotationSpaceForLimitOnly.Get();
        set.quaternionMode = QuaternionInterpolate.Get();
        state.pivotSets[eDestinationPivot] = FbxPivotSet();
    }
    const FbxPropertyT<bool> tMin[3] = {TranslationMinX, TranslationMinY, TranslationMinZ};
    const FbxPropertyT<bool> tMax[3] = {TranslationMaxX, TranslationMaxY, TranslationMaxZ};
    const FbxPropertyT<bool> rMin[3] = {RotationMinX, RotationMinY, RotationMinZ};
    const FbxPropertyT<bool> rMax[3] = {RotationMaxX, RotationMaxY, RotationMaxZ};
    const FbxPropertyT<bool> sMin[3] = {ScalingMinX, ScalingMinY, ScalingMinZ};
    const FbxPropertyT<bool> sMax[3] = {ScalingMaxX, ScalingMaxY, ScalingMaxZ};
    const FbxLimits translation = ReadLimits(TranslationActive, tMin, tMax, TranslationMin, TranslationMax);
    const FbxLimits rotation = ReadLimits(RotationActive, rMin, rMax, RotationMin, RotationMax);
    const FbxLimits scaling = ReadLimits(ScalingActive, sMin, sMax, ScalingMin, ScalingMax);
    if (state.record.translationLimits != translation) state.record.translationLimits = translation;
    if (state.record.rotationLimits != rotation) state.record.rotationLimits = rotation;
    if (state.record.scalingLimits != scaling) state.record.scalingLimits = scaling;
    state.record.SetPivots(state.pivotSets[eSourcePivot]);
    state.pivotsRead = true;
}

FbxVector4 FbxNode::GetRotationOffset(EPivotSet pivotSet) const {
    return GetTransformState().pivotSets[pivotSet == eDestinationPivot].rotationOffset;
}
FbxVector4 FbxNode::GetRotationPivot(EPivotSet pivotSet) const {
    return GetTransformState().pivotSets[pivotSet == eDestinationPivot].rotationPivot;
}
FbxVector4 FbxNode::GetPreRotation(EPivotSet pivotSet) const {
    return GetTransformState().pivotSets[pivotSet == eDestinationPivot].preRotation;
}
FbxVector4 FbxNode::GetPostRotation(EPivotSet pivotSet) const {
    return GetTransformState().pivotSets[pivotSet == eDestinationPivot].postRotation;
}
FbxVector4 FbxNode::GetScalingOffset(EPivotSet pivotSet) const {
    return GetTransformState().pivotSets[pivotSet == eDestinationPivot].scalingOffset;
}
FbxVector4 FbxNode::GetScalingPivot(EPivotSet pivotSet) const {
    return GetTransformState().pivotSets[pivotSet == eDestinationPivot].scalingPivot;
}

FbxTransformRecord FbxNode::MakeTransformRecord(EPivotSet pivotSet) const {
    FbxNodeTransformState& state = GetTransformState();
    FbxTransformRecord record = state.record;
    if (pivotSet == eDestinationPivot) record.SetPivots(state.pivotSets[eDestinationPivot]);
    record.rotationOrder = RotationOrder.Get();
    record.inheritType = InheritType.Get();
    return record;
}

void FbxNode::EvaluateTRS(FbxTime time, FbxVector4& t, FbxVector4& r, FbxVector4& s) const {
    if (time == FbxTime::Infinite()) {
        t = Read3(LclTranslation);
        r = Read3(LclRotation);
        s = Read3(LclScaling);
    } else {
        t = FbxAnimatedValue(LclTranslation, time);
        r = FbxAnimatedValue(LclRotation, time);
        s = FbxAnimatedValue(LclScaling, time);
    }
}

void FbxNode::EvaluateTransforms(FbxTime time, EPivotSet pivotSet, bool forceEval) {
    FbxTransformEvaluator& evaluator = GetTransformEvaluator();
    evaluator.SetTime(time);
    const uint64_t generation = evaluator.Generation();
    const bool cached = pivotSet == eSourcePivot;
    if (cached && !forceEval && transformState_.generation == generation && transformState_.pivotsRead) return;

    // Ancestors that need an evaluation, nearest first. The walk stops at a cached one
    // or at the root; a parent already on the list closes a cycle and is dropped, so the
    // top of the list then evaluates as a root.
    const uint64_t mark = NextWalkMark();
    std::vector<FbxNode*> chain{this};
    transformState_.walkMark = mark;
    FbxNode* top = GetParent();
    while (top) {
        FbxNodeTransformState& s = top->transformState_;
        if (s.walkMark == mark) {
            top = nullptr;
            break;
        }
        if (cached && s.generation == generation && s.pivotsRead) break;
        s.walkMark = mark;
        chain.push_back(top);
        top = top->GetParent();
    }

    const FbxAMatrix* parentGlobal = top ? &top->transformState_.global : nullptr;
    FbxVector4 parentScaling = top ? top->transformState_.s : FbxVector4(1.0, 1.0, 1.0);
    // Results of the destination set are not cached: they live in locals while the walk
    // goes down.
    FbxAMatrix walkGlobal;
    for (size_t k = chain.size(); k-- > 0;) {
        FbxNode* node = chain[k];
        const FbxTransformRecord record = node->MakeTransformRecord(pivotSet);
        FbxVector4 t, r, s;
        node->EvaluateTRS(time, t, r, s);
        FbxApplyLimits(record, t, r, s);
        const FbxAMatrix global = FbxComposeGlobal(record, t, r, s, parentGlobal, parentScaling);
        const FbxAMatrix local = parentGlobal ? parentGlobal->Inverse() * global : global;
        FbxNodeTransformState& state = node->transformState_;
        if (cached) {
            state.t = t;
            state.r = r;
            state.s = s;
            state.global = global;
            state.local = local;
            state.generation = generation;
            parentGlobal = &state.global;
        } else {
            walkGlobal = global;
            parentGlobal = &walkGlobal;
            if (k == 0) {
                otherSetGlobal_ = global;
                otherSetLocal_ = local;
            }
        }
        parentScaling = s;
    }
}

FbxAMatrix& FbxNode::EvaluateGlobalTransform(FbxTime time, EPivotSet pivotSet, bool /*applyTarget*/,
                                             bool forceEval) {
    EvaluateTransforms(time, pivotSet, forceEval);
    return pivotSet == eSourcePivot ? transformState_.global : otherSetGlobal_;
}

FbxAMatrix& FbxNode::EvaluateLocalTransform(FbxTime time, EPivotSet pivotSet, bool /*applyTarget*/,
                                            bool forceEval) {
    EvaluateTransforms(time, pivotSet, forceEval);
    return pivotSet == eSourcePivot ? transformState_.local : otherSetLocal_;
}
