#include "fbx/fbx_reader.h"

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <fstream>

#include "fbx/fbx_anim.h"
#include "fbx/fbx_anim_curve_read.h"
#include "fbx/fbx_document.h"
#include "fbx/fbx_manager.h"
#include "fbx/fbx_material.h"
#include "fbx/fbx_node.h"
#include "fbx/fbx_properties70.h"

namespace {

std::string Corrupted(const std::string& fileName) { return "File is corrupted: '" + fileName + "'"; }

const char* const kProducerCameras[] = {
    "Producer Perspective", "Producer Top",  "Producer Bottom", "Producer Front",
    "Producer Back",        "Producer Right", "Producer Left",  "Camera Switcher",
};

}  // namespace

// ---- options ----

FbxReaderOptions FbxReaderOptions::FromSettings(const FbxIOSettings* settings) {
    FbxReaderOptions o;
    if (!settings) return o;
    const std::string base = "Import|AdvOptGrp|FileFormat|Fbx|";
    auto flag = [&](const char* name, bool defaultValue) {
        return settings->GetBoolProp((base + name).c_str(), defaultValue);
    };
    o.material = flag("Material", true);
    o.texture = flag("Texture", true);
    o.link = flag("Link", true);
    o.shape = flag("Shape", true);
    o.gobo = flag("Gobo", true);
    o.animation = flag("Animation", true);
    o.audio = flag("Audio", true);
    o.globalSettings = flag("Global_Settings", true);
    o.constraint = flag("Constraint", true);
    o.extractEmbeddedData = flag("ExtractEmbeddedData", true);
    o.layerNormal = flag("LayerElementNormal", true);
    o.layerBinormal = flag("LayerElementBinormal", true);
    o.layerTangent = flag("LayerElementTangent", true);
    o.layerVertexColor = flag("LayerElementVertexColor", true);
    o.layerPolygroup = flag("LayerElementPolygroup", true);
    o.layerSmoothing = flag("LayerElementSmoothing", true);
    o.layerUserData = flag("LayerElementUserData", true);
    o.layerVisibility = flag("LayerElementVisibility", true);
    o.layerEdgeCrease = flag("LayerElementEdgeCrease", true);
    o.layerVertexCrease = flag("LayerElementVertexCrease", true);
    o.layerHole = flag("LayerElementHole", true);
    o.calculateLegacyShapeNormal = flag("CalculateLegacyShapeNormal", true);
    o.relaxedFbxCheck = flag("RelaxedFbxCheck", false);
    o.keepProducerCamSrcObj = flag("KeepProducerCamSrcObj", false);
    o.passwordEnable = flag("Password_Enable", false);
    o.password = settings->GetStringProp((base + "Password").c_str(), "");
    o.currentTakeName = settings->GetStringProp((base + "Current_Take_Name").c_str(), "");
    o.cacheSize = settings->GetIntProp("Import|AdvOptGrp|Cache|CacheSize", 8);
    o.extractFolder = settings->GetStringProp("Import|IncludeGrp|EmbedTexture|ExtractFolder", "");
    return o;
}

// ---- the import ----

FbxReader::FbxReader(FbxFieldStream& stream, FbxStatus& status, const std::string& fileName,
                     FbxImporter::ProgressCallback progress, void* progressArgs)
    : stream_(stream), status_(status), fileName_(fileName), progress_(progress), progressArgs_(progressArgs) {}

FbxReader::~FbxReader() {
    for (auto& entry : templates_) entry.second->Destroy();
}

