#include "fbx/fbx_node.h"

#include <vector>

#include "fbx/fbx_material.h"

FBX_OBJECT_IMPLEMENT(FbxNode, FbxObject, "Model", "")
FBX_OBJECT_IMPLEMENT(FbxNodeAttribute, FbxObject, "NodeAttribute", "")
FBX_OBJECT_IMPLEMENT(FbxNull, FbxNodeAttribute, "NodeAttribute", "Null")
FBX_OBJECT_IMPLEMENT(FbxMarker, FbxNodeAttribute, "NodeAttribute", "Marker")
FBX_OBJECT_IMPLEMENT(FbxSkeleton, FbxNodeAttribute, "", "")
FBX_OBJECT_IMPLEMENT(FbxCamera, FbxNodeAttribute, "NodeAttribute", "Camera")
FBX_OBJECT_IMPLEMENT(FbxCameraStereo, FbxCamera, "NodeAttribute", "CameraStereo")
FBX_OBJECT_IMPLEMENT(FbxCameraSwitcher, FbxNodeAttribute, "NodeAttribute", "CameraSwitcher")
FBX_OBJECT_IMPLEMENT(FbxLight, FbxNodeAttribute, "NodeAttribute", "Light")
FBX_OBJECT_IMPLEMENT(FbxLODGroup, FbxNodeAttribute, "NodeAttribute", "LodGroup")

namespace {
constexpr uint32_t A = FbxPropertyFlag::Animatable;
const FbxDouble3 kZero{0, 0, 0};
const FbxDouble3 kOne{1, 1, 1};
}  // namespace

