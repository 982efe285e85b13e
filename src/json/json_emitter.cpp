#include <charconv>

#include "json/json_data.h"
#include "json/json_emitter.h"
#include "json/json_text.h"

JsonEmitter::JsonEmitter(JsonSink& sink, const JsonFormat& format)
    : sink_(sink), format_(format), indentChar_(format.useTabs ? '\t' : ' '),
      spacingText_(format.spacing ? " " : "") {
    // Without line ends a spacing writer puts a blank where they would be.
    newlineText_ = format.newline ? "\n" : spacingText_;
}

void JsonEmitter::Indent(size_t level) {
    if (!format_.newline) return;
    size_t size = level * format_.indentSize;
    if (indentRun_.size() < size) indentRun_.assign(size * 2, indentChar_);
    sink_.Write(indentRun_.data(), size);
}

// The comma and line end between members, then the member's indent.
void JsonEmitter::Separate(Frame& frame) {
    if (frame.count++ > 0) {
        sink_.Put(',');
        sink_.Write(newlineText_);
    }
    Indent(frames_.size());
}

void JsonEmitter::WriteName(std::string_view name) {
    sink_.Put('"');
    sink_.Write(name);
    sink_.Put('"');
    sink_.Put(':');
    sink_.Write(spacingText_);
}

void JsonEmitter::Place() {
    if (named_) {
        named_ = false;
        return;
    }
    if (frames_.empty()) return;
    Frame& frame = frames_.back();
    Separate(frame);
    // A value without a name in an object: keep the document well formed.
    if (frame.object) WriteName("");
}

void JsonEmitter::Name(std::string_view name) {
    if (frames_.empty() || !frames_.back().object) return;
    if (named_) return;  // a second name for the same value is ignored
    Separate(frames_.back());
    WriteName(name);
    named_ = true;
}

void JsonEmitter::Open(char bracket, bool object) {
    sink_.Put(bracket);
    sink_.Write(newlineText_);
    frames_.push_back({object, 0});
}

void JsonEmitter::Close(char bracket) {
    frames_.pop_back();
    named_ = false;
    sink_.Write(newlineText_);
    Indent(frames_.size());
    sink_.Put(bracket);
}

void JsonEmitter::BeginObject() {
    Place();
    Open('{', true);
}

void JsonEmitter::BeginArray() {
    Place();
    Open('[', false);
}

void JsonEmitter::EndObject() {
    if (!frames_.empty()) Close('}');
}

void JsonEmitter::EndArray() {
    if (!frames_.empty()) Close(']');
}

void JsonEmitter::EscapedText(std::string_view stored) {
    const char* p = stored.data();
    const char* end = p + stored.size();
    while (p < end) {
        // Copy runs that need no escaping in one go.
        const char* run = p;
        while (p < end) {
            unsigned char c = static_cast<unsigned char>(*p);
            if (c < 32 || c == '"' || c == '\\' || c == '/') break;
            ++p;
        }
        sink_.Write(run, static_cast<size_t>(p - run));
        if (p == end) break;
        char* out = sink_.Room(kEscapeMax);
        sink_.Commit(EscapeByte(static_cast<unsigned char>(*p), out));
        ++p;
    }
}

void JsonEmitter::String(std::string_view text) {
    Place();
    sink_.Put('"');
    // Equal to escaping the unescaped text: a recognised pair escapes back to itself.
    size_t i = 0;
    while (i < text.size()) {
        size_t run = i;
        while (i < text.size() && text[i] != '\\') ++i;
        EscapedText(text.substr(run, i - run));
        if (i == text.size()) break;
        if (i + 1 < text.size() && IsEscapePair(text[i + 1])) {
            sink_.Write(text.data() + i, 2);
            i += 2;
        } else {
            sink_.Write("\\\\", 2);
            ++i;
        }
    }
    sink_.Put('"');
}

void JsonEmitter::Number(float value) {
    Place();
    char* out = sink_.Room(kFloatTextMax);
    sink_.Commit(FormatFloat(value, out));
}

void JsonEmitter::Number(int32_t value) {
    Place();
    char* out = sink_.Room(16);
    sink_.Commit(static_cast<size_t>(std::to_chars(out, out + 16, value).ptr - out));
}

void JsonEmitter::Number(uint32_t value) {
    Place();
    char* out = sink_.Room(16);
    sink_.Commit(static_cast<size_t>(std::to_chars(out, out + 16, value).ptr - out));
}

void JsonEmitter::Bool(bool value) {
    Place();
    sink_.Write(value ? std::string_view("true") : std::string_view("false"));
}

void JsonEmitter::Null() {
    Place();
    sink_.Write("null", 4);
}

void JsonEmitter::Raw(std::string_view text) {
    Place();
    sink_.Write(text);
}

void JsonEmitter::Scalar(const JsonValue& value) {
    uint32_t kind = value.Kind();
    if (value.IsInline() && (kind == kJsonNumber || kind == kJsonBool)) {
        // The common case of big arrays: copy the whole inline slot, keep its length.
        char* out = sink_.Room(sizeof value.raw_);
        std::memcpy(out, value.raw_, sizeof value.raw_);
        sink_.Commit(JsonData::InlineText(value).size());
        return;
    }
    switch (kind) {
        case kJsonNull:
            sink_.Write("null", 4);
            break;
        case kJsonString:
            sink_.Put('"');
            EscapedText(value.Text());
            sink_.Put('"');
            break;
        case kJsonNumber:
        case kJsonBool:
            sink_.Write(value.Text());
            break;
        default:
            break;  // a null handle writes nothing
    }
}

void JsonEmitter::Value(const JsonValue& value) {
    Place();
    const JsonData* root = JsonData::Of(value);
    if (!root || (root->kind != kJsonObject && root->kind != kJsonArray)) {
        Scalar(value);
        return;
    }
    // An explicit stack instead of recursion: parsed documents may nest deeply.
    struct Walk {
        const JsonData* data;
        size_t next;
    };
    std::vector<Walk> walk;
    auto enter = [&](const JsonData* data) {
        bool object = data->kind == kJsonObject;
        Open(object ? '{' : '[', object);
        walk.push_back({data, 0});
    };
    enter(root);
    while (!walk.empty()) {
        const JsonData* data = walk.back().data;
        bool object = data->kind == kJsonObject;
        size_t i = walk.back().next++;
        if (i == data->values.size()) {
            Close(object ? '}' : ']');
            walk.pop_back();
            continue;
        }
        if (object) {
            Name(data->names[i]);
            named_ = false;
        } else {
            Place();
        }
        const JsonValue& child = data->values[i];
        const JsonData* childData = JsonData::Of(child);
        if (childData && (childData->kind == kJsonObject || childData->kind == kJsonArray)) {
            enter(childData);
        } else {
            Scalar(child);
        }
    }
}