bool FbxReader::Read(FbxDocument& document, const FbxReaderOptions& options) {
    options_ = options;
    document_ = &document;
    scene_ = document.Is<FbxScene>() ? static_cast<FbxScene*>(&document) : nullptr;
    manager_ = document.GetFbxManager();

    document.Clear();
    if (options_.globalSettings) ReadGlobalSettings();
    if (!ReadDocuments()) {
        status_.SetCode(kFbxInvalidFile, Corrupted(fileName_));
        return false;
    }
    if (!ReadReferences()) {
        status_.SetCode(kFbxFailure, "Unresolved external references");
        return false;
    }
    ReadDefinitions();

    // Progress runs over the object records and the connections. The objects are counted
    // once their block is open for reading, so that their record headers are walked once.
    if (stream_.BeginField("Connections")) {
        if (stream_.HasBlock() && stream_.BeginBlock()) {
            progressTotal_ += static_cast<uint64_t>(stream_.FieldCount("C"));
            stream_.EndBlock();
        }
        stream_.EndField();
        stream_.ResetCursors();
    }

    ReadObjects();
    ReadConnections();
    if (options_.animation) {
        if (scene_) ReadTakes();
        BindCurveNodes();
    }
    // Cycles in the node tree would send every later walk round forever, so they are
    // cut whatever the options say.
    BreakNodeCycles();
    if (!options_.relaxedFbxCheck) CheckScene();
    if (scene_) PostProcessScene();
    if (options_.extractEmbeddedData) ExtractEmbeddedMedia();
    if (progress_) progress_(progressArgs_, 100.0f, "");

    if (status_.GetCode() == kFbxInvalidFile && !options_.relaxedFbxCheck) return false;
    return true;
}

bool FbxReader::Progress(const char* what) {
    ++progressDone_;
    if (!progress_ || progressTotal_ == 0) return true;
    int percent = static_cast<int>(100 * std::min(progressDone_, progressTotal_) / progressTotal_);
    if (percent == progressLast_) return true;
    progressLast_ = percent;
    return progress_(progressArgs_, static_cast<float>(percent), what);
}

// ---- sections ----

void FbxReader::ReadGlobalSettings() {
    if (!scene_ || !stream_.BeginField("GlobalSettings")) return;
    if (stream_.HasBlock() && stream_.BeginBlock()) {
        FbxReadProperties70(stream_, scene_->GetGlobalSettings());
        stream_.EndBlock();
    }
    stream_.EndField();
}

bool FbxReader::ReadDocuments() {
    if (!stream_.BeginField("Documents")) return true;
    bool ok = true;
    if (stream_.HasBlock() && stream_.BeginBlock()) {
        int count = stream_.ReadInt("Count", 0);
        if (count < 1) ok = false;
        int records = ok ? stream_.FieldCount("Document") : 0;
        for (int i = 0; i < records && ok; ++i) {
            if (!stream_.BeginField("Document", i)) break;
            int64_t id = stream_.ReadLong();
            std::string name = stream_.ReadString();
            std::string className = stream_.ReadString();
            bool block = stream_.HasBlock() && stream_.BeginBlock();
            int64_t rootId = block ? stream_.ReadLong("RootNode", -1) : -1;
            FbxDocument* doc = nullptr;
            if (i == 0) {
                doc = document_;
                if (!name.empty()) doc->SetName(name.c_str());
            } else {
                const FbxClassId* c = manager_->FindClass(className.c_str(), "");
                if (c && !c->Is(FbxDocument::ClassId)) {
                    ok = false;
                } else {
                    const FbxClassId& docClass = rootId != -1 ? FbxScene::ClassId : FbxDocument::ClassId;
                    doc = static_cast<FbxDocument*>(manager_->CreateObject(docClass, name.c_str()));
                }
            }
            if (doc) {
                objectsById_.emplace(id, doc);
                idsByObject_.emplace(doc, id);
                if (rootId != -1) {
                    FbxObject* root = nullptr;
                    if (doc->Is<FbxScene>())
                        root = static_cast<FbxScene*>(doc)->GetRootNode();
                    else
                        root = FbxObject::Create(doc, "RootNode");
                    objectsById_.emplace(rootId, root);
                    idsByObject_.emplace(root, rootId);
                }
                if (block) FbxReadProperties70(stream_, *doc);
            }
            if (block) stream_.EndBlock();
            stream_.EndField();
        }
        stream_.EndBlock();
    } else {
        ok = false;
    }
    stream_.EndField();
    return ok;
}

