#include "fbx/fbx_manager.h"

#include <algorithm>
#include <cstring>

#include "fbx/fbx_anim.h"
#include "fbx/fbx_deformer.h"
#include "fbx/fbx_document.h"
#include "fbx/fbx_geometry.h"
#include "fbx/fbx_importer.h"
#include "fbx/fbx_material.h"
#include "fbx/fbx_misc_objects.h"
#include "fbx/fbx_node.h"
#include "fbx/fbx_property_table.h"

namespace {

// Every class of the layer. Where two classes share a record name and sub type the
// first listed is the one a file's record makes.
const FbxClassId* const kClasses[] = {
    &FbxObject::ClassId, &FbxCollection::ClassId, &FbxDocument::ClassId, &FbxScene::ClassId,
    &FbxGlobalSettings::ClassId, &FbxNode::ClassId, &FbxNodeAttribute::ClassId, &FbxNull::ClassId,
    &FbxMarker::ClassId, &FbxSkeleton::ClassId, &FbxCamera::ClassId, &FbxCameraStereo::ClassId,
    &FbxCameraSwitcher::ClassId, &FbxLight::ClassId, &FbxLODGroup::ClassId, &FbxLayerContainer::ClassId,
    &FbxGeometryBase::ClassId, &FbxGeometry::ClassId, &FbxMesh::ClassId, &FbxShape::ClassId, &FbxNurbs::ClassId,
    &FbxNurbsSurface::ClassId, &FbxPatch::ClassId, &FbxNurbsCurve::ClassId, &FbxTrimNurbsSurface::ClassId,
    &FbxBoundary::ClassId, &FbxLine::ClassId, &FbxDeformer::ClassId, &FbxSkin::ClassId, &FbxBlendShape::ClassId,
    &FbxVertexCacheDeformer::ClassId, &FbxSubDeformer::ClassId, &FbxCluster::ClassId,
    &FbxBlendShapeChannel::ClassId, &FbxPose::ClassId, &FbxAnimStack::ClassId, &FbxAnimLayer::ClassId,
    &FbxAnimCurveNode::ClassId, &FbxAnimCurveBase::ClassId, &FbxAnimCurve::ClassId, &FbxAnimCurveKFCurve::ClassId,
    &FbxAnimEvaluator::ClassId, &FbxAnimEvalClassic::ClassId, &FbxSurfaceMaterial::ClassId,
    &FbxSurfaceLambert::ClassId, &FbxSurfacePhong::ClassId, &FbxTexture::ClassId, &FbxFileTexture::ClassId,
    &FbxLayeredTexture::ClassId, &FbxProceduralTexture::ClassId, &FbxVideo::ClassId, &FbxThumbnail::ClassId,
    &FbxContainer::ClassId, &FbxGenericNode::ClassId, &FbxConstraint::ClassId, &FbxControlSetPlug::ClassId,
    &FbxCache::ClassId, &FbxImplementation::ClassId, &FbxBindingTable::ClassId, &FbxBindingOperator::ClassId,
    &FbxSelectionNode::ClassId, &FbxSelectionSet::ClassId, &FbxObjectMetaData::ClassId, &FbxAudioLayer::ClassId,
    &FbxAudio::ClassId, &FbxSceneReference::ClassId, &FbxCharacterPose::ClassId, &FbxIOSettings::ClassId,
    &FbxIOBase::ClassId, &FbxImporter::ClassId,
};

}  // namespace

FbxManager::FbxManager() {
    for (const FbxClassId* c : kClasses) RegisterClass(*c);
}

FbxManager::~FbxManager() = default;

FbxManager* FbxManager::Create() { return new FbxManager(); }

void FbxManager::Destroy() {
    // Everything dies together, so connections between the dying are not undone one
    // by one (that would cost a search of the document's list per object).
    destroying_ = true;
    for (size_t k = objects_.size(); k-- > 0;) delete objects_[k];
    objects_.clear();
    delete this;
}

void FbxManager::RegisterClass(const FbxClassId& classId) {
    if (std::find(classes_.begin(), classes_.end(), &classId) == classes_.end()) classes_.push_back(&classId);
}

const FbxClassId* FbxManager::FindClass(const char* className) const {
    if (!className) return nullptr;
    for (const FbxClassId* c : classes_)
        if (std::strcmp(c->GetName(), className) == 0) return c;
    return nullptr;
}

