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

bool GlbLengthsFit(uint64_t jsonLength, uint64_t binaryLength) {
    auto padded = [](uint64_t length) { return (length + 3) & ~uint64_t(3); };
    return 12 + 8 + padded(jsonLength) + 8 + padded(binaryLength) <= UINT32_MAX;
}

void RefuseGlb(const std::string& path, const std::string& problem) {
    EndRun("Cannot write '%s': %s", path.c_str(), problem.c_str());
}

void WriteGlbFile(const std::string& path, const JsonValue& json, const GlbBuilder& builder) {
    // Lengths would wrap: refuse before the file is touched when the binary data alone shows it.
    if (!GlbLengthsFit(0, builder.data.size()))
        RefuseGlb(path, std::to_string(builder.data.size()) +
                            " bytes of binary data do not fit the 32-bit lengths of a GLB file");

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
    if (out && !GlbLengthsFit(jsonLength, binaryLength)) {
        out.close();
        std::remove(path.c_str());
        RefuseGlb(path, "the file would be " + std::to_string(total) +
                            " bytes, more than the 32-bit lengths of a GLB file can hold");
    }
    out.seekp(8);
    PutU32(out, static_cast<uint32_t>(total));
    PutU32(out, static_cast<uint32_t>(jsonLength));
    out.seekp(binaryStart);
    PutU32(out, static_cast<uint32_t>(binaryLength));
    out.seekp(0, std::ios::end);
    out.close();
}