bool FbxReader::ReadReferences() {
    // "Internal" references name objects of this file; no external document is ever
    // at hand, so any other reference stays unresolved.
    if (!stream_.BeginField("References")) return true;
    bool resolved = true;
    if (stream_.HasBlock() && stream_.BeginBlock()) {
        int count = stream_.FieldCount("Reference");
        for (int i = 0; i < count && resolved; ++i) {
            if (!stream_.BeginField("Reference", i)) continue;
            stream_.ReadString();
            if (stream_.ReadString() != "Internal") resolved = false;
            stream_.EndField();
        }
        stream_.EndBlock();
    }
    stream_.EndField();
    return resolved;
}

void FbxReader::ReadDefinitions() {
    if (!stream_.BeginField("Definitions")) return;
    if (stream_.HasBlock() && stream_.BeginBlock()) {
        stream_.ReadInt("Version", 0);
        int types = stream_.FieldCount("ObjectType");
        for (int i = 0; i < types; ++i) {
            if (!stream_.BeginField("ObjectType", i)) continue;
            std::string typeName = stream_.ReadString();
            if (typeName == "Character") typeName = "Constraint";
            bool known = std::find(objectTypes_.begin(), objectTypes_.end(), typeName) != objectTypes_.end();
            if (!known && !typeName.empty()) objectTypes_.push_back(typeName);
            if (!known && stream_.HasBlock() && stream_.BeginBlock()) {
                int templates = stream_.FieldCount("PropertyTemplate");
                for (int j = 0; j < templates; ++j) {
                    if (!stream_.BeginField("PropertyTemplate", j)) continue;
                    std::string className = stream_.ReadString();
                    const FbxClassId* classId = manager_->FindClass(className.c_str());
                    if (classId && !classId->Is(FbxDocument::ClassId)) {
                        std::string name = className + "_TemplateObject";
                        FbxObject* templ = manager_->CreateObject(*classId, name.c_str());
                        if (stream_.HasBlock() && stream_.BeginBlock()) {
                            FbxReadProperties70(stream_, *templ);
                            stream_.EndBlock();
                        }
                        if (!templates_.emplace(classId, templ).second) templ->Destroy();
                    }
                    stream_.EndField();
                }
                stream_.EndBlock();
            }
            stream_.EndField();
        }
        stream_.EndBlock();
    }
    stream_.EndField();
}

void FbxReader::ReadObjects() {
    if (!stream_.BeginField("Objects")) return;
    if (!stream_.HasBlock() || !stream_.BeginBlock()) {
        stream_.EndField();
        return;
    }
    for (int k = 0; k < stream_.FieldNameCount(); ++k)
        progressTotal_ += static_cast<uint64_t>(stream_.FieldCount(stream_.FieldName(k)));
    // Media and materials first, then nodes and their attributes at the very front.
    for (const char* first : {"Video", "Texture", "ProceduralTexture", "Material", "Model", "NodeAttribute"}) {
        auto it = std::find(objectTypes_.begin(), objectTypes_.end(), first);
        if (it != objectTypes_.end()) std::rotate(objectTypes_.begin(), it, it + 1);
    }
    for (int k = 0; k < stream_.FieldNameCount(); ++k) {
        std::string name = stream_.FieldName(k);
        if (std::find(objectTypes_.begin(), objectTypes_.end(), name) == objectTypes_.end())
            objectTypes_.push_back(name);
    }

    bool stop = false;
    for (const std::string& recordName : objectTypes_) {
        int count = stream_.FieldCount(recordName);
        for (int i = 0; i < count && !stop; ++i) {
            if (!stream_.BeginField(recordName, i)) continue;
            int64_t id = stream_.ReadLong();
            std::string name = stream_.ReadString();
            std::string subType = stream_.ReadString();
            if (stream_.ValuesLeft() > 0 && stream_.ValueCode() == 'S') {
                // "ReferenceTo" and a name: an instance of an object of another document,
                // which is never at hand; the object is read as a plain one.
                std::string next = stream_.ReadString();
                if (next == "ReferenceTo" && stream_.ValuesLeft() > 0) stream_.ReadString();
            }
            bool block = stream_.HasBlock();
            if (block && !stream_.BeginBlock()) {
                // The object is dropped; what was read so far stays.
                stream_.EndField();
                status_.SetCode(kFbxInvalidFile, Corrupted(fileName_));
                corrupted_ = true;
                stop = true;
                break;
            }
            if (!objectsById_.count(id)) ReadObject(recordName, id, name, subType);
            if (block) stream_.EndBlock();
            stream_.EndField();
            if (!Progress("Objects")) stop = true;
        }
        if (stop) break;
    }
    stream_.EndBlock();
    stream_.EndField();
    ResolvePoses();
}

