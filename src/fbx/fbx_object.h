// FbxObject: base of everything in an FBX document: a class, a name, a unique id and a
// tree of typed properties whose root is the object's end of every connection.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "fbx/fbx_class_id.h"
#include "fbx/fbx_property.h"

class FbxManager;
class FbxDocument;
class FbxScene;

template <class T> FbxObject* FbxNewObject(FbxManager& manager, const char* name) { return new T(manager, name); }

// Declares the class id, the two Create functions and the constructor of an FbxObject
// subclass. Properties are made in ConstructProperties, members take default initialisers.
#define FBX_OBJECT_DECLARE(Class, Parent)                                                      \
public:                                                                                        \
    using ParentClass = Parent;                                                                \
    static const FbxClassId ClassId;                                                           \
    const FbxClassId& GetClassId() const override { return ClassId; }                          \
    static Class* Create(FbxManager* manager, const char* name) {                              \
        return static_cast<Class*>(FbxObject::CreateOfClass(ClassId, manager, name));           \
    }                                                                                          \
    static Class* Create(FbxObject* container, const char* name) {                             \
        return static_cast<Class*>(FbxObject::CreateOfClass(ClassId, container, name));         \
    }                                                                                          \
                                                                                               \
protected:                                                                                     \
    Class(FbxManager& manager, const char* name) : Parent(manager, name) {}                    \
    template <class> friend FbxObject* FbxNewObject(FbxManager&, const char*);                 \
                                                                                               \
private:

