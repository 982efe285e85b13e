// FbxClassId: one class of the FBX object family, with the record name and sub type
// that files use for it and the function that makes a new instance.
#pragma once

#include <cstring>

class FbxObject;
class FbxManager;

class FbxClassId {
public:
    using Constructor = FbxObject* (*)(FbxManager& manager, const char* name);

    constexpr FbxClassId(const char* name, const FbxClassId* parent, const char* recordName, const char* subType,
                         Constructor constructor)
        : name_(name), parent_(parent), recordName_(recordName), subType_(subType), constructor_(constructor) {}
    FbxClassId(const FbxClassId&) = delete;
    FbxClassId& operator=(const FbxClassId&) = delete;

    const char* GetName() const { return name_; }
    const FbxClassId* GetParent() const { return parent_; }
    // Record name of the class's objects in a file ("Model"); empty when it has none.
    const char* GetObjectTypeName() const { return recordName_; }
    // Sub type in the file ("Mesh" under "Geometry"); empty when none.
    const char* GetObjectSubTypeName() const { return subType_; }
    // True for this class and its subclasses.
    bool Is(const FbxClassId& other) const {
        for (const FbxClassId* c = this; c; c = c->parent_)
            if (c == &other) return true;
        return false;
    }
    bool operator==(const FbxClassId& other) const { return this == &other; }
    bool operator!=(const FbxClassId& other) const { return this != &other; }

    // Makes an unregistered instance; FbxManager::CreateObject is the way to make one.
    FbxObject* Construct(FbxManager& manager, const char* name) const { return constructor_(manager, name); }

private:
    const char* name_;
    const FbxClassId* parent_;
    const char* recordName_;
    const char* subType_;
    Constructor constructor_;
};