FbxObject* FbxReader::Resolve(int64_t id) const {
    if (id == 0 && scene_) return scene_->GetRootNode();
    auto it = objectsById_.find(id);
    return it == objectsById_.end() ? nullptr : it->second;
}

void FbxReader::ReadConnections() {
    if (!stream_.BeginField("Connections")) return;
    if (!stream_.HasBlock() || !stream_.BeginBlock()) {
        stream_.EndField();
        return;
    }
    int count = stream_.FieldCount("C");
    for (int i = 0; i < count; ++i) {
        if (!stream_.BeginField("C", i)) continue;
        Progress("Connections");
        std::string type = stream_.ReadString();
        if (type.size() > 31) type.resize(31);
        FbxProperty source, destination;
        FbxObject* srcObject = nullptr;
        FbxObject* dstObject = nullptr;
        auto property = [](FbxObject* object, const std::string& name) {
            return object ? object->RootProperty.Find(name.c_str(), "|", true) : FbxProperty();
        };
        if (type == "OO" || type == "OD") {
            srcObject = Resolve(stream_.ReadLong());
            dstObject = Resolve(stream_.ReadLong());
            if (srcObject) source = srcObject->RootProperty;
            if (dstObject) destination = dstObject->RootProperty;
        } else if (type == "PO") {
            srcObject = Resolve(stream_.ReadLong());
            source = property(srcObject, stream_.ReadString());
            dstObject = Resolve(stream_.ReadLong());
            if (dstObject) destination = dstObject->RootProperty;
        } else if (type == "OP") {
            srcObject = Resolve(stream_.ReadLong());
            dstObject = Resolve(stream_.ReadLong());
            if (srcObject) source = srcObject->RootProperty;
            destination = property(dstObject, stream_.ReadString());
        } else if (type == "PP") {
            srcObject = Resolve(stream_.ReadLong());
            source = property(srcObject, stream_.ReadString());
            dstObject = Resolve(stream_.ReadLong());
            destination = property(dstObject, stream_.ReadString());
        } else if (type == "EP") {
            srcObject = document_;
            source = document_->RootProperty;
            dstObject = Resolve(stream_.ReadLong());
            destination = property(dstObject, stream_.ReadString());
        }
        stream_.EndField();
        if (!source.IsValid() || !destination.IsValid()) continue;
        // An object made its own source or destination has no meaning and would make
        // every walk over the graph circle.
        if (srcObject == dstObject) continue;

        if (!source.IsRoot() && !destination.IsRoot()) {
            if (!destination.IsConnectedSrcProperty(source)) destination.ConnectSrcProperty(source);
        } else if (!source.IsRoot()) {
            destination.ConnectSrcProperty(source);
        } else if (!destination.IsRoot()) {
            if (!destination.IsConnectedSrcObject(srcObject)) destination.ConnectSrcObject(srcObject);
        } else {
            // A texture may stand twice in a layered texture, a material twice on a node.
            bool again = (srcObject->Is<FbxTexture>() && dstObject->Is<FbxLayeredTexture>()) ||
                         (srcObject->Is<FbxSurfaceMaterial>() && dstObject->Is<FbxNode>());
            if (again || !dstObject->IsConnectedSrcObject(srcObject)) dstObject->ConnectSrcObject(srcObject);
        }
    }
    stream_.EndBlock();
    stream_.EndField();
}

