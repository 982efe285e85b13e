// Curve access and edits that the transform conversions share: the three channel curves
// of an Lcl property on a layer, sampling, rewriting keys, scaling and moving curves.
// Private to the FBX library.
#pragma once

#include <vector>

#include "fbx/fbx_matrix.h"
#include "fbx/fbx_property.h"
#include "fbx/fbx_time.h"

class FbxAnimLayer;
class FbxAnimCurve;
class FbxAnimCurveNode;
class FbxNode;
class FbxScene;

// The curve node of one double3 property on one layer and the curves of its X, Y and Z
// channels; any of them may be null.
struct FbxLclCurves {
    FbxAnimCurveNode* node = nullptr;
    FbxAnimCurve* curve[3] = {nullptr, nullptr, nullptr};

    bool AnyCurve() const { return curve[0] || curve[1] || curve[2]; }
};

// Finds the curve node and curves of `property` on `layer`; with `create`, makes the
// curve node and the missing channel curves.
FbxLclCurves FbxFindLclCurves(FbxProperty property, FbxAnimLayer* layer, bool create);

// Value of a double3 property at a finite time: the base layer's channels of the scene's
// current stack (its first stack when none is current), with later non-muted layers
// blended over them by their weight (additive layers add their weighted value).
// Channels without a curve keep their curve node's value.
FbxVector4 FbxAnimatedValue(FbxProperty property, FbxTime time);

// Every animation layer of every stack of the scene, each once.
std::vector<FbxAnimLayer*> FbxSceneLayers(FbxScene* scene);

int FbxCurveKeyCount(const FbxAnimCurve* curve);
FbxTime FbxCurveKeyTime(const FbxAnimCurve* curve, int index);
// Value at a time, with the caller's search index for forward walks.
float FbxCurveEvaluate(const FbxAnimCurve* curve, FbxTime time, int* index);

// Replaces all keys by linear keys at the given times.
void FbxCurveSetLinearKeys(FbxAnimCurve* curve, const std::vector<FbxTime>& times, const std::vector<float>& values);
// Sets the curve to a single key.
void FbxCurveSetSingleKey(FbxAnimCurve* curve, FbxTime time, float value);
// Multiplies values, the default value and the stored slopes by `factor`.
void FbxCurveScale(FbxAnimCurve* curve, double factor);
// Copies keys, default value and extrapolation of `from` into `to`.
void FbxCurveCopy(FbxAnimCurve* to, const FbxAnimCurve* from);
// Rearranges the channel curves of a double3 property on a layer: channel i takes what
// channel source[i] held, times sign[i]. A channel whose source has no curve loses its
// own.
void FbxCurvePermuteChannels(FbxProperty property, FbxAnimLayer* layer, const int source[3], const double sign[3]);
// Detaches a curve from its channel and destroys it.
void FbxCurveRemove(FbxAnimCurve* curve);

// Sets the X, Y, Z channel values of a curve node (the value a channel has without a
// curve, and what readers of the node's static value see).
void FbxCurveNodeSetValue(FbxAnimCurveNode* node, const FbxVector4& value);
// The same for every curve node of the property on every layer.
void FbxSetCurveNodeValues(FbxProperty property, const FbxVector4& value);
