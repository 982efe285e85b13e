// Reading one object record of the Objects block: class by record name and sub type,
// template, properties and the fields of meshes, deformers, poses and media.
#include <algorithm>
#include <cstring>

#include "fbx/fbx_anim.h"
#include "fbx/fbx_anim_curve_read.h"
#include "fbx/fbx_deformer.h"
#include "fbx/fbx_document.h"
#include "fbx/fbx_geometry.h"
#include "fbx/fbx_manager.h"
#include "fbx/fbx_material.h"
#include "fbx/fbx_misc_objects.h"
#include "fbx/fbx_node.h"
#include "fbx/fbx_properties70.h"
#include "fbx/fbx_property_table.h"
#include "fbx/fbx_reader.h"

namespace {

bool EqualsNoCase(const std::string& a, const char* b) {
    size_t n = std::strlen(b);
    if (a.size() != n) return false;
    for (size_t k = 0; k < n; ++k) {
        char x = a[k], y = b[k];
        if (x >= 'A' && x <= 'Z') x = static_cast<char>(x - 'A' + 'a');
        if (y >= 'A' && y <= 'Z') y = static_cast<char>(y - 'A' + 'a');
        if (x != y) return false;
    }
    return true;
}

template <class T> void ReadInts(FbxFieldStream& stream, const char* field, std::vector<T>& out) {
    out.clear();
    if (!stream.BeginField(field)) return;
    size_t count = 0;
    if (stream.ValueCode() == 'b') {
        const uint8_t* data = stream.ReadArrayOfBool(count);
        if (data) out.assign(data, data + count);
    } else {
        const int32_t* data = stream.ReadArrayOfInt(count);
        if (data) out.assign(data, data + count);
    }
    stream.EndField();
}

void ReadDoubles(FbxFieldStream& stream, const char* field, std::vector<double>& out) {
    out.clear();
    if (!stream.BeginField(field)) return;
    size_t count = 0;
    if (stream.ValueCode() == 'f') {
        const float* data = stream.ReadArrayOfFloat(count);
        if (data) out.assign(data, data + count);
    } else {
        const double* data = stream.ReadArrayOfDouble(count);
        if (data) out.assign(data, data + count);
    }
    stream.EndField();
}

// A 16-double matrix field; the identity stays when the field is absent or short.
bool ReadMatrix(FbxFieldStream& stream, const char* field, double out[16]) {
    std::vector<double> values;
    ReadDoubles(stream, field, values);
    if (values.size() != 16) return false;
    std::copy(values.begin(), values.end(), out);
    return true;
}

struct LayerElementName {
    const char* record;
    FbxLayerElementKind kind;
    const char* direct;     // array of values
    const char* directW;    // fourth components of normals and tangents
    const char* index;      // index array
    const char* indexName;  // name in the bad-index message
    int components;         // doubles per direct entry; 0 for integer arrays
};

const LayerElementName kLayerElements[] = {
    {"LayerElementNormal", FbxLayerElementKind::Normal, "Normals", "NormalsW", "NormalsIndex", "NormalsIndex", 3},
    {"LayerElementBinormal", FbxLayerElementKind::Binormal, "Binormals", "BinormalsW", "BinormalsIndex",
     "BinormalsIndex", 3},
    {"LayerElementTangent", FbxLayerElementKind::Tangent, "Tangents", "TangentsW", "TangentsIndex", "TangentsIndex",
     3},
    {"LayerElementUV", FbxLayerElementKind::UV, "UV", nullptr, "UVIndex", "UVIndex", 2},
    {"LayerElementColor", FbxLayerElementKind::Color, "Colors", nullptr, "ColorIndex", "VertexColorsIndex", 4},
    {"LayerElementMaterial", FbxLayerElementKind::Material, "Materials", nullptr, nullptr, "Materials", 0},
    {"LayerElementSmoothing", FbxLayerElementKind::Smoothing, "Smoothing", nullptr, nullptr, "Smoothing", 0},
    {"LayerElementPolygonGroup", FbxLayerElementKind::PolygonGroup, "PolygonGroup", nullptr, nullptr, "PolygonGroup",
     0},
    {"LayerElementVisibility", FbxLayerElementKind::Visibility, "Visibility", nullptr, nullptr, "Visibility", 0},
    {"LayerElementEdgeCrease", FbxLayerElementKind::EdgeCrease, "EdgeCrease", nullptr, nullptr, "EdgeCrease", 1},
    {"LayerElementVertexCrease", FbxLayerElementKind::VertexCrease, "VertexCrease", nullptr, nullptr, "VertexCrease",
     1},
    {"LayerElementHole", FbxLayerElementKind::Hole, "Hole", nullptr, nullptr, "Hole", 0},
    {"LayerElementUserData", FbxLayerElementKind::UserData, nullptr, nullptr, nullptr, "UserData", 0},
    {"LayerElementTexture", FbxLayerElementKind::Texture, nullptr, nullptr, "TextureId", "Texture", 0},
};

const LayerElementName* LayerElementOf(FbxLayerElementKind kind) {
    for (const LayerElementName& e : kLayerElements)
        if (e.kind == kind) return &e;
    return nullptr;
}

FbxMappingMode MappingOf(const std::string& text) {
    if (text == "ByVertice" || text == "ByVertex" || text == "ByControlPoint") return FbxMappingMode::ByControlPoint;
    if (text == "ByPolygonVertex") return FbxMappingMode::ByPolygonVertex;
    if (text == "ByPolygon") return FbxMappingMode::ByPolygon;
    if (text == "ByEdge") return FbxMappingMode::ByEdge;
    if (text == "AllSame") return FbxMappingMode::AllSame;
    return FbxMappingMode::None;
}

FbxReferenceMode ReferenceOf(const std::string& text) {
    if (text == "IndexToDirect") return FbxReferenceMode::IndexToDirect;
    if (text == "Index") return FbxReferenceMode::Index;
    return FbxReferenceMode::Direct;
}

}  // namespace

