// Builds a JSON array of ten million floats as a value tree and writes it
// compact to a file: the shape of a large mesh's model file.
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "json/json.h"

int main(int argc, char** argv) {
    const size_t count = argc > 1 ? std::strtoul(argv[1], nullptr, 10) : 10000000;
    const std::string path = argc > 2 ? argv[2] : "bench_json_floats.json";
    using Clock = std::chrono::steady_clock;

    auto start = Clock::now();
    JsonValue array = JsonValue::Array();
    // A spread of magnitudes and signs so every notation path is taken.
    uint32_t state = 12345;
    for (size_t i = 0; i < count; ++i) {
        state = state * 1664525u + 1013904223u;
        float unit = static_cast<float>(state >> 8) / 16777216.0f;  // [0, 1)
        float scale = (i % 7 == 0) ? 1e-6f : (i % 5 == 0) ? 1e7f : 100.0f;
        array.Add(JsonValue((unit - 0.5f) * scale));
    }
    auto built = Clock::now();

    JsonWriter writer(NoFormat);
    bool written = writer.WriteFile(array, path);
    auto done = Clock::now();

    auto seconds = [](Clock::duration d) { return std::chrono::duration<double>(d).count(); };
    std::printf("%zu floats: build %.3f s, write %.3f s, total %.3f s%s\n", count,
                seconds(built - start), seconds(done - built), seconds(done - start),
                written ? "" : " (write failed)");
    std::remove(path.c_str());
    return written ? 0 : 1;
}
