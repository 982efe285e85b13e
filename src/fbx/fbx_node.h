// FbxNode, one node of the scene tree with its transform properties, and the node
// attributes that give a node its meaning (null, skeleton, camera, light...).
#pragma once

#include "fbx/fbx_node_transform.h"
#include "fbx/fbx_object.h"

class FbxNodeAttribute;

class FbxNode : public FbxObject {
    FBX_OBJECT_DECLARE(FbxNode, FbxObject)
public:
    enum EShadingMode { eHardShading, eWireFrame, eFlatShading, eLightShading, eTextureShading, eFullShading };
    enum ECullingType { eCullingOff, eCullingOnCCW, eCullingOnCW };

    // Tree: children are the FbxNode sources of a node, its parent the first FbxNode
    // among its destinations.
    FbxNode* GetParent() const;
    int GetChildCount(bool recursive = false) const;
    FbxNode* GetChild(int index) const;
    bool AddChild(FbxNode* child);
    FbxNode* RemoveChild(FbxNode* child);

    // Attributes: the FbxNodeAttribute sources; DefaultAttributeIndex picks one.
    FbxNodeAttribute* GetNodeAttribute() const;
    int GetNodeAttributeCount() const;
    FbxNodeAttribute* GetNodeAttributeByIndex(int index) const;
    // Connects the attribute and makes it the default one.
    bool SetNodeAttribute(FbxNodeAttribute* attribute);

    // Materials: the FbxSurfaceMaterial sources.
    int GetMaterialCount() const;
    FbxObject* GetMaterial(int index) const;

    // Transform evaluation (fbx_node_eval.cpp, fbx_pivot_reset.cpp). Pivot set 0 mirrors
    // the properties, set 1 is the destination of the pivot reset. The result is cached per
    // node until the time changes or the scene's evaluator is reset.
    enum EPivotSet { eSourcePivot = 0, eDestinationPivot = 1 };
    FbxAMatrix& EvaluateGlobalTransform(FbxTime time = FbxTime::Infinite(), EPivotSet pivotSet = eSourcePivot,
                                        bool applyTarget = false, bool forceEval = false);
    FbxAMatrix& EvaluateLocalTransform(FbxTime time = FbxTime::Infinite(), EPivotSet pivotSet = eSourcePivot,
                                       bool applyTarget = false, bool forceEval = false);
    FbxVector4 GetRotationOffset(EPivotSet pivotSet) const;
    FbxVector4 GetRotationPivot(EPivotSet pivotSet) const;
    FbxVector4 GetPreRotation(EPivotSet pivotSet) const;
    FbxVector4 GetPostRotation(EPivotSet pivotSet) const;
    FbxVector4 GetScalingOffset(EPivotSet pivotSet) const;
    FbxVector4 GetScalingPivot(EPivotSet pivotSet) const;
    void UpdatePivotsFromProperties();
    void ResetPivotSetAndConvertAnimation(double frameRate = 30.0, bool keyReduce = false, bool toNodeCenter = true,
                                          bool forceResetLimits = false);
    // Pivot sets and cache; pivot set 0 is taken from the properties on first use.
    FbxNodeTransformState& GetTransformState() const;
    // The working record of a pivot set with the rotation order and inherit type of the
    // properties.
    FbxTransformRecord MakeTransformRecord(EPivotSet pivotSet) const;
    FbxTransformEvaluator& GetTransformEvaluator() const;

    EShadingMode shadingMode = eHardShading;
    ECullingType cullingType = eCullingOff;