void FbxReader::ReadProperties(FbxObject& object) { FbxReadProperties70(stream_, object); }

void FbxReader::BadArrayValue(const char* prefix, const char* arrayName) {
    status_.SetCode(kFbxInvalidFile, std::string(prefix) + " Bad value in array (" + arrayName +
                                         ") would cause an out of bounds access");
}

FbxObject* FbxReader::Create(const FbxClassId& classId, const std::string& name, int64_t id, bool addToDocument) {
    // The nearest class with a template gives the starting values, so that a curve
    // (made as a KF curve) takes the template of FbxAnimCurve. The first object of a
    // class takes the template property by property; the others share the result.
    const FbxObject* templ = nullptr;
    for (const FbxClassId* c = &classId; c && !templ; c = c->GetParent()) {
        auto it = templates_.find(c);
        if (it != templates_.end()) templ = it->second;
    }
    FbxObject* object = nullptr;
    if (!templ) {
        object = manager_->CreateObject(classId, name.c_str());
    } else {
        auto shared = templated_.find(&classId);
        if (shared != templated_.end()) {
            object = manager_->CreateObject(classId, name.c_str(), shared->second);
        } else {
            object = manager_->CreateObject(classId, name.c_str());
            if (object) {
                FbxApplyTemplate(*object, *templ);
                templated_.emplace(&classId, manager_->AdoptPrototype(object->RootProperty.GetTable()->MakePrototype()));
            }
        }
    }
    if (!object) return nullptr;
    if (addToDocument) {
        document_->ConnectSrcObject(object);
        object->SetDocument(document_);
    }
    objectsById_.emplace(id, object);
    idsByObject_.emplace(object, id);
    return object;
}

