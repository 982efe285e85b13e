// Version of the FBX document layer itself, for the banner of a load.
#pragma once

// With full false the bare release number; with full true the release number and the
// newest file format the layer reads. The texts are fixed for a build.
const char* FbxGetVersion(bool full = true);
