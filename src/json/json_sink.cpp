#include <ostream>

#include "json/json_emitter.h"

JsonSink::JsonSink(size_t capacity) : buffer_(new char[capacity]), capacity_(capacity) {}

void JsonSink::Flush() {
    if (used_ == 0) return;
    Drain(buffer_.get(), used_);
    used_ = 0;
}

void JsonSink::WriteSlow(const char* bytes, size_t size) {
    Flush();
    if (size >= capacity_) {
        Drain(bytes, size);
    } else {
        std::memcpy(buffer_.get(), bytes, size);
        used_ = size;
    }
}

// A large buffer keeps big documents to a few hundred write calls.
static constexpr size_t kFileBuffer = size_t{1} << 20;

JsonFileSink::JsonFileSink(const std::string& fileName) : JsonSink(kFileBuffer) {
    file_ = std::fopen(fileName.c_str(), "w");
    // Our own buffer does the batching; a second one in stdio would only copy.
    if (file_) std::setvbuf(file_, nullptr, _IONBF, 0);
}

JsonFileSink::~JsonFileSink() { Close(); }

bool JsonFileSink::Close() {
    if (!file_) return false;
    Flush();
    if (std::fclose(file_) != 0) failed_ = true;
    file_ = nullptr;
    return !failed_;
}

void JsonFileSink::Drain(const char* bytes, size_t size) {
    if (file_ && std::fwrite(bytes, 1, size, file_) != size) failed_ = true;
}

JsonStreamSink::JsonStreamSink(std::ostream& stream) : JsonSink(size_t{1} << 16), stream_(stream) {}

JsonStreamSink::~JsonStreamSink() { Flush(); }

void JsonStreamSink::Drain(const char* bytes, size_t size) {
    stream_.write(bytes, static_cast<std::streamsize>(size));
}

JsonStringSink::JsonStringSink(std::string& out) : JsonSink(size_t{1} << 12), out_(out) {}

JsonStringSink::~JsonStringSink() { Flush(); }

void JsonStringSink::Drain(const char* bytes, size_t size) { out_.append(bytes, size); }
