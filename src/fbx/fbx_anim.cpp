#include "fbx/fbx_anim.h"

#include <cstring>

#include "fbx/fbx_manager.h"

FBX_OBJECT_IMPLEMENT(FbxAnimStack, FbxCollection, "AnimationStack", "")
FBX_OBJECT_IMPLEMENT(FbxAnimLayer, FbxCollection, "AnimationLayer", "")
FBX_OBJECT_IMPLEMENT(FbxAnimCurveNode, FbxObject, "AnimationCurveNode", "")
FBX_OBJECT_IMPLEMENT(FbxAnimCurveBase, FbxObject, "", "")
FBX_OBJECT_IMPLEMENT(FbxAnimCurve, FbxAnimCurveBase, "AnimationCurve", "")
FBX_OBJECT_IMPLEMENT(FbxAnimCurveKFCurve, FbxAnimCurve, "AnimationCurve", "")
FBX_OBJECT_IMPLEMENT(FbxAnimEvaluator, FbxObject, "", "")
FBX_OBJECT_IMPLEMENT(FbxAnimEvalClassic, FbxAnimEvaluator, "AnimationEvaluator", "")

void FbxAnimStack::ConstructProperties(bool forceSet) {
    ParentClass::ConstructProperties(forceSet);
    Description = AddProperty("Description", FbxStringDT, std::string());
    int64_t zero = 0;
    LocalStart = AddProperty("LocalStart", FbxTimeDT);
    LocalStop = AddProperty("LocalStop", FbxTimeDT);
    ReferenceStart = AddProperty("ReferenceStart", FbxTimeDT);
    ReferenceStop = AddProperty("ReferenceStop", FbxTimeDT);
    for (FbxProperty* p : {&LocalStart, &LocalStop, &ReferenceStart, &ReferenceStop}) SetDefault(*p, &zero, eFbxTime);
}

void FbxAnimLayer::ConstructProperties(bool forceSet) {
    ParentClass::ConstructProperties(forceSet);
    constexpr uint32_t A = FbxPropertyFlag::Animatable;
    Weight = AddProperty("Weight", FbxDoubleDT, 100.0, A);
    Mute = AddProperty("Mute", FbxBoolDT, false);
    Solo = AddProperty("Solo", FbxBoolDT, false);
    Lock = AddProperty("Lock", FbxBoolDT, false);
    Color = AddProperty("Color", FbxColor3DT, FbxDouble3{0.8, 0.8, 0.8});
    BlendMode = AddProperty("BlendMode", FbxEnumDT, 0);
    RotationAccumulationMode = AddProperty("RotationAccumulationMode", FbxEnumDT, 0);
    ScaleAccumulationMode = AddProperty("ScaleAccumulationMode", FbxEnumDT, 0);
    BlendModeBypass = AddProperty("BlendModeBypass", FbxULongLongDT, 0ull);
}

// ---- curves ----

FbxTime FbxAnimCurve::KeyGetTime(int index) const { return Valid(index) ? keys_.Time(index) : FbxTime(); }

float FbxAnimCurve::KeyGetValue(int index) const { return Valid(index) ? keys_.Value(index) : 0.0f; }

uint32_t FbxAnimCurve::KeyGetFlags(int index) const { return Valid(index) ? keys_.Flags(index) : 0u; }

int FbxAnimCurve::KeyGetInterpolation(int index) const {
    return Valid(index) ? int(keys_.Flags(index) & kFbxInterpolationMask) : int(kFbxInterpolationCubic);
}

int FbxAnimCurve::KeyGetTangentMode(int index) const {
    return Valid(index) ? int(keys_.Flags(index) & kFbxTangentMask) : int(kFbxTangentAuto);
}

void FbxAnimCurve::SetPreExtrapolation(FbxExtrapolation mode, uint32_t count) {
    keys_.preExtrapolation = mode;
    keys_.preExtrapolationCount = count;
}

void FbxAnimCurve::SetPostExtrapolation(FbxExtrapolation mode, uint32_t count) {
    keys_.postExtrapolation = mode;
    keys_.postExtrapolationCount = count;
}

int FbxAnimCurve::KeyAdd(FbxTime time, int* lastIndex) {
    const int index = keys_.KeyAdd(time);
    if (lastIndex) *lastIndex = index;
    return index;
}

void FbxAnimCurve::KeySetValue(int index, float value) {
    if (Valid(index)) keys_.SetValue(index, value);
}

void FbxAnimCurve::KeySetInterpolation(int index, int interpolation) {
    if (!Valid(index)) return;
    FbxAnimKeyAttr& attr = keys_.MutableAttr(index);
    attr.flags = (attr.flags & ~uint32_t(kFbxInterpolationMask)) | (uint32_t(interpolation) & kFbxInterpolationMask);
}

void FbxAnimCurve::KeySetTangentMode(int index, int tangentMode) {
    if (!Valid(index)) return;
    FbxAnimKeyAttr& attr = keys_.MutableAttr(index);
    attr.flags = (attr.flags & ~uint32_t(kFbxTangentMask)) | (uint32_t(tangentMode) & kFbxTangentMask);
}

void FbxAnimCurve::KeySetRightDerivative(int index, float slope) {
    if (Valid(index)) keys_.MutableAttr(index).data[0] = FbxFloatToBits(slope);
}

void FbxAnimCurve::KeySetLeftDerivative(int index, float slope) {
    if (Valid(index) && index > 0) keys_.MutableAttr(index - 1).data[1] = FbxFloatToBits(slope);
}

bool FbxAnimCurve::KeyRemove(int index) {
    if (!Valid(index)) return false;
    keys_.KeyRemove(index);
    return true;
}