FbxObject* FbxReader::ReadObject(const std::string& recordName, int64_t id, const std::string& name,
                                 const std::string& subType) {
    const std::string& r = recordName;
    if (r == "PluginParameters" || r == "SceneInfo") return nullptr;
    if (r == "GlobalSettings") {
        if (scene_ && options_.globalSettings) ReadProperties(scene_->GetGlobalSettings());
        return nullptr;
    }
    if (r == "Model") {
        FbxNode* node = static_cast<FbxNode*>(Create(FbxNode::ClassId, name, id));
        ReadProperties(*node);
        ReadModel(*node);
        objectsByName_.emplace(node->GetName(), node);
        return node;
    }
    if (r == "NodeAttribute") return ReadNodeAttribute(name, id, subType);
    if (r == "Geometry") return ReadGeometry(name, id, subType);
    if (r == "Material") return options_.material ? ReadMaterial(name, id) : nullptr;
    if (r == "Deformer") return ReadDeformer(name, id, subType);
    if (r == "Pose") return ReadPose(name, id, subType);
    if (r == "Texture" || r == "LayeredTexture" || r == "ProceduralTexture") {
        if (!options_.texture) return nullptr;
        const FbxClassId& c = r == "Texture" ? FbxFileTexture::ClassId
                              : r == "LayeredTexture" ? FbxLayeredTexture::ClassId
                                                      : FbxProceduralTexture::ClassId;
        FbxObject* object = Create(c, name, id);
        ReadProperties(*object);
        if (r == "Texture") {
            FbxFileTexture& t = *static_cast<FbxFileTexture*>(object);
            t.textureName = stream_.ReadString("TextureName", "");
            t.media = stream_.ReadString("Media", "");
            t.fileName = stream_.ReadString("FileName", "");
            t.relativeFileName = stream_.ReadString("RelativeFilename", "");
        }
        return object;
    }
    if (r == "Video") {
        FbxVideo* video = static_cast<FbxVideo*>(Create(FbxVideo::ClassId, name, id));
        ReadProperties(*video);
        video->type = stream_.ReadString("Type", "");
        video->fileName = stream_.ReadString("Filename", "");
        video->relativeFileName = stream_.ReadString("RelativeFilename", "");
        if (stream_.BeginField("Content")) {
            size_t length = 0;
            const uint8_t* data = stream_.ReadBlob(length);
            if (data && length) video->content.assign(data, data + length);
            stream_.EndField();
        }
        return video;
    }
    if (r == "AnimationStack") {
        if (!options_.animation && !options_.audio) return nullptr;
        FbxObject* stack = Create(FbxAnimStack::ClassId, name, id);
        ReadProperties(*stack);
        return stack;
    }
    if (r == "AnimationLayer" || r == "AnimationCurveNode") {
        if (!options_.animation) return nullptr;
        FbxObject* object = Create(r == "AnimationLayer" ? FbxAnimLayer::ClassId : FbxAnimCurveNode::ClassId, name, id);
        ReadProperties(*object);
        return object;
    }
    if (r == "AnimationCurve") {
        if (!options_.animation) return nullptr;
        FbxAnimCurve* curve = static_cast<FbxAnimCurve*>(Create(FbxAnimCurveKFCurve::ClassId, name, id));
        ReadProperties(*curve);
        ReadAnimCurveKeys(stream_, *curve, status_);
        return curve;
    }
    if ((r == "Audio" || r == "AudioLayer") && !options_.audio) return nullptr;
    if (r == "Constraint" && !options_.constraint) return nullptr;

    // Any other record: the class the registry knows for it, else a plain object.
    const FbxClassId* c = manager_->FindClass(r.c_str(), subType.c_str());
    if (!c) c = manager_->FindClass(r.c_str(), "");
    if (!c || c->Is(FbxDocument::ClassId) || c->Is(FbxGlobalSettings::ClassId)) c = &FbxObject::ClassId;
    FbxObject* object = Create(*c, name, id);
    ReadProperties(*object);
    return object;
}

void FbxReader::ReadModel(FbxNode& node) {
    if (stream_.BeginField("Shading")) {
        char shading = stream_.ValueCode() == 'C' ? stream_.ReadChar() : 0;
        switch (shading) {
        case 'W': node.shadingMode = FbxNode::eWireFrame; break;
        case 'F': node.shadingMode = FbxNode::eFlatShading; break;
        case 'U': node.shadingMode = FbxNode::eLightShading; break;
        case 'T': node.shadingMode = FbxNode::eTextureShading; break;
        case 'Y': node.shadingMode = FbxNode::eFullShading; break;
        default: break;
        }
        stream_.EndField();
    }
    std::string culling = stream_.ReadString("Culling", "CullingOff");
    if (culling == "CullingOnCCW") node.cullingType = FbxNode::eCullingOnCCW;
    if (culling == "CullingOnCW") node.cullingType = FbxNode::eCullingOnCW;
}

