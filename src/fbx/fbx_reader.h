// The reader of major version 7 files: walks the field tree of a stream and fills a
// document with objects, properties and connections. Private to the FBX library.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "fbx/fbx_field_stream.h"
#include "fbx/fbx_importer.h"
#include "fbx/fbx_status.h"

class FbxObject;
class FbxDocument;
class FbxScene;
class FbxNode;
class FbxMesh;
class FbxIOSettings;
class FbxClassId;
class FbxManager;
struct FbxLayerElement;
struct FbxPropertyPrototype;

// Import options, read once from the settings tree when an import starts.
struct FbxReaderOptions {
    bool material = true;
    bool texture = true;
    bool link = true;
    bool shape = true;
    bool gobo = true;
    bool animation = true;
    bool audio = true;
    bool globalSettings = true;
    bool constraint = true;
    bool extractEmbeddedData = true;
    bool layerNormal = true;
    bool layerBinormal = true;
    bool layerTangent = true;
    bool layerVertexColor = true;
    bool layerPolygroup = true;
    bool layerSmoothing = true;
    bool layerUserData = true;
    bool layerVisibility = true;
    bool layerEdgeCrease = true;
    bool layerVertexCrease = true;
    bool layerHole = true;
    bool calculateLegacyShapeNormal = true;
    bool relaxedFbxCheck = false;
    bool keepProducerCamSrcObj = false;
    bool passwordEnable = false;
    std::string password;
    std::string currentTakeName;
    int cacheSize = 8;
    std::string extractFolder;  // empty: beside the file, named after it with ".fbm"

    static FbxReaderOptions FromSettings(const FbxIOSettings* settings);
};

class FbxReader {
public:
    FbxReader(FbxFieldStream& stream, FbxStatus& status, const std::string& fileName,
              FbxImporter::ProgressCallback progress, void* progressArgs);
    ~FbxReader();
    FbxReader(const FbxReader&) = delete;
    FbxReader& operator=(const FbxReader&) = delete;

    // Steps 5 to 17 of an import, on a stream whose main section is open.
    bool Read(FbxDocument& document, const FbxReaderOptions& options);

private:
    // Sections.
    void ReadGlobalSettings();
    bool ReadDocuments();
    bool ReadReferences();
    void ReadDefinitions();
    void ReadObjects();
    void ReadConnections();
    void ReadTakes();
    void BindCurveNodes();
    void CheckScene();
    void BreakNodeCycles();
    void PostProcessScene();
    void ExtractEmbeddedMedia();

    // Objects.
    FbxObject* ReadObject(const std::string& recordName, int64_t id, const std::string& name,
                          const std::string& subType);
    FbxObject* Create(const FbxClassId& classId, const std::string& name, int64_t id, bool addToDocument = true);
    void ReadModel(FbxNode& node);
    FbxObject* ReadNodeAttribute(const std::string& name, int64_t id, const std::string& subType);
    FbxObject* ReadGeometry(const std::string& name, int64_t id, const std::string& subType);
    void ReadMesh(FbxMesh& mesh);
    void ReadLayerElements(FbxMesh& mesh);
    void ReadLayerElement(FbxLayerElement& element, size_t controlPoints, size_t polygonVertices);
    void ReadLayers(FbxMesh& mesh);
    FbxObject* ReadDeformer(const std::string& name, int64_t id, const std::string& subType);
    FbxObject* ReadPose(const std::string& name, int64_t id, const std::string& subType);
    FbxObject* ReadMaterial(const std::string& name, int64_t id);
    void ResolvePoses();
    void ReadProperties(FbxObject& object);
    void BadArrayValue(const char* prefix, const char* arrayName);
    bool Progress(const char* what);

    FbxObject* Resolve(int64_t id) const;

    FbxFieldStream& stream_;
    FbxStatus& status_;
    std::string fileName_;
    FbxImporter::ProgressCallback progress_;
    void* progressArgs_;
    uint64_t progressTotal_ = 0;
    uint64_t progressDone_ = 0;
    int progressLast_ = -1;

    FbxReaderOptions options_;
    FbxDocument* document_ = nullptr;
    FbxScene* scene_ = nullptr;
    FbxManager* manager_ = nullptr;
    bool corrupted_ = false;  // a block failed to read: the object loop stops

    std::map<int64_t, FbxObject*> objectsById_;
    std::unordered_map<const FbxObject*, int64_t> idsByObject_;
    std::unordered_map<std::string, FbxNode*> objectsByName_;
    std::map<const FbxClassId*, FbxObject*> templates_;
    // Per class: its properties with the template applied, shared by its objects.
    std::map<const FbxClassId*, const FbxPropertyPrototype*> templated_;
    std::vector<std::string> objectTypes_;
    std::vector<FbxObject*> poses_;
};
