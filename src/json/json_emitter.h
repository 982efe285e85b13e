// Streaming JSON output: writes a document piece by piece, without a value tree,
// in exactly the layout JsonWriter gives the same content (JsonWriter itself is
// built on it).
//
//     JsonFileSink sink("model.json");      // truncates; IsOpen() false -> writes nothing
//     JsonEmitter out(sink, StandardFormat);
//     out.BeginObject();
//     out.Name("version"); out.Number(uint32_t{2});
//     out.Name("positions"); out.BeginArray();
//     for (float f : positions) out.Number(f);
//     out.EndArray();
//     out.Name("extras"); out.Value(extrasTree);   // a whole JsonValue subtree
//     out.EndObject();
//     sink.Close();                          // or let the destructor flush and close
//
// Inside an object every value is preceded by Name(); inside an array Name() must
// not be used. Names are written as they stand, without escaping, as JsonWriter
// does. String() takes the text a JsonValue string maker takes (it is unescaped
// and then escaped on output), so porting a tree-building writer to the emitter
// keeps its bytes.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <iosfwd>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "json/json.h"

// Buffered byte output. Subclasses say where full buffers go.
class JsonSink {
public:
    JsonSink(const JsonSink&) = delete;
    JsonSink& operator=(const JsonSink&) = delete;
    virtual ~JsonSink() = default;

    void Write(const char* bytes, size_t size) {
        if (size <= capacity_ - used_) {
            std::memcpy(buffer_.get() + used_, bytes, size);
            used_ += size;
        } else {
            WriteSlow(bytes, size);
        }
    }
    void Write(std::string_view bytes) { Write(bytes.data(), bytes.size()); }
    void Put(char c) {
        if (used_ == capacity_) Flush();
        buffer_[used_++] = c;
    }
    // Room for size bytes (size <= capacity); fill them and Commit how many were used.
    char* Room(size_t size) {
        if (size > capacity_ - used_) Flush();
        return buffer_.get() + used_;
    }
    void Commit(size_t size) { used_ += size; }
    void Flush();

protected:
    explicit JsonSink(size_t capacity);
    virtual void Drain(const char* bytes, size_t size) = 0;

private:
    void WriteSlow(const char* bytes, size_t size);
    std::unique_ptr<char[]> buffer_;
    size_t capacity_;
    size_t used_ = 0;
};

// A file opened for writing with truncation. If it cannot be opened, nothing is
// written and nothing is reported.
class JsonFileSink final : public JsonSink {
public:
    explicit JsonFileSink(const std::string& fileName);
    ~JsonFileSink() override;
    bool IsOpen() const { return file_ != nullptr; }
    // Flushes and closes; true if the file was open and every byte was written.
    bool Close();

private:
    void Drain(const char* bytes, size_t size) override;
    std::FILE* file_ = nullptr;
    bool failed_ = false;
};

class JsonStreamSink final : public JsonSink {
public:
    explicit JsonStreamSink(std::ostream& stream);
    ~JsonStreamSink() override;

private:
    void Drain(const char* bytes, size_t size) override;
    std::ostream& stream_;
};

// Appends to a string.
class JsonStringSink final : public JsonSink {
public:
    explicit JsonStringSink(std::string& out);
    ~JsonStringSink() override;

private:
    void Drain(const char* bytes, size_t size) override;
    std::string& out_;
};

class JsonEmitter {
public:
    JsonEmitter(JsonSink& sink, const JsonFormat& format);

    void BeginObject();
    void EndObject();
    void BeginArray();
    void EndArray();
    void Name(std::string_view name);
    void String(std::string_view text);
    void Number(float value);
    void Number(int32_t value);
    void Number(uint32_t value);
    void Bool(bool value);
    void Null();
    // A number or bool exactly as given (the text of JsonValue(kind, text)).
    void Raw(std::string_view text);
    // A whole value tree here; a null handle writes nothing but its place.
    void Value(const JsonValue& value);

    size_t Depth() const { return frames_.size(); }

private:
    struct Frame {
        bool object;
        size_t count;
    };
    void Place();  // comma, line end, indent and name before a value
    void Separate(Frame& frame);
    void WriteName(std::string_view name);
    void Open(char bracket, bool object);
    void Close(char bracket);
    void Indent(size_t level);
    void Scalar(const JsonValue& value);
    void EscapedText(std::string_view stored);

    JsonSink& sink_;
    JsonFormat format_;
    char indentChar_;
    std::string spacingText_;
    std::string newlineText_;
    std::string indentRun_;
    std::vector<Frame> frames_;
    bool named_ = false;
};
