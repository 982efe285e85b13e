// Animation objects: stacks, layers, curve nodes and curves.
// TEMPORARY: minimal classes that the reader creates, connects and post-processes; the
// key store, curve evaluation and channel access come with the animation work.
#pragma once

#include <cstdint>

#include "fbx/fbx_document.h"
#include "fbx/fbx_object.h"

// A take: its layers are the FbxAnimLayer sources, index 0 the base layer.
class FbxAnimStack : public FbxCollection {
    FBX_OBJECT_DECLARE(FbxAnimStack, FbxCollection)
public:
    FbxPropertyT<std::string> Description;
    FbxProperty LocalStart;  // time properties, in ticks
    FbxProperty LocalStop;
    FbxProperty ReferenceStart;
    FbxProperty ReferenceStop;

protected:
    void ConstructProperties(bool forceSet) override;
};

// Curve nodes of the layer are its FbxAnimCurveNode sources.
class FbxAnimLayer : public FbxCollection {
    FBX_OBJECT_DECLARE(FbxAnimLayer, FbxCollection)
public:
    FbxPropertyT<double> Weight;
    FbxPropertyT<bool> Mute;
    FbxPropertyT<bool> Solo;
    FbxPropertyT<bool> Lock;
    FbxPropertyT<FbxDouble3> Color;
    FbxPropertyT<int> BlendMode;                 // enum
    FbxPropertyT<int> RotationAccumulationMode;  // enum
    FbxPropertyT<int> ScaleAccumulationMode;     // enum
    FbxPropertyT<unsigned long long> BlendModeBypass;

protected:
    void ConstructProperties(bool forceSet) override;
};

// Source of a layer and of the animated property. Channel values are the children of
// the compound "d" ("d|X", "d|Y", "d|Z" for a double3), made by the file's P records.
class FbxAnimCurveNode : public FbxObject {
    FBX_OBJECT_DECLARE(FbxAnimCurveNode, FbxObject)
public:
    // The property the node animates, set by the reader when the node has exactly one
    // destination property.
    FbxProperty GetBoundProperty() const { return boundProperty_; }
    void SetBoundProperty(const FbxProperty& property) { boundProperty_ = property; }

protected:
    void ConstructProperties(bool forceSet) override;

private:
    FbxProperty boundProperty_;
};

class FbxAnimCurveBase : public FbxObject {
    FBX_OBJECT_DECLARE(FbxAnimCurveBase, FbxObject)
};

class FbxAnimCurve : public FbxAnimCurveBase {
    FBX_OBJECT_DECLARE(FbxAnimCurve, FbxAnimCurveBase)
};

class FbxAnimCurveKFCurve : public FbxAnimCurve {
    FBX_OBJECT_DECLARE(FbxAnimCurveKFCurve, FbxAnimCurve)
};

class FbxAnimEvaluator : public FbxObject {
    FBX_OBJECT_DECLARE(FbxAnimEvaluator, FbxObject)
};

class FbxAnimEvalClassic : public FbxAnimEvaluator {
    FBX_OBJECT_DECLARE(FbxAnimEvalClassic, FbxAnimEvaluator)
};
