#include "fbx/fbx_properties70.h"

#include <string>
#include <vector>

#include "fbx/fbx_field_stream.h"
#include "fbx/fbx_object.h"
#include "fbx/fbx_property_table.h"

namespace {

constexpr size_t kNameLimit = 1022;

uint32_t DigitCode(char c) {
    if (c >= '1' && c <= '9') return static_cast<uint32_t>(c - '0');
    if (c >= 'a' && c <= 'd') return static_cast<uint32_t>(c - 'a' + 10);
    return 15;
}

// The flag bits a P record decides; all others stay as they are.
constexpr uint32_t kRecordFlags = FbxPropertyFlag::Animatable | FbxPropertyFlag::Animated |
                                  FbxPropertyFlag::UserDefined | FbxPropertyFlag::Hidden |
                                  FbxPropertyFlag::LockMask | FbxPropertyFlag::MuteMask;

std::string ReadName(FbxFieldStream& stream) {
    std::string s = stream.ReadString();
    if (s.size() > kNameLimit) s.resize(kNameLimit);
    return s;
}

// The value of a property's own type at the cursor, as a number for the limits.
double ReadNumber(FbxFieldStream& stream, EFbxType type) {
    switch (type) {
    case eFbxChar: return static_cast<int8_t>(stream.ReadByte());
    case eFbxUChar: return stream.ReadByte();
    case eFbxShort: return stream.ReadShort();
    case eFbxUShort: return static_cast<uint16_t>(stream.ReadShort());
    case eFbxUInt: return static_cast<uint32_t>(stream.ReadInt());
    case eFbxULongLong: return static_cast<double>(static_cast<uint64_t>(stream.ReadLong()));
    case eFbxInt: return stream.ReadInt();
    case eFbxHalfFloat: case eFbxFloat: return stream.ReadFloat();
    default: return stream.ReadDouble();
    }
}

void ReadValue(FbxFieldStream& stream, FbxProperty& property) {
    EFbxType type = property.GetType();
    switch (type) {
    case eFbxChar: { int8_t v = static_cast<int8_t>(stream.ReadByte()); property.Set(&v, type); break; }
    case eFbxUChar: { uint8_t v = stream.ReadByte(); property.Set(&v, type); break; }
    case eFbxShort: { int16_t v = stream.ReadShort(); property.Set(&v, type); break; }
    case eFbxUShort: { uint16_t v = static_cast<uint16_t>(stream.ReadShort()); property.Set(&v, type); break; }
    case eFbxUInt: { uint32_t v = static_cast<uint32_t>(stream.ReadInt()); property.Set(&v, type); break; }
    case eFbxLongLong: case eFbxTime: { int64_t v = stream.ReadLong(); property.Set(&v, type); break; }
    case eFbxULongLong: { uint64_t v = static_cast<uint64_t>(stream.ReadLong()); property.Set(&v, type); break; }
    case eFbxHalfFloat: case eFbxFloat: { float v = stream.ReadFloat(); property.Set(&v, eFbxFloat); break; }
    case eFbxBool: { bool v = stream.ReadInt() != 0; property.Set(&v, type); break; }
    case eFbxInt: case eFbxEnum: case eFbxEnumM: { int32_t v = stream.ReadInt(); property.Set(&v, type); break; }
    case eFbxDouble: { double v = stream.ReadDouble(); property.Set(&v, type); break; }
    case eFbxDouble2: case eFbxDouble3: case eFbxDouble4: case eFbxDouble4x4: {
        int n = type == eFbxDouble2 ? 2 : type == eFbxDouble3 ? 3 : type == eFbxDouble4 ? 4 : 16;
        double v[16] = {};
        for (int k = 0; k < n; ++k) v[k] = stream.ReadDouble();
        property.Set(v, type);
        break;
    }
    case eFbxString: case eFbxDateTime: { std::string v = stream.ReadString(); property.Set(&v, type); break; }
    case eFbxBlob: {
        // Writers give either the raw value itself or its size and a nested
        // BinaryData record that holds it.
        size_t length = 0;
        const uint8_t* data = nullptr;
        if (stream.ValueCode() == 'R') {
            data = stream.ReadBlob(length);
        } else if (stream.HasBlock() && stream.BeginBlock()) {
            if (stream.BeginField("BinaryData")) {
                data = stream.ReadBlob(length);
                std::string v = data ? std::string(reinterpret_cast<const char*>(data), length) : std::string();
                property.Set(&v, type);
                stream.EndField();
            }
            stream.EndBlock();
            break;
        }
        std::string v = data ? std::string(reinterpret_cast<const char*>(data), length) : std::string();
        property.Set(&v, type);
        break;
    }
    case eFbxDistance: {
        float v = stream.ReadFloat();
        property.Set(&v, eFbxFloat);
        std::string unit = stream.ReadString();
        property.GetTable()->Write(property.GetId()).text = unit;
        break;
    }
    default: break;  // undefined and reference types carry no value
    }
}

bool HasLimits(EFbxType type) {
    switch (type) {
    case eFbxChar: case eFbxUChar: case eFbxShort: case eFbxUShort: case eFbxUInt: case eFbxULongLong:
    case eFbxHalfFloat: case eFbxInt: case eFbxFloat: case eFbxDouble:
        return true;
    default: return false;
    }
}

void ReadPropertyRecord(FbxFieldStream& stream, FbxObject& object) {
    std::string name = ReadName(stream);
    std::string typeName = ReadName(stream);
    std::string subType = stream.ReadString();
    std::string letters = stream.ReadString();
    FbxDataType type;
    if (!subType.empty()) type = FbxGetDataTypeFromName(subType);
    if (!type.Valid()) type = FbxGetDataTypeFromName(typeName);
    if (!type.Valid() || name.empty()) return;

    FbxProperty property = object.RootProperty.Find(name.c_str(), "|", true);
    if (!property.IsValid()) {
        size_t cut = name.rfind('|');
        FbxProperty parent = object.RootProperty;
        std::string last = name;
        if (cut != std::string::npos) {
            parent = object.RootProperty.Find(name.substr(0, cut).c_str(), "|", true);
            if (!parent.IsValid()) return;
            last = name.substr(cut + 1);
        }
        property = FbxProperty::Create(parent, type, last.c_str());
        if (!property.IsValid()) return;
        property.ModifyFlag(FbxPropertyFlag::Imported, true);
    }

    uint32_t wanted = FbxParsePropertyFlags(letters);
    uint32_t flags = property.GetFlags();
    for (uint32_t bit : {FbxPropertyFlag::Animatable, FbxPropertyFlag::UserDefined, FbxPropertyFlag::Animated,
                         FbxPropertyFlag::Hidden})
        if ((flags & bit) != (wanted & bit)) flags ^= bit;
    if ((flags & FbxPropertyFlag::LockMask) != (wanted & FbxPropertyFlag::LockMask))
        flags = (flags & ~FbxPropertyFlag::LockMask) | (wanted & FbxPropertyFlag::LockMask);
    if ((flags & FbxPropertyFlag::MuteMask) != (wanted & FbxPropertyFlag::MuteMask))
        flags = (flags & ~FbxPropertyFlag::MuteMask) | (wanted & FbxPropertyFlag::MuteMask);
    property.SetFlags(flags);

    // A record with fewer values than its type needs keeps what the stream gives for
    // the missing ones (zero), as a writer that stopped early would mean.
    ReadValue(stream, property);

    if (!(flags & FbxPropertyFlag::UserDefined)) return;
    EFbxType valueType = property.GetType();
    if (HasLimits(valueType) && stream.ValuesLeft() >= 2) {
        double lo = ReadNumber(stream, valueType);
        double hi = ReadNumber(stream, valueType);
        property.SetMinLimit(lo);
        property.SetMaxLimit(hi);
    } else if ((valueType == eFbxEnum || valueType == eFbxEnumM) && stream.ValuesLeft() >= 1) {
        std::string entries = stream.ReadString();
        int32_t value = property.Get<int>();
        size_t start = 0;
        while (start <= entries.size() && !entries.empty()) {
            size_t cut = entries.find('~', start);
            std::string entry = entries.substr(start, cut == std::string::npos ? std::string::npos : cut - start);
            property.AddEnumValue(entry.c_str());
            if (cut == std::string::npos) break;
            start = cut + 1;
        }
        property.Set(&value, eFbxInt, false);
    }
}

}  // namespace

