#include "fbx/fbx_transform.h"

#include <algorithm>
#include <cmath>

namespace {

bool Near3(const FbxVector4& a, const FbxVector4& b, double tolerance) {
    for (int i = 0; i < 3; ++i)
        if (!(std::fabs(a[i] - b[i]) <= tolerance)) return false;
    return true;
}

}  // namespace

void FbxPivotSet::Reset() {
    const FbxVector4 zero(0.0, 0.0, 0.0);
    rotationOffset = rotationPivot = scalingOffset = scalingPivot = zero;
    geometricTranslation = geometricRotation = zero;
    geometricScaling = FbxVector4(1.0, 1.0, 1.0);
    rotationOrder = eFbxEulerXYZ;
    if (!rotationSpaceForLimitOnly) preRotation = postRotation = zero;
}

bool FbxPivotSetsAgree(const FbxPivotSet& a, const FbxPivotSet& b) {
    constexpr double kTolerance = 1e-6;
    return Near3(a.rotationPivot, b.rotationPivot, kTolerance) && Near3(a.scalingPivot, b.scalingPivot, kTolerance) &&
           Near3(a.rotationOffset, b.rotationOffset, kTolerance) &&
           Near3(a.scalingOffset, b.scalingOffset, kTolerance) && Near3(a.preRotation, b.preRotation, kTolerance) &&
           Near3(a.postRotation, b.postRotation, kTolerance) && a.rotationOrder == b.rotationOrder &&
           a.pivotState == b.pivotState;
}

FbxVector4 FbxLimits::Apply(const FbxVector4& v) const {
    FbxVector4 out = v;
    for (int i = 0; i < 3; ++i) {
        if (minEnabled[i]) out[i] = std::max(out[i], min[i]);
        if (maxEnabled[i]) out[i] = std::min(out[i], max[i]);
    }
    return out;
}

bool FbxLimits::operator==(const FbxLimits& o) const {
    for (int i = 0; i < 3; ++i)
        if (minEnabled[i] != o.minEnabled[i] || maxEnabled[i] != o.maxEnabled[i]) return false;
    return active == o.active && min == o.min && max == o.max;
}

void FbxTransformRecord::SetPivots(const FbxPivotSet& set) {
    rotationOffset = set.rotationOffset;
    rotationPivot = set.rotationPivot;
    scalingOffset = set.scalingOffset;
    scalingPivot = set.scalingPivot;
    pivotFlags = 0;
    if (!rotationOffset.IsZero3()) pivotFlags |= eRotationOffset;
    if (!rotationPivot.IsZero3()) pivotFlags |= eRotationPivot;
    if (!scalingOffset.IsZero3()) pivotFlags |= eScalingOffset;
    if (!scalingPivot.IsZero3()) pivotFlags |= eScalingPivot;
    rotationFlags = 0;
    preRotation.SetIdentity();
    postRotation.SetIdentity();
    postRotationInverse.SetIdentity();
    if (!set.preRotation.IsZero3()) {
        rotationFlags |= ePreRotation;
        preRotation.SetR(set.preRotation);
    }
    if (!set.postRotation.IsZero3()) {
        rotationFlags |= ePostRotation;
        postRotation.SetR(set.postRotation);
        postRotationInverse = postRotation.Inverse();
    }
    rotationOrder = set.rotationOrder;
    rotationSpaceForLimitOnly = set.rotationSpaceForLimitOnly;
}

FbxAMatrix FbxLocalRotationMatrix(const FbxTransformRecord& record, const FbxVector4& euler, bool forced) {
    if (!record.rotationLimits.active || (record.rotationSpaceForLimitOnly && !forced))
        return FbxEulerToMatrix(euler, eFbxEulerXYZ);
    FbxAMatrix r = FbxEulerToMatrix(euler, record.rotationOrder);
    if (record.rotationFlags & FbxTransformRecord::ePreRotation) r = record.preRotation * r;
    if (record.rotationFlags & FbxTransformRecord::ePostRotation) r = r * record.postRotationInverse;
    return r;
}

FbxVector4 FbxLocalRotationEuler(const FbxTransformRecord& record, const FbxAMatrix& rotation, bool forced) {
    if (!record.rotationLimits.active || (record.rotationSpaceForLimitOnly && !forced)) return rotation.GetR();
    FbxAMatrix m = rotation;
    if (record.rotationFlags & FbxTransformRecord::ePreRotation) m = record.preRotation.Inverse() * m;
    if (record.rotationFlags & FbxTransformRecord::ePostRotation) m = m * record.postRotation;
    return FbxMatrixToEuler(m, record.rotationOrder);
}

