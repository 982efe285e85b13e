// vurl_fbx_twin_compare A.fbx B.fbx [A2.fbx B2.fbx ...]: compares files that hold one
// document in two forms (a text file and its binary twin).
//   - Field trees, through the stream: names, instance counts, value counts, value
//     codes and values (reals within a relative 1e-6, since text writers round them;
//     ids through a pairing, since each save makes new ones; P records matched by
//     property name).
//     The top-level FileId, CreationTime and Creator that only binary files carry are
//     skipped.
//   - Imported documents: object count, class and name of each object in order, every
//     property's type and value, and the keys of every curve.
// Prints the first differences (all with -a) and one summary line per pair. Exit 0 when every pair
// agrees in both.
#include <cinttypes>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <map>
#include <string>
#include <vector>

#include "fbx/fbx_anim.h"
#include "fbx/fbx_document.h"
#include "fbx/fbx_field_stream.h"
#include "fbx/fbx_importer.h"
#include "fbx/fbx_manager.h"
#include "fbx_import_setup.h"

namespace {

constexpr double kTolerance = 1e-6;
int shown = 8;  // differences printed per kind; -a: all

// Ids are random per save: twins saved apart hold different ids for the same
// object. Ids pair up at first sight; later sightings must keep the pairing.
struct IdMap {
    std::map<int64_t, int64_t> forward, backward;
    bool Same(int64_t a, int64_t b) {
        auto f = forward.find(a);
        auto g = backward.find(b);
        if (f == forward.end() && g == backward.end()) {
            forward[a] = b;
            backward[b] = a;
            return true;
        }
        return f != forward.end() && f->second == b;
    }
};

struct Report {
    IdMap ids;
    int structure = 0;  // names, counts, blocks
    int codes = 0;
    int values = 0;     // beyond the tolerance
    int rounded = 0;    // reals that differ within it
    double worst = 0;   // largest relative difference within it
    int document = 0;
    void Say(int& counter, const std::string& what) {
        if (++counter <= shown) std::printf("    %s\n", what.c_str());
    }
};

bool Close(double a, double b, Report& report) {
    if (a == b || (std::isnan(a) && std::isnan(b))) return true;
    const double scale = std::fmax(std::fabs(a), std::fabs(b));
    const double relative = std::fabs(a - b) / (scale < 1e-300 ? 1 : scale);
    if (!(relative <= kTolerance)) return false;
    ++report.rounded;
    if (relative > report.worst) report.worst = relative;
    return true;
}

// One value as read through the stream: integers exactly, reals, text, array elements.
struct Value {
    char code = 0;
    int64_t integer = 0;
    double real = 0;
    std::string text;
    std::vector<double> elements;
};

template <typename T>
void Elements(const T* data, size_t count, Value& v) {
    if (data) v.elements.assign(data, data + count);
}

Value ReadValue(FbxFieldStream& s) {
    Value v;
    v.code = s.ValueCode();
    size_t n = 0;
    switch (v.code) {
    case 'C': case 'Z': v.integer = s.ReadByte(); break;
    case 'Y': v.integer = s.ReadShort(); break;
    case 'I': v.integer = s.ReadInt(); break;
    case 'L': v.integer = s.ReadLong(); break;
    case 'F': case 'D': v.real = s.ReadDouble(); break;
    case 'S': v.text = s.ReadString(); break;
    case 'R': {
        const uint8_t* p = s.ReadBlob(n);
        if (p) v.text.assign(reinterpret_cast<const char*>(p), n);
        break;
    }
    case 'b': Elements(s.ReadArrayOfBool(n), n, v); break;
    case 'c': Elements(s.ReadArrayOfByte(n), n, v); break;
    case 'h': Elements(s.ReadArrayOfShort(n), n, v); break;
    case 'i': Elements(s.ReadArrayOfInt(n), n, v); break;
    case 'l': Elements(s.ReadArrayOfLong(n), n, v); break;
    case 'f': Elements(s.ReadArrayOfFloat(n), n, v); break;
    case 'd': Elements(s.ReadArrayOfDouble(n), n, v); break;
    default: s.ReadByte(); break;
    }
    return v;
}

void CompareValues(const Value& a, const Value& b, bool id, const std::string& where, Report& r) {
    if (a.code != b.code) {
        r.Say(r.codes, where + ": code " + a.code + " / " + b.code);
        return;
    }
    bool same = true;
    if (a.code == 'F' || a.code == 'D') {
        same = Close(a.real, b.real, r);
    } else if (a.code == 'S' || a.code == 'R') {
        same = a.text == b.text;
    } else if (a.code >= 'a') {
        same = a.elements.size() == b.elements.size();
        for (size_t k = 0; same && k < a.elements.size(); ++k) {
            same = a.code == 'f' || a.code == 'd' ? Close(a.elements[k], b.elements[k], r)
                                                  : a.elements[k] == b.elements[k];
        }
    } else {
        same = a.code == 'L' && id ? r.ids.Same(a.integer, b.integer) : a.integer == b.integer;
    }
    if (!same) r.Say(r.values, where + ": values differ");
}

// The P records of a block, matched by property name: twins saved apart may
// list them in another order or hold a different set.
void CompareProperties(FbxFieldStream& a, FbxFieldStream& b, const std::string& path, Report& r) {
    auto read = [](FbxFieldStream& s) {
        std::map<std::string, std::vector<Value>> records;
        for (int k = 0; k < s.FieldCount("P"); ++k) {
            s.BeginField("P", k);
            std::vector<Value> values;
            while (s.ValuesLeft() > 0) values.push_back(ReadValue(s));
            if (!values.empty()) records[values[0].text] = std::move(values);
        }
        return records;
    };
    const auto inA = read(a);
    const auto inB = read(b);
    for (const auto& [name, valuesA] : inA) {
        const auto found = inB.find(name);
        const std::string where = path + "/P \"" + name + "\"";
        if (found == inB.end()) {
            r.Say(r.structure, where + ": only in the first file");
            continue;
        }
        const std::vector<Value>& valuesB = found->second;
        if (valuesA.size() != valuesB.size() || (valuesA.size() > 1 && valuesA[1].text != valuesB[1].text)) {
            r.Say(r.structure, where + ": type " + (valuesA.size() > 1 ? valuesA[1].text : "") + " / " +
                                   (valuesB.size() > 1 ? valuesB[1].text : "") + ", " +
                                   std::to_string(valuesA.size()) + " / " + std::to_string(valuesB.size()) + " values");
            continue;
        }
        for (size_t k = 1; k < valuesA.size(); ++k) {
            CompareValues(valuesA[k], valuesB[k], false, where + "#" + std::to_string(k), r);
        }
    }
    for (const auto& entry : inB) {
        if (inA.count(entry.first) == 0) r.Say(r.structure, path + "/P \"" + entry.first + "\": only in the second file");
    }
}

bool BinaryOnly(const std::string& name, int depth) {
    return depth == 0 && (name == "FileId" || name == "CreationTime" || name == "Creator");
}

// Walks both trees in step; iterative, so depth costs no stack.
void CompareStreams(FbxFieldStream& a, FbxFieldStream& b, Report& r) {
    struct Level {
        std::vector<std::string> names;
        size_t field = 0;
        int instance = 0;
        std::string path;
    };
    auto names = [&](const std::string& path, int depth) {
        Level level;
        level.path = path;
        for (int k = 0; k < a.FieldNameCount(); ++k) {
            if (!BinaryOnly(a.FieldName(k), depth)) level.names.push_back(a.FieldName(k));
        }
        for (int k = 0; k < b.FieldNameCount(); ++k) {
            const std::string name = b.FieldName(k);
            if (BinaryOnly(name, depth)) continue;
            if (a.FieldCount(name) == 0) r.Say(r.structure, path + "/" + name + ": only in the second file");
        }
        return level;
    };
    std::vector<Level> levels;
    levels.push_back(names("", 0));
    while (!levels.empty()) {
        Level& level = levels.back();
        if (level.field >= level.names.size()) {
            levels.pop_back();
            if (!levels.empty()) {
                a.EndBlock();
                b.EndBlock();
                ++levels.back().instance;
            }
            continue;
        }
        const std::string& name = level.names[level.field];
        const int count = a.FieldCount(name);
        if (level.instance == 0 && count != b.FieldCount(name)) {
            r.Say(r.structure, level.path + "/" + name + ": " + std::to_string(count) + " / " +
                                   std::to_string(b.FieldCount(name)) + " records");
        }
        if (level.instance >= count || level.instance >= b.FieldCount(name)) {
            ++level.field;
            level.instance = 0;
            continue;
        }
        if (name == "P") {
            CompareProperties(a, b, level.path, r);
            ++level.field;
            continue;
        }
        a.BeginField(name, level.instance);
        b.BeginField(name, level.instance);
        const std::string where = level.path + "/" + name + "[" + std::to_string(level.instance) + "]";
        if (a.ValueCount() != b.ValueCount()) {
            r.Say(r.structure, where + ": " + std::to_string(a.ValueCount()) + " / " + std::to_string(b.ValueCount()) +
                                   " values");
        }
        // Where the ids stand: objects and documents open with theirs, connections and
        // pose nodes name them.
        const std::string parent = levels.size() > 1 ? levels[levels.size() - 2].names[levels[levels.size() - 2].field] : "";
        const bool ids = name == "C" || name == "RootNode" || name == "Node" || parent == "Objects" ||
                         (parent == "Documents" && name == "Document");
        for (int k = 0; a.ValuesLeft() > 0 && b.ValuesLeft() > 0; ++k) {
            CompareValues(ReadValue(a), ReadValue(b), ids, where + "#" + std::to_string(k), r);
        }
        if (a.HasBlock() != b.HasBlock()) r.Say(r.structure, where + ": block in one file only");
        if (a.HasBlock() && b.HasBlock()) {
            const bool inA = a.BeginBlock();
            const bool inB = b.BeginBlock();
            if (inA && inB) {
                const int depth = static_cast<int>(levels.size());
                levels.push_back(names(where, depth));
                continue;
            }
            if (inA) a.EndBlock();
            if (inB) b.EndBlock();
            r.Say(r.structure, where + ": block unreadable");
        }
        ++level.instance;
    }
}

// What the document comparison looks at, per object.
struct ObjectSummary {
    std::string heading;  // class and name
    std::vector<std::string> texts;
    std::vector<double> numbers;
};

void Describe(const FbxProperty& p, ObjectSummary& o) {
    const EFbxType type = p.GetType();
    o.texts.push_back(std::string(p.GetName()) + ":" + std::to_string(static_cast<int>(type)));
    double v[16] = {};
    switch (type) {
    case eFbxBool: case eFbxInt: case eFbxEnum: case eFbxEnumM: case eFbxChar: case eFbxUChar: case eFbxShort:
    case eFbxUShort: case eFbxUInt:
        o.texts.push_back(std::to_string(p.Get<int>()));
        break;
    case eFbxLongLong: case eFbxULongLong: case eFbxTime: {
        int64_t t = 0;
        p.Get(&t, eFbxLongLong);
        o.texts.push_back(std::to_string(t));
        break;
    }
    case eFbxFloat: case eFbxHalfFloat: case eFbxDouble: case eFbxDistance:
        o.numbers.push_back(p.Get<double>());
        break;
    case eFbxDouble2: case eFbxDouble3: case eFbxDouble4: case eFbxDouble4x4: {
        const int n = type == eFbxDouble2 ? 2 : type == eFbxDouble3 ? 3 : type == eFbxDouble4 ? 4 : 16;
        p.Get(v, type);
        o.numbers.insert(o.numbers.end(), v, v + n);
        break;
    }
    case eFbxString: case eFbxDateTime: case eFbxBlob: o.texts.push_back(p.Get<std::string>()); break;
    default: break;
    }
}

std::vector<ObjectSummary> Import(const char* path, std::string& failure) {
    std::vector<ObjectSummary> out;
    const fbxwalk::ImportSetup setup = fbxwalk::MakeImportSetup(false);
    FbxManager* manager = setup.manager;
    FbxImporter* importer = setup.importer;
    if (!importer->Initialize(path, -1, setup.settings) || !importer->Import(setup.scene)) {
        failure = importer->GetStatus().GetErrorString();
    }
    manager->ForEachObject([&](FbxObject* object) {
        ObjectSummary o;
        o.heading = std::string(object->GetClassId().GetName()) + " " + object->GetNameWithNameSpace();
        for (FbxProperty p = object->GetFirstProperty(); p.IsValid(); p = object->GetNextProperty(p)) Describe(p, o);
        if (object->Is<FbxAnimCurve>()) {
            const auto* curve = static_cast<const FbxAnimCurve*>(object);
            for (int k = 0; k < curve->KeyGetCount(); ++k) {
                o.texts.push_back(std::to_string(curve->KeyGetTime(k).Get()));
                o.numbers.push_back(curve->KeyGetValue(k));
                o.texts.push_back(std::to_string(curve->KeyGetFlags(k)));
            }
        }
        out.push_back(std::move(o));
    });
    manager->Destroy();
    return out;
}

void CompareDocuments(const char* pathA, const char* pathB, Report& r) {
    std::string failA, failB;
    const std::vector<ObjectSummary> a = Import(pathA, failA);
    const std::vector<ObjectSummary> b = Import(pathB, failB);
    if (failA != failB) r.Say(r.document, "import: \"" + failA + "\" / \"" + failB + "\"");
    if (a.size() != b.size()) {
        r.Say(r.document, std::to_string(a.size()) + " / " + std::to_string(b.size()) + " objects");
    }
    for (size_t k = 0; k < a.size() && k < b.size(); ++k) {
        const ObjectSummary& x = a[k];
        const ObjectSummary& y = b[k];
        bool same = x.heading == y.heading && x.texts == y.texts && x.numbers.size() == y.numbers.size();
        for (size_t n = 0; same && n < x.numbers.size(); ++n) same = Close(x.numbers[n], y.numbers[n], r);
        if (!same) r.Say(r.document, "object " + std::to_string(k) + " (" + x.heading + " / " + y.heading + ") differs");
    }
}

bool ComparePair(const char* pathA, const char* pathB) {
    std::printf("%s / %s\n", pathA, pathB);
    Report r;
    FbxStatus statusA, statusB;
    auto a = FbxOpenFieldStream(pathA, statusA, true, nullptr);
    auto b = FbxOpenFieldStream(pathB, statusB, true, nullptr);
    if (a && b) {
        if (a->FileVersion() != b->FileVersion()) {
            r.Say(r.structure, "version " + std::to_string(a->FileVersion()) + " / " + std::to_string(b->FileVersion()));
        }
        CompareStreams(*a, *b, r);
    } else if (a || b || statusA.GetCode() != statusB.GetCode()) {
        r.Say(r.structure, "open: code " + std::to_string(statusA.GetCode()) + " / " + std::to_string(statusB.GetCode()));
    }
    a.reset();
    b.reset();
    CompareDocuments(pathA, pathB, r);
    std::printf("  fields: %d structure, %d code, %d value differences; %d reals rounded (worst %.2g); "
                "document: %d differences\n",
                r.structure, r.codes, r.values, r.rounded, r.worst, r.document);
    return r.structure + r.codes + r.values + r.document == 0;
}

}  // namespace

int main(int argc, char** argv) {
    int first = 1;
    if (argc > 1 && std::strcmp(argv[1], "-a") == 0) {
        shown = 1 << 30;
        first = 2;
    }
    const int files = argc - first;
    if (files < 2 || files % 2 != 0) {
        std::fprintf(stderr, "usage: vurl_fbx_twin_compare [-a] A.fbx B.fbx [A2.fbx B2.fbx ...]\n");
        return 2;
    }
    int failed = 0;
    for (int k = first; k + 1 < argc; k += 2) failed += ComparePair(argv[k], argv[k + 1]) ? 0 : 1;
    std::printf("%d of %d pairs agree\n", files / 2 - failed, files / 2);
    return failed == 0 ? 0 : 1;
}
