#include "fbx/fbx_anim_curve_read.h"

#include "fbx/fbx_anim.h"

// TEMPORARY: keys are not read yet; the curve stays without keys.
bool ReadAnimCurveKeys(FbxFieldStream& /*stream*/, FbxAnimCurve& /*curve*/, FbxStatus& /*status*/) { return true; }

// TEMPORARY: times pass unchanged until the time-unit conversion exists.
int64_t ConvertFileTime(const FbxFieldStream& /*stream*/, int64_t fileTime) { return fileTime; }
