// Shared helpers of the reader tests: a small FBX file built with the fixture writer
// and imported from memory into a fresh manager and scene.
#pragma once

#include <gtest/gtest.h>

#include <cstring>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "fbx/fbx_document.h"
#include "fbx/fbx_importer.h"
#include "fbx/fbx_manager.h"
#include "fbx/fbx_node.h"
#include "fbx_writer.h"

namespace modeltest {

using fbxwriter::Record;
using fbxwriter::Value;

// The sections of a file; Build adds the header extension, GlobalSettings and a
// Documents section whose scene has root id 0.
struct FileParts {
    Record definitions{"Definitions"};
    Record objects{"Objects"};
    Record connections{"Connections"};
    std::vector<Record> more;  // after Connections (Takes...)
    uint32_t version = 7400;
    int32_t documentCount = 1;
    bool encrypted = false;
};

inline std::vector<uint8_t> Build(const FileParts& parts) {
    Record header = fbxwriter::HeaderExtension(1003, static_cast<int32_t>(parts.version));
    if (parts.encrypted) header.Add("EncryptionType").Int(1);
    Record settings("GlobalSettings");
    settings.Add("Version").Int(1000);
    settings.Add("Properties70").block = true;
    Record documents("Documents");
    documents.Add("Count").Int(parts.documentCount);
    Record& doc = documents.Add("Document");
    doc.Long(987654321).String("").String("Scene");
    doc.Add("RootNode").Long(0);
    Record references("References");
    references.block = true;
    Record objects = parts.objects;
    objects.block = true;
    Record connections = parts.connections;
    connections.block = true;
    std::vector<Record> records{header, settings, documents, references, parts.definitions, objects, connections};
    records.insert(records.end(), parts.more.begin(), parts.more.end());
    fbxwriter::Options options;
    options.version = parts.version;
    return fbxwriter::Write(records, options);
}

// An object record with its Properties70 block; P records go into Props(record).
inline Record Object(const char* record, int64_t id, const char* name, const char* className, const char* subType) {
    Record r = fbxwriter::ObjectRecord(record, id, name, className, subType);
    r.Add("Properties70").block = true;
    return r;
}

inline Record& Props(Record& object) {
    for (Record& child : object.children)
        if (child.name == "Properties70") return child;
    return object.Add("Properties70");
}

inline Record& P(Record& object, const char* name, const char* type, const char* subType, const char* flags) {
    return Props(object).Child(fbxwriter::PropertyRecord(name, type, subType, flags));
}

// A PropertyTemplate for a class inside an ObjectType record of Definitions.
inline Record& Template(Record& definitions, const char* objectType, const char* className) {
    Record& type = definitions.Add("ObjectType");
    type.String(objectType);
    Record& templ = type.Add("PropertyTemplate");
    templ.String(className);
    templ.Add("Properties70").block = true;
    return templ;
}

struct Imported {
    std::vector<uint8_t> bytes;
    FbxManager* manager = FbxManager::Create();
    FbxIOSettings* settings = FbxIOSettings::Create(manager, "IOSRoot");
    FbxScene* scene = FbxScene::Create(manager, "My Scene");
    FbxImporter* importer = FbxImporter::Create(manager, "");
    bool initialized = false;
    bool ok = false;

    ~Imported() { manager->Destroy(); }
    const FbxStatus& Status() const { return importer->GetStatus(); }

    // An object of the scene by its short name.
    FbxObject* Find(const char* name) const {
        for (const FbxProperty& s : scene->RootProperty.Sources())
            if (s.IsRoot() && std::strcmp(s.GetFbxObject()->GetName(), name) == 0) return s.GetFbxObject();
        return nullptr;
    }
    template <class T> T* Find(const char* name) const {
        FbxObject* o = Find(name);
        return o && o->Is<T>() ? static_cast<T*>(o) : nullptr;
    }
};

// Imports the bytes under the name "fixture.fbx"; setup may change the import options.
inline std::unique_ptr<Imported> Import(std::vector<uint8_t> bytes,
                                        const std::function<void(FbxIOSettings&)>& setup = {},
                                        const char* name = "fixture.fbx") {
    auto result = std::make_unique<Imported>();
    result->bytes = std::move(bytes);
    if (setup) setup(*result->settings);
    result->manager->SetIOSettings(result->settings);
    result->initialized =
        result->importer->Initialize(result->bytes.data(), result->bytes.size(), name, result->settings);
    result->ok = result->initialized && result->importer->Import(result->scene);
    return result;
}

inline std::unique_ptr<Imported> Import(const FileParts& parts, const std::function<void(FbxIOSettings&)>& setup = {},
                                        const char* name = "fixture.fbx") {
    return Import(Build(parts), setup, name);
}

constexpr const char* kOption = "Import|AdvOptGrp|FileFormat|Fbx|";

inline std::string Option(const char* name) { return std::string(kOption) + name; }

}  // namespace modeltest
