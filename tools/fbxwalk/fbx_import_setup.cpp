#include "fbx_import_setup.h"

namespace fbxwalk {

ImportSetup MakeImportSetup(bool extractEmbedded, const char* sceneName) {
    ImportSetup setup;
    setup.manager = FbxManager::Create();
    setup.settings = FbxIOSettings::Create(setup.manager, "IOSRoot");
    setup.manager->SetIOSettings(setup.settings);
    setup.settings->SetBoolProp("Import|AdvOptGrp|FileFormat|Fbx|ExtractEmbeddedData", extractEmbedded);
    setup.scene = FbxScene::Create(setup.manager, sceneName);
    setup.importer = FbxImporter::Create(setup.manager, "");
    return setup;
}

}  // namespace fbxwalk
