// libFuzzer entry for the parser: any bytes must parse or fail cleanly, and an
// accepted document must write in every layout.
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "json/json.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    JsonParser parser;
    JsonValue value = parser.ParseString(std::string_view(reinterpret_cast<const char*>(data), size));
    if (!value.IsNullHandle()) {
        JsonWriter(NoFormat).WriteString(value);
        JsonWriter(StandardFormat).WriteString(value);
    }
    return 0;
}
