#include "fbx/fbx_object.h"

#include <cstring>
#include <unordered_set>
#include <vector>

#include "fbx/fbx_document.h"
#include "fbx/fbx_manager.h"
#include "fbx/fbx_property_table.h"

const FbxClassId FbxObject::ClassId{"FbxObject", nullptr, "Object", "", &FbxNewObject<FbxObject>};

FbxObject::FbxObject(FbxManager& manager, const char* name)
    : manager_(&manager), name_(name ? name : ""), initialName_(name_),
      properties_(std::make_unique<FbxPropertyTable>(this)) {
    RootProperty = FbxProperty(properties_.get(), 0);
}

FbxObject::~FbxObject() = default;

FbxObject* FbxObject::CreateOfClass(const FbxClassId& classId, FbxManager* manager, const char* name) {
    return manager ? manager->CreateObject(classId, name) : nullptr;
}

FbxObject* FbxObject::CreateOfClass(const FbxClassId& classId, FbxObject* container, const char* name) {
    if (!container) return nullptr;
    FbxObject* object = container->manager_->CreateObject(classId, name);
    if (!object) return nullptr;
    FbxDocument* document = container->Is<FbxDocument>() ? static_cast<FbxDocument*>(container) : container->document_;
    if (document) {
        document->ConnectSrcObject(object);
        object->document_ = document;
    }
    return object;
}

void FbxObject::ConstructProperties(bool /*forceSet*/) {}

namespace {

// Every end of every connection of the object, in both directions.
void DisconnectAll(FbxObject* object, FbxPropertyTable& table) {
    for (uint32_t id = 0; id < table.Size(); ++id) {
        if (!table.Read(id).links) continue;
        FbxProperty self(&table, id);
        std::vector<FbxProperty> sources = table.Read(id).links->sources;
        for (const FbxProperty& s : sources) self.DisconnectSrcProperty(s);
        std::vector<FbxProperty> destinations = table.Read(id).links->destinations;
        for (const FbxProperty& d : destinations) self.DisconnectDstProperty(d);
    }
    (void)object;
}

}  // namespace

void FbxObject::Destroy(bool recursive) {
    if (recursive) {
        // Sources that only this object holds go with it; walked with an explicit list
        // so that a long or cyclic chain of sources neither recurses nor repeats.
        std::vector<FbxObject*> order{this};
        std::unordered_set<FbxObject*> seen{this};
        for (size_t k = 0; k < order.size(); ++k) {
            FbxObject* o = order[k];
            for (const FbxProperty& s : o->RootProperty.Sources()) {
                FbxObject* src = s.GetFbxObject();
                if (!s.IsRoot() || !src || seen.count(src) || src->Is<FbxDocument>()) continue;
                int holders = 0;
                for (const FbxProperty& d : src->RootProperty.Destinations())
                    if (d.GetFbxObject() && !d.GetFbxObject()->Is<FbxDocument>()) ++holders;
                if (holders != 1) continue;
                seen.insert(src);
                order.push_back(src);
            }
        }
        for (size_t k = order.size(); k-- > 1;) order[k]->Destroy(false);
    }
    DisconnectAll(this, *properties_);
    manager_->Release(this);
}

const char* FbxObject::GetName() const {
    size_t cut = name_.rfind("::");
    return cut == std::string::npos ? name_.c_str() : name_.c_str() + cut + 2;
}

std::string FbxObject::GetNameSpacePrefix() const {
    size_t cut = name_.rfind("::");
    return cut == std::string::npos ? std::string() : name_.substr(0, cut);
}

void FbxObject::SetName(const char* name) { name_ = name ? name : ""; }

FbxScene* FbxObject::GetScene() const {
    if (document_ && document_->Is<FbxScene>()) return static_cast<FbxScene*>(document_);
    if (!document_ && Is<FbxScene>()) return static_cast<FbxScene*>(const_cast<FbxObject*>(this));
    return nullptr;
}

FbxProperty FbxObject::GetFirstProperty() const {
    return properties_->Size() > 1 ? FbxProperty(properties_.get(), 1) : FbxProperty();
}

FbxProperty FbxObject::GetNextProperty(const FbxProperty& property) const {
    if (property.GetTable() != properties_.get()) return FbxProperty();
    uint32_t next = property.GetId() + 1;
    return next < properties_->Size() ? FbxProperty(properties_.get(), next) : FbxProperty();
}

FbxProperty FbxObject::FindProperty(const char* name, bool caseSensitive) const {
    return RootProperty.FindChild(name, caseSensitive);
}

FbxProperty FbxObject::FindPropertyHierarchical(const char* name, bool caseSensitive) const {
    return RootProperty.Find(name, "|", caseSensitive);
}

int FbxObject::GetPropertyCount() const { return static_cast<int>(properties_->Size()) - 1; }

FbxProperty FbxObject::AddProperty(const char* name, const FbxDataType& type, uint32_t flags) {
    // Replaying over a shared prototype: the k-th property of the class has id k.
    if (replaying_) return FbxProperty(properties_.get(), replayNext_++);
    // Class properties have names of their own: no search for an existing one, which
    // would cost a walk of the class's list per property.
    FbxProperty p(properties_.get(), properties_->Add(0, name, type));
    p.SetFlags(flags);
    return p;
}

void FbxObject::ReserveProperties(size_t count) { properties_->Reserve(count); }

void FbxObject::SetDefault(FbxProperty& property, const void* value, EFbxType type) {
    if (!property.IsValid() || property.table_->Owner()->replaying_) return;
    if (!property.Set(value, type, false)) return;
    property.table_->Write(property.id_).state &= ~FbxPropertyRecord::ValueSet;
}
