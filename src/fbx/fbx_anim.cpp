#include "fbx/fbx_anim.h"

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

void FbxAnimCurveNode::ConstructProperties(bool forceSet) {
    ParentClass::ConstructProperties(forceSet);
    // Files give the channels as children of "d" ("d|X") without a record for "d".
    AddProperty("d", FbxCompoundDT);
}

// TEMPORARY: curve lookups on properties come with the animation classes.
FbxAnimCurveNode* FbxProperty::GetCurveNode(bool /*create*/) { return nullptr; }
FbxAnimCurveNode* FbxProperty::GetCurveNode(FbxAnimLayer* /*layer*/, bool /*create*/) { return nullptr; }
FbxAnimCurve* FbxProperty::GetCurve(FbxAnimLayer* /*layer*/, const char* /*nodeName*/, const char* /*channelName*/,
                                    bool /*create*/) {
    return nullptr;
}
