// Rotating a scene into another axis system, and the settings' view of their axes.
#include <algorithm>
#include <unordered_set>
#include <vector>

#include "fbx/fbx_anim.h"
#include "fbx/fbx_axis_system.h"
#include "fbx/fbx_curve_edit.h"
#include "fbx/fbx_document.h"
#include "fbx/fbx_node.h"

namespace {

// Beyond this many distinct key times a rotation curve set is left as it is.
constexpr size_t kMaxRotationKeys = size_t(1) << 22;

struct AxisTurn {
    FbxAMatrix convert;  // the conversion matrix C
    FbxAMatrix turn;     // its rotation: C, or -C when C mirrors
    bool mirror = false;
    // Channel of the source that lands in each channel of the result, with its sign.
    int source[3] = {0, 1, 2};
    double sign[3] = {1.0, 1.0, 1.0};
};

// The rotation of one node's Euler angles by the turn, in the node's own rotation terms.
FbxVector4 TurnRotation(const FbxTransformRecord& record, const AxisTurn& a, const FbxVector4& r) {
    return FbxLocalRotationEuler(record, a.turn * FbxLocalRotationMatrix(record, r));
}

void ConvertRotationCurves(FbxNode& node, FbxAnimLayer* layer, const FbxTransformRecord& record, const AxisTurn& a,
                           const FbxVector4& staticR) {
    FbxLclCurves curves = FbxFindLclCurves(node.LclRotation, layer, false);
    if (!curves.AnyCurve()) return;
    std::vector<FbxTime> times;
    for (FbxAnimCurve* curve : curves.curve) {
        const int keys = curve ? FbxCurveKeyCount(curve) : 0;
        for (int k = 0; k < keys; ++k) times.push_back(FbxCurveKeyTime(curve, k));
    }
    std::sort(times.begin(), times.end());
    times.erase(std::unique(times.begin(), times.end()), times.end());
    if (times.empty() || times.size() > kMaxRotationKeys) return;

    std::vector<float> values[3];
    int index[3] = {};
    FbxVector4 previous;
    for (size_t k = 0; k < times.size(); ++k) {
        FbxVector4 r = staticR;
        for (int c = 0; c < 3; ++c)
            if (curves.curve[c]) r[c] = FbxCurveEvaluate(curves.curve[c], times[k], &index[c]);
        FbxVector4 turned = TurnRotation(record, a, r);
        if (k > 0)
            for (int c = 0; c < 3; ++c) turned[c] = FbxUnwrapDegrees(turned[c], previous[c]);
        previous = turned;
        for (int c = 0; c < 3; ++c) values[c].push_back(static_cast<float>(turned[c]));
    }
    curves = FbxFindLclCurves(node.LclRotation, layer, true);
    for (int c = 0; c < 3; ++c)
        if (curves.curve[c]) FbxCurveSetLinearKeys(curves.curve[c], times, values[c]);
}

void ConvertNode(FbxNode& node, const AxisTurn& a, const std::vector<FbxAnimLayer*>& layers) {
    const FbxTransformRecord record = node.MakeTransformRecord(FbxNode::eSourcePivot);
    const FbxVector4 t(node.LclTranslation.Get()), r(node.LclRotation.Get()), s(node.LclScaling.Get());
    const FbxVector4 newR = TurnRotation(record, a, r);
    // A mirror is a turn of all three scales through -1.
    const FbxVector4 newS = a.mirror ? FbxVector4(-s[0], -s[1], -s[2]) : s;
    // The composed translation T + pivot term turns with C; the pivots stay, so the new
    // T is what is left after the new pivot term.
    const FbxVector4 v = FbxPivotTerm(record, FbxLocalRotationMatrix(record, r), s);
    const FbxVector4 newV = FbxPivotTerm(record, FbxLocalRotationMatrix(record, newR), newS);
    const FbxVector4 moved = a.convert.MultR(FbxVector4(t[0] + v[0], t[1] + v[1], t[2] + v[2], 0.0));
    const FbxVector4 newT(moved[0] - newV[0], moved[1] - newV[1], moved[2] - newV[2]);

    for (FbxAnimLayer* layer : layers) {
        FbxLclCurves translation = FbxFindLclCurves(node.LclTranslation, layer, false);
        if (translation.AnyCurve()) FbxCurvePermuteChannels(node.LclTranslation, layer, a.source, a.sign);
        ConvertRotationCurves(node, layer, record, a, r);
        if (a.mirror) {
            const FbxLclCurves scaling = FbxFindLclCurves(node.LclScaling, layer, false);
            for (FbxAnimCurve* curve : scaling.curve)
                if (curve) FbxCurveScale(curve, -1.0);
        }
    }
    node.LclTranslation.Set(newT.ToDouble3());
    node.LclRotation.Set(newR.ToDouble3());
    FbxSetCurveNodeValues(node.LclTranslation, newT);
    FbxSetCurveNodeValues(node.LclRotation, newR);
    if (a.mirror) {
        node.LclScaling.Set(newS.ToDouble3());
        FbxSetCurveNodeValues(node.LclScaling, newS);
    }
}

}  // namespace

