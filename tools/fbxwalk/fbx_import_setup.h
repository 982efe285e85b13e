// The document-layer objects an import needs, made the way the tools and tests make them:
// a manager with IO settings, an empty scene and an importer. Test tooling only.
#pragma once

#include "fbx/fbx_importer.h"
#include "fbx/fbx_manager.h"

namespace fbxwalk {

struct ImportSetup {
    FbxManager* manager = nullptr;  // owns the rest; the caller destroys it
    FbxIOSettings* settings = nullptr;
    FbxScene* scene = nullptr;
    FbxImporter* importer = nullptr;
};

ImportSetup MakeImportSetup(bool extractEmbedded, const char* sceneName = "");

}  // namespace fbxwalk