FbxObject* FbxReader::ReadNodeAttribute(const std::string& name, int64_t id, const std::string& subType) {
    struct Row {
        const char* subType;
        const FbxClassId* classId;
        int skeleton;  // skeleton type, -1 for none
    };
    static const Row kRows[] = {
        {"Null", &FbxNull::ClassId, -1},
        {"Camera", &FbxCamera::ClassId, -1},
        {"CameraStereo", &FbxCameraStereo::ClassId, -1},
        {"CameraSwitcher", &FbxCameraSwitcher::ClassId, -1},
        {"Light", &FbxLight::ClassId, -1},
        {"LodGroup", &FbxLODGroup::ClassId, -1},
        {"Marker", &FbxMarker::ClassId, -1},
        {"FKEffector", &FbxMarker::ClassId, -1},
        {"IKEffector", &FbxMarker::ClassId, -1},
        {"Root", &FbxSkeleton::ClassId, FbxSkeleton::eRoot},
        {"Limb", &FbxSkeleton::ClassId, FbxSkeleton::eLimb},
        {"LimbNode", &FbxSkeleton::ClassId, FbxSkeleton::eLimbNode},
        {"Effector", &FbxSkeleton::ClassId, FbxSkeleton::eEffector},
    };
    const Row* row = nullptr;
    for (const Row& candidate : kRows)
        if (subType == candidate.subType) row = &candidate;
    FbxObject* object = Create(row ? *row->classId : FbxNodeAttribute::ClassId, name, id);
    if (row && row->skeleton >= 0)
        static_cast<FbxSkeleton*>(object)->SetSkeletonType(static_cast<FbxSkeleton::EType>(row->skeleton));
    ReadProperties(*object);
    return object;
}

FbxObject* FbxReader::ReadGeometry(const std::string& name, int64_t id, const std::string& subType) {
    struct Row {
        const char* subType;
        const FbxClassId* classId;
    };
    static const Row kRows[] = {
        {"Mesh", &FbxMesh::ClassId},           {"Nurb", &FbxNurbs::ClassId},
        {"NurbsSurface", &FbxNurbsSurface::ClassId}, {"Patch", &FbxPatch::ClassId},
        {"NurbsCurve", &FbxNurbsCurve::ClassId}, {"TrimNurbsSurface", &FbxTrimNurbsSurface::ClassId},
        {"Boundary", &FbxBoundary::ClassId},   {"Line", &FbxLine::ClassId},
        {"Shape", &FbxShape::ClassId},
    };
    const FbxClassId* c = &FbxObject::ClassId;  // an unknown sub type makes a plain object
    for (const Row& row : kRows)
        if (subType == row.subType) c = row.classId;
    if (c == &FbxShape::ClassId && !options_.shape) return nullptr;
    FbxObject* object = Create(*c, name, id);
    if (c == &FbxShape::ClassId) {
        FbxShape& shape = *static_cast<FbxShape*>(object);
        shape.version = stream_.ReadInt("Version", 100);
        ReadProperties(shape);
        ReadInts(stream_, "Indexes", shape.indexes);
        ReadDoubles(stream_, "Vertices", shape.controlPoints);
        ReadDoubles(stream_, "Normals", shape.normals);
        bool bad = shape.controlPoints.size() != shape.indexes.size() * 3 ||
                   std::any_of(shape.indexes.begin(), shape.indexes.end(), [](int32_t i) { return i < 0; });
        if (bad) {
            // The targets cannot be matched to points: the shape keeps no geometry.
            status_.SetCode(kFbxInvalidParameter, "Invalid parameter while reading shape indices");
            shape.indexes.clear();
            shape.controlPoints.clear();
            shape.normals.clear();
        }
        return object;
    }
    ReadProperties(*object);
    if (c == &FbxMesh::ClassId) ReadMesh(*static_cast<FbxMesh*>(object));
    return object;
}

void FbxReader::ReadMesh(FbxMesh& mesh) {
    mesh.geometryVersion = stream_.ReadInt("GeometryVersion", 0);
    ReadDoubles(stream_, "Vertices", mesh.controlPoints);
    ReadInts(stream_, "PolygonVertexIndex", mesh.polygonVertexIndex);
    ReadInts(stream_, "Edges", mesh.edges);
    int64_t points = static_cast<int64_t>(mesh.controlPoints.size() / 3);
    for (int32_t index : mesh.polygonVertexIndex) {
        int64_t point = index < 0 ? -static_cast<int64_t>(index) - 1 : index;
        if (point >= points) {
            BadArrayValue("[Mesh]", "PolygonVertexIndex");
            break;
        }
    }
    int64_t polygonVertices = static_cast<int64_t>(mesh.polygonVertexIndex.size());
    for (int32_t edge : mesh.edges) {
        if (edge < 0 || edge >= polygonVertices) {
            BadArrayValue("[Mesh]", "Edges");
            break;
        }
    }
    ReadLayerElements(mesh);
    ReadLayers(mesh);
}