    FbxPropertyT<FbxDouble3> LclTranslation;
    FbxPropertyT<FbxDouble3> LclRotation;
    FbxPropertyT<FbxDouble3> LclScaling;
    FbxPropertyT<double> Visibility;
    FbxPropertyT<bool> VisibilityInheritance;
    FbxPropertyT<int> QuaternionInterpolate;  // enum
    FbxPropertyT<FbxDouble3> RotationOffset;
    FbxPropertyT<FbxDouble3> RotationPivot;
    FbxPropertyT<FbxDouble3> ScalingOffset;
    FbxPropertyT<FbxDouble3> ScalingPivot;
    FbxPropertyT<bool> TranslationActive;
    FbxPropertyT<FbxDouble3> TranslationMin;
    FbxPropertyT<FbxDouble3> TranslationMax;
    FbxPropertyT<bool> TranslationMinX, TranslationMinY, TranslationMinZ;
    FbxPropertyT<bool> TranslationMaxX, TranslationMaxY, TranslationMaxZ;
    FbxPropertyT<int> RotationOrder;  // enum, 0 "Euler XYZ" to 6 "Spheric XYZ"
    FbxPropertyT<bool> RotationSpaceForLimitOnly;
    FbxPropertyT<double> RotationStiffnessX, RotationStiffnessY, RotationStiffnessZ;
    FbxPropertyT<double> AxisLen;
    FbxPropertyT<FbxDouble3> PreRotation;
    FbxPropertyT<FbxDouble3> PostRotation;
    FbxPropertyT<bool> RotationActive;
    FbxPropertyT<FbxDouble3> RotationMin;
    FbxPropertyT<FbxDouble3> RotationMax;
    FbxPropertyT<bool> RotationMinX, RotationMinY, RotationMinZ;
    FbxPropertyT<bool> RotationMaxX, RotationMaxY, RotationMaxZ;
    FbxPropertyT<int> InheritType;  // enum: 0 RrSs, 1 RSrs, 2 Rrs
    FbxPropertyT<bool> ScalingActive;
    FbxPropertyT<FbxDouble3> ScalingMin;
    FbxPropertyT<FbxDouble3> ScalingMax;
    FbxPropertyT<bool> ScalingMinX, ScalingMinY, ScalingMinZ;
    FbxPropertyT<bool> ScalingMaxX, ScalingMaxY, ScalingMaxZ;
    FbxPropertyT<FbxDouble3> GeometricTranslation;
    FbxPropertyT<FbxDouble3> GeometricRotation;
    FbxPropertyT<FbxDouble3> GeometricScaling;
    FbxPropertyT<double> MinDampRangeX, MinDampRangeY, MinDampRangeZ;
    FbxPropertyT<double> MaxDampRangeX, MaxDampRangeY, MaxDampRangeZ;
    FbxPropertyT<double> MinDampStrengthX, MinDampStrengthY, MinDampStrengthZ;
    FbxPropertyT<double> MaxDampStrengthX, MaxDampStrengthY, MaxDampStrengthZ;
    FbxPropertyT<double> PreferedAngleX, PreferedAngleY, PreferedAngleZ;
    FbxProperty LookAtProperty;    // reference
    FbxProperty UpVectorProperty;  // reference
    FbxPropertyT<bool> Show;
    FbxPropertyT<bool> NegativePercentShapeSupport;
    FbxPropertyT<int> DefaultAttributeIndex;
    FbxPropertyT<bool> Freeze;
    FbxPropertyT<bool> LODBox;

    void OnSrcObjectConnected(FbxObject* source) override;

protected:
    void ConstructProperties(bool forceSet) override;

private:
    void EvaluateTRS(FbxTime time, FbxVector4& t, FbxVector4& r, FbxVector4& s) const;
    void EvaluateTransforms(FbxTime time, EPivotSet pivotSet, bool forceEval);

    mutable FbxNodeTransformState transformState_;
    // Results for pivot set 1, which are not cached.
    FbxAMatrix otherSetGlobal_, otherSetLocal_;
};

class FbxNodeAttribute : public FbxObject {
    FBX_OBJECT_DECLARE(FbxNodeAttribute, FbxObject)
public:
    enum EType {
        eUnknown, eNull, eMarker, eSkeleton, eMesh, eNurbs, ePatch, eCamera, eCameraStereo, eCameraSwitcher, eLight,
        eOpticalReference, eOpticalMarker, eNurbsCurve, eTrimNurbsSurface, eBoundary, eNurbsSurface, eShape,
        eLODGroup, eSubDiv, eCachedEffect, eLine
    };
    virtual EType GetAttributeType() const { return eUnknown; }
    // The first node this attribute is connected to.
    FbxNode* GetNode(int index = 0) const;
    int GetNodeCount() const;

    FbxPropertyT<FbxDouble3> Color;

protected:
    void ConstructProperties(bool forceSet) override;
};

class FbxNull : public FbxNodeAttribute {
    FBX_OBJECT_DECLARE(FbxNull, FbxNodeAttribute)
public:
    EType GetAttributeType() const override { return eNull; }
    FbxPropertyT<double> Size;
    FbxPropertyT<int> Look;  // enum

protected:
    void ConstructProperties(bool forceSet) override;
};

class FbxMarker : public FbxNodeAttribute {
    FBX_OBJECT_DECLARE(FbxMarker, FbxNodeAttribute)
public:
    EType GetAttributeType() const override { return eMarker; }
};

class FbxSkeleton : public FbxNodeAttribute {
    FBX_OBJECT_DECLARE(FbxSkeleton, FbxNodeAttribute)
public:
    enum EType { eRoot, eLimb, eLimbNode, eEffector };
    FbxNodeAttribute::EType GetAttributeType() const override { return eSkeleton; }
    EType GetSkeletonType() const { return skeletonType_; }
    void SetSkeletonType(EType type) { skeletonType_ = type; }
    bool IsSkeletonRoot() const { return skeletonType_ == eRoot; }

