// JSON value tree, writer and parser used for every JSON file the tool writes
// and for the resource file it reads.
#pragma once

#include <cstdint>
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
// handles behave as values.
class JsonValue {
public:
    JsonValue();  // null handle
    JsonValue(const std::string& text);
    JsonValue(const char* text);
    JsonValue(int32_t number);
    JsonValue(uint32_t number);
    JsonValue(float number);
    JsonValue(bool flag);
    // Kinds 3 to 6 only: a string's text is unescaped, other kinds keep the text as given.
    JsonValue(uint32_t kind, std::string_view text);
    static JsonValue Object();
    static JsonValue Array();

    JsonValue(const JsonValue& other);
    JsonValue(JsonValue&& other) noexcept;
    JsonValue& operator=(const JsonValue& other);
    JsonValue& operator=(JsonValue&& other) noexcept;
    ~JsonValue();

    // Setters act only on scalar kinds (3 to 6).
    void Set(const std::string& text);
    void Set(const char* text);
    void Set(int32_t number);
    void Set(uint32_t number);
    void Set(float number);
    void Set(bool flag);

    void Add(const std::string& name, const JsonValue& value);  // objects only
    void Add(const JsonValue& value);                           // arrays only

    bool IsNullHandle() const;
    uint32_t Kind() const;  // 0 for a null handle
    bool Has(const std::string& name) const;
    JsonValue Get(const std::string& name) const;
    size_t Count() const;
    const std::string& MemberName(size_t i) const;
    JsonValue Member(size_t i) const;
    const std::string& Text() const;  // scalar text; empty for containers and null handles
    std::string ToString(const std::string& fallback) const;

private:
    explicit JsonValue(JsonData* data);
    void Detach();
    JsonData* data_ = nullptr;
    friend class JsonWriter;
    friend class JsonParser;
};

struct JsonFormat {
    bool newline = false;
    bool spacing = false;
    bool useTabs = false;
    uint32_t indentSize = 0;
};

inline constexpr JsonFormat NoFormat{false, false, false, 0};
inline constexpr JsonFormat StandardFormat{true, true, true, 1};

// Six significant digits in the shorter of fixed and exponent notation, exactly as a
// default-state output stream prints a float ("0.1", "1.23457e+06", "16", "nan").
std::string FormatFloat(float value);
// Writes the same text into buf (at least 32 bytes) and returns the length.
size_t FormatFloat(float value, char* buf);

std::string Escape(std::string_view text);
std::string Unescape(std::string_view text);

class JsonSink;  // buffered byte output to a file or stream (json_emitter.h)

// Streams JSON with exactly the layout JsonWriter gives a value tree, for large
// documents that should not be built as a tree first.
class JsonEmitter {
public:
    JsonEmitter(JsonSink& sink, const JsonFormat& format);
    void BeginObject();
    void BeginArray();
    void EndObject();
    void EndArray();
    void Name(std::string_view name);  // written as it stands, not escaped
    void String(std::string_view text);  // escaped
    void Number(float value);
    void Number(int32_t value);
    void Number(uint32_t value);
    void Bool(bool value);
    void Null();
    void Raw(std::string_view scalarText);  // a number or bool text as stored in a value
    void Value(const JsonValue& value);    // a whole tree at the current position

private:
    struct Impl;
    JsonSink& sink_;
    // implementation state lives in json_emitter.h
};

class JsonWriter {
public:
    JsonWriter();
    explicit JsonWriter(const JsonFormat& format);
    void SetFormat(const JsonFormat& format);
    const JsonFormat& Format() const { return format_; }
    // Truncates the file; a file that cannot be opened is silently left alone.
    void WriteFile(const JsonValue& value, const std::string& fileName) const;
    void WriteStream(const JsonValue& value, std::ostream& stream) const;
    std::string WriteString(const JsonValue& value) const;

private:
    JsonFormat format_;
};

class JsonParser {
public:
    JsonValue ParseFile(const std::string& fileName);
    JsonValue ParseString(std::string_view text);
    JsonValue ParseStream(std::istream& stream);
    std::string error;
};
