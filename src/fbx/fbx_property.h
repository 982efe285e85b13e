// FbxProperty: a copyable handle on one typed property of an object. Properties form a
// tree per object (whole names joined with '|', the root has an empty name) and are the
// ends of every connection.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "fbx/fbx_data_type.h"

template <class T> struct FbxTypeOf;
class FbxObject;
class FbxPropertyTable;
struct FbxPropertyLinks;
class FbxAnimLayer;
class FbxAnimCurveNode;
class FbxAnimCurve;
class FbxClassId;

// Property flag bits, as a P record spells them.
struct FbxPropertyFlag {
    static constexpr uint32_t Animatable = 2;     // 'A'
    static constexpr uint32_t Animated = 4;       // '+'
    static constexpr uint32_t Imported = 8;       // set on every property a reader creates
    static constexpr uint32_t UserDefined = 16;   // 'U'
    static constexpr uint32_t Hidden = 32;        // 'H'
    static constexpr uint32_t LockMask = 0x780;   // 'L' and a digit, shifted by 7
    static constexpr uint32_t MuteMask = 0x7800;  // 'M' and a digit, shifted by 11
    static constexpr uint32_t AllFlags = 0x7FFFFF;  // the 23 bits a template passes on
};

// Matches objects of one class or any of its subclasses; an empty criteria matches all.
class FbxCriteria {
public:
    FbxCriteria() = default;
    static FbxCriteria ObjectType(const FbxClassId& classId) { return FbxCriteria(&classId); }
    bool Matches(const FbxObject* object) const;
    bool operator==(const FbxCriteria&) const = default;

private:
    explicit FbxCriteria(const FbxClassId* classId) : classId_(classId) {}
    const FbxClassId* classId_ = nullptr;
};

class FbxProperty {
public:
    static constexpr uint32_t InvalidId = 0xFFFFFFFFu;

    FbxProperty() = default;
    FbxProperty(FbxPropertyTable* table, uint32_t id) : table_(table), id_(id) {}

    // Creates a child of parent (or of the object's root), or finds the existing one of
    // that name, which keeps its type.
    static FbxProperty Create(const FbxProperty& parent, const FbxDataType& type, const char* name,
                              const char* label = "", bool forceSet = true, bool* wasFound = nullptr);
    static FbxProperty Create(FbxObject* object, const FbxDataType& type, const char* name,
                              const char* label = "", bool forceSet = true, bool* wasFound = nullptr);

    bool IsValid() const { return table_ != nullptr && id_ != InvalidId; }
    bool IsRoot() const { return IsValid() && id_ == 0; }
    uint32_t GetId() const { return id_; }
    FbxObject* GetFbxObject() const;

    // Last name of the property; the root property gives its object's name.
    const char* GetName() const;
    // Names from the root down, joined with '|'.
    std::string GetHierarchicalName() const;
    const char* GetLabel() const;
    void SetLabel(const char* label);
    FbxDataType GetPropertyDataType() const;
    EFbxType GetType() const { return GetPropertyDataType().GetType(); }

    // Tree walk.
    FbxProperty GetParent() const;
    FbxProperty GetChild() const;    // first child
    FbxProperty GetSibling() const;  // next sibling
    // A child by its last name.
    FbxProperty FindChild(const char* name, bool caseSensitive = true) const;
    // Walks the tree below this property along the parts of name split at separator.
    FbxProperty Find(const char* name, const char* separator = "|", bool caseSensitive = true) const;

    // Flags.
    uint32_t GetFlags() const;
    bool GetFlag(uint32_t flag) const { return (GetFlags() & flag) == flag; }
    void ModifyFlag(uint32_t flag, bool value);
    void SetFlags(uint32_t flags);

    // Values. Get converts the stored value to the type asked for and leaves out alone
    // when the property is invalid or has no value that converts; eFbxTime reads and
    // writes the 64-bit tick count, eFbxDouble4x4 sixteen doubles, eFbxString a
    // std::string, eFbxBlob a std::string of bytes, eFbxBool a bool.
    bool Get(void* out, EFbxType type) const;
    bool Set(const void* in, EFbxType type, bool checkValueEquality = true);
    template <class T> T Get() const;
    template <class T, class = decltype(FbxTypeOf<T>::value)> bool Set(const T& value, bool checkValueEquality = true);
    // True once a value was set on the property itself rather than taken from its class
    // defaults or a template.
    bool IsValueSet() const;
    // Copies type, value, flags, limits and enum entries of another property (connections stay).
    void CopyValue(const FbxProperty& from);

    // Limits of user-defined numeric properties.
    bool HasMinLimit() const;
    bool HasMaxLimit() const;
    double GetMinLimit() const;
    double GetMaxLimit() const;
    void SetMinLimit(double value);
    void SetMaxLimit(double value);

    // Entries of an enum property.
    int AddEnumValue(const char* text);
    int GetEnumCount() const;
    const char* GetEnumValue(int index) const;

    // Connections, in the order they were made. A connection's end is a property; an
    // object's end is its root property, so "objects" below are the ends that are roots.
    bool ConnectSrcObject(FbxObject* object);
    bool ConnectDstObject(FbxObject* object);
    bool ConnectSrcProperty(const FbxProperty& property);
    bool ConnectDstProperty(const FbxProperty& property);
    bool IsConnectedSrcObject(const FbxObject* object) const;
    bool IsConnectedDstObject(const FbxObject* object) const;
    bool IsConnectedSrcProperty(const FbxProperty& property) const;
    bool IsConnectedDstProperty(const FbxProperty& property) const;
    bool DisconnectSrcObject(FbxObject* object);
    bool DisconnectDstObject(FbxObject* object);
    bool DisconnectSrcProperty(const FbxProperty& property);
    bool DisconnectDstProperty(const FbxProperty& property);

