// Value types of FBX properties and the named data types that files use for them.
#pragma once

#include <array>
#include <cstdint>
#include <string>

using FbxString = std::string;

// Value type codes of a property; the negative code is an enum whose list is kept as text.
enum EFbxType : int32_t {
    eFbxUndefined = 0,
    eFbxChar = 1,
    eFbxUChar = 2,
    eFbxShort = 3,
    eFbxUShort = 4,
    eFbxUInt = 5,
    eFbxLongLong = 6,
    eFbxULongLong = 7,
    eFbxHalfFloat = 8,
    eFbxBool = 9,
    eFbxInt = 10,
    eFbxFloat = 11,
    eFbxDouble = 12,
    eFbxDouble2 = 13,
    eFbxDouble3 = 14,
    eFbxDouble4 = 15,
    eFbxDouble4x4 = 16,
    eFbxEnum = 17,
    eFbxEnumM = -17,
    eFbxString = 18,
    eFbxTime = 19,
    eFbxReference = 20,
    eFbxBlob = 21,
    eFbxDistance = 22,
    eFbxDateTime = 23,
};

using FbxDouble2 = std::array<double, 2>;
using FbxDouble3 = std::array<double, 3>;
using FbxDouble4 = std::array<double, 4>;
using FbxDouble4x4 = std::array<double, 16>;

// What a data type stands for beyond its value type: compound, reference and event
// types carry no value of their own.
enum class FbxDataTypeKind : uint8_t { Value, Compound, Reference, Event };

struct FbxDataTypeInfo {
    const char* name;
    EFbxType type;
    FbxDataTypeKind kind;
};

// A named value type. Several names share one value type ("Vector", "ColorRGB" and
// "Lcl Translation" are all double3). Default-constructed it is invalid.
class FbxDataType {
public:
    constexpr FbxDataType() = default;
    constexpr explicit FbxDataType(const FbxDataTypeInfo* info) : info_(info) {}

    bool Valid() const { return info_ != nullptr; }
    const char* GetName() const { return info_ ? info_->name : ""; }
    EFbxType GetType() const { return info_ ? info_->type : eFbxUndefined; }
    FbxDataTypeKind GetKind() const { return info_ ? info_->kind : FbxDataTypeKind::Value; }
    // True when a value of this type is read from and stored in a property.
    bool HasValue() const { return info_ && info_->kind == FbxDataTypeKind::Value && info_->type != eFbxUndefined; }
    bool operator==(const FbxDataType& other) const { return info_ == other.info_; }
    bool operator!=(const FbxDataType& other) const { return info_ != other.info_; }

private:
    const FbxDataTypeInfo* info_ = nullptr;
};

// Case-sensitive lookup among the registered names; invalid when unknown.
FbxDataType FbxGetDataTypeFromName(const char* name);
FbxDataType FbxGetDataTypeFromName(const std::string& name);

// The data types that classes use for their own properties.
extern const FbxDataType FbxUndefinedDT;
extern const FbxDataType FbxBoolDT;
extern const FbxDataType FbxCharDT;
extern const FbxDataType FbxUCharDT;
extern const FbxDataType FbxShortDT;
extern const FbxDataType FbxUShortDT;
extern const FbxDataType FbxIntDT;
extern const FbxDataType FbxUIntDT;
extern const FbxDataType FbxLongLongDT;
extern const FbxDataType FbxULongLongDT;
extern const FbxDataType FbxHalfFloatDT;
extern const FbxDataType FbxFloatDT;
extern const FbxDataType FbxDoubleDT;
extern const FbxDataType FbxDouble2DT;
extern const FbxDataType FbxDouble3DT;
extern const FbxDataType FbxDouble4DT;
extern const FbxDataType FbxDouble4x4DT;
extern const FbxDataType FbxEnumDT;
extern const FbxDataType FbxStringDT;
extern const FbxDataType FbxTimeDT;
extern const FbxDataType FbxReferenceDT;
extern const FbxDataType FbxBlobDT;
extern const FbxDataType FbxDistanceDT;
extern const FbxDataType FbxDateTimeDT;
extern const FbxDataType FbxCompoundDT;
extern const FbxDataType FbxColor3DT;
extern const FbxDataType FbxColor4DT;
extern const FbxDataType FbxVector3DT;
extern const FbxDataType FbxNumberDT;
extern const FbxDataType FbxTranslationDT;
extern const FbxDataType FbxRotationDT;
extern const FbxDataType FbxScalingDT;
extern const FbxDataType FbxLocalTranslationDT;
extern const FbxDataType FbxLocalRotationDT;
extern const FbxDataType FbxLocalScalingDT;
extern const FbxDataType FbxVisibilityDT;
extern const FbxDataType FbxVisibilityInheritanceDT;
extern const FbxDataType FbxUrlDT;
extern const FbxDataType FbxXRefUrlDT;
extern const FbxDataType FbxFieldOfViewDT;
extern const FbxDataType FbxFieldOfViewXDT;
extern const FbxDataType FbxFieldOfViewYDT;
extern const FbxDataType FbxOpticalCenterXDT;
extern const FbxDataType FbxOpticalCenterYDT;
extern const FbxDataType FbxRollDT;
extern const FbxDataType FbxIntensityDT;
extern const FbxDataType FbxActionDT;
