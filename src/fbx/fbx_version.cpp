#include "fbx/fbx_version.h"

const char* FbxGetVersion(bool full) {
    // Kept in step with the file format FbxGetFileFormatVersion reports.
    return full ? "1.2.2 (file format 7.7.0)" : "1.2.2";
}
