// Documents: FbxCollection, FbxDocument, FbxScene (with its root node and global
// settings) and FbxGlobalSettings. A document owns its objects by connection: every
// object is a source of the document's root property.
#pragma once

#include "fbx/fbx_axis_system.h"
#include "fbx/fbx_node_transform.h"
#include "fbx/fbx_object.h"
#include "fbx/fbx_system_unit.h"

class FbxNode;
class FbxAnimStack;

class FbxCollection : public FbxObject {
    FBX_OBJECT_DECLARE(FbxCollection, FbxObject)
public:
    // Members are the object sources of the collection.
    int GetMemberCount() const { return GetSrcObjectCount(); }
    FbxObject* GetMember(int index) const { return GetSrcObject(index); }
    bool AddMember(FbxObject* member) { return ConnectSrcObject(member); }
};

class FbxDocument : public FbxCollection {
    FBX_OBJECT_DECLARE(FbxDocument, FbxCollection)
public:
    // Destroys every object of the document but those the document keeps for itself.
    virtual void Clear();

protected:
    void ConstructProperties(bool forceSet) override;
};

// Time, axis and unit settings of a scene.
class FbxGlobalSettings : public FbxObject {
    FBX_OBJECT_DECLARE(FbxGlobalSettings, FbxObject)
public:
    FbxPropertyT<int> UpAxis;
    FbxPropertyT<int> UpAxisSign;
    FbxPropertyT<int> FrontAxis;
    FbxPropertyT<int> FrontAxisSign;
    FbxPropertyT<int> CoordAxis;
    FbxPropertyT<int> CoordAxisSign;
    FbxPropertyT<int> OriginalUpAxis;
    FbxPropertyT<int> OriginalUpAxisSign;
    FbxPropertyT<double> UnitScaleFactor;
    FbxPropertyT<double> OriginalUnitScaleFactor;
    FbxPropertyT<FbxDouble3> AmbientColor;
    FbxPropertyT<std::string> DefaultCamera;
    FbxPropertyT<int> TimeMode;  // enum
    FbxPropertyT<int> TimeProtocol;  // enum
    FbxPropertyT<int> SnapOnFrameMode;  // enum
    FbxProperty TimeSpanStart;  // time
    FbxProperty TimeSpanStop;   // time
    FbxPropertyT<double> CustomFrameRate;
    FbxProperty TimeMarker;  // compound
    FbxPropertyT<int> CurrentTimeMarker;

    // Axis system and unit (fbx_axis_convert.cpp, fbx_unit_convert.cpp). GetAxisSystem
    // rebuilds the cached copy from the properties, reading an axis outside 0 to 2 as 0
    // and a sign as -1 when negative, else 1.
    FbxAxisSystem GetAxisSystem();
    void SetAxisSystem(const FbxAxisSystem& system);
    void SetOriginalUpAxis(const FbxAxisSystem& system);
    FbxSystemUnit GetSystemUnit() const;
    void SetSystemUnit(const FbxSystemUnit& unit);
    FbxSystemUnit GetOriginalSystemUnit() const;
    void SetOriginalSystemUnit(const FbxSystemUnit& unit);

protected:
    void ConstructProperties(bool forceSet) override;

private:
    FbxAxisSystem axisSystem_;
};

class FbxScene : public FbxDocument {
    FBX_OBJECT_DECLARE(FbxScene, FbxDocument)
public:
    FbxNode* GetRootNode() const { return rootNode_; }
    FbxGlobalSettings& GetGlobalSettings() const { return *globalSettings_; }
    FbxAnimStack* GetCurrentAnimationStack() const { return currentStack_; }
    void SetCurrentAnimationStack(FbxAnimStack* stack) { currentStack_ = stack; }
    // Cache of the nodes' evaluated transforms.
    FbxTransformEvaluator& GetTransformEvaluator() { return transformEvaluator_; }

    // Destroys every object of the scene and makes a fresh root node and global settings.
    void Clear() override;

protected:
    void ConstructProperties(bool forceSet) override;

private:
    FbxNode* rootNode_ = nullptr;
    FbxGlobalSettings* globalSettings_ = nullptr;
    FbxAnimStack* currentStack_ = nullptr;
    FbxTransformEvaluator transformEvaluator_;
};
