// Exact evaluation of an animation curve's key store: values and derivatives per second
// at any time, extrapolation included. Values are floats and so is the arithmetic on them;
// the interval fraction and the interval length in seconds are doubles, and expressions
// that mix them with values are computed in double and stored back as floats.
#pragma once

#include "fbx/fbx_anim_keys.h"

// `lastIndex` is where the key search starts and receives the interval found; null uses
// the store's own lastSearchIndex. A forward walk that passes its index back costs one
// step a key.
float EvaluateCurve(const FbxAnimKeyStore& store, FbxTime time, int* lastIndex = nullptr);
float EvaluateCurveLeftDerivative(const FbxAnimKeyStore& store, FbxTime time, int* lastIndex = nullptr);
float EvaluateCurveRightDerivative(const FbxAnimKeyStore& store, FbxTime time, int* lastIndex = nullptr);

// Derivatives at key `index` (per second) on the side towards the previous key (left,
// governed by the previous key's flags) and towards the next key (right, the key's own).
// The first key's left and the last key's right derivative are 0.
float KeyLeftDerivative(const FbxAnimKeyStore& store, int index);
float KeyRightDerivative(const FbxAnimKeyStore& store, int index);
