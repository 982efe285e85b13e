// JSON value tree, writer and parser used for every JSON file the tool writes
// and for the resource file it reads.
//
// Every scalar is stored as text, formatted when the value is made. Objects keep
// members in insertion order and may hold a name twice; a lookup finds the first.
// For documents too large to build as a tree, see json/json_emitter.h.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <iosfwd>
#include <string>
#include <string_view>

enum JsonKind : uint32_t {
    kJsonObject = 1,
    kJsonArray = 2,
    kJsonNull = 3,
    kJsonString = 4,
    kJsonNumber = 5,
    kJsonBool = 6,
};

struct JsonData;

// Handle to shared, reference-counted data; every mutation detaches first, so
// handles behave as values. Scalars whose text fits in 14 bytes (whatever the
// number and bool makers give, and short strings) live inside the 16-byte
// handle with no allocation; that is invisible to callers, because a detached
// copy is all a mutation of a shared scalar could ever see. Arrays keep no
// member names.
class JsonValue {
public:
    JsonValue() noexcept { Clear(); }  // null handle
    // String makers store the unescaped form of their argument, as Set does.
    JsonValue(const std::string& text);
    JsonValue(const char* text);
    JsonValue(int32_t number);
    JsonValue(uint32_t number);
    JsonValue(float number);
    JsonValue(bool flag);
    // Kinds 3 to 6 only: a string's text is unescaped, other kinds keep the text
    // as given; any other kind gives a null handle.
    JsonValue(uint32_t kind, std::string_view text);
    static JsonValue Object();
    static JsonValue Array();

    JsonValue(const JsonValue& other) noexcept {
        std::memcpy(raw_, other.raw_, sizeof raw_);
        if (IsShared()) Retain();
    }
    JsonValue(JsonValue&& other) noexcept {
        std::memcpy(raw_, other.raw_, sizeof raw_);
        other.Clear();
    }
    JsonValue& operator=(const JsonValue& other) noexcept;
    JsonValue& operator=(JsonValue&& other) noexcept;
    ~JsonValue() {
        if (IsShared()) Release();
    }

    // Setters act only on scalar kinds (3 to 6); a null handle, an object or an
    // array stays as it is.
    void Set(const std::string& text);  // stores the unescaped text
    void Set(const char* text);
    void Set(int32_t number);
    void Set(uint32_t number);
    void Set(float number);
    void Set(bool flag);

    void Add(std::string_view name, JsonValue value);  // objects only
    void Add(JsonValue value);                         // arrays only
    void Reserve(size_t count);                        // objects and arrays; a capacity hint

    bool IsNullHandle() const { return Tag() == 0; }
    uint32_t Kind() const { return Tag() & 0x7f; }  // 0 for a null handle
    bool Has(std::string_view name) const;
    JsonValue Get(std::string_view name) const;  // first member of that name, or a null handle
    size_t Count() const;
    // Members in order, 0 <= i < Count(). Array members have an empty name.
    std::string_view MemberName(size_t i) const;
    const JsonValue& Member(size_t i) const;
    std::string_view Text() const;  // scalar text; empty for containers and null handles
    // "null" for a null value, the text of a string, number or bool, else fallback.
    std::string ToString(const std::string& fallback) const;

private:
    friend class JsonEmitter;
    friend struct JsonData;

    // raw_[0..13]: inline text, or a JsonData* in raw_[0..7].
    // raw_[14]: inline text length. raw_[15]: tag.
    static constexpr size_t kInlineCapacity = 14;
    static constexpr uint8_t kInlineFlag = 0x80;

    uint8_t Tag() const { return raw_[15]; }
    bool IsShared() const { return raw_[15] != 0 && (raw_[15] & kInlineFlag) == 0; }
    bool IsInline() const { return (raw_[15] & kInlineFlag) != 0; }
    JsonData* Data() const {
        JsonData* data;
        std::memcpy(&data, raw_, sizeof data);
        return data;
    }
    void Clear() { std::memset(raw_, 0, sizeof raw_); }
    void Retain() const;
    void Release();
    void Detach();
    void AssignScalar(uint32_t kind, std::string_view text);
    void SetScalar(uint32_t kind, std::string_view text);

    alignas(8) unsigned char raw_[16];
};

struct JsonFormat {
    bool newline = false;
    bool spacing = false;
    bool useTabs = false;
    uint32_t indentSize = 0;
};

inline constexpr JsonFormat NoFormat{false, false, false, 0};
inline constexpr JsonFormat StandardFormat{true, true, true, 1};

// Six significant digits in the shorter of fixed and exponent notation, exactly
// as a default-state output stream prints a float ("0.1", "1.23457e+06", "16",
// "-0", "nan", "-inf").
std::string FormatFloat(float value);
// The same text into buf, which must hold kFloatTextMax bytes; returns the length.
inline constexpr size_t kFloatTextMax = 16;
size_t FormatFloat(float value, char* buf);

// Escape keeps its historical lookup text: control bytes other than the eight
// with a pair of their own come out through "012345679abcdef", which has no 8
// and ends in the terminating zero byte (0x18 -> "\u0019", 0x0f -> "\u00" 0 0x00).
std::string Escape(std::string_view text);
std::string Unescape(std::string_view text);

class JsonWriter {
public:
    JsonWriter() = default;
    explicit JsonWriter(const JsonFormat& format) : format_(format) {}
    void SetFormat(const JsonFormat& format) { format_ = format; }
    const JsonFormat& Format() const { return format_; }
    // Truncates the file. A file that cannot be opened is left alone and nothing
    // is reported; the result is only for callers that care (false then).
    bool WriteFile(const JsonValue& value, const std::string& fileName) const;
    void WriteStream(const JsonValue& value, std::ostream& stream) const;
    std::string WriteString(const JsonValue& value) const;

private:
    JsonFormat format_ = NoFormat;
};

class JsonParser {
public:
    // Each returns a null handle on failure, with the message in error; a file
    // that cannot be opened gives a null handle and no message. error is cleared
    // at the start of each parse.
    JsonValue ParseFile(const std::string& fileName);
    JsonValue ParseString(std::string_view text);
    JsonValue ParseStream(std::istream& stream);
    std::string error;
};
