// Builds a JSON array of ten million floats as a value tree and writes it
// compact to a file: the shape of a large mesh's model file. Then streams the
// same numbers through the emitter without a tree, as the big writers do.
//   bench_json_floats [count] [output file]
#include <chrono>
#include <ctime>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include "json/json.h"
#include "json/json_emitter.h"

namespace {

// A spread of magnitudes and signs, so every notation and rounding path is taken.
std::vector<float> MakeValues(size_t count) {
    std::vector<float> values(count);
    uint32_t state = 12345;
    for (size_t i = 0; i < count; ++i) {
        state = state * 1664525u + 1013904223u;
        float unit = static_cast<float>(state >> 8) / 16777216.0f;  // [0, 1)
        float scale = (i % 7 == 0) ? 1e-6f : (i % 5 == 0) ? 1e7f : 100.0f;
        values[i] = (unit - 0.5f) * scale;
    }
    return values;
}

double Seconds(std::chrono::steady_clock::duration d) { return std::chrono::duration<double>(d).count(); }

}  // namespace

int main(int argc, char** argv) {
    const size_t count = argc > 1 ? std::strtoul(argv[1], nullptr, 10) : 10000000;
    const std::string path = argc > 2 ? argv[2]
                                      : (std::filesystem::temp_directory_path() / "bench_json_floats.json").string();
    using Clock = std::chrono::steady_clock;
    const std::vector<float> values = MakeValues(count);

    // CPU time next to wall time: on a shared machine the wall clock also
    // measures the neighbours.
    std::clock_t cpuStart = std::clock();
    auto start = Clock::now();
    Clock::time_point built, done;
    bool written = false;
    {
        JsonValue array = JsonValue::Array();
        for (float value : values) array.Add(JsonValue(value));
        built = Clock::now();
        written = JsonWriter(NoFormat).WriteFile(array, path);
        done = Clock::now();
    }
    auto released = Clock::now();
    std::printf("tree:   %zu floats, build %.3f s, write %.3f s, release %.3f s, total %.3f s\n", count,
                Seconds(built - start), Seconds(done - built), Seconds(released - done),
                Seconds(released - start));
    std::printf("tree:   cpu %.3f s\n", static_cast<double>(std::clock() - cpuStart) / CLOCKS_PER_SEC);

    std::clock_t cpuStream = std::clock();
    auto streamStart = Clock::now();
    {
        JsonFileSink sink(path);
        JsonEmitter out(sink, NoFormat);
        out.BeginArray();
        for (float value : values) out.Number(value);
        out.EndArray();
        written = sink.Close() && written;
    }
    std::printf("stream: %zu floats, write %.3f s, cpu %.3f s\n", count, Seconds(Clock::now() - streamStart),
                static_cast<double>(std::clock() - cpuStream) / CLOCKS_PER_SEC);
    std::remove(path.c_str());
    if (!written) std::printf("writing %s failed\n", path.c_str());
    return written ? 0 : 1;
}
