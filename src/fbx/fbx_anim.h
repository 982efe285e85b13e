// Animation objects: stacks, layers, curve nodes and curves. A stack's layers are its
// FbxAnimLayer sources (index 0 the base layer); a layer's curve nodes are its
// FbxAnimCurveNode sources; a curve node is also a source of the property it animates,
// and each of its channels (the children of its compound "d") has FbxAnimCurve sources.
#pragma once

#include <cstdint>

#include "fbx/fbx_anim_eval.h"
#include "fbx/fbx_anim_keys.h"
#include "fbx/fbx_document.h"
#include "fbx/fbx_object.h"
#include "fbx/fbx_time.h"

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

class FbxAnimCurveBase : public FbxObject {
    FBX_OBJECT_DECLARE(FbxAnimCurveBase, FbxObject)
};

// A curve over a key store. Times are FbxTime ticks, values floats.
class FbxAnimCurve : public FbxAnimCurveBase {
    FBX_OBJECT_DECLARE(FbxAnimCurve, FbxAnimCurveBase)
public:
    int KeyGetCount() const { return keys_.KeyCount(); }
    // Index out of range: time 0, value 0, flags 0, interpolation 8 (cubic).
    FbxTime KeyGetTime(int index) const;
    float KeyGetValue(int index) const;
    uint32_t KeyGetFlags(int index) const;
    int KeyGetInterpolation(int index) const;  // flags and 14
    int KeyGetTangentMode(int index) const;    // flags and 0xF00
    float KeyGetLeftDerivative(int index) const { return KeyLeftDerivative(keys_, index); }
    float KeyGetRightDerivative(int index) const { return KeyRightDerivative(keys_, index); }

    // Value at a time, and the derivatives per second on either side of it. A null index
    // searches from (and updates) the curve's own last-search index.
    float Evaluate(FbxTime time, int* lastIndex = nullptr) const { return EvaluateCurve(keys_, time, lastIndex); }
    float EvaluateLeftDerivative(FbxTime time, int* lastIndex = nullptr) const {
        return EvaluateCurveLeftDerivative(keys_, time, lastIndex);
    }
    float EvaluateRightDerivative(FbxTime time, int* lastIndex = nullptr) const {
        return EvaluateCurveRightDerivative(keys_, time, lastIndex);
    }

    float GetDefaultValue() const { return keys_.defaultValue; }
    void SetDefaultValue(float value) { keys_.defaultValue = value; }
    FbxExtrapolation GetPreExtrapolation() const { return keys_.preExtrapolation; }
    uint32_t GetPreExtrapolationCount() const { return keys_.preExtrapolationCount; }
    FbxExtrapolation GetPostExtrapolation() const { return keys_.postExtrapolation; }
    uint32_t GetPostExtrapolationCount() const { return keys_.postExtrapolationCount; }
    void SetPreExtrapolation(FbxExtrapolation mode, uint32_t count = kFbxUnlimited);
    void SetPostExtrapolation(FbxExtrapolation mode, uint32_t count = kFbxUnlimited);

    // Editing. Changes take effect at once; the begin/end pair only brackets them.
    void KeyModifyBegin() {}
    void KeyModifyEnd() {}
    // The index of a new key at the time (cubic, auto tangents with slopes 0), or of the
    // key already there.
    int KeyAdd(FbxTime time, int* lastIndex = nullptr);
    void KeySetValue(int index, float value);
    void KeySetInterpolation(int index, int interpolation);
    void KeySetTangentMode(int index, int tangentMode);
    // Stored slopes: the right one lives on the key, the left one on the key before it.
    void KeySetRightDerivative(int index, float slope);
    void KeySetLeftDerivative(int index, float slope);
    bool KeyRemove(int index);
    void KeyClear() { keys_.Clear(); }

    FbxAnimKeyStore& KeyStore() { return keys_; }
    const FbxAnimKeyStore& KeyStore() const { return keys_; }

private:
    bool Valid(int index) const { return index >= 0 && index < keys_.KeyCount(); }

    FbxAnimKeyStore keys_;
};

class FbxAnimCurveKFCurve : public FbxAnimCurve {
    FBX_OBJECT_DECLARE(FbxAnimCurveKFCurve, FbxAnimCurve)
};

// Source of a layer and of the animated property. Its channels are the children of the
// compound "d" ("d|X", "d|Y", "d|Z" for a double3, "d|DeformPercent" for a number); a
// channel's value is the default the animated property takes where no curve speaks.
class FbxAnimCurveNode : public FbxObject {
    FBX_OBJECT_DECLARE(FbxAnimCurveNode, FbxObject)
public:
    // A node named after the property with its channels and their values taken from the
    // property: X, Y, Z (and W) for a vector, one channel of the property's name for a
    // number, boolean or enum, none otherwise. Made in the property's scene, else in its
    // object's document.
    static FbxAnimCurveNode* CreateTypedCurveNode(const FbxProperty& property, FbxScene* scene);

    int GetChannelsCount() const;
    FbxProperty GetChannel(int index) const;
    FbxProperty GetChannel(const char* name) const;
    int GetChannelIndex(const char* name) const;  // -1 when absent
    const char* GetChannelName(int index) const;  // "" when absent
    // A channel's value, converted to double; the default when the channel is absent.
    double GetChannelValue(int index, double defaultValue) const;
    double GetChannelValue(const char* name, double defaultValue) const;
    bool SetChannelValue(int index, double value);
    // Adds a channel (child of "d") of the data type with the value; false when the name
    // is taken.
    bool AddChannel(const char* name, const FbxDataType& type, double value);

    int GetCurveCount(int channel) const;
    FbxAnimCurve* GetCurve(int channel, int index = 0) const;
    bool ConnectToChannel(FbxAnimCurve* curve, int channel);
    // A curve without keys, made next to the node and connected to the channel.
    FbxAnimCurve* CreateCurve(const char* curveNodeName, int channel);

    // The property the node animates, set by the reader when the node has exactly one
    // destination property.
    FbxProperty GetBoundProperty() const { return boundProperty_; }
    void SetBoundProperty(const FbxProperty& property) { boundProperty_ = property; }

protected:
    void ConstructProperties(bool forceSet) override;

private:
    FbxProperty Channels() const;

    FbxProperty boundProperty_;
};

class FbxAnimEvaluator : public FbxObject {
    FBX_OBJECT_DECLARE(FbxAnimEvaluator, FbxObject)
};

class FbxAnimEvalClassic : public FbxAnimEvaluator {
    FBX_OBJECT_DECLARE(FbxAnimEvalClassic, FbxAnimEvaluator)
};