void FbxNode::ConstructProperties(bool forceSet) {
    ReserveProperties(80);
    ParentClass::ConstructProperties(forceSet);
    LclTranslation = AddProperty("Lcl Translation", FbxLocalTranslationDT, kZero, A);
    LclRotation = AddProperty("Lcl Rotation", FbxLocalRotationDT, kZero, A);
    LclScaling = AddProperty("Lcl Scaling", FbxLocalScalingDT, kOne, A);
    Visibility = AddProperty("Visibility", FbxVisibilityDT, 1.0, A);
    VisibilityInheritance = AddProperty("Visibility Inheritance", FbxVisibilityInheritanceDT, true);
    QuaternionInterpolate = AddProperty("QuaternionInterpolate", FbxEnumDT, 0);
    RotationOffset = AddProperty("RotationOffset", FbxVector3DT, kZero);
    RotationPivot = AddProperty("RotationPivot", FbxVector3DT, kZero);
    ScalingOffset = AddProperty("ScalingOffset", FbxVector3DT, kZero);
    ScalingPivot = AddProperty("ScalingPivot", FbxVector3DT, kZero);
    TranslationActive = AddProperty("TranslationActive", FbxBoolDT, false);
    TranslationMin = AddProperty("TranslationMin", FbxVector3DT, kZero);
    TranslationMax = AddProperty("TranslationMax", FbxVector3DT, kZero);
    TranslationMinX = AddProperty("TranslationMinX", FbxBoolDT, false);
    TranslationMinY = AddProperty("TranslationMinY", FbxBoolDT, false);
    TranslationMinZ = AddProperty("TranslationMinZ", FbxBoolDT, false);
    TranslationMaxX = AddProperty("TranslationMaxX", FbxBoolDT, false);
    TranslationMaxY = AddProperty("TranslationMaxY", FbxBoolDT, false);
    TranslationMaxZ = AddProperty("TranslationMaxZ", FbxBoolDT, false);
    RotationOrder = AddProperty("RotationOrder", FbxEnumDT, 0);
    RotationSpaceForLimitOnly = AddProperty("RotationSpaceForLimitOnly", FbxBoolDT, false);
    RotationStiffnessX = AddProperty("RotationStiffnessX", FbxDoubleDT, 0.0);
    RotationStiffnessY = AddProperty("RotationStiffnessY", FbxDoubleDT, 0.0);
    RotationStiffnessZ = AddProperty("RotationStiffnessZ", FbxDoubleDT, 0.0);
    AxisLen = AddProperty("AxisLen", FbxDoubleDT, 10.0);
    PreRotation = AddProperty("PreRotation", FbxVector3DT, kZero);
    PostRotation = AddProperty("PostRotation", FbxVector3DT, kZero);
    RotationActive = AddProperty("RotationActive", FbxBoolDT, false);
    RotationMin = AddProperty("RotationMin", FbxVector3DT, kZero);
    RotationMax = AddProperty("RotationMax", FbxVector3DT, kZero);
    RotationMinX = AddProperty("RotationMinX", FbxBoolDT, false);
    RotationMinY = AddProperty("RotationMinY", FbxBoolDT, false);
    RotationMinZ = AddProperty("RotationMinZ", FbxBoolDT, false);
    RotationMaxX = AddProperty("RotationMaxX", FbxBoolDT, false);
    RotationMaxY = AddProperty("RotationMaxY", FbxBoolDT, false);
    RotationMaxZ = AddProperty("RotationMaxZ", FbxBoolDT, false);
    InheritType = AddProperty("InheritType", FbxEnumDT, 0);
    ScalingActive = AddProperty("ScalingActive", FbxBoolDT, false);
    ScalingMin = AddProperty("ScalingMin", FbxVector3DT, kZero);
    ScalingMax = AddProperty("ScalingMax", FbxVector3DT, kOne);
    ScalingMinX = AddProperty("ScalingMinX", FbxBoolDT, false);
    ScalingMinY = AddProperty("ScalingMinY", FbxBoolDT, false);
    ScalingMinZ = AddProperty("ScalingMinZ", FbxBoolDT, false);
    ScalingMaxX = AddProperty("ScalingMaxX", FbxBoolDT, false);
    ScalingMaxY = AddProperty("ScalingMaxY", FbxBoolDT, false);
    ScalingMaxZ = AddProperty("ScalingMaxZ", FbxBoolDT, false);
    GeometricTranslation = AddProperty("GeometricTranslation", FbxVector3DT, kZero);
    GeometricRotation = AddProperty("GeometricRotation", FbxVector3DT, kZero);
    GeometricScaling = AddProperty("GeometricScaling", FbxVector3DT, kOne);
    MinDampRangeX = AddProperty("MinDampRangeX", FbxDoubleDT, 0.0);
    MinDampRangeY = AddProperty("MinDampRangeY", FbxDoubleDT, 0.0);
    MinDampRangeZ = AddProperty("MinDampRangeZ", FbxDoubleDT, 0.0);
    MaxDampRangeX = AddProperty("MaxDampRangeX", FbxDoubleDT, 0.0);
    MaxDampRangeY = AddProperty("MaxDampRangeY", FbxDoubleDT, 0.0);
    MaxDampRangeZ = AddProperty("MaxDampRangeZ", FbxDoubleDT, 0.0);
    MinDampStrengthX = AddProperty("MinDampStrengthX", FbxDoubleDT, 0.0);
    MinDampStrengthY = AddProperty("MinDampStrengthY", FbxDoubleDT, 0.0);
    MinDampStrengthZ = AddProperty("MinDampStrengthZ", FbxDoubleDT, 0.0);
    MaxDampStrengthX = AddProperty("MaxDampStrengthX", FbxDoubleDT, 0.0);
    MaxDampStrengthY = AddProperty("MaxDampStrengthY", FbxDoubleDT, 0.0);
    MaxDampStrengthZ = AddProperty("MaxDampStrengthZ", FbxDoubleDT, 0.0);
    PreferedAngleX = AddProperty("PreferedAngleX", FbxDoubleDT, 0.0);
    PreferedAngleY = AddProperty("PreferedAngleY", FbxDoubleDT, 0.0);
    PreferedAngleZ = AddProperty("PreferedAngleZ", FbxDoubleDT, 0.0);
    LookAtProperty = AddProperty("LookAtProperty", FbxReferenceDT);
    UpVectorProperty = AddProperty("UpVectorProperty", FbxReferenceDT);
    Show = AddProperty("Show", FbxBoolDT, true);
    NegativePercentShapeSupport = AddProperty("NegativePercentShapeSupport", FbxBoolDT, true);
    DefaultAttributeIndex = AddProperty("DefaultAttributeIndex", FbxIntDT, -1);
    Freeze = AddProperty("Freeze", FbxBoolDT, false);
    LODBox = AddProperty("LODBox", FbxBoolDT, false);
}