// ---- curve nodes ----

void FbxAnimCurveNode::ConstructProperties(bool forceSet) {
    ParentClass::ConstructProperties(forceSet);
    // Files give the channels as children of "d" ("d|X") without a record for "d".
    AddProperty("d", FbxCompoundDT);
}

FbxProperty FbxAnimCurveNode::Channels() const { return RootProperty.FindChild("d"); }

int FbxAnimCurveNode::GetChannelsCount() const {
    int count = 0;
    for (FbxProperty c = Channels().GetChild(); c.IsValid(); c = c.GetSibling()) ++count;
    return count;
}

FbxProperty FbxAnimCurveNode::GetChannel(int index) const {
    if (index < 0) return FbxProperty();
    FbxProperty c = Channels().GetChild();
    for (int k = 0; k < index && c.IsValid(); ++k) c = c.GetSibling();
    return c;
}

FbxProperty FbxAnimCurveNode::GetChannel(const char* name) const {
    const FbxProperty channels = Channels();
    return name && channels.IsValid() ? channels.FindChild(name) : FbxProperty();
}

int FbxAnimCurveNode::GetChannelIndex(const char* name) const {
    if (!name) return -1;
    int index = 0;
    for (FbxProperty c = Channels().GetChild(); c.IsValid(); c = c.GetSibling(), ++index) {
        if (std::strcmp(c.GetName(), name) == 0) return index;
    }
    return -1;
}

const char* FbxAnimCurveNode::GetChannelName(int index) const {
    const FbxProperty channel = GetChannel(index);
    return channel.IsValid() ? channel.GetName() : "";
}

double FbxAnimCurveNode::GetChannelValue(int index, double defaultValue) const {
    const FbxProperty channel = GetChannel(index);
    double value = defaultValue;
    if (channel.IsValid()) channel.Get(&value, eFbxDouble);
    return value;
}

double FbxAnimCurveNode::GetChannelValue(const char* name, double defaultValue) const {
    const FbxProperty channel = GetChannel(name);
    double value = defaultValue;
    if (channel.IsValid()) channel.Get(&value, eFbxDouble);
    return value;
}

bool FbxAnimCurveNode::SetChannelValue(int index, double value) {
    FbxProperty channel = GetChannel(index);
    return channel.IsValid() && channel.Set(&value, eFbxDouble);
}

bool FbxAnimCurveNode::AddChannel(const char* name, const FbxDataType& type, double value) {
    bool found = false;
    FbxProperty channel = FbxProperty::Create(Channels(), type, name, "", true, &found);
    if (!channel.IsValid() || found) return false;
    channel.ModifyFlag(FbxPropertyFlag::Animatable, true);
    channel.Set(&value, eFbxDouble);
    return true;
}

int FbxAnimCurveNode::GetCurveCount(int channel) const {
    const FbxProperty property = GetChannel(channel);
    return property.IsValid() ? property.GetSrcObjectCount<FbxAnimCurve>() : 0;
}

FbxAnimCurve* FbxAnimCurveNode::GetCurve(int channel, int index) const {
    const FbxProperty property = GetChannel(channel);
    return property.IsValid() ? property.GetSrcObject<FbxAnimCurve>(index) : nullptr;
}

bool FbxAnimCurveNode::ConnectToChannel(FbxAnimCurve* curve, int channel) {
    FbxProperty property = GetChannel(channel);
    return curve && property.IsValid() && property.ConnectSrcObject(curve);
}

FbxAnimCurve* FbxAnimCurveNode::CreateCurve(const char* /*curveNodeName*/, int channel) {
    FbxProperty property = GetChannel(channel);
    if (!property.IsValid()) return nullptr;
    FbxAnimCurve* curve = nullptr;
    if (GetDocument()) {
        curve = FbxAnimCurveKFCurve::Create(static_cast<FbxObject*>(GetDocument()), property.GetName());
    } else {
        curve = FbxAnimCurveKFCurve::Create(GetFbxManager(), property.GetName());
    }
    if (curve) property.ConnectSrcObject(curve);
    return curve;
}

FbxAnimCurveNode* FbxAnimCurveNode::CreateTypedCurveNode(const FbxProperty& property, FbxScene* scene) {
    if (!property.IsValid()) return nullptr;
    FbxObject* owner = property.GetFbxObject();
    FbxObject* container = scene ? static_cast<FbxObject*>(scene) : owner->GetDocument();
    FbxAnimCurveNode* node = container ? Create(container, property.GetName()) : Create(owner->GetFbxManager(), property.GetName());
    if (!node) return nullptr;

    static const char* const kAxes[] = {"X", "Y", "Z", "W"};
    int components = 0;
    switch (property.GetType()) {
        case eFbxDouble2:
            components = 2;
            break;
        case eFbxDouble3:
            components = 3;
            break;
        case eFbxDouble4:
            components = 4;
            break;
        case eFbxChar: case eFbxUChar: case eFbxShort: case eFbxUShort: case eFbxUInt: case eFbxLongLong:
        case eFbxULongLong: case eFbxHalfFloat: case eFbxBool: case eFbxInt: case eFbxFloat: case eFbxDouble:
        case eFbxEnum:
            components = 1;
            break;
        default:
            break;
    }
    if (components == 1) {
        double value = 0.0;
        property.Get(&value, eFbxDouble);
        node->AddChannel(property.GetName(), property.GetPropertyDataType(), value);
    } else if (components > 1) {
        FbxDouble4 value{};
        property.Get(&value, eFbxDouble4);
        for (int k = 0; k < components; ++k) node->AddChannel(kAxes[k], FbxNumberDT, value[k]);
    }
    return node;
}