void FbxReader::ReadTakes() {
    if (!stream_.BeginField("Takes")) return;
    if (stream_.HasBlock() && stream_.BeginBlock()) {
        std::unordered_map<std::string, FbxAnimStack*> stacks;
        for (const FbxProperty& s : document_->RootProperty.Sources()) {
            FbxObject* o = s.GetFbxObject();
            if (s.IsRoot() && o && o->Is<FbxAnimStack>()) stacks.emplace(o->GetName(), static_cast<FbxAnimStack*>(o));
        }
        int count = stream_.FieldCount("Take");
        for (int i = 0; i < count; ++i) {
            if (!stream_.BeginField("Take", i)) continue;
            std::string name = stream_.ReadString();
            auto it = stacks.find(name);
            if (it != stacks.end() && stream_.HasBlock() && stream_.BeginBlock()) {
                FbxAnimStack& stack = *it->second;
                auto span = [&](const char* field, FbxProperty& start, FbxProperty& stop) {
                    if (!stream_.BeginField(field)) return;
                    if (stream_.ValuesLeft() >= 2) {
                        int64_t a = ConvertFileTime(stream_, stream_.ReadLong());
                        int64_t b = ConvertFileTime(stream_, stream_.ReadLong());
                        start.Set(&a, eFbxTime);
                        stop.Set(&b, eFbxTime);
                    }
                    stream_.EndField();
                };
                span("LocalTime", stack.LocalStart, stack.LocalStop);
                span("ReferenceTime", stack.ReferenceStart, stack.ReferenceStop);
                stream_.EndBlock();
            }
            stream_.EndField();
        }
        stream_.EndBlock();
    }
    stream_.EndField();
}

void FbxReader::BindCurveNodes() {
    for (const auto& entry : objectsById_) {
        FbxObject* o = entry.second;
        if (!o->Is<FbxAnimCurveNode>()) continue;
        if (o->GetDstPropertyCount() == 1) static_cast<FbxAnimCurveNode*>(o)->SetBoundProperty(o->GetDstProperty(0));
    }
}

void FbxReader::BreakNodeCycles() {
    // Depth-first over child -> parent edges with three colours; an edge into a node
    // still on the path closes a cycle. The edge cut is the closing one, unless that is
    // its child's first parent (the one GetParent reports) and another edge of the
    // cycle is not: then the latest such edge goes, so a node keeps the parent it was
    // given first. Iterative, so that a deep chain does not exhaust the stack.
    std::unordered_map<FbxNode*, uint8_t> colour;  // 1 on the path, 2 done
    std::vector<FbxNode*> nodes;
    for (const auto& entry : objectsById_)
        if (entry.second->Is<FbxNode>()) nodes.push_back(static_cast<FbxNode*>(entry.second));
    struct Frame {
        FbxNode* node;
        int next;  // index among the node's parents of the edge being followed
    };
    std::vector<Frame> path;
    for (FbxNode* start : nodes) {
        if (colour[start]) continue;
        path.assign(1, Frame{start, 0});
        colour[start] = 1;
        while (!path.empty()) {
            Frame& f = path.back();
            FbxNode* parent = f.node->GetDstObject<FbxNode>(f.next);
            if (!parent) {
                colour[f.node] = 2;
                path.pop_back();
                continue;
            }
            uint8_t c = colour[parent];
            if (c == 0) {
                ++f.next;
                colour[parent] = 1;
                path.push_back({parent, 0});
                continue;
            }
            if (c == 2) {
                ++f.next;
                continue;
            }
            // A cycle: path[k] is the parent, path.back() the child of the closing edge.
            size_t k = path.size() - 1;
            while (path[k].node != parent) --k;
            size_t cut = path.size() - 1;  // frame whose current edge is cut
            if (f.next == 0) {
                for (size_t j = path.size() - 1; j-- > k;) {
                    if (path[j].next - 1 != 0) {  // path[j] follows its parent at next - 1
                        cut = j;
                        break;
                    }
                }
            }
            if (cut == path.size() - 1) {
                f.node->DisconnectDstObject(parent);  // the same index now holds the next parent
                continue;
            }
            Frame& g = path[cut];
            --g.next;
            g.node->DisconnectDstObject(g.node->GetDstObject<FbxNode>(g.next));
            for (size_t j = cut + 1; j < path.size(); ++j) colour[path[j].node] = 0;
            path.resize(cut + 1);
        }
    }
}

void FbxReader::CheckScene() {
    // Files from authoring tools pass unchanged; what is removed here cannot stand in
    // a sane scene. A connection between an object and itself is never made, and node
    // cycles are cut before this. An attribute hung below an object that is not a
    // node, or a node below a non-node other than a document, is kept: the program
    // only walks nodes.
}