void FbxReader::ReadLayerElements(FbxMesh& mesh) {
    const bool enabled[] = {options_.layerNormal, options_.layerBinormal, options_.layerTangent, true,
                            options_.layerVertexColor, true, options_.layerSmoothing, options_.layerPolygroup,
                            options_.layerVisibility, options_.layerEdgeCrease, options_.layerVertexCrease,
                            options_.layerHole, options_.layerUserData, true};
    static_assert(sizeof(enabled) / sizeof(enabled[0]) == sizeof(kLayerElements) / sizeof(kLayerElements[0]));
    size_t points = mesh.controlPoints.size() / 3;
    size_t polygonVertices = mesh.polygonVertexIndex.size();
    for (size_t k = 0; k < sizeof(kLayerElements) / sizeof(kLayerElements[0]); ++k) {
        if (!enabled[k]) continue;
        const LayerElementName& e = kLayerElements[k];
        int count = stream_.FieldCount(e.record);
        for (int i = 0; i < count; ++i) {
            if (!stream_.BeginField(e.record, i)) continue;
            FbxLayerElement element;
            element.kind = e.kind;
            element.layerIndex = stream_.ReadInt();
            if (stream_.HasBlock() && stream_.BeginBlock()) {
                ReadLayerElement(element, points, polygonVertices);
                stream_.EndBlock();
                mesh.layerElements.push_back(std::move(element));
            }
            stream_.EndField();
        }
    }
}

void FbxReader::ReadLayerElement(FbxLayerElement& element, size_t /*controlPoints*/, size_t /*polygonVertices*/) {
    const LayerElementName& e = *LayerElementOf(element.kind);
    element.version = stream_.ReadInt("Version", 0);
    element.name = stream_.ReadString("Name", "");
    element.mapping = MappingOf(stream_.ReadString("MappingInformationType", ""));
    element.reference = ReferenceOf(stream_.ReadString("ReferenceInformationType", ""));
    if (e.direct) {
        if (e.components > 0)
            ReadDoubles(stream_, e.direct, element.directDoubles);
        else
            ReadInts(stream_, e.direct, element.directInts);
    }
    if (e.directW) ReadDoubles(stream_, e.directW, element.directW);
    if (e.index) ReadInts(stream_, e.index, element.indices);
    // Indices into the direct array must stay inside it.
    if (e.index && e.components > 0 && element.reference == FbxReferenceMode::IndexToDirect) {
        int64_t entries = static_cast<int64_t>(element.directDoubles.size() / static_cast<size_t>(e.components));
        for (int32_t index : element.indices) {
            if (index >= entries) {
                BadArrayValue("[LayerElement]", e.indexName);
                break;
            }
        }
    }
}

void FbxReader::ReadLayers(FbxMesh& mesh) {
    int count = stream_.FieldCount("Layer");
    for (int i = 0; i < count; ++i) {
        if (!stream_.BeginField("Layer", i)) continue;
        FbxLayer layer;
        layer.index = stream_.ReadInt();
        if (stream_.HasBlock() && stream_.BeginBlock()) {
            int entries = stream_.FieldCount("LayerElement");
            for (int j = 0; j < entries; ++j) {
                if (!stream_.BeginField("LayerElement", j)) continue;
                if (stream_.HasBlock() && stream_.BeginBlock()) {
                    std::string type = stream_.ReadString("Type", "");
                    int32_t typedIndex = stream_.ReadInt("TypedIndex", 0);
                    for (const LayerElementName& e : kLayerElements) {
                        if (type == e.record) {
                            layer.entries.push_back({e.kind, typedIndex});
                            break;
                        }
                    }
                    stream_.EndBlock();
                }
                stream_.EndField();
            }
            stream_.EndBlock();
        }
        stream_.EndField();
        mesh.layers.push_back(std::move(layer));
    }
}