void FbxAxisSystem::ConvertScene(FbxScene* scene) const {
    if (!scene) return;
    FbxGlobalSettings& settings = scene->GetGlobalSettings();
    const FbxAxisSystem source = settings.GetAxisSystem();
    if (source == *this) return;

    AxisTurn a;
    a.convert = GetConversionMatrixFrom(source);
    // Only a signed permutation moves a scene: a source system that names an axis twice
    // has no inverse, and its scene stays as it is.
    bool permutation = source.GetBasis().Determinant() != 0.0 && GetBasis().Determinant() != 0.0;
    for (int i = 0; i < 3 && permutation; ++i) {
        int found = 0;
        for (int k = 0; k < 3; ++k) {
            const double e = a.convert.data[k][i];
            if (e == 0.0) continue;
            ++found;
            a.source[i] = k;
            a.sign[i] = e;
        }
        permutation = found == 1;
    }
    if (permutation) {
        a.mirror = a.convert.Determinant() < 0.0;
        a.turn = a.convert;
        if (a.mirror)
            for (int r = 0; r < 3; ++r)
                for (int c = 0; c < 3; ++c) a.turn.data[r][c] = -a.turn.data[r][c];
        const std::vector<FbxAnimLayer*> layers = FbxSceneLayers(scene);
        if (FbxNode* root = scene->GetRootNode()) {
            std::unordered_set<FbxNode*> seen;
            const int count = root->GetChildCount();
            for (int i = 0; i < count; ++i) {
                FbxNode* child = root->GetChild(i);
                if (child && child != root && seen.insert(child).second) ConvertNode(*child, a, layers);
            }
        }
    }
    settings.SetAxisSystem(*this);
    scene->GetTransformEvaluator().Reset();
}

FbxAxisSystem FbxGlobalSettings::GetAxisSystem() {
    auto axis = [](int v) { return v < 0 || v > 2 ? 0 : v; };
    auto sign = [](int v) { return v < 0 ? -1 : 1; };
    axisSystem_ = FbxAxisSystem(axis(UpAxis.Get()), sign(UpAxisSign.Get()), axis(FrontAxis.Get()),
                                sign(FrontAxisSign.Get()), axis(CoordAxis.Get()), sign(CoordAxisSign.Get()));
    return axisSystem_;
}

void FbxGlobalSettings::SetAxisSystem(const FbxAxisSystem& system) {
    axisSystem_ = system;
    UpAxis.Set(system.UpAxis());
    UpAxisSign.Set(system.UpSign());
    FrontAxis.Set(system.FrontAxis());
    FrontAxisSign.Set(system.FrontSign());
    CoordAxis.Set(system.CoordAxis());
    CoordAxisSign.Set(system.CoordSign());
}

void FbxGlobalSettings::SetOriginalUpAxis(const FbxAxisSystem& system) {
    OriginalUpAxis.Set(system.UpAxis());
    OriginalUpAxisSign.Set(system.UpSign());
}
