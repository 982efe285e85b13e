// The pieces of a node's transform as plain values: pivot sets, limits, the working
// record of a node, and the composition of translation, rotation and scaling with
// rotation order, pre- and post-rotation, pivots, offsets and the three inherit types.
#pragma once

#include <cstdint>

#include "fbx/fbx_matrix.h"

// Inherit types of a node's scale from its parent.
enum FbxInheritType {
    eFbxInheritRrSs = 0,  // parent rotation, local rotation, parent scale, local scale
    eFbxInheritRSrs = 1,  // the plain product of parent and local matrices
    eFbxInheritRrs = 2,   // the parent's own local scaling left out
};

// One of the two pivot sets of a node. Set 0 mirrors the node's properties, set 1 is the
// destination of the pivot reset.
struct FbxPivotSet {
    FbxVector4 rotationOffset{0.0, 0.0, 0.0};
    FbxVector4 rotationPivot{0.0, 0.0, 0.0};
    FbxVector4 preRotation{0.0, 0.0, 0.0};
    FbxVector4 postRotation{0.0, 0.0, 0.0};
    FbxVector4 scalingOffset{0.0, 0.0, 0.0};
    FbxVector4 scalingPivot{0.0, 0.0, 0.0};
    FbxVector4 geometricTranslation{0.0, 0.0, 0.0};
    FbxVector4 geometricRotation{0.0, 0.0, 0.0};
    FbxVector4 geometricScaling{1.0, 1.0, 1.0};
    int rotationOrder = eFbxEulerXYZ;
    bool rotationSpaceForLimitOnly = false;
    int quaternionMode = 0;
    int pivotState = 0;

    // Pivots, offsets and geometric terms to their neutral values and the rotation order
    // to 0; pre- and post-rotation to zero unless rotationSpaceForLimitOnly is set.
    void Reset();
};

// True when the two sets agree within 1e-6 in rotation and scaling pivots and offsets,
// pre- and post-rotation, and equal in rotation order and pivot state.
bool FbxPivotSetsAgree(const FbxPivotSet& a, const FbxPivotSet& b);

struct FbxLimits {
    bool active = false;
    bool minEnabled[3] = {false, false, false};
    bool maxEnabled[3] = {false, false, false};
    FbxVector4 min{0.0, 0.0, 0.0};
    FbxVector4 max{0.0, 0.0, 0.0};

    // Per axis: v = max(v, min) where the min bit is set, then v = min(v, max) where the
    // max bit is set. Does not look at `active`.
    FbxVector4 Apply(const FbxVector4& v) const;
    bool operator==(const FbxLimits& o) const;
    bool operator!=(const FbxLimits& o) const { return !(*this == o); }
};

// Working form of pivot set 0 and the node's limits, as the evaluation uses them.
struct FbxTransformRecord {
    enum PivotFlag : uint32_t { eRotationOffset = 1, eRotationPivot = 2, eScalingOffset = 4, eScalingPivot = 8 };
    enum RotationFlag : uint32_t { ePreRotation = 1, ePostRotation = 2 };

    uint32_t pivotFlags = 0;
    FbxVector4 rotationOffset{0.0, 0.0, 0.0};
    FbxVector4 rotationPivot{0.0, 0.0, 0.0};
    FbxVector4 scalingOffset{0.0, 0.0, 0.0};
    FbxVector4 scalingPivot{0.0, 0.0, 0.0};
    int inheritType = eFbxInheritRrSs;
    // The active flag of the rotation limits is the node's RotationActive.
    FbxLimits translationLimits, rotationLimits, scalingLimits;
    bool rotationSpaceForLimitOnly = false;
    uint32_t rotationFlags = 0;
    // Always Euler XYZ, whatever the rotation order.
    FbxAMatrix preRotation, postRotation, postRotationInverse;
    int rotationOrder = eFbxEulerXYZ;

    // Takes pivots, offsets, pre- and post-rotation, rotation order and the limit-space
    // flag from a pivot set; limits and inherit type stay.
    void SetPivots(const FbxPivotSet& set);
};

// Euler angles in degrees to the node's rotation matrix. Without RotationActive, or with
// RotationSpaceForLimitOnly unless forced, plain Euler XYZ; otherwise in the rotation
// order, then Pre * R * Post^-1.
FbxAMatrix FbxLocalRotationMatrix(const FbxTransformRecord& record, const FbxVector4& euler, bool forced = false);

// The reverse: the node's Euler angles of a rotation matrix.
FbxVector4 FbxLocalRotationEuler(const FbxTransformRecord& record, const FbxAMatrix& rotation, bool forced = false);

// Clamps translation, rotation and scaling by the active limits. Rotation limits are
// applied in the space of the rotation order and pre/post-rotation when the rotation
// space serves the limits only.
void FbxApplyLimits(const FbxTransformRecord& record, FbxVector4& t, FbxVector4& r, FbxVector4& s);

// Translation added to Lcl Translation by pivots and offsets, for rotation matrix lr and
// scaling s.
FbxVector4 FbxPivotTerm(const FbxTransformRecord& record, const FbxAMatrix& lr, const FbxVector4& s);

// T' * LR * LS: the node's own composed transform, ignoring any parent.
FbxAMatrix FbxComposeLocal(const FbxTransformRecord& record, const FbxVector4& t, const FbxVector4& r,
                           const FbxVector4& s);

// Global matrix of a node from its (already limited) T, R, S. Without a parent it is the
// local composition; with one, the parent's global matrix `parentGlobal` and the parent's
// own evaluated Lcl Scaling `parentScaling` enter by the inherit type.
FbxAMatrix FbxComposeGlobal(const FbxTransformRecord& record, const FbxVector4& t, const FbxVector4& r,
                            const FbxVector4& s, const FbxAMatrix* parentGlobal, const FbxVector4& parentScaling);

// `degrees` moved by whole turns to within 180 degrees of `previous`, so that Euler curves
// made of decomposed matrices don't jump; not-a-number and infinite values stay as they are.
double FbxUnwrapDegrees(double degrees, double previous);
