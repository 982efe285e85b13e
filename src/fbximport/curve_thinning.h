// Rotation channels as quaternions, and the thinning of sampled channels: keys that a
// straight line between their neighbours predicts well enough are dropped.
// Private to the fbximport library.
#pragma once

#include "scene/animation.h"

// The same keys as quaternions. Cubic tangents become the difference between the rotation
// pushed by the Euler tangent and the key's own rotation.
QuatChannel MakeQuatChannel(const VectorChannel& rotation);

// Ramer-Douglas-Peucker over time with the largest component error, keeping every key whose
// error reaches threshold. Cubic channels and channels of 2 keys or fewer stay as they are.
void SimplifyVectorChannel(VectorChannel& channel, float threshold);
void SimplifyQuatChannel(QuatChannel& channel, float threshold);