FbxNode* FbxNode::GetParent() const { return GetDstObject<FbxNode>(0); }

int FbxNode::GetChildCount(bool recursive) const {
    int direct = GetSrcObjectCount<FbxNode>();
    if (!recursive) return direct;
    // Iterative walk; a node reached twice (two parents) counts twice, as a tree walk
    // from the root would visit it twice. Cycles are cut by the reader's scene check.
    int total = 0;
    std::vector<const FbxNode*> pending{this};
    while (!pending.empty()) {
        const FbxNode* n = pending.back();
        pending.pop_back();
        int count = n->GetSrcObjectCount<FbxNode>();
        total += count;
        for (int k = 0; k < count; ++k) pending.push_back(n->GetChild(k));
    }
    return total;
}

FbxNode* FbxNode::GetChild(int index) const { return GetSrcObject<FbxNode>(index); }

bool FbxNode::AddChild(FbxNode* child) {
    if (!child || child == this) return false;
    if (FbxNode* old = child->GetParent()) old->RemoveChild(child);
    return ConnectSrcObject(child);
}

FbxNode* FbxNode::RemoveChild(FbxNode* child) {
    return child && DisconnectSrcObject(child) ? child : nullptr;
}

int FbxNode::GetNodeAttributeCount() const { return GetSrcObjectCount<FbxNodeAttribute>(); }

FbxNodeAttribute* FbxNode::GetNodeAttributeByIndex(int index) const { return GetSrcObject<FbxNodeAttribute>(index); }

FbxNodeAttribute* FbxNode::GetNodeAttribute() const { return GetNodeAttributeByIndex(DefaultAttributeIndex.Get()); }

bool FbxNode::SetNodeAttribute(FbxNodeAttribute* attribute) {
    if (!attribute) return false;
    if (!IsConnectedSrcObject(attribute)) ConnectSrcObject(attribute);
    int count = GetNodeAttributeCount();
    for (int k = 0; k < count; ++k)
        if (GetNodeAttributeByIndex(k) == attribute) DefaultAttributeIndex.Set(k);
    return true;
}

void FbxNode::OnSrcObjectConnected(FbxObject* source) {
    // The first attribute a node gets becomes its default one.
    if (source && source->Is<FbxNodeAttribute>() && DefaultAttributeIndex.Get() < 0)
        DefaultAttributeIndex.Set(0);
}

int FbxNode::GetMaterialCount() const { return GetSrcObjectCount<FbxSurfaceMaterial>(); }

FbxObject* FbxNode::GetMaterial(int index) const { return GetSrcObject<FbxSurfaceMaterial>(index); }

// ---- attributes ----

FbxNode* FbxNodeAttribute::GetNode(int index) const { return GetDstObject<FbxNode>(index); }

int FbxNodeAttribute::GetNodeCount() const { return GetDstObjectCount<FbxNode>(); }

void FbxNodeAttribute::ConstructProperties(bool forceSet) {
    ParentClass::ConstructProperties(forceSet);
    Color = AddProperty("Color", FbxColor3DT, FbxDouble3{0.8, 0.8, 0.8}, A);
}

void FbxNull::ConstructProperties(bool forceSet) {
    ParentClass::ConstructProperties(forceSet);
    Size = AddProperty("Size", FbxDoubleDT, 100.0);
    Look = AddProperty("Look", FbxEnumDT, 1);
}

void FbxSkeleton::ConstructProperties(bool forceSet) {
    ParentClass::ConstructProperties(forceSet);
    Size = AddProperty("Size", FbxDoubleDT, 100.0);
    LimbLength = AddProperty("LimbLength", FbxDoubleDT, 1.0);
}

