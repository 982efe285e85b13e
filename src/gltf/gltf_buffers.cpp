#include <algorithm>
#include <cctype>
#include <cstdio>
#include <filesystem>
#include <string>

#include "gltf/gltf_context.h"

namespace {

int Base64Value(unsigned char c) {
    if (c >= 'A' && c <= 'Z') return c - 'A';
    if (c >= 'a' && c <= 'z') return c - 'a' + 26;
    if (c >= '0' && c <= '9') return c - '0' + 52;
    if (c == '+' || c == '-') return 62;
    if (c == '/' || c == '_') return 63;
    return -1;
}

bool DecodeBase64(const std::string& text, size_t start, std::vector<uint8_t>& out) {
    out.reserve((text.size() - start) / 4 * 3 + 3);
    uint32_t accumulator = 0;
    int bits = 0;
    for (size_t i = start; i < text.size(); ++i) {
        const unsigned char c = static_cast<unsigned char>(text[i]);
        if (c == '=') break;
        const int v = Base64Value(c);
        if (v < 0) return false;
        accumulator = (accumulator << 6) | uint32_t(v);
        bits += 6;
        if (bits >= 8) {
            bits -= 8;
            out.push_back(uint8_t(accumulator >> bits));
        }
    }
    return true;
}

int HexValue(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return -1;
}

// A relative URI names a file beside the input; "%XX" escapes stand for bytes.
std::string DecodeUriPath(const std::string& uri) {
    std::string out;
    out.reserve(uri.size());
    for (size_t i = 0; i < uri.size(); ++i) {
        if (uri[i] == '%' && i + 2 < uri.size() && HexValue(uri[i + 1]) >= 0 && HexValue(uri[i + 2]) >= 0) {
            out.push_back(char(HexValue(uri[i + 1]) * 16 + HexValue(uri[i + 2])));
            i += 2;
        } else {
            out.push_back(uri[i]);
        }
    }
    return out;
}

// A URI that names a scheme ("file:", "http:", a drive letter) rather than a relative path.
bool HasScheme(const std::string& uri) {
    for (size_t i = 0; i < uri.size(); ++i) {
        const unsigned char c = static_cast<unsigned char>(uri[i]);
        if (c == ':') return i > 0;
        const bool letter = (c | 0x20) >= 'a' && (c | 0x20) <= 'z';
        if (!letter && (i == 0 || !(std::isdigit(c) || c == '+' || c == '-' || c == '.'))) return false;
    }
    return false;
}

// A URI as a message shows it: control bytes would break the message's one line.
std::string Printable(std::string text) {
    for (char& c : text)
        if (static_cast<unsigned char>(c) < 0x20 || c == 0x7F) c = '?';
    return text;
}

bool Inside(const std::filesystem::path& folder, const std::filesystem::path& file) {
    return std::mismatch(folder.begin(), folder.end(), file.begin(), file.end()).first == folder.end();
}

// The file that a relative buffer URI names within the input's folder, with "." and ".."
// resolved and symbolic links followed. Uploads are converted unattended, so a URI must not
// reach any other file the process can read: schemes, absolute paths and paths that lead out
// of the folder (also through a link) are refused.
std::filesystem::path ConfinedBufferFile(const std::string& inputPath, const std::string& uri, int32_t index) {
    const std::string what = "buffer " + std::to_string(index) + " URI '" + Printable(uri) + "' ";
    if (HasScheme(uri)) throw GltfError(what + "is not a relative file name");
    const std::string decoded = DecodeUriPath(uri);
    const std::filesystem::path relative(decoded);
    if (decoded.find('\0') != std::string::npos || relative.has_root_path())
        throw GltfError(what + "is not a relative file name");
    std::filesystem::path folder = std::filesystem::path(inputPath).parent_path();
    if (folder.empty()) folder = ".";
    std::error_code error;
    const std::filesystem::path base = std::filesystem::canonical(folder, error);
    if (error) throw GltfError(what + "cannot be resolved: " + error.message());
    const std::filesystem::path file = std::filesystem::weakly_canonical(base / relative, error);
    if (error) throw GltfError(what + "cannot be resolved: " + error.message());
    if (!Inside(base, file)) throw GltfError(what + "leads outside the folder of the input");
    return file;
}

std::unique_ptr<std::vector<uint8_t>> LoadUriBuffer(const GltfContext& context, int32_t index) {
    const std::string& uri = context.document.buffers[size_t(index)].uri;
    auto bytes = std::make_unique<std::vector<uint8_t>>();
    if (uri.compare(0, 5, "data:") == 0) {
        const size_t marker = uri.find(";base64,");
        const size_t comma = uri.find(',');
        if (marker == std::string::npos || marker + 7 != comma)
            throw GltfError("buffer " + std::to_string(index) + " has a data URI that is not base64");
        if (!DecodeBase64(uri, comma + 1, *bytes))
            throw GltfError("buffer " + std::to_string(index) + " has invalid base64 data");
        return bytes;
    }
    const std::filesystem::path resolved = ConfinedBufferFile(context.path, uri, index);
    // Messages name the file as the URI spells it, not the resolved path.
    const std::filesystem::path file =
        std::filesystem::path(context.path).parent_path() / std::filesystem::path(DecodeUriPath(uri));
    // A folder would read as garbage and a pipe would block the run waiting for a writer.
    std::error_code kindError;
    const std::filesystem::file_status kind = std::filesystem::status(resolved, kindError);
    if (std::filesystem::exists(kind) && !std::filesystem::is_regular_file(kind))
        throw GltfError("buffer " + std::to_string(index) + " file '" + Printable(file.string()) + "' is not a regular file");
    std::FILE* f = std::fopen(resolved.c_str(), "rb");
    if (!f) throw GltfError("buffer " + std::to_string(index) + " file '" + Printable(file.string()) + "' cannot be opened");
    bool ok = std::fseek(f, 0, SEEK_END) == 0;
    const long size = ok ? std::ftell(f) : -1;
    ok = ok && size >= 0 && std::fseek(f, 0, SEEK_SET) == 0;
    if (ok) {
        bytes->resize(size_t(size));
        ok = std::fread(bytes->data(), 1, bytes->size(), f) == bytes->size();
    }
    std::fclose(f);
    if (!ok) throw GltfError("buffer " + std::to_string(index) + " file '" + Printable(file.string()) + "' cannot be read");
    return bytes;
}

}  // namespace

