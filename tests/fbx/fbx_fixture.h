// The fixture builder of the FBX tests: files made by the project's writer (binary or
// text), opened from memory the way the reader opens them or imported into a fresh
// manager; record values rendered as text for comparison.
#pragma once

#include <gtest/gtest.h>

#include <cinttypes>
#include <cstdio>
#include <cstring>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "fbx/fbx_document.h"
#include "fbx/fbx_field_stream.h"
#include "fbx/fbx_importer.h"
#include "fbx/fbx_manager.h"
#include "fbx/fbx_node.h"
#include "fbx_writer.h"
#include "text_table.h"

namespace fbxtest {

using fbxwriter::Record;
using fbxwriter::Value;

inline const std::string kName = "fixture.fbx";
inline const std::string kVersionLine = "; FBX 7.4.0 project file\n";

// A table of tests/fbx/data.
inline testsupport::Table Table(const std::string& name) { return testsupport::ReadTable(VURL_FBX_DATA "/" + name); }

inline fbxwriter::Options Version(uint32_t version) {
    fbxwriter::Options options;
    options.version = version;
    return options;
}

// Opens with the type-1-then-type-0 helper and the main section open.
inline std::unique_ptr<FbxFieldStream> Open(std::string_view bytes, FbxStatus& status,
                                            FbxFileHeaderInfo* info = nullptr) {
    return FbxOpenFieldStream(FbxFileBytes::Copy(bytes.data(), bytes.size()), kName, status, true, info);
}
inline std::unique_ptr<FbxFieldStream> Open(const std::vector<uint8_t>& bytes, FbxStatus& status,
                                            FbxFileHeaderInfo* info = nullptr) {
    return Open(std::string_view(reinterpret_cast<const char*>(bytes.data()), bytes.size()), status, info);
}
// A text file: the version line, then the body.
inline std::unique_ptr<FbxFieldStream> OpenText(const std::string& body, FbxStatus& status) {
    return Open(kVersionLine + body, status);
}

// A file of one top-level record "V" holding the given values.
inline std::vector<uint8_t> OneRecord(std::vector<Value> values, fbxwriter::Options options = {}) {
    Record record("V");
    record.values = std::move(values);
    return fbxwriter::Write({record}, options);
}

inline std::string Real(double v, int digits) {
    char buffer[48];
    std::snprintf(buffer, sizeof buffer, "%.*g", digits, v);
    return buffer;
}

// The count is taken by pointer: it is set by the array read in the same call's arguments.
template <typename T>
std::string Join(const T* data, const size_t* count, int digits = 0) {
    std::string out;
    for (size_t k = 0; data && k < *count; ++k) {
        if (k > 0) out += ',';
        if constexpr (std::is_floating_point_v<T>) {
            out += Real(data[k], digits);
        } else {
            out += std::to_string(static_cast<int64_t>(data[k]));
        }
    }
    return out;
}

// The values of the current instance as "code value; code value": integers in decimal,
// reals in their shortest exact form, strings and raw values as their stored bytes
// (others than printable ASCII as \xNN), arrays as their elements.
inline std::string Render(FbxFieldStream& s) {
    std::string out;
    while (s.ValuesLeft() > 0) {
        if (!out.empty()) out += "; ";
        const char code = s.ValueCode();
        out += code;
        out += ' ';
        size_t n = 0;
        switch (code) {
        case 'C': out += s.ReadChar(); break;
        case 'Z': out += std::to_string(s.ReadByte()); break;
        case 'Y': out += std::to_string(s.ReadShort()); break;
        case 'I': out += std::to_string(s.ReadInt()); break;
        case 'L': out += std::to_string(s.ReadLong()); break;
        case 'F': out += Real(s.ReadFloat(), 9); break;
        case 'D': out += Real(s.ReadDouble(), 17); break;
        case 'S':
        case 'R': {
            const uint8_t* p = s.ReadBlob(n);
            for (size_t k = 0; p && k < n; ++k) {
                if (p[k] >= 0x20 && p[k] < 0x7f) {
                    out += static_cast<char>(p[k]);
                } else {
                    char hex[8];
                    std::snprintf(hex, sizeof hex, "\\x%02x", p[k]);
                    out += hex;
                }
            }
            break;
        }
        case 'b': out += Join(s.ReadArrayOfBool(n), &n); break;
        case 'c': out += Join(s.ReadArrayOfByte(n), &n); break;
        case 'h': out += Join(s.ReadArrayOfShort(n), &n); break;
        case 'i': out += Join(s.ReadArrayOfInt(n), &n); break;
        case 'l': out += Join(s.ReadArrayOfLong(n), &n); break;
        case 'f': out += Join(s.ReadArrayOfFloat(n), &n, 9); break;
        case 'd': out += Join(s.ReadArrayOfDouble(n), &n, 17); break;
        default: s.ReadByte(); break;
        }
    }
    return out;
}

// The sections of a whole file; Build adds the header extension, GlobalSettings and a
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
    return fbxwriter::Write(records, Version(parts.version));
}

// An object record with its (empty) Properties70 block.
inline Record Object(const char* record, int64_t id, const char* name, const char* className, const char* subType) {
    Record r = fbxwriter::ObjectRecord(record, id, name, className, subType);
    r.Add("Properties70").block = true;
    return r;
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

inline std::string Option(const char* name) { return std::string("Import|AdvOptGrp|FileFormat|Fbx|") + name; }

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

inline std::function<void(FbxIOSettings&)> Relaxed(bool relaxed = true) {
    return [relaxed](FbxIOSettings& s) { s.SetBoolProp(Option("RelaxedFbxCheck").c_str(), relaxed); };
}

// A manager with an empty scene, for tests that build documents by hand.
struct SceneTest : ::testing::Test {
    FbxManager* manager = FbxManager::Create();
    FbxScene* scene = FbxScene::Create(manager, "My Scene");
    ~SceneTest() override { manager->Destroy(); }
};

}  // namespace fbxtest