uint32_t FbxParsePropertyFlags(std::string_view letters) {
    uint32_t flags = 0;
    for (size_t k = 0; k < letters.size(); ++k) {
        switch (letters[k]) {
        case 'A': flags |= FbxPropertyFlag::Animatable; break;
        case '+': flags |= FbxPropertyFlag::Animated; break;
        case 'U': flags |= FbxPropertyFlag::UserDefined; break;
        case 'H': flags |= FbxPropertyFlag::Hidden; break;
        case 'L':
        case 'M': {
            bool lock = letters[k] == 'L';
            char digit = k + 1 < letters.size() ? letters[++k] : '\0';
            uint32_t code = DigitCode(digit);
            if (lock)
                flags = (flags & ~FbxPropertyFlag::LockMask) | (code << 7);
            else
                flags = (flags & ~FbxPropertyFlag::MuteMask) | (code << 11);
            break;
        }
        default: break;
        }
    }
    return flags;
}

void FbxReadProperties70(FbxFieldStream& stream, FbxObject& object) {
    if (!stream.BeginField("Properties70")) return;
    if (stream.HasBlock() && stream.BeginBlock()) {
        int count = stream.FieldCount("P");
        for (int i = 0; i < count; ++i) {
            if (!stream.BeginField("P", i)) continue;
            ReadPropertyRecord(stream, object);
            stream.EndField();
        }
        stream.EndBlock();
    }
    stream.EndField();
}

