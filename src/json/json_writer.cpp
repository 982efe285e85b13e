#include "json/json.h"
#include "json/json_emitter.h"

bool JsonWriter::WriteFile(const JsonValue& value, const std::string& fileName) const {
    JsonFileSink sink(fileName);
    if (!sink.IsOpen()) return false;
    JsonEmitter emitter(sink, format_);
    emitter.Value(value);
    return sink.Close();
}

void JsonWriter::WriteStream(const JsonValue& value, std::ostream& stream) const {
    JsonStreamSink sink(stream);
    JsonEmitter emitter(sink, format_);
    emitter.Value(value);
}

std::string JsonWriter::WriteString(const JsonValue& value) const {
    std::string out;
    {
        JsonStringSink sink(out);
        JsonEmitter emitter(sink, format_);
        emitter.Value(value);
    }
    return out;
}