const FbxClassId* FbxManager::FindClass(const char* recordName, const char* subType) const {
    if (!recordName || !*recordName) return nullptr;
    if (!subType) subType = "";
    for (const FbxClassId* c : classes_)
        if (std::strcmp(c->GetObjectTypeName(), recordName) == 0 && std::strcmp(c->GetObjectSubTypeName(), subType) == 0)
            return c;
    return nullptr;
}

FbxObject* FbxManager::CreateObject(const FbxClassId& classId, const char* name) {
    auto known = classPrototypes_.find(&classId);
    return CreateObject(classId, name, known == classPrototypes_.end() ? nullptr : known->second);
}

FbxObject* FbxManager::CreateObject(const FbxClassId& classId, const char* name, const FbxPropertyPrototype* prototype) {
    FbxObject* object = classId.Construct(*this, name);
    if (!object) return nullptr;
    object->uniqueId_ = nextUniqueId_++;
    object->managerSlot_ = objects_.size();
    objects_.push_back(object);
    ++liveObjects_;
    if (object->Is<FbxDocument>()) documents_.push_back(static_cast<FbxDocument*>(object));
    if (prototype) {
        object->properties_->UsePrototype(prototype);
        object->replaying_ = true;
        object->replayNext_ = 1;
        object->ConstructProperties(true);
        object->replaying_ = false;
    } else {
        object->ConstructProperties(true);
        classPrototypes_.emplace(&classId, AdoptPrototype(object->properties_->MakePrototype()));
    }
    return object;
}

const FbxPropertyPrototype* FbxManager::AdoptPrototype(std::unique_ptr<FbxPropertyPrototype> prototype) {
    prototypes_.push_back(std::move(prototype));
    return prototypes_.back().get();
}

FbxDocument* FbxManager::GetDocument(int index) const {
    return index >= 0 && static_cast<size_t>(index) < documents_.size() ? documents_[static_cast<size_t>(index)] : nullptr;
}

void FbxManager::Release(FbxObject* object) {
    if (destroying_ || !object) return;
    if (object->managerSlot_ < objects_.size() && objects_[object->managerSlot_] == object) {
        objects_[object->managerSlot_] = nullptr;
        --liveObjects_;
    }
    documents_.erase(std::remove(documents_.begin(), documents_.end(), object), documents_.end());
    if (ioSettings_ == object) ioSettings_ = nullptr;
    delete object;
}

// ---- FbxIOSettings ----

FBX_OBJECT_IMPLEMENT(FbxIOSettings, FbxObject, "", "")

bool FbxIOSettings::GetBoolProp(const char* path, bool defaultValue) const {
    FbxProperty p = FindPropertyHierarchical(path);
    bool value = defaultValue;
    if (p.IsValid()) p.Get(&value, eFbxBool);
    return value;
}

int FbxIOSettings::GetIntProp(const char* path, int defaultValue) const {
    FbxProperty p = FindPropertyHierarchical(path);
    int value = defaultValue;
    if (p.IsValid()) p.Get(&value, eFbxInt);
    return value;
}

std::string FbxIOSettings::GetStringProp(const char* path, const std::string& defaultValue) const {
    FbxProperty p = FindPropertyHierarchical(path);
    std::string value = defaultValue;
    if (p.IsValid()) p.Get(&value, eFbxString);
    return value;
}

void FbxIOSettings::SetBoolProp(const char* path, bool value) { Make(path, FbxBoolDT).Set(value, false); }
void FbxIOSettings::SetIntProp(const char* path, int value) { Make(path, FbxIntDT).Set(value, false); }
void FbxIOSettings::SetStringProp(const char* path, const std::string& value) {
    Make(path, FbxStringDT).Set(value, false);
}

FbxProperty FbxIOSettings::Make(const char* path, const FbxDataType& type) {
    if (!path) return FbxProperty();
    FbxProperty at = RootProperty;
    std::string rest(path);
    size_t start = 0;
    while (true) {
        size_t cut = rest.find('|', start);
        std::string part = rest.substr(start, cut == std::string::npos ? std::string::npos : cut - start);
        bool last = cut == std::string::npos;
        at = FbxProperty::Create(at, last ? type : FbxCompoundDT, part.c_str(), "", last);
        if (last || !at.IsValid()) return at;
        start = cut + 1;
    }
}
