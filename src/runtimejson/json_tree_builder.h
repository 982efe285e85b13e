// Builds a JsonValue tree through the same calls as the streaming JsonEmitter, so one
// generator can produce either a tree or a stream.
// Private to the runtime JSON library.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "json/json.h"

class JsonTreeBuilder {
public:
    void BeginObject() { Open(JsonValue::Object()); }
    void BeginArray() { Open(JsonValue::Array()); }
    void EndObject() { Close(); }
    void EndArray() { Close(); }
    void Name(std::string_view name) { pendingName_.assign(name); }
    void String(std::string_view text) { Put(JsonValue(std::string(text))); }
    void Number(float value) { Put(JsonValue(value)); }
    void Number(int32_t value) { Put(JsonValue(value)); }
    void Number(uint32_t value) { Put(JsonValue(value)); }
    void Bool(bool value) { Put(JsonValue(value)); }
    void Value(const JsonValue& value) { Put(value); }

    // The finished top-level value.
    const JsonValue& Result() const { return result_; }

private:
    struct Frame {
        JsonValue container;
        std::string name;  // under which the container goes into its parent
    };

    void Open(JsonValue container) {
        stack_.push_back(Frame{std::move(container), pendingName_});
        pendingName_.clear();
    }
    void Close() {
        Frame frame = std::move(stack_.back());
        stack_.pop_back();
        pendingName_ = std::move(frame.name);
        Put(frame.container);
    }
    // A finished child goes into the open container only now, when nothing else holds it,
    // so adding does not copy the container.
    void Put(const JsonValue& value) {
        if (stack_.empty()) {
            result_ = value;
        } else if (stack_.back().container.Kind() == kJsonObject) {
            stack_.back().container.Add(pendingName_, value);
        } else {
            stack_.back().container.Add(value);
        }
        pendingName_.clear();
    }

    std::vector<Frame> stack_;
    std::string pendingName_;
    JsonValue result_;
};
