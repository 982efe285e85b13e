// vurl_fbx_probe FILE...: opens and imports each file into a fresh document and prints
// its status code and text and the counts of objects and connections. Exit code 0
// when every file imported with status 0, else 1.
#include <cstdio>
#include <cstring>
#include <string>

#include "fbx/fbx_document.h"
#include "fbx/fbx_importer.h"
#include "fbx/fbx_manager.h"
#include "fbx/fbx_node.h"
#include "fbx_import_setup.h"

namespace {

struct Counts {
    size_t objects = 0;
    size_t connections = 0;
    size_t nodes = 0;
};

Counts CountDocument(FbxManager& manager) {
    Counts c;
    manager.ForEachObject([&](FbxObject* o) {
        ++c.objects;
        if (o->Is<FbxNode>()) ++c.nodes;
        for (FbxProperty p = o->RootProperty; p.IsValid(); p = o->GetNextProperty(p))
            c.connections += p.Sources().size();
    });
    return c;
}

bool Probe(const char* path, bool extract) {
    const fbxwalk::ImportSetup setup = fbxwalk::MakeImportSetup(extract, "My Scene");
    FbxManager* manager = setup.manager;
    FbxImporter* importer = setup.importer;
    bool ok = importer->Initialize(path, -1, setup.settings) && importer->Import(setup.scene);
    const FbxStatus& status = importer->GetStatus();
    int major = 0, minor = 0, revision = 0;
    importer->GetFileVersion(major, minor, revision);
    Counts c = CountDocument(*manager);
    std::printf("%s: version %d.%d.%d, status %d \"%s\", %zu objects, %zu nodes, %zu connections\n", path, major, minor,
                revision, static_cast<int>(status.GetCode()), status.GetErrorString().c_str(), c.objects, c.nodes,
                c.connections);
    ok = ok && status.GetCode() == kFbxSuccess;
    manager->Destroy();
    return ok;
}

}  // namespace

int main(int argc, char** argv) {
    bool extract = true;
    int first = 1;
    if (argc > 1 && std::strcmp(argv[1], "--no-extract") == 0) {
        extract = false;
        first = 2;
    }
    if (first >= argc) {
        std::fprintf(stderr, "usage: vurl_fbx_probe [--no-extract] FILE...\n");
        return 1;
    }
    bool all = true;
    for (int k = first; k < argc; ++k) all = Probe(argv[k], extract) && all;
    return all ? 0 : 1;
}
