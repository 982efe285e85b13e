#include "fbx/fbx_data_type.h"

#include <cstring>
#include <string_view>
#include <unordered_map>

namespace {

using K = FbxDataTypeKind;

// Every name a P record may give as its type or sub type. Names that authoring tools
// write for semantic types ("Lcl Translation", "FieldOfView") share a value type.
const FbxDataTypeInfo kTypes[] = {
    {"", eFbxUndefined, K::Value},
    {"Char", eFbxChar, K::Value},
    {"UChar", eFbxUChar, K::Value},
    {"UByte", eFbxUChar, K::Value},
    {"Short", eFbxShort, K::Value},
    {"UShort", eFbxUShort, K::Value},
    {"UInteger", eFbxUInt, K::Value},
    {"LongLong", eFbxLongLong, K::Value},
    {"ULongLong", eFbxULongLong, K::Value},
    {"HalfFloat", eFbxHalfFloat, K::Value},
    {"bool", eFbxBool, K::Value},
    {"Bool", eFbxBool, K::Value},
    {"int", eFbxInt, K::Value},
    {"Integer", eFbxInt, K::Value},
    {"float", eFbxFloat, K::Value},
    {"Float", eFbxFloat, K::Value},
    {"double", eFbxDouble, K::Value},
    {"Number", eFbxDouble, K::Value},
    {"Double", eFbxDouble, K::Value},
    {"Vector2D", eFbxDouble2, K::Value},
    {"Vector2", eFbxDouble2, K::Value},
    {"Vector3D", eFbxDouble3, K::Value},
    {"Vector", eFbxDouble3, K::Value},
    {"ColorRGB", eFbxDouble3, K::Value},
    {"Color", eFbxDouble3, K::Value},
    {"Translation", eFbxDouble3, K::Value},
    {"Rotation", eFbxDouble3, K::Value},
    {"Scaling", eFbxDouble3, K::Value},
    {"Lcl Translation", eFbxDouble3, K::Value},
    {"Lcl Rotation", eFbxDouble3, K::Value},
    {"Lcl Scaling", eFbxDouble3, K::Value},
    {"Vector4D", eFbxDouble4, K::Value},
    {"Vector4", eFbxDouble4, K::Value},
    {"ColorAndAlpha", eFbxDouble4, K::Value},
    {"ColorRGBA", eFbxDouble4, K::Value},
    {"Matrix", eFbxDouble4x4, K::Value},
    {"matrix4x4", eFbxDouble4x4, K::Value},
    {"enum", eFbxEnum, K::Value},
    {"Enum", eFbxEnum, K::Value},
    {"KString", eFbxString, K::Value},
    {"charptr", eFbxString, K::Value},
    {"String", eFbxString, K::Value},
    {"Url", eFbxString, K::Value},
    {"XRefUrl", eFbxString, K::Value},
    {"KTime", eFbxTime, K::Value},
    {"Time", eFbxTime, K::Value},
    {"object", eFbxReference, K::Reference},
    {"Reference", eFbxReference, K::Reference},
    {"ReferenceProperty", eFbxReference, K::Reference},
    {"Blob", eFbxBlob, K::Value},
    {"Distance", eFbxDistance, K::Value},
    {"DateTime", eFbxDateTime, K::Value},
    {"Compound", eFbxUndefined, K::Compound},
    {"Event", eFbxUndefined, K::Event},
    {"Action", eFbxBool, K::Value},
    {"Visibility", eFbxDouble, K::Value},
    {"Visibility Inheritance", eFbxBool, K::Value},
    {"FieldOfView", eFbxDouble, K::Value},
    {"FieldOfViewX", eFbxDouble, K::Value},
    {"FieldOfViewY", eFbxDouble, K::Value},
    {"OpticalCenterX", eFbxDouble, K::Value},
    {"OpticalCenterY", eFbxDouble, K::Value},
    {"Roll", eFbxDouble, K::Value},
    {"Intensity", eFbxDouble, K::Value},
    {"Weight", eFbxDouble, K::Value},
    {"IK Reach Translation", eFbxDouble, K::Value},
    {"IK Reach Rotation", eFbxDouble, K::Value},
};

const FbxDataTypeInfo* Named(const char* name) {
    for (const FbxDataTypeInfo& t : kTypes)
        if (std::strcmp(t.name, name) == 0) return &t;
    return nullptr;
}

const std::unordered_map<std::string_view, const FbxDataTypeInfo*>& Registry() {
    static const auto* registry = [] {
        auto* map = new std::unordered_map<std::string_view, const FbxDataTypeInfo*>();
        for (const FbxDataTypeInfo& t : kTypes)
            if (*t.name) map->emplace(t.name, &t);
        return map;
    }();
    return *registry;
}

}  // namespace

