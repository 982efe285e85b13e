// Writes binary FBX files for test fixtures, benchmarks and samples: a record
// tree built in memory, written with either record layout, in either byte
// order, with raw or zlib arrays, or as a text file (WriteAscii). Every
// length, count and offset the writer derives can be overridden, so tests can
// make broken files on purpose.
// Test tooling only: the tool itself never writes FBX.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace fbxwriter {

// One value of a record's value list.
struct Value {
    char code = 'I';
    int64_t integer = 0;        // 'C' 'Z' 'Y' 'I' 'L'
    double real = 0;            // 'F' 'D'
    std::string bytes;          // 'S' 'R': the payload; arrays: the elements, host order
    uint32_t arrayCount = 0;    // arrays: element count
    uint32_t encoding = 0;      // arrays: 0 raw, 1 zlib; other words are written as given

    // Overrides for broken files.
    std::optional<uint32_t> lengthWord;    // 'S' 'R': the u32 length written before the bytes
    std::optional<uint32_t> countWord;     // arrays: element count word
    std::optional<uint32_t> storedLength;  // arrays: stored length word
    std::optional<std::string> stored;     // arrays: stored bytes verbatim (no compression, no swap)
    std::optional<std::string> verbatim;   // the whole value (code byte included) verbatim

    static Value Int(int32_t v) { return Scalar('I', v); }
    static Value Long(int64_t v) { return Scalar('L', v); }
    static Value Short(int16_t v) { return Scalar('Y', v); }
    static Value Char(char v) { return Scalar('C', static_cast<uint8_t>(v)); }
    static Value Byte(uint8_t v) { return Scalar('Z', v); }
    static Value Float(float v);
    static Value Double(double v);
    static Value String(std::string_view text);
    static Value Raw(std::string_view data);
    // Arrays; encoding 1 compresses with zlib.
    static Value BoolArray(const std::vector<uint8_t>& v, uint32_t encoding = 0) { return Array('b', v, encoding); }
    static Value ByteArray(const std::vector<uint8_t>& v, uint32_t encoding = 0) { return Array('c', v, encoding); }
    static Value ShortArray(const std::vector<int16_t>& v, uint32_t encoding = 0) { return Array('h', v, encoding); }
    static Value IntArray(const std::vector<int32_t>& v, uint32_t encoding = 0) { return Array('i', v, encoding); }
    static Value LongArray(const std::vector<int64_t>& v, uint32_t encoding = 0) { return Array('l', v, encoding); }
    static Value FloatArray(const std::vector<float>& v, uint32_t encoding = 0) { return Array('f', v, encoding); }
    static Value DoubleArray(const std::vector<double>& v, uint32_t encoding = 0) { return Array('d', v, encoding); }
    static Value Verbatim(std::string_view wholeValue);

    static Value Scalar(char code, int64_t v) {
        Value value;
        value.code = code;
        value.integer = v;
        return value;
    }
    template <typename T>
    static Value Array(char code, const std::vector<T>& elements, uint32_t encoding) {
        Value value;
        value.code = code;
        value.bytes.assign(reinterpret_cast<const char*>(elements.data()), elements.size() * sizeof(T));
        value.arrayCount = static_cast<uint32_t>(elements.size());
        value.encoding = encoding;
        return value;
    }
};

// One record: a name, values and nested records.
struct Record {
    std::string name;
    std::vector<Value> values;
    std::vector<Record> children;
    // A nested block (terminator only) even without children.
    bool block = false;

    // Overrides for broken files.
    std::optional<uint64_t> endOffset;        // absolute, as written
    std::optional<int64_t> endOffsetDelta;    // added to the true end offset
    std::optional<uint64_t> valueCount;
    std::optional<uint64_t> valueListLength;
    std::optional<uint8_t> nameLength;
    bool omitTerminator = false;              // nested block without its terminator

    Record() = default;
    explicit Record(std::string recordName) : name(std::move(recordName)) {}