ByteRange BufferBytes(GltfContext& context, int32_t index) {
    const auto& buffers = context.document.buffers;
    // A file with a binary chunk keeps all its data there: every view addresses the chunk,
    // whatever buffer it names and whatever "uri" that buffer has. Only a file without one
    // (a text .gltf) has its buffers loaded from their "uri".
    if (!context.binaryChunk.empty() || buffers.empty())
        return {context.binaryChunk.data(), context.binaryChunk.size()};
    if (index < 0 || size_t(index) >= buffers.size())
        throw GltfError("buffer " + std::to_string(index) + " does not exist");
    if (buffers[size_t(index)].uri.empty()) return {context.binaryChunk.data(), context.binaryChunk.size()};
    if (context.uriBuffers.size() != buffers.size()) context.uriBuffers.resize(buffers.size());
    auto& slot = context.uriBuffers[size_t(index)];
    if (!slot) slot = LoadUriBuffer(context, index);
    return {slot->data(), slot->size()};
}

ByteRange ViewBytes(GltfContext& context, int32_t viewIndex) {
    const auto& views = context.document.bufferViews;
    if (viewIndex < 0 || size_t(viewIndex) >= views.size())
        throw GltfError("buffer view " + std::to_string(viewIndex) + " does not exist");
    const GltfBufferView& view = views[size_t(viewIndex)];
    ByteRange buffer;
    try {
        buffer = BufferBytes(context, view.buffer);
    } catch (const GltfError& e) {
        throw GltfError("buffer view " + std::to_string(viewIndex) + ": " + e.what());
    }
    if (view.byteOffset > buffer.size)
        throw GltfError("buffer view " + std::to_string(viewIndex) + " starts past the end of its buffer");
    return {buffer.data + view.byteOffset, buffer.size - view.byteOffset};
}
