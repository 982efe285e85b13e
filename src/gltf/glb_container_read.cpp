#include "gltf/glb_container_read.h"

#include <filesystem>
#include <memory>

#include "scene/console.h"

namespace {

constexpr uint32_t kJsonChunk = 0x4E4F534A;  // "JSON"
constexpr uint32_t kBinChunk = 0x004E4942;   // "BIN\0"

bool ReadWord(std::FILE* file, uint32_t& value) {
    unsigned char bytes[4];
    if (std::fread(bytes, 1, 4, file) != 4) return false;
    value = uint32_t(bytes[0]) | uint32_t(bytes[1]) << 8 | uint32_t(bytes[2]) << 16 | uint32_t(bytes[3]) << 24;
    return true;
}

struct FileCloser {
    void operator()(std::FILE* f) const { std::fclose(f); }
};

}  // namespace

BoundedFileStream::BoundedFileStream(std::FILE* file, uint64_t length) : file_(file), end_(length) {
    const size_t want = size_t(std::min<uint64_t>(kWindowSize, end_));
    count_ = want ? std::fread(window_, 1, want, file_) : 0;
}

void BoundedFileStream::Refill() {
    if (base_ + count_ >= end_) return;
    base_ += count_;
    position_ = 0;
    const size_t want = size_t(std::min<uint64_t>(kWindowSize, end_ - base_));
    count_ = std::fread(window_, 1, want, file_);
    // A file shorter than its chunk table claims ends the text here.
    if (count_ == 0) end_ = base_;
}

bool ReadGlbContainer(const std::string& path, GltfContext& context) {
    // A folder opens for reading on some systems, only to read as an empty file.
    std::error_code folderError;
    const bool folder = std::filesystem::is_directory(path, folderError);
    std::unique_ptr<std::FILE, FileCloser> holder(folder ? nullptr : std::fopen(path.c_str(), "r"));
    std::FILE* file = holder.get();
    if (!file) {
        ConsoleErrorText("error: unable to open file '%s' for reading", path.c_str());
        return false;
    }
    if (std::fseek(file, 0, SEEK_END) != 0) {
        ConsoleErrorText("error: unable to open file '%s' for reading", path.c_str());
        return false;
    }
    const long fileSizeSigned = std::ftell(file);
    const uint64_t fileSize = fileSizeSigned < 0 ? 0 : uint64_t(fileSizeSigned);
    std::fseek(file, 0, SEEK_SET);

    std::vector<GlbChunk> chunks;
    unsigned char magic[4];
    if (std::fread(magic, 1, 4, file) != 4 || magic[0] != 'g' || magic[1] != 'l' || magic[2] != 'T' || magic[3] != 'F') {
        // A bare JSON file: one chunk over the whole file.
        chunks.push_back({0, uint32_t(fileSize), 0});
    } else {
        uint32_t version = 0;
        if (!ReadWord(file, version) || version != 2) {
            ConsoleErrorText("invalid glb version encountered (%u)\n", unsigned(version));
            return false;
        }
        uint32_t length = 0;
        if (!ReadWord(file, length) || length != fileSize) {
            ConsoleErrorText("invalid glb length encountered (%u)\n", unsigned(length));
            return false;
        }
        uint32_t chunkLength = 0;
        while (ReadWord(file, chunkLength)) {
            uint32_t type = 0;
            if (!ReadWord(file, type)) break;
            const long position = std::ftell(file);
            // Chunks after the second are walked but never used: a file of a million empty
            // chunks does not need a table of a million entries.
            if (chunks.size() < 2) chunks.push_back({uint32_t(position), chunkLength, type});
            const uint64_t padded = (uint64_t(chunkLength) + 3) & ~uint64_t(3);
            if (std::fseek(file, long(padded), SEEK_CUR) != 0) {
                ConsoleErrorText("invalid glb chunks encountered\n");
                return false;
            }
        }
        if (chunks.empty()) {
            ConsoleErrorText("invalid glb chunks encountered\n");
            return false;
        }
        if (chunks[0].type != kJsonChunk) {
            ConsoleErrorText("invalid glb first chunk type encountered\n");
            return false;
        }
        if (chunks.size() >= 2 && chunks[1].type != kBinChunk) {
            ConsoleErrorText("invalid glb second chunk type encountered\n");
            return false;
        }
    }

    std::fseek(file, long(chunks[0].offset), SEEK_SET);
    {
        // The window is large, so it lives on the heap rather than the stack.
        auto stream = std::make_unique<BoundedFileStream>(file, chunks[0].length);
        // A broken text leaves a null document; the load goes on with an empty one. The
        // iterative parser builds the same values as the recursive one, but a text nested a
        // million levels deep cannot exhaust the call stack.
        context.json.ParseStream<rapidjson::kParseIterativeFlag>(*stream);
    }
    if (chunks.size() < 2) return true;

    // A chunk that claims more bytes than the file holds would only yield zeros; refuse it
    // rather than allocate for it.
    if (uint64_t(chunks[1].offset) + chunks[1].length > fileSize) {
        ConsoleError("'%s': the binary chunk (%u bytes) extends past the end of the file", path.c_str(),
                     unsigned(chunks[1].length));
        return false;
    }
    context.binaryChunk.resize(chunks[1].length);
    std::fseek(file, long(chunks[1].offset), SEEK_SET);
    // A short read leaves the tail zero.
    const size_t got = std::fread(context.binaryChunk.data(), 1, context.binaryChunk.size(), file);
    (void)got;
    return true;
}
