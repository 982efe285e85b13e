// libFuzzer entry for the field stream and the file reader: any bytes must open
// or fail cleanly, every record, value and array of an opened file must read
// without fault, in every section, and the import of the bytes into a document
// must end with a status, its objects walkable.
#include <cstddef>
#include <cstdint>
#include <string>

#include "fbx/fbx_document.h"
#include "fbx/fbx_importer.h"
#include "fbx/fbx_manager.h"
#include "fbx/fbx_node.h"
#include "fbx_walk.h"

namespace {

void Walk(FbxFieldStream& stream) {
    fbxwalk::WalkFields(stream, [&](const std::string&, int, int) { fbxwalk::ReadEveryValue(stream); });
}

// Imports the bytes (media extraction off: a fuzzer writes no files) and walks what
// came out: the node tree and every property value of every object.
void Import(const uint8_t* data, size_t size, bool relaxed) {
    FbxManager* manager = FbxManager::Create();
    FbxIOSettings* settings = FbxIOSettings::Create(manager, "IOSRoot");
    settings->SetBoolProp("Import|AdvOptGrp|FileFormat|Fbx|ExtractEmbeddedData", false);
    settings->SetBoolProp("Import|AdvOptGrp|FileFormat|Fbx|RelaxedFbxCheck", relaxed);
    FbxScene* scene = FbxScene::Create(manager, "My Scene");
    FbxImporter* importer = FbxImporter::Create(manager, "");
    if (importer->Initialize(data, size, "fuzz.fbx", settings)) importer->Import(scene);
    scene->GetRootNode()->GetChildCount(true);
    manager->ForEachObject([](FbxObject* o) {
        double value[16];
        for (FbxProperty p = o->GetFirstProperty(); p.IsValid(); p = o->GetNextProperty(p)) {
            p.Get(value, eFbxDouble4x4);
            p.Get(value, eFbxDouble3);
            p.GetSrcObjectCount();
        }
    });
    manager->Destroy();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    Import(data, size, size % 2 == 1);
    FbxStatus status;
    FbxFileHeaderInfo info;
    auto stream = FbxOpenFieldStream(FbxFileBytes::Borrow(data, size), "fuzz.fbx", status, true, &info);
    if (!stream) return 0;
    Walk(*stream);
    for (int section = 1; section < stream->SectionCount() && section < 4; ++section) {
        stream->CloseSection();
        if (stream->OpenSection(section)) Walk(*stream);
    }
    return 0;
}