void FbxApplyLimits(const FbxTransformRecord& record, FbxVector4& t, FbxVector4& r, FbxVector4& s) {
    if (record.translationLimits.active) t = record.translationLimits.Apply(t);
    if (record.rotationLimits.active) {
        if (!record.rotationSpaceForLimitOnly) {
            r = record.rotationLimits.Apply(r);
        } else {
            // The limits speak of the rotation order and pre/post-rotation, which the
            // node's own rotation leaves out: clamp there and come back only on a change,
            // so that unclamped angles keep their exact values.
            const FbxVector4 inLimitSpace = FbxLocalRotationEuler(record, FbxLocalRotationMatrix(record, r), true);
            const FbxVector4 clamped = record.rotationLimits.Apply(inLimitSpace);
            if (clamped != inLimitSpace)
                r = FbxLocalRotationEuler(record, FbxLocalRotationMatrix(record, clamped, true));
        }
    }
    if (record.scalingLimits.active) s = record.scalingLimits.Apply(s);
}

FbxVector4 FbxPivotTerm(const FbxTransformRecord& record, const FbxAMatrix& lr, const FbxVector4& s) {
    FbxVector4 v(0.0, 0.0, 0.0, 0.0);
    const uint32_t flags = record.pivotFlags;
    if (flags & FbxTransformRecord::eScalingPivot) {
        for (int i = 0; i < 3; ++i) v[i] = (1.0 - s[i]) * record.scalingPivot[i];
    }
    if (flags & FbxTransformRecord::eScalingOffset) {
        for (int i = 0; i < 3; ++i) v[i] += record.scalingOffset[i];
    }
    if (flags & FbxTransformRecord::eRotationPivot) {
        const FbxVector4 turned = lr.MultR(v - record.rotationPivot);
        for (int i = 0; i < 3; ++i) v[i] = record.rotationPivot[i] + turned[i];
    } else if (flags & (FbxTransformRecord::eScalingPivot | FbxTransformRecord::eScalingOffset)) {
        v = lr.MultR(v);
    }
    if (flags & FbxTransformRecord::eRotationOffset) {
        for (int i = 0; i < 3; ++i) v[i] += record.rotationOffset[i];
    }
    v[3] = 0.0;
    return v;
}

FbxAMatrix FbxComposeLocal(const FbxTransformRecord& record, const FbxVector4& t, const FbxVector4& r,
                           const FbxVector4& s) {
    const FbxAMatrix lr = FbxLocalRotationMatrix(record, r);
    FbxAMatrix m = lr * FbxScaleMatrix(s);
    const FbxVector4 v = FbxPivotTerm(record, lr, s);
    m.SetT(FbxVector4(t[0] + v[0], t[1] + v[1], t[2] + v[2]));
    return m;
}

FbxAMatrix FbxComposeGlobal(const FbxTransformRecord& record, const FbxVector4& t, const FbxVector4& r,
                            const FbxVector4& s, const FbxAMatrix* parentGlobal, const FbxVector4& parentScaling) {
    const FbxAMatrix lr = FbxLocalRotationMatrix(record, r);
    const FbxAMatrix ls = FbxScaleMatrix(s);
    const FbxVector4 v = FbxPivotTerm(record, lr, s);
    const FbxVector4 translation(t[0] + v[0], t[1] + v[1], t[2] + v[2]);
    if (parentGlobal == nullptr) {
        FbxAMatrix g = lr * ls;
        g.SetT(translation);
        return g;
    }
    const FbxAMatrix& p = *parentGlobal;
    FbxAMatrix pr;
    pr.SetR(p.GetR());
    FbxAMatrix ps = pr.Inverse() * p;
    ps.SetT(FbxVector4(0.0, 0.0, 0.0));
    FbxAMatrix ss;
    switch (record.inheritType) {
    case eFbxInheritRSrs:
        ss = lr.Inverse() * ps * lr * ls;
        break;
    case eFbxInheritRrs:
        ss = lr.Inverse() * ps * FbxScaleMatrix(parentScaling).Inverse() * lr * ls;
        break;
    default:
        ss = ps * ls;
        break;
    }
    FbxAMatrix g = pr * lr * ss;
    g.SetT(p.MultT(translation));
    return g;
}

double FbxUnwrapDegrees(double degrees, double previous) {
    const double d = degrees - previous;
    if (!(std::fabs(d) > 180.0) || !std::isfinite(d)) return degrees;
    return degrees - 360.0 * std::floor((d + 180.0) / 360.0);
}