void FbxCamera::ConstructProperties(bool forceSet) {
    ParentClass::ConstructProperties(forceSet);
    Position = AddProperty("Position", FbxVector3DT, FbxDouble3{0, 0, -50}, A);
    UpVector = AddProperty("UpVector", FbxVector3DT, FbxDouble3{0, 1, 0}, A);
    InterestPosition = AddProperty("InterestPosition", FbxVector3DT, kZero, A);
    Roll = AddProperty("Roll", FbxRollDT, 0.0, A);
    OpticalCenterX = AddProperty("OpticalCenterX", FbxOpticalCenterXDT, 0.0, A);
    OpticalCenterY = AddProperty("OpticalCenterY", FbxOpticalCenterYDT, 0.0, A);
    BackgroundColor = AddProperty("BackgroundColor", FbxColor3DT, FbxDouble3{0.63, 0.63, 0.63}, A);
    AspectRatioMode = AddProperty("AspectRatioMode", FbxEnumDT, 0);
    AspectWidth = AddProperty("AspectWidth", FbxDoubleDT, 320.0);
    AspectHeight = AddProperty("AspectHeight", FbxDoubleDT, 200.0);
    PixelAspectRatio = AddProperty("PixelAspectRatio", FbxDoubleDT, 1.0);
    FilmWidth = AddProperty("FilmWidth", FbxDoubleDT, 0.816);
    FilmHeight = AddProperty("FilmHeight", FbxDoubleDT, 0.612);
    FilmAspectRatio = AddProperty("FilmAspectRatio", FbxDoubleDT, 0.816 / 0.612);
    ApertureMode = AddProperty("ApertureMode", FbxEnumDT, static_cast<int>(eVertical));
    GateFit = AddProperty("GateFit", FbxEnumDT, 0);
    FieldOfView = AddProperty("FieldOfView", FbxFieldOfViewDT, 25.114999771118164, A);
    FieldOfViewX = AddProperty("FieldOfViewX", FbxFieldOfViewXDT, 40.0, A);
    FieldOfViewY = AddProperty("FieldOfViewY", FbxFieldOfViewYDT, 40.0, A);
    FocalLength = AddProperty("FocalLength", FbxDoubleDT, 34.89327621672628, A);
    NearPlane = AddProperty("NearPlane", FbxDoubleDT, 10.0);
    FarPlane = AddProperty("FarPlane", FbxDoubleDT, 4000.0);
    CameraProjectionType = AddProperty("CameraProjectionType", FbxEnumDT, 0);
    OrthoZoom = AddProperty("OrthoZoom", FbxDoubleDT, 1.0);
}

void FbxLight::ConstructProperties(bool forceSet) {
    ParentClass::ConstructProperties(forceSet);
    SetDefault(Color, &kOne, eFbxDouble3);
    LightType = AddProperty("LightType", FbxEnumDT, 0);
    CastLight = AddProperty("CastLight", FbxBoolDT, true);
    DrawVolumetricLight = AddProperty("DrawVolumetricLight", FbxBoolDT, true);
    DrawGroundProjection = AddProperty("DrawGroundProjection", FbxBoolDT, true);
    DrawFrontFacingVolumetricLight = AddProperty("DrawFrontFacingVolumetricLight", FbxBoolDT, false);
    Intensity = AddProperty("Intensity", FbxDoubleDT, 100.0, A);
    InnerAngle = AddProperty("InnerAngle", FbxDoubleDT, 0.0, A);
    OuterAngle = AddProperty("OuterAngle", FbxDoubleDT, 45.0, A);
    Fog = AddProperty("Fog", FbxDoubleDT, 50.0, A);
    DecayType = AddProperty("DecayType", FbxEnumDT, 0);
    DecayStart = AddProperty("DecayStart", FbxDoubleDT, 0.0);
    FileName = AddProperty("FileName", FbxStringDT, std::string());
    EnableNearAttenuation = AddProperty("EnableNearAttenuation", FbxBoolDT, false);
    NearAttenuationStart = AddProperty("NearAttenuationStart", FbxDoubleDT, 0.0);
    NearAttenuationEnd = AddProperty("NearAttenuationEnd", FbxDoubleDT, 0.0);
    EnableFarAttenuation = AddProperty("EnableFarAttenuation", FbxBoolDT, false);
    FarAttenuationStart = AddProperty("FarAttenuationStart", FbxDoubleDT, 0.0);
    FarAttenuationEnd = AddProperty("FarAttenuationEnd", FbxDoubleDT, 0.0);
    CastShadows = AddProperty("CastShadows", FbxBoolDT, true);
    ShadowColor = AddProperty("ShadowColor", FbxColor3DT, kZero, A);
    CastLightOnObject = AddProperty("CastLightOnObject", FbxBoolDT, true);
}