void FbxApplyTemplate(FbxObject& object, const FbxObject& templateObject) {
    FbxPropertyTable& to = *object.RootProperty.GetTable();
    const FbxPropertyTable& from = *templateObject.RootProperty.GetTable();
    // The template was built by the same class, so most properties sit at the same
    // index under the same name; only the others are looked up by name. Parents come
    // before their children in a table, so a missing parent has been made already.
    std::vector<uint32_t> mapped(from.Size(), FbxPropertyRecord::None);
    mapped[0] = 0;
    for (uint32_t id = 1; id < from.Size(); ++id) {
        const FbxPropertyRecord& t = from.Read(id);
        uint32_t parent = t.parent < id ? mapped[t.parent] : FbxPropertyRecord::None;
        if (parent == FbxPropertyRecord::None) continue;
        uint32_t target = FbxPropertyRecord::None;
        if (id < to.Size() && to.Read(id).parent == parent && to.Read(id).name == t.name)
            target = id;
        else
            target = to.FindChild(parent, t.name.c_str(), t.name.size(), true);
        if (target == FbxPropertyRecord::None) target = to.Add(parent, t.name.c_str(), t.type);
        mapped[id] = target;
        const FbxPropertyRecord& current = to.Read(target);
        bool copyValue = t.type.HasValue() && !(current.state & FbxPropertyRecord::ValueSet) &&
                         current.type.GetType() == t.type.GetType();
        bool addFlags = (t.flags & FbxPropertyFlag::AllFlags & ~current.flags) != 0;
        if (!copyValue && !addFlags) continue;
        FbxPropertyRecord& o = to.Write(target);
        if (copyValue) {
            o.num = t.num;
            o.text = t.text;
            if (t.extra) {
                FbxPropertyExtra& e = o.Extra();
                e.matrix = t.extra->matrix;
                if (t.extra->hasMin) { e.hasMin = true; e.minValue = t.extra->minValue; }
                if (t.extra->hasMax) { e.hasMax = true; e.maxValue = t.extra->maxValue; }
                if (e.enumValues.empty()) e.enumValues = t.extra->enumValues;
            }
        }
        o.flags |= t.flags & FbxPropertyFlag::AllFlags;
    }
}
