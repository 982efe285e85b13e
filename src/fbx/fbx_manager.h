// FbxManager: the class registry, the unique-id counter, the import settings and the
// memory of every FBX object; FbxIOSettings: the tree of import options.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

#include "fbx/fbx_object.h"

class FbxDocument;
struct FbxPropertyPrototype;

// Import and export options as a property tree addressed by '|' paths, e.g.
// "Import|AdvOptGrp|FileFormat|Fbx|Animation".
class FbxIOSettings : public FbxObject {
    FBX_OBJECT_DECLARE(FbxIOSettings, FbxObject)
public:
    bool GetBoolProp(const char* path, bool defaultValue) const;
    void SetBoolProp(const char* path, bool value);
    int GetIntProp(const char* path, int defaultValue) const;
    void SetIntProp(const char* path, int value);
    std::string GetStringProp(const char* path, const std::string& defaultValue) const;
    void SetStringProp(const char* path, const std::string& value);

private:
    // Finds or makes the property at path, making the groups on the way.
    FbxProperty Make(const char* path, const FbxDataType& type);
};

class FbxManager {
public:
    static FbxManager* Create();
    // Destroys every object the manager made, newest first, then the manager.
    void Destroy();

    FbxManager(const FbxManager&) = delete;
    FbxManager& operator=(const FbxManager&) = delete;

    // Class registry: every class of the layer is registered at creation.
    void RegisterClass(const FbxClassId& classId);
    // By class name ("FbxNode"); null when unknown.
    const FbxClassId* FindClass(const char* className) const;
    // By the record name and sub type of a file; null when no class has that pair.
    const FbxClassId* FindClass(const char* recordName, const char* subType) const;
    const std::vector<const FbxClassId*>& Classes() const { return classes_; }

    FbxDataType GetDataTypeFromName(const char* name) const { return FbxGetDataTypeFromName(name); }

    // Makes, registers and sets up (class properties) an object of any class.
    FbxObject* CreateObject(const FbxClassId& classId, const char* name);
    // The same, starting from shared records that extend the class's own (a class with
    // a file's template applied); the manager must own them (AdoptPrototype).
    FbxObject* CreateObject(const FbxClassId& classId, const char* name, const FbxPropertyPrototype* prototype);
    const FbxPropertyPrototype* AdoptPrototype(std::unique_ptr<FbxPropertyPrototype> prototype);

    void SetIOSettings(FbxIOSettings* settings) { ioSettings_ = settings; }
    FbxIOSettings* GetIOSettings() const { return ioSettings_; }

    int GetDocumentCount() const { return static_cast<int>(documents_.size()); }
    FbxDocument* GetDocument(int index) const;

    // Live objects, in creation order.
    size_t GetObjectCount() const { return liveObjects_; }
    template <class F> void ForEachObject(F&& f) const {
        for (FbxObject* o : objects_)
            if (o) f(o);
    }

private:
    FbxManager();
    ~FbxManager();
    friend class FbxObject;
    friend class FbxDocument;
    void Release(FbxObject* object);  // called by FbxObject::Destroy

    std::vector<const FbxClassId*> classes_;
    // Shared class properties, made by the first object of each class.
    std::unordered_map<const FbxClassId*, const FbxPropertyPrototype*> classPrototypes_;
    std::vector<std::unique_ptr<FbxPropertyPrototype>> prototypes_;
    std::vector<FbxObject*> objects_;  // a destroyed object leaves a null slot
    size_t liveObjects_ = 0;
    uint64_t nextUniqueId_ = 0;
    FbxIOSettings* ioSettings_ = nullptr;
    std::vector<FbxDocument*> documents_;
    bool destroying_ = false;
};