FbxObject* FbxReader::ReadDeformer(const std::string& name, int64_t id, const std::string& subType) {
    if (subType == "Skin") {
        FbxSkin* skin = static_cast<FbxSkin*>(Create(FbxSkin::ClassId, name, id));
        ReadProperties(*skin);
        skin->deformAccuracy = stream_.ReadDouble("Link_DeformAcuracy", 50.0);
        skin->skinningType = stream_.ReadString("SkinningType", "Linear");
        return skin;
    }
    if (subType == "Cluster") {
        if (!options_.link) return nullptr;
        FbxCluster* cluster = static_cast<FbxCluster*>(Create(FbxCluster::ClassId, name, id));
        ReadProperties(*cluster);
        cluster->mode = stream_.ReadString("Mode", "");
        ReadInts(stream_, "Indexes", cluster->indexes);
        ReadDoubles(stream_, "Weights", cluster->weights);
        // Weights pair with indices; what has no partner is dropped.
        size_t n = std::min(cluster->indexes.size(), cluster->weights.size());
        cluster->indexes.resize(n);
        cluster->weights.resize(n);
        ReadMatrix(stream_, "Transform", cluster->transform);
        ReadMatrix(stream_, "TransformLink", cluster->transformLink);
        cluster->hasTransformAssociateModel =
            ReadMatrix(stream_, "TransformAssociateModel", cluster->transformAssociateModel);
        return cluster;
    }
    if (subType == "BlendShape") {
        if (!options_.shape) return nullptr;
        FbxObject* blendShape = Create(FbxBlendShape::ClassId, name, id);
        ReadProperties(*blendShape);
        return blendShape;
    }
    if (subType == "BlendShapeChannel") {
        if (!options_.shape) return nullptr;
        FbxBlendShapeChannel* channel =
            static_cast<FbxBlendShapeChannel*>(Create(FbxBlendShapeChannel::ClassId, name, id, false));
        channel->version = stream_.ReadInt("Version", 100);
        ReadProperties(*channel);
        bool ok = true;
        if (stream_.BeginField("FullWeights")) {
            if (stream_.ValueCode() != 'd') {
                ok = false;
            } else {
                size_t count = 0;
                const double* data = stream_.ReadArrayOfDouble(count);
                if (data) channel->fullWeights.assign(data, data + count);
            }
            stream_.EndField();
        }
        // A channel whose weights cannot be read stays reachable by its id only.
        if (ok) {
            document_->ConnectSrcObject(channel);
            channel->SetDocument(document_);
        }
        return channel;
    }
    const FbxClassId& c = subType == "VertexCacheDeformer" ? FbxVertexCacheDeformer::ClassId : FbxDeformer::ClassId;
    FbxObject* deformer = Create(c, name, id);
    ReadProperties(*deformer);
    return deformer;
}

FbxObject* FbxReader::ReadPose(const std::string& name, int64_t id, const std::string& subType) {
    FbxPose* pose = static_cast<FbxPose*>(Create(FbxPose::ClassId, name, id));
    ReadProperties(*pose);
    pose->type = stream_.ReadString("Type", subType);
    int count = stream_.FieldCount("PoseNode");
    for (int i = 0; i < count; ++i) {
        if (!stream_.BeginField("PoseNode", i)) continue;
        if (stream_.HasBlock() && stream_.BeginBlock()) {
            FbxPose::Entry entry;
            entry.nodeId = stream_.ReadLong("Node", 0);
            ReadMatrix(stream_, "Matrix", entry.matrix);
            entry.local = stream_.ReadInt("Local", 0) != 0;
            pose->entries.push_back(entry);
            stream_.EndBlock();
        }
        stream_.EndField();
    }
    poses_.push_back(pose);
    return pose;
}

void FbxReader::ResolvePoses() {
    for (FbxObject* o : poses_) {
        FbxPose& pose = *static_cast<FbxPose*>(o);
        for (FbxPose::Entry& entry : pose.entries) {
            FbxObject* node = Resolve(entry.nodeId);
            entry.node = node && node->Is<FbxNode>() ? static_cast<FbxNode*>(node) : nullptr;
        }
    }
}

FbxObject* FbxReader::ReadMaterial(const std::string& name, int64_t id) {
    std::string model = stream_.ReadString("ShadingModel", "");
    const FbxClassId& c = EqualsNoCase(model, "phong")     ? FbxSurfacePhong::ClassId
                          : EqualsNoCase(model, "lambert") ? FbxSurfaceLambert::ClassId
                                                           : FbxSurfaceMaterial::ClassId;
    FbxSurfaceMaterial* material = static_cast<FbxSurfaceMaterial*>(Create(c, name, id));
    if (!model.empty()) material->ShadingModel.Set(model);
    material->MultiLayer.Set(stream_.ReadInt("MultiLayer", 0) != 0);
    ReadProperties(*material);
    return material;
}
