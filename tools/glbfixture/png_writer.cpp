// Minimal PNG encoder for generated textures: one IDAT of zlib-compressed RGBA rows.
#include <zlib.h>

#include "glb_fixture.h"

namespace glbfixture {

namespace {

void PutBigEndian(std::vector<uint8_t>& out, uint32_t v) {
    for (int i = 3; i >= 0; --i) out.push_back(uint8_t(v >> (8 * i)));
}

void PutChunk(std::vector<uint8_t>& out, const char* type, const std::vector<uint8_t>& data) {
    PutBigEndian(out, uint32_t(data.size()));
    const size_t start = out.size();
    out.insert(out.end(), type, type + 4);
    out.insert(out.end(), data.begin(), data.end());
    PutBigEndian(out, uint32_t(crc32(0, out.data() + start, uInt(out.size() - start))));
}

}  // namespace

std::vector<uint8_t> MakePng(uint32_t width, uint32_t height, const std::vector<uint8_t>& rgba) {
    std::vector<uint8_t> raw;
    raw.reserve(size_t(height) * (1 + size_t(width) * 4));
    for (uint32_t y = 0; y < height; ++y) {
        raw.push_back(0);  // filter: none
        const uint8_t* row = rgba.data() + size_t(y) * width * 4;
        raw.insert(raw.end(), row, row + size_t(width) * 4);
    }
    uLongf packedSize = compressBound(uLong(raw.size()));
    std::vector<uint8_t> packed(packedSize);
    compress(packed.data(), &packedSize, raw.data(), uLong(raw.size()));
    packed.resize(packedSize);

    std::vector<uint8_t> out = {137, 'P', 'N', 'G', 13, 10, 26, 10};
    std::vector<uint8_t> header;
    PutBigEndian(header, width);
    PutBigEndian(header, height);
    header.insert(header.end(), {8, 6, 0, 0, 0});  // 8-bit RGBA, no interlace
    PutChunk(out, "IHDR", header);
    PutChunk(out, "IDAT", packed);
    PutChunk(out, "IEND", {});
    return out;
}

}  // namespace glbfixture