    // Builders: append and return *this (values) or the new child (Add).
    Record& Add(Value v) {
        values.push_back(std::move(v));
        return *this;
    }
    Record& Int(int32_t v) { return Add(Value::Int(v)); }
    Record& Long(int64_t v) { return Add(Value::Long(v)); }
    Record& Short(int16_t v) { return Add(Value::Short(v)); }
    Record& Char(char v) { return Add(Value::Char(v)); }
    Record& Byte(uint8_t v) { return Add(Value::Byte(v)); }
    Record& Float(float v) { return Add(Value::Float(v)); }
    Record& Double(double v) { return Add(Value::Double(v)); }
    Record& String(std::string_view v) { return Add(Value::String(v)); }
    Record& Raw(std::string_view v) { return Add(Value::Raw(v)); }
    Record& Child(Record child) {
        children.push_back(std::move(child));
        return children.back();
    }
    Record& Child(std::string childName) { return Child(Record(std::move(childName))); }
    // Returns the new child, so a block can be filled in place.
    Record& Add(std::string childName) { return Child(std::move(childName)); }
};

// "Name\0\x01Class", the two-part name of objects.
std::string ObjectName(std::string_view name, std::string_view className);

// `P` record of a Properties70 block: name, type, label, flags; the caller
// appends the values.
Record PropertyRecord(std::string_view name, std::string_view type, std::string_view label,
                      std::string_view flags);
// An object record such as Model: (id, "Name\0\x01Class", subType) with an
// empty nested block, ready for children.
Record ObjectRecord(std::string_view recordName, int64_t id, std::string_view name, std::string_view className,
                    std::string_view subType);
// Connection records "C": ("OO", src, dst), ("OP", src, dst, property),
// ("PO", src, srcProperty, dst), ("PP", src, srcProperty, dst, dstProperty).
Record ConnectionOO(int64_t source, int64_t destination);
Record ConnectionOP(int64_t source, int64_t destination, std::string_view property);
Record ConnectionPO(int64_t source, std::string_view sourceProperty, int64_t destination);
Record ConnectionPP(int64_t source, std::string_view sourceProperty, int64_t destination,
                    std::string_view destinationProperty);

// FBXHeaderExtension with FBXHeaderVersion, FBXVersion, CreationTimeStamp,
// Creator and, from header version 1003 on, OtherFlags (with TCDefinition from
// 1004 on when tcDefinition is given).
Record HeaderExtension(int32_t headerVersion, int32_t fbxVersion, std::optional<int32_t> tcDefinition = 127,
                       std::string_view creator = "vurl fbxwriter");

struct Options {
    uint32_t version = 7400;
    // 0: 32-bit record words, 1: 64-bit; unset: 1 from version 7500 on.
    std::optional<int> recordLayout;
    bool bigEndian = false;
    std::string magic = "Kaydara FBX Binary  ";
    uint8_t byte21 = 0x1A;
    // Terminator of the root block of each section.
    bool rootTerminator = true;
    // The 16-byte code behind the root block, padding and the trailer.
    bool trailer = true;
    // Section version in the main section's trailer; unset: the version.
    std::optional<uint32_t> trailerVersion;
};

// Further sections behind the main one, each closed by its own trailer whose
// back offset points at the section's start.
struct Section {
    std::vector<Record> records;
    uint32_t version = 7400;
    std::optional<uint32_t> backOffset;   // override
};

// The file's bytes. Top-level records go in the main section.
std::vector<uint8_t> Write(const std::vector<Record>& records, const Options& options = {},
                           const std::vector<Section>& extraSections = {});
// The same records as a text file, written the way authoring tools write them:
// the version line, `Name: value,value {` blocks, `*count { a: ... }` arrays,
// two-part names as "Class::Name", quotes as &quot;, raw values as base64,
// reals in their shortest exact form, key attribute data as the bits of its
// floats. The binary-only overrides (lengths, offsets, verbatim bytes) are not
// written.
std::string WriteAscii(const std::vector<Record>& records, uint32_t version = 7400);

// Writes bytes to a file; false on failure.
bool SaveFile(const std::string& path, const std::vector<uint8_t>& bytes);

// The trailer magic of a section.
extern const uint8_t kTrailerMagic[16];

}  // namespace fbxwriter
