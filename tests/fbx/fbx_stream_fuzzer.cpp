// libFuzzer entry for the field stream and the file reader: any bytes must open
// or fail cleanly, every record, value and array of an opened file must read
// without fault, in every section, and the import of the bytes into a document
// must end with a status, its objects walkable.
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "fbx/fbx_document.h"
#include "fbx/fbx_field_stream.h"
#include "fbx/fbx_importer.h"
#include "fbx/fbx_manager.h"
#include "fbx/fbx_node.h"

namespace {

void ReadValues(FbxFieldStream& stream) {
    size_t count = 0;
    while (stream.ValuesLeft() > 0) {
        switch (stream.ValueCode()) {
        case 'b': stream.ReadArrayOfBool(count); break;
        case 'c': stream.ReadArrayOfByte(count); break;
        case 'h': stream.ReadArrayOfShort(count); break;
        case 'i': stream.ReadArrayOfInt(count); break;
        case 'l': stream.ReadArrayOfLong(count); break;
        case 'f': stream.ReadArrayOfFloat(count); break;
        case 'd': stream.ReadArrayOfDouble(count); break;
        case 'S': stream.ReadString(); break;
        case 'R': stream.ReadBlob(count); break;
        case 'C': stream.ReadChar(); break;
        case 'F': stream.ReadFloat(); break;
        case 'D': stream.ReadDouble(); break;
        case 'L': stream.ReadLong(); break;
        default: stream.ReadInt(); break;
        }
    }
}

void Walk(FbxFieldStream& stream) {
    struct Level {
        int field = 0;
        int instance = 0;
    };
    std::vector<Level> levels(1);
    while (!levels.empty()) {
        Level& level = levels.back();
        if (level.field >= stream.FieldNameCount()) {
            levels.pop_back();
            if (!levels.empty()) {
                stream.EndBlock();
                ++levels.back().instance;
            }
            continue;
        }
        const std::string name = stream.FieldName(level.field);
        if (level.instance >= stream.FieldCount(name)) {
            ++level.field;
            level.instance = 0;
            continue;
        }
        stream.BeginField(name, level.instance);
        ReadValues(stream);
        if (stream.HasBlock() && stream.BeginBlock()) {
            levels.push_back(Level());
            continue;
        }
        ++level.instance;
    }
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