    FbxPropertyT<double> Size;
    FbxPropertyT<double> LimbLength;

protected:
    void ConstructProperties(bool forceSet) override;

private:
    EType skeletonType_ = eRoot;
};

class FbxCamera : public FbxNodeAttribute {
    FBX_OBJECT_DECLARE(FbxCamera, FbxNodeAttribute)
public:
    enum EProjectionType { ePerspective, eOrthogonal };
    enum EApertureMode { eHorizAndVert, eHorizontal, eVertical, eFocalLength };
    EType GetAttributeType() const override { return eCamera; }
    double GetNearPlane() const { return NearPlane.Get(); }
    double GetFarPlane() const { return FarPlane.Get(); }
    EApertureMode GetApertureMode() const { return static_cast<EApertureMode>(ApertureMode.Get()); }

    FbxPropertyT<FbxDouble3> Position;
    FbxPropertyT<FbxDouble3> UpVector;
    FbxPropertyT<FbxDouble3> InterestPosition;
    FbxPropertyT<double> Roll;
    FbxPropertyT<double> OpticalCenterX;
    FbxPropertyT<double> OpticalCenterY;
    FbxPropertyT<FbxDouble3> BackgroundColor;
    FbxPropertyT<int> AspectRatioMode;  // enum
    FbxPropertyT<double> AspectWidth;
    FbxPropertyT<double> AspectHeight;
    FbxPropertyT<double> PixelAspectRatio;
    FbxPropertyT<double> FilmWidth;
    FbxPropertyT<double> FilmHeight;
    FbxPropertyT<double> FilmAspectRatio;
    FbxPropertyT<int> ApertureMode;  // enum
    FbxPropertyT<int> GateFit;       // enum
    FbxPropertyT<double> FieldOfView;
    FbxPropertyT<double> FieldOfViewX;
    FbxPropertyT<double> FieldOfViewY;
    FbxPropertyT<double> FocalLength;
    FbxPropertyT<double> NearPlane;
    FbxPropertyT<double> FarPlane;
    FbxPropertyT<int> CameraProjectionType;  // enum
    FbxPropertyT<double> OrthoZoom;

protected:
    void ConstructProperties(bool forceSet) override;
};

class FbxCameraStereo : public FbxCamera {
    FBX_OBJECT_DECLARE(FbxCameraStereo, FbxCamera)
public:
    EType GetAttributeType() const override { return eCameraStereo; }
};

class FbxCameraSwitcher : public FbxNodeAttribute {
    FBX_OBJECT_DECLARE(FbxCameraSwitcher, FbxNodeAttribute)
public:
    EType GetAttributeType() const override { return eCameraSwitcher; }
};

class FbxLight : public FbxNodeAttribute {
    FBX_OBJECT_DECLARE(FbxLight, FbxNodeAttribute)
public:
    enum EType { ePoint, eDirectional, eSpot, eArea, eVolume };
    enum EDecayType { eNone, eLinear, eQuadratic, eCubic };
    FbxNodeAttribute::EType GetAttributeType() const override { return eLight; }

    FbxPropertyT<int> LightType;  // enum
    FbxPropertyT<bool> CastLight;
    FbxPropertyT<bool> DrawVolumetricLight;
    FbxPropertyT<bool> DrawGroundProjection;
    FbxPropertyT<bool> DrawFrontFacingVolumetricLight;
    FbxPropertyT<double> Intensity;
    FbxPropertyT<double> InnerAngle;
    FbxPropertyT<double> OuterAngle;
    FbxPropertyT<double> Fog;
    FbxPropertyT<int> DecayType;  // enum
    FbxPropertyT<double> DecayStart;
    FbxPropertyT<std::string> FileName;
    FbxPropertyT<bool> EnableNearAttenuation;
    FbxPropertyT<double> NearAttenuationStart;
    FbxPropertyT<double> NearAttenuationEnd;
    FbxPropertyT<bool> EnableFarAttenuation;
    FbxPropertyT<double> FarAttenuationStart;
    FbxPropertyT<double> FarAttenuationEnd;
    FbxPropertyT<bool> CastShadows;
    FbxPropertyT<FbxDouble3> ShadowColor;
    FbxPropertyT<bool> CastLightOnObject;

protected:
    void ConstructProperties(bool forceSet) override;
};

class FbxLODGroup : public FbxNodeAttribute {
    FBX_OBJECT_DECLARE(FbxLODGroup, FbxNodeAttribute)
public:
    EType GetAttributeType() const override { return eLODGroup; }
};