    int GetSrcObjectCount(const FbxCriteria& criteria = FbxCriteria()) const;
    FbxObject* GetSrcObject(const FbxCriteria& criteria = FbxCriteria(), int index = 0) const;
    int GetDstObjectCount(const FbxCriteria& criteria = FbxCriteria()) const;
    FbxObject* GetDstObject(const FbxCriteria& criteria = FbxCriteria(), int index = 0) const;
    FbxObject* GetSrcObject(int index) const { return GetSrcObject(FbxCriteria(), index); }
    FbxObject* GetDstObject(int index) const { return GetDstObject(FbxCriteria(), index); }
    template <class T> int GetSrcObjectCount() const { return GetSrcObjectCount(FbxCriteria::ObjectType(T::ClassId)); }
    template <class T> T* GetSrcObject(int index = 0) const {
        return static_cast<T*>(GetSrcObject(FbxCriteria::ObjectType(T::ClassId), index));
    }
    template <class T> int GetDstObjectCount() const { return GetDstObjectCount(FbxCriteria::ObjectType(T::ClassId)); }
    template <class T> T* GetDstObject(int index = 0) const {
        return static_cast<T*>(GetDstObject(FbxCriteria::ObjectType(T::ClassId), index));
    }
    // Ends that are not roots.
    int GetSrcPropertyCount() const;
    FbxProperty GetSrcProperty(int index = 0) const;
    int GetDstPropertyCount() const;
    FbxProperty GetDstProperty(int index = 0) const;
    // Every end, roots and properties alike, in connection order.
    const std::vector<FbxProperty>& Sources() const;
    const std::vector<FbxProperty>& Destinations() const;

    // Animation of the property (defined with the animation classes).
    FbxAnimCurveNode* GetCurveNode(bool create = false);
    FbxAnimCurveNode* GetCurveNode(FbxAnimLayer* layer, bool create = false);
    FbxAnimCurve* GetCurve(FbxAnimLayer* layer, const char* nodeName, const char* channelName, bool create = false);
    FbxAnimCurve* GetCurve(FbxAnimLayer* layer, bool create = false) { return GetCurve(layer, GetName(), nullptr, create); }

    FbxPropertyTable* GetTable() const { return table_; }
    bool operator==(const FbxProperty& other) const { return table_ == other.table_ && id_ == other.id_; }
    bool operator!=(const FbxProperty& other) const { return !(*this == other); }

private:
    // Appends the connection this -> destination without checking for duplicates.
    static void Link(const FbxProperty& source, const FbxProperty& destination);
    static bool Unlink(const FbxProperty& source, const FbxProperty& destination);
    const FbxPropertyLinks* LinksOf() const;

    FbxPropertyTable* table_ = nullptr;
    uint32_t id_ = InvalidId;

    friend class FbxObject;
};

// Type codes for the typed Get/Set.
template <> struct FbxTypeOf<bool> { static constexpr EFbxType value = eFbxBool; };
template <> struct FbxTypeOf<int> { static constexpr EFbxType value = eFbxInt; };
template <> struct FbxTypeOf<unsigned int> { static constexpr EFbxType value = eFbxUInt; };
template <> struct FbxTypeOf<long long> { static constexpr EFbxType value = eFbxLongLong; };
template <> struct FbxTypeOf<long> { static constexpr EFbxType value = eFbxLongLong; };
template <> struct FbxTypeOf<unsigned long long> { static constexpr EFbxType value = eFbxULongLong; };
template <> struct FbxTypeOf<float> { static constexpr EFbxType value = eFbxFloat; };
template <> struct FbxTypeOf<double> { static constexpr EFbxType value = eFbxDouble; };
template <> struct FbxTypeOf<FbxDouble2> { static constexpr EFbxType value = eFbxDouble2; };
template <> struct FbxTypeOf<FbxDouble3> { static constexpr EFbxType value = eFbxDouble3; };
template <> struct FbxTypeOf<FbxDouble4> { static constexpr EFbxType value = eFbxDouble4; };
template <> struct FbxTypeOf<FbxDouble4x4> { static constexpr EFbxType value = eFbxDouble4x4; };
template <> struct FbxTypeOf<std::string> { static constexpr EFbxType value = eFbxString; };

template <class T> T FbxProperty::Get() const {
    T value{};
    Get(&value, FbxTypeOf<T>::value);
    return value;
}

template <class T, class> bool FbxProperty::Set(const T& value, bool checkValueEquality) {
    return Set(&value, FbxTypeOf<T>::value, checkValueEquality);
}

// Typed property member of a class, e.g. FbxPropertyT<FbxDouble3> LclTranslation.
template <class T> class FbxPropertyT : public FbxProperty {
public:
    FbxPropertyT() = default;
    FbxPropertyT(const FbxProperty& property) : FbxProperty(property) {}
    FbxPropertyT& operator=(const FbxProperty& property) {
        FbxProperty::operator=(property);
        return *this;
    }
    T Get() const { return FbxProperty::Get<T>(); }
    bool Set(const T& value, bool checkValueEquality = true) { return FbxProperty::Set<T>(value, checkValueEquality); }
};