// Defines the class id: class name, record name and sub type in files.
#define FBX_OBJECT_IMPLEMENT(Class, Parent, record, subType) \
    const FbxClassId Class::ClassId{#Class, &Parent::ClassId, record, subType, &FbxNewObject<Class>};

class FbxObject {
public:
    static const FbxClassId ClassId;
    virtual const FbxClassId& GetClassId() const { return ClassId; }
    static FbxObject* Create(FbxManager* manager, const char* name) { return CreateOfClass(ClassId, manager, name); }
    static FbxObject* Create(FbxObject* container, const char* name) { return CreateOfClass(ClassId, container, name); }

    // Makes an object of any class through the manager; with a document as container the
    // object is also connected to it (the document owns its objects by that connection).
    static FbxObject* CreateOfClass(const FbxClassId& classId, FbxManager* manager, const char* name);
    static FbxObject* CreateOfClass(const FbxClassId& classId, FbxObject* container, const char* name);

    FbxObject(const FbxObject&) = delete;
    FbxObject& operator=(const FbxObject&) = delete;

    // Removes all connections and frees the object. With recursive true the sources that
    // have no other destination are destroyed first.
    void Destroy(bool recursive = false);

    bool Is(const FbxClassId& classId) const { return GetClassId().Is(classId); }
    template <class T> bool Is() const { return Is(T::ClassId); }

    // Part behind "::" of a `Class::Name` name.
    const char* GetName() const;
    const std::string& GetNameWithNameSpace() const { return name_; }
    // Name space part in front of "::", empty when none.
    std::string GetNameSpacePrefix() const;
    void SetName(const char* name);
    const std::string& GetInitialName() const { return initialName_; }
    void SetInitialName(const char* name) { initialName_ = name; }
    uint64_t GetUniqueID() const { return uniqueId_; }

    FbxManager* GetFbxManager() const { return manager_; }
    FbxDocument* GetDocument() const { return document_; }
    FbxScene* GetScene() const;
    void SetDocument(FbxDocument* document) { document_ = document; }

    // Properties.
    FbxProperty RootProperty;
    FbxProperty GetFirstProperty() const;
    FbxProperty GetNextProperty(const FbxProperty& property) const;  // in creation order
    FbxProperty FindProperty(const char* name, bool caseSensitive = true) const;
    FbxProperty FindPropertyHierarchical(const char* name, bool caseSensitive = true) const;
    int GetPropertyCount() const;  // the root not counted

    // Connections of the root property.
    bool ConnectSrcObject(FbxObject* object) { return RootProperty.ConnectSrcObject(object); }
    bool ConnectDstObject(FbxObject* object) { return RootProperty.ConnectDstObject(object); }
    bool ConnectSrcProperty(const FbxProperty& p) { return RootProperty.ConnectSrcProperty(p); }
    bool ConnectDstProperty(const FbxProperty& p) { return RootProperty.ConnectDstProperty(p); }
    bool DisconnectSrcObject(FbxObject* object) { return RootProperty.DisconnectSrcObject(object); }
    bool DisconnectDstObject(FbxObject* object) { return RootProperty.DisconnectDstObject(object); }
    bool IsConnectedSrcObject(const FbxObject* object) const { return RootProperty.IsConnectedSrcObject(object); }
    bool IsConnectedDstObject(const FbxObject* object) const { return RootProperty.IsConnectedDstObject(object); }
    int GetSrcObjectCount(const FbxCriteria& criteria = FbxCriteria()) const { return RootProperty.GetSrcObjectCount(criteria); }
    FbxObject* GetSrcObject(const FbxCriteria& criteria = FbxCriteria(), int index = 0) const {
        return RootProperty.GetSrcObject(criteria, index);
    }
    int GetDstObjectCount(const FbxCriteria& criteria = FbxCriteria()) const { return RootProperty.GetDstObjectCount(criteria); }
    FbxObject* GetDstObject(const FbxCriteria& criteria = FbxCriteria(), int index = 0) const {
        return RootProperty.GetDstObject(criteria, index);
    }
    FbxObject* GetSrcObject(int index) const { return RootProperty.GetSrcObject(index); }
    FbxObject* GetDstObject(int index) const { return RootProperty.GetDstObject(index); }
    template <class T> int GetSrcObjectCount() const { return RootProperty.GetSrcObjectCount<T>(); }
    template <class T> T* GetSrcObject(int index = 0) const { return RootProperty.GetSrcObject<T>(index); }
    template <class T> int GetDstObjectCount() const { return RootProperty.GetDstObjectCount<T>(); }
    template <class T> T* GetDstObject(int index = 0) const { return RootProperty.GetDstObject<T>(index); }
    int GetSrcPropertyCount() const { return RootProperty.GetSrcPropertyCount(); }
    FbxProperty GetSrcProperty(int index = 0) const { return RootProperty.GetSrcProperty(index); }
    int GetDstPropertyCount() const { return RootProperty.GetDstPropertyCount(); }
    FbxProperty GetDstProperty(int index = 0) const { return RootProperty.GetDstProperty(index); }

    // Called by FbxProperty::Set after a value changed.
    virtual void OnPropertyChanged(const FbxProperty& /*property*/) {}
    // Called after an object was connected to this object's root property.
    virtual void OnSrcObjectConnected(FbxObject* /*source*/) {}

protected:
    FbxObject(FbxManager& manager, const char* name);
    virtual ~FbxObject();
    template <class> friend FbxObject* FbxNewObject(FbxManager&, const char*);
    friend class FbxManager;

    // Makes the class's own properties; each override calls its parent's first.
    virtual void ConstructProperties(bool forceSet);

    // Room for the class's properties, made before the first is added.
    void ReserveProperties(size_t count);
    // A class default: a child of the root with its value and flags, the value not
    // counted as set on the object. The name must not be one the class has already.
    FbxProperty AddProperty(const char* name, const FbxDataType& type, uint32_t flags = 0);
    template <class T>
    FbxPropertyT<T> AddProperty(const char* name, const FbxDataType& type, const T& defaultValue, uint32_t flags = 0) {
        FbxProperty p = AddProperty(name, type, flags);
        SetDefault(p, &defaultValue, FbxTypeOf<T>::value);
        return p;
    }
    static void SetDefault(FbxProperty& property, const void* value, EFbxType type);

private:
    FbxManager* manager_;
    std::string name_;
    std::string initialName_;
    uint64_t uniqueId_ = 0;
    FbxDocument* document_ = nullptr;
    std::unique_ptr<FbxPropertyTable> properties_;
    size_t managerSlot_ = 0;
    // While the class's properties are made again over a shared prototype, AddProperty
    // only hands out the ids the prototype has.
    bool replaying_ = false;
    uint32_t replayNext_ = 1;
};