FbxDataType FbxGetDataTypeFromName(const char* name) {
    if (!name || !*name) return FbxDataType();
    return FbxGetDataTypeFromName(std::string(name));
}

FbxDataType FbxGetDataTypeFromName(const std::string& name) {
    if (name.empty()) return FbxDataType();
    const auto& registry = Registry();
    auto it = registry.find(name);
    return it == registry.end() ? FbxDataType() : FbxDataType(it->second);
}

const FbxDataType FbxUndefinedDT(Named(""));
const FbxDataType FbxBoolDT(Named("bool"));
const FbxDataType FbxCharDT(Named("Char"));
const FbxDataType FbxUCharDT(Named("UChar"));
const FbxDataType FbxShortDT(Named("Short"));
const FbxDataType FbxUShortDT(Named("UShort"));
const FbxDataType FbxIntDT(Named("int"));
const FbxDataType FbxUIntDT(Named("UInteger"));
const FbxDataType FbxLongLongDT(Named("LongLong"));
const FbxDataType FbxULongLongDT(Named("ULongLong"));
const FbxDataType FbxHalfFloatDT(Named("HalfFloat"));
const FbxDataType FbxFloatDT(Named("float"));
const FbxDataType FbxDoubleDT(Named("double"));
const FbxDataType FbxDouble2DT(Named("Vector2D"));
const FbxDataType FbxDouble3DT(Named("Vector3D"));
const FbxDataType FbxDouble4DT(Named("Vector4D"));
const FbxDataType FbxDouble4x4DT(Named("Matrix"));
const FbxDataType FbxEnumDT(Named("enum"));
const FbxDataType FbxStringDT(Named("KString"));
const FbxDataType FbxTimeDT(Named("KTime"));
const FbxDataType FbxReferenceDT(Named("object"));
const FbxDataType FbxBlobDT(Named("Blob"));
const FbxDataType FbxDistanceDT(Named("Distance"));
const FbxDataType FbxDateTimeDT(Named("DateTime"));
const FbxDataType FbxCompoundDT(Named("Compound"));
const FbxDataType FbxColor3DT(Named("ColorRGB"));
const FbxDataType FbxColor4DT(Named("ColorAndAlpha"));
const FbxDataType FbxVector3DT(Named("Vector"));
const FbxDataType FbxNumberDT(Named("Number"));
const FbxDataType FbxTranslationDT(Named("Translation"));
const FbxDataType FbxRotationDT(Named("Rotation"));
const FbxDataType FbxScalingDT(Named("Scaling"));
const FbxDataType FbxLocalTranslationDT(Named("Lcl Translation"));
const FbxDataType FbxLocalRotationDT(Named("Lcl Rotation"));
const FbxDataType FbxLocalScalingDT(Named("Lcl Scaling"));
const FbxDataType FbxVisibilityDT(Named("Visibility"));
const FbxDataType FbxVisibilityInheritanceDT(Named("Visibility Inheritance"));
const FbxDataType FbxUrlDT(Named("Url"));
const FbxDataType FbxXRefUrlDT(Named("XRefUrl"));
const FbxDataType FbxFieldOfViewDT(Named("FieldOfView"));
const FbxDataType FbxFieldOfViewXDT(Named("FieldOfViewX"));
const FbxDataType FbxFieldOfViewYDT(Named("FieldOfViewY"));
const FbxDataType FbxOpticalCenterXDT(Named("OpticalCenterX"));
const FbxDataType FbxOpticalCenterYDT(Named("OpticalCenterY"));
const FbxDataType FbxRollDT(Named("Roll"));
const FbxDataType FbxIntensityDT(Named("Intensity"));
const FbxDataType FbxActionDT(Named("Action"));
