#include "gltf/glb_container_write.h"

#include <cstdint>
#include <cstdio>
#include <fstream>

#include "scene/console.h"

namespace {
void PutU32(std::ostream& out, uint32_t value) {
    char bytes[4] = {char(value & 0xFF), char((value >> 8) & 0xFF), char((value >> 16) & 0xFF),
                     char((value >> 24) & 0xFF)};
    out.write(bytes, 4);
}
}  // namespace

void WriteGlbFile(const std::string& path, const JsonValue& json, const GlbBuilder& builder) {
    // All three lengths are 32-bit; refuse up front rather than write a corrupt file.
    if (builder.data.size() > UINT32_MAX - 64) {
        ConsoleError("%s: %zu bytes of binary data do not fit in a GLB file", path.c_str(), builder.data.size());
        return;
    }

    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out.write("glTF", 4);
    PutU32(out, 2);
    PutU32(out, 0);
    PutU32(out, 0);
    out.write("JSON", 4);

    JsonWriter(NoFormat).WriteStream(json, out);
    uint64_t jsonLength = static_cast<uint64_t>(static_cast<std::streamoff>(out.tellp())) - 20;
    while (jsonLength % 4 != 0) {
        out.put(' ');
        ++jsonLength;
    }

    std::streampos binaryStart = out.tellp();
    PutU32(out, 0);
    PutU32(out, 0x004E4942);
    out.write(reinterpret_cast<const char*>(builder.data.data()), static_cast<std::streamsize>(builder.data.size()));
    uint64_t binaryLength = builder.data.size();
    while (binaryLength % 4 != 0) {
        out.put('\0');
        ++binaryLength;
    }

    uint64_t total = static_cast<uint64_t>(static_cast<std::streamoff>(out.tellp()));
    if (out && total > UINT32_MAX) {
        out.close();
        std::remove(path.c_str());
        ConsoleError("%s: the GLB would be larger than 4 GiB", path.c_str());
        return;
    }
    out.seekp(8);
    PutU32(out, static_cast<uint32_t>(total));
    PutU32(out, static_cast<uint32_t>(jsonLength));
    out.seekp(binaryStart);
    PutU32(out, static_cast<uint32_t>(binaryLength));
    out.seekp(0, std::ios::end);
    out.close();
}
