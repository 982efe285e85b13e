#include "glb_fixture.h"

#include <cstring>

namespace glbfixture {

namespace {

void PutWord(std::vector<uint8_t>& out, uint32_t v) {
    for (int i = 0; i < 4; ++i) out.push_back(uint8_t(v >> (8 * i)));
}

bool WriteWord(std::FILE* file, uint32_t v) {
    const uint8_t bytes[4] = {uint8_t(v), uint8_t(v >> 8), uint8_t(v >> 16), uint8_t(v >> 24)};
    return std::fwrite(bytes, 1, 4, file) == 4;
}

size_t Padded(size_t n) { return (n + 3) & ~size_t(3); }

}  // namespace

size_t GlbFixture::Append(const void* data, size_t size) {
    binary_.resize(Padded(binary_.size()), 0);
    const size_t offset = binary_.size();
    binary_.resize(offset + size);
    if (size) std::memcpy(binary_.data() + offset, data, size);
    return offset;
}

int GlbFixture::AddView(size_t offset, size_t length, uint32_t stride, const std::string& name) {
    std::string v = "{\"buffer\":0,\"byteOffset\":" + std::to_string(offset) + ",\"byteLength\":" + std::to_string(length);
    if (stride) v += ",\"byteStride\":" + std::to_string(stride);
    if (!name.empty()) v += ",\"name\":\"" + name + "\"";
    views_.push_back(v + "}");
    return int(views_.size()) - 1;
}

int GlbFixture::AddAccessor(int view, uint32_t byteOffset, int componentType, uint32_t count, const std::string& type,
                            bool normalized, const std::string& extra) {
    std::string a = "{";
    if (view >= 0) a += "\"bufferView\":" + std::to_string(view) + ",";
    a += "\"byteOffset\":" + std::to_string(byteOffset) + ",\"componentType\":" + std::to_string(componentType) +
         ",\"count\":" + std::to_string(count) + ",\"type\":\"" + type + "\"";
    if (normalized) a += ",\"normalized\":true";
    accessors_.push_back(a + extra + "}");
    return int(accessors_.size()) - 1;
}

size_t GlbFixture::Components(const std::string& type) {
    if (type == "VEC2") return 2;
    if (type == "VEC3") return 3;
    if (type == "VEC4" || type == "MAT2") return 4;
    if (type == "MAT3") return 9;
    if (type == "MAT4") return 16;
    return 1;
}

std::string GlbFixture::Json(const std::string& members) const {
    auto join = [](const std::vector<std::string>& items) {
        std::string s = "[";
        for (size_t i = 0; i < items.size(); ++i) s += (i ? "," : "") + items[i];
        return s + "]";
    };
    std::string json = "{\"asset\":{\"version\":\"2.0\"}";
    json += ",\"buffers\":[{";
    if (!bufferUri_.empty()) json += "\"uri\":\"" + bufferUri_ + "\",";
    json += "\"byteLength\":" + std::to_string(binary_.size()) + "}]";
    if (!views_.empty()) json += ",\"bufferViews\":" + join(views_);
    if (!accessors_.empty()) json += ",\"accessors\":" + join(accessors_);
    if (!members.empty()) json += "," + members;
    return json + "}";
}

std::vector<uint8_t> GlbFixture::Build(const std::string& members) const { return MakeGlb(Json(members), binary_); }

std::vector<uint8_t> MakeGlb(const std::string& json, const std::vector<uint8_t>& binary, bool withBinary) {
    const size_t jsonLength = Padded(json.size());
    const size_t binLength = Padded(binary.size());
    std::vector<uint8_t> out;
    out.reserve(20 + jsonLength + (withBinary ? 8 + binLength : 0));
    out.insert(out.end(), {'g', 'l', 'T', 'F'});
    PutWord(out, 2);
    PutWord(out, uint32_t(12 + 8 + jsonLength + (withBinary ? 8 + binLength : 0)));
    PutWord(out, uint32_t(jsonLength));
    out.insert(out.end(), {'J', 'S', 'O', 'N'});
    out.insert(out.end(), json.begin(), json.end());
    out.resize(20 + jsonLength, ' ');
    if (withBinary) {
        PutWord(out, uint32_t(binLength));
        out.insert(out.end(), {'B', 'I', 'N', 0});
        out.insert(out.end(), binary.begin(), binary.end());
        out.resize(out.size() + (binLength - binary.size()), 0);
    }
    return out;
}

bool BeginGlbStream(std::FILE* file, const std::string& json, uint64_t binaryLength) {
    const size_t jsonLength = Padded(json.size());
    const uint64_t total = 12 + 8 + jsonLength + 8 + Padded(size_t(binaryLength));
    bool ok = std::fwrite("glTF", 1, 4, file) == 4 && WriteWord(file, 2) && WriteWord(file, uint32_t(total));
    ok = ok && WriteWord(file, uint32_t(jsonLength)) && std::fwrite("JSON", 1, 4, file) == 4;
    ok = ok && std::fwrite(json.data(), 1, json.size(), file) == json.size();
    for (size_t i = json.size(); ok && i < jsonLength; ++i) ok = std::fputc(' ', file) != EOF;
    ok = ok && WriteWord(file, uint32_t(Padded(size_t(binaryLength))));
    return ok && std::fwrite("BIN\0", 1, 4, file) == 4;
}

bool FinishGlbStream(std::FILE* file, uint64_t binaryLength) {
    bool ok = true;
    for (uint64_t i = binaryLength; ok && i < Padded(size_t(binaryLength)); ++i) ok = std::fputc(0, file) != EOF;
    return ok;
}

bool WriteFile(const std::string& path, const std::vector<uint8_t>& bytes) {
    std::FILE* f = std::fopen(path.c_str(), "wb");
    if (!f) return false;
    const bool ok = std::fwrite(bytes.data(), 1, bytes.size(), f) == bytes.size();
    return std::fclose(f) == 0 && ok;
}

}  // namespace glbfixture
