#include "fbx/fbx_document.h"

#include <vector>

#include "fbx/fbx_manager.h"
#include "fbx/fbx_node.h"

FBX_OBJECT_IMPLEMENT(FbxCollection, FbxObject, "Collection", "")
FBX_OBJECT_IMPLEMENT(FbxDocument, FbxCollection, "Document", "")
FBX_OBJECT_IMPLEMENT(FbxScene, FbxDocument, "Scene", "")
FBX_OBJECT_IMPLEMENT(FbxGlobalSettings, FbxObject, "GlobalSettings", "")

void FbxDocument::ConstructProperties(bool forceSet) {
    ParentClass::ConstructProperties(forceSet);
    AddProperty("SourceObject", FbxReferenceDT);
    AddProperty("ActiveAnimStackName", FbxStringDT, std::string());
}

void FbxDocument::Clear() {
    // Destroy newest first: later objects tend to hang on earlier ones.
    std::vector<FbxObject*> members;
    for (const FbxProperty& s : RootProperty.Sources())
        if (s.IsRoot() && s.GetFbxObject() != this) members.push_back(s.GetFbxObject());
    for (size_t k = members.size(); k-- > 0;) members[k]->Destroy(false);
}

void FbxScene::ConstructProperties(bool forceSet) {
    ParentClass::ConstructProperties(forceSet);
    rootNode_ = FbxNode::Create(this, "RootNode");
    globalSettings_ = FbxGlobalSettings::Create(this, "GlobalSettings");
}

void FbxScene::Clear() {
    FbxDocument::Clear();
    currentStack_ = nullptr;
    rootNode_ = FbxNode::Create(this, "RootNode");
    globalSettings_ = FbxGlobalSettings::Create(this, "GlobalSettings");
}

void FbxGlobalSettings::ConstructProperties(bool forceSet) {
    ParentClass::ConstructProperties(forceSet);
    UpAxis = AddProperty("UpAxis", FbxIntDT, 1);
    UpAxisSign = AddProperty("UpAxisSign", FbxIntDT, 1);
    FrontAxis = AddProperty("FrontAxis", FbxIntDT, 2);
    FrontAxisSign = AddProperty("FrontAxisSign", FbxIntDT, 1);
    CoordAxis = AddProperty("CoordAxis", FbxIntDT, 0);
    CoordAxisSign = AddProperty("CoordAxisSign", FbxIntDT, 1);
    OriginalUpAxis = AddProperty("OriginalUpAxis", FbxIntDT, -1);
    OriginalUpAxisSign = AddProperty("OriginalUpAxisSign", FbxIntDT, 1);
    UnitScaleFactor = AddProperty("UnitScaleFactor", FbxDoubleDT, 1.0);
    OriginalUnitScaleFactor = AddProperty("OriginalUnitScaleFactor", FbxDoubleDT, 1.0);
    AmbientColor = AddProperty("AmbientColor", FbxColor3DT, FbxDouble3{0, 0, 0});
    DefaultCamera = AddProperty("DefaultCamera", FbxStringDT, std::string("Producer Perspective"));
    TimeMode = AddProperty("TimeMode", FbxEnumDT, 0);
    TimeProtocol = AddProperty("TimeProtocol", FbxEnumDT, 2);
    SnapOnFrameMode = AddProperty("SnapOnFrameMode", FbxEnumDT, 0);
    int64_t zero = 0;
    TimeSpanStart = AddProperty("TimeSpanStart", FbxTimeDT);
    SetDefault(TimeSpanStart, &zero, eFbxTime);
    TimeSpanStop = AddProperty("TimeSpanStop", FbxTimeDT);
    SetDefault(TimeSpanStop, &zero, eFbxTime);
    CustomFrameRate = AddProperty("CustomFrameRate", FbxDoubleDT, -1.0);
    TimeMarker = AddProperty("TimeMarker", FbxCompoundDT);
    CurrentTimeMarker = AddProperty("CurrentTimeMarker", FbxIntDT, -1);
}
