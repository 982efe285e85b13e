// Builds small GLB files for tests and samples: binary data, buffer views and accessors
// are collected here, the rest of the JSON is supplied as text by the caller.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

namespace glbfixture {

// glTF component type numbers.
enum : int { kByte = 5120, kUByte = 5121, kShort = 5122, kUShort = 5123, kInt = 5124, kUInt = 5125, kFloat = 5126 };

class GlbFixture {
public:
    // Appends bytes to the binary chunk (aligned to 4) and returns their offset.
    size_t Append(const void* data, size_t size);
    template <typename T>
    size_t Append(const std::vector<T>& values) {
        return Append(values.data(), values.size() * sizeof(T));
    }

    // A buffer view over bytes just appended; returns the view index. A non-empty name is
    // written as the view's "name".
    int AddView(size_t offset, size_t length, uint32_t stride = 0, const std::string& name = "");
    template <typename T>
    int AddViewOf(const std::vector<T>& values, uint32_t stride = 0) {
        const size_t offset = Append(values);
        return AddView(offset, values.size() * sizeof(T), stride);
    }

    // An accessor; `extra` is appended verbatim inside the object (e.g. ",\"sparse\":{...}").
    int AddAccessor(int view, uint32_t byteOffset, int componentType, uint32_t count, const std::string& type,
                    bool normalized = false, const std::string& extra = "");
    // Shorthand: a tightly packed view of `values` and an accessor over it.
    template <typename T>
    int AddData(const std::vector<T>& values, int componentType, const std::string& type, bool normalized = false) {
        const int view = AddViewOf(values);
        return AddAccessor(view, 0, componentType, uint32_t(values.size() / Components(type)), type, normalized);
    }

    // Gives the one buffer a "uri" (written as it stands), for text .gltf files whose data
    // lies in a file of their own.
    void SetBufferUri(const std::string& uri) { bufferUri_ = uri; }

    // The JSON text: asset, buffers, bufferViews, accessors, then `members` (text of further
    // root members without the surrounding braces, may be empty).
    std::string Json(const std::string& members) const;
    // A whole GLB file with both chunks.
    std::vector<uint8_t> Build(const std::string& members) const;

    const std::vector<uint8_t>& Binary() const { return binary_; }
    static size_t Components(const std::string& type);

private:
    std::vector<uint8_t> binary_;
    std::vector<std::string> views_;
    std::vector<std::string> accessors_;
    std::string bufferUri_;
};

// GLB 2 bytes from a JSON text and binary data; the binary chunk is left out when
// `withBinary` is false. JSON is padded with blanks, binary with zeros.
std::vector<uint8_t> MakeGlb(const std::string& json, const std::vector<uint8_t>& binary, bool withBinary = true);

// Writes the header and JSON chunk of a GLB whose binary chunk holds `binaryLength` bytes;
// the caller then writes exactly that many bytes and calls FinishGlbStream.
bool BeginGlbStream(std::FILE* file, const std::string& json, uint64_t binaryLength);
bool FinishGlbStream(std::FILE* file, uint64_t binaryLength);

bool WriteFile(const std::string& path, const std::vector<uint8_t>& bytes);

// An uncompressed-colour RGBA PNG of width x height pixels.
std::vector<uint8_t> MakePng(uint32_t width, uint32_t height, const std::vector<uint8_t>& rgba);

}  // namespace glbfixture
