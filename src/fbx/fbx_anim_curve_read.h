// Reading the key fields of an AnimationCurve record into a curve.
#pragma once

#include <cstdint>

class FbxAnimCurve;
class FbxAnimKeyStore;
class FbxFieldStream;
class FbxStatus;

// Reads the fields of the current AnimationCurve block that follow its Properties70:
// Default, Pre-/Post-Extrapolation, KeyTime, KeyValueFloat or KeyValueDouble,
// KeyAttrFlags, KeyAttrDataFloat, KeyAttrRefCount. A length mismatch sets code 1
// "Corrupted animation data." in status, keeps the keys read so far and returns false.
bool ReadAnimCurveKeys(FbxFieldStream& stream, FbxAnimCurve& curve, FbxStatus& status);
// The same into a bare key store, which is replaced.
bool ReadAnimCurveKeyStore(FbxFieldStream& stream, FbxAnimKeyStore& store, FbxStatus& status);

// A time of the file (key times, take spans) in ticks of 141,120,000 a second, by the
// file's time-unit definition and version.
int64_t ConvertFileTime(const FbxFieldStream& stream, int64_t fileTime);