void FbxReader::PostProcessScene() {
    // Every stack gets a layer to hold its curves.
    std::vector<FbxAnimStack*> stacks;
    for (const FbxProperty& s : document_->RootProperty.Sources()) {
        FbxObject* o = s.GetFbxObject();
        if (s.IsRoot() && o && o->Is<FbxAnimStack>()) stacks.push_back(static_cast<FbxAnimStack*>(o));
    }
    for (FbxAnimStack* stack : stacks) {
        if (stack->GetSrcObjectCount<FbxAnimLayer>() > 0) continue;
        FbxAnimLayer* layer = FbxAnimLayer::Create(document_, "Base Layer");
        stack->ConnectSrcObject(layer);
    }

    if (!options_.keepProducerCamSrcObj) {
        std::vector<FbxNode*> producers;
        for (const auto& entry : objectsById_) {
            if (!entry.second->Is<FbxNode>()) continue;
            FbxNode* node = static_cast<FbxNode*>(entry.second);
            if (node == scene_->GetRootNode()) continue;
            bool named = false;
            for (const char* n : kProducerCameras) named = named || std::strcmp(node->GetName(), n) == 0;
            FbxNodeAttribute* attribute = node->GetNodeAttribute();
            bool camera = !attribute || attribute->Is<FbxCamera>() || attribute->Is<FbxCameraSwitcher>();
            if (named && camera) producers.push_back(node);
        }
        for (FbxNode* node : producers) {
            std::vector<FbxObject*> dying{node};
            FbxNodeAttribute* attribute = node->GetNodeAttribute();
            if (attribute && attribute->GetNodeCount() == 1) dying.push_back(attribute);
            for (FbxObject* o : dying) {
                auto found = idsByObject_.find(o);
                if (found != idsByObject_.end()) {
                    objectsById_.erase(found->second);
                    idsByObject_.erase(found);
                }
            }
            objectsByName_.erase(node->GetName());
            for (FbxObject* o : dying) o->Destroy();
        }
    }

    // Files up to 7.2 keep the cone angles of lights as custom properties.
    if (stream_.FileVersion() <= 7200) {
        for (const auto& entry : objectsById_) {
            if (!entry.second->Is<FbxLight>()) continue;
            FbxLight* light = static_cast<FbxLight*>(entry.second);
            FbxProperty hotSpot = light->FindProperty("HotSpot");
            FbxProperty cone = light->FindProperty("Cone angle");
            double v = 0;
            if (hotSpot.IsValid() && hotSpot.Get(&v, eFbxDouble)) light->InnerAngle.Set(v);
            if (cone.IsValid() && cone.Get(&v, eFbxDouble)) light->OuterAngle.Set(v);
        }
    }
}

void FbxReader::ExtractEmbeddedMedia() {
    namespace fs = std::filesystem;
    fs::path folder;
    if (!options_.extractFolder.empty()) {
        folder = fs::path(options_.extractFolder);
    } else {
        folder = fs::path(fileName_);
        folder.replace_extension(".fbm");
    }
    bool made = false;
    for (const auto& entry : objectsById_) {
        if (!entry.second->Is<FbxVideo>()) continue;
        FbxVideo& video = *static_cast<FbxVideo*>(entry.second);
        if (video.content.empty()) continue;
        // Only the last part of the stored name is used: a name from a file never
        // leads the write outside the folder.
        std::string stored = !video.relativeFileName.empty() ? video.relativeFileName : video.fileName;
        size_t cut = stored.find_last_of("/\\");
        std::string base = cut == std::string::npos ? stored : stored.substr(cut + 1);
        if (base.empty() || base == "." || base == "..") continue;
        std::error_code error;
        if (!made) {
            fs::create_directories(folder, error);
            made = true;
        }
        fs::path target = folder / base;
        std::ofstream out(target, std::ios::binary);
        if (!out) continue;
        out.write(reinterpret_cast<const char*>(video.content.data()), static_cast<std::streamsize>(video.content.size()));
        if (!out) continue;
        video.fileName = target.string();
        video.content.clear();
        video.content.shrink_to_fit();
    }
}
