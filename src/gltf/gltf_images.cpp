#include "gltf/gltf_images.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <iostream>
#include <sstream>
#include <unordered_map>
#include <unordered_set>

#include "scene/console.h"

namespace {

// The view's byteLength bytes, checked against its buffer.
ByteRange ImageBytes(GltfContext& context, size_t imageIndex) {
    const GltfImage& image = context.document.images[imageIndex];
    ByteRange bytes;
    try {
        bytes = ViewBytes(context, image.bufferView);
    } catch (const GltfError& e) {
        throw GltfError("image " + std::to_string(imageIndex) + ": " + e.what());
    }
    const uint32_t length = context.document.bufferViews[size_t(image.bufferView)].byteLength;
    if (length > bytes.size)
        throw GltfError("image " + std::to_string(imageIndex) + " reaches past the end of its buffer");
    return {bytes.data, length};
}

std::string ExtensionOf(GltfContext& context, size_t imageIndex) {
    const GltfImage& image = context.document.images[imageIndex];
    if (image.mimeType == "image/png") return "png";
    if (image.mimeType == "image/jpeg") return "jpg";
    if (image.mimeType == "image/avif") return "avif";
    if (image.mimeType == "image/webp") return "webp";
    if (image.bufferView == -1) return "jpg";
    const ByteRange b = ImageBytes(context, imageIndex);
    if (b.size >= 9 && b.data[0] == 137) {
        static const uint8_t kPng[7] = {'P', 'N', 'G', 13, 10, 26, 10};
        return std::memcmp(b.data + 1, kPng, 7) == 0 ? "png" : "jpg";
    }
    if (b.size >= 4 && b.data[0] == 255 && b.data[1] == 216 && b.data[2] == 255) return "jpg";
    return "jpg";
}

bool EndsWith(const std::string& text, const std::string& tail) {
    return text.size() >= tail.size() && text.compare(text.size() - tail.size(), tail.size(), tail) == 0;
}

}  // namespace

std::string SanitizeFileName(const std::string& name) {
    std::string out = name;
    for (char& ch : out) {
        const unsigned char c = static_cast<unsigned char>(ch);
        if (c < 32 || std::strchr("/?<>\\:*|\" ", ch)) ch = '_';
    }
    return out;
}

std::vector<std::string> MakeImageFileNames(GltfContext& context) {
    const auto& images = context.document.images;
    std::vector<std::string> names;
    names.reserve(images.size());
    std::unordered_set<std::string> used;
    // Per stem and extension, the counter to try next: the names below it are all taken
    // and stay taken, so many images of one name cost no rescan from 1 each.
    std::unordered_map<std::string, int> nextCounter;
    for (size_t i = 0; i < images.size(); ++i) {
        const GltfImage& image = images[i];
        const std::string extension = ExtensionOf(context, i);

        std::string stem;
        if (!image.name.empty()) {
            stem = SanitizeFileName(image.name);
        } else if (image.bufferView != -1) {
            if (image.bufferView < 0 || size_t(image.bufferView) >= context.document.bufferViews.size())
                throw GltfError("image " + std::to_string(i) + ": buffer view " + std::to_string(image.bufferView) +
                                " does not exist");
            const std::string& viewName = context.document.bufferViews[size_t(image.bufferView)].name;
            if (!viewName.empty()) stem = SanitizeFileName(viewName);
        }
        if (stem.empty()) stem = std::to_string(i);

        // The stem may already carry the extension; decide on a lower-cased copy.
        std::string lower = stem;
        for (char& c : lower) c = char(std::tolower(static_cast<unsigned char>(c)));
        const std::string dotted = "." + extension;
        if (EndsWith(lower, ".jpeg")) {
            if (stem.size() > 5) stem.resize(stem.size() - 5);
        } else if (lower.size() > dotted.size() && EndsWith(lower, dotted)) {
            stem.resize(stem.size() - dotted.size());
        }

        std::string candidate = stem + dotted;
        if (used.count(candidate)) {
            int& counter = nextCounter.try_emplace(candidate, 1).first->second;
            do {
                candidate = stem + "_" + std::to_string(counter) + dotted;
                ++counter;
            } while (used.count(candidate));
        }
        used.insert(candidate);
        names.push_back(std::move(candidate));
    }
    return names;
}

bool ExtractEmbeddedImages(GltfContext& context) {
    const std::vector<std::string> names = MakeImageFileNames(context);
    if (names.empty()) return true;
    const auto& images = context.document.images;
    // Check every embedded image before anything is written.
    std::vector<ByteRange> data(images.size());
    for (size_t i = 0; i < images.size(); ++i)
        if (images[i].bufferView != -1) data[i] = ImageBytes(context, i);

    const std::filesystem::path folder(context.path + ".fbm");
    std::error_code error;
    std::filesystem::create_directories(folder, error);
    if (error) throw GltfError("cannot create the image folder '" + folder.string() + "': " + error.message());

    for (size_t i = 0; i < images.size(); ++i) {
        if (images[i].bufferView == -1) continue;
        const std::filesystem::path file = folder / std::filesystem::path(names[i]);
        std::cout << "writing " << data[i].size << " bytes to " << file << "..." << std::endl;
        std::FILE* f = std::fopen(file.c_str(), "wb");
        if (!f) {
            const int openError = errno;  // before the stream calls below can change it
            std::ostringstream quoted;  // a path streams in quotes, with its quotes and backslashes escaped
            quoted << file;
            ConsoleErrorText("error: failed to open file='%s' for writing err=%s\n", quoted.str().c_str(),
                             std::strerror(openError));
            continue;
        }
        if (data[i].size) std::fwrite(data[i].data, 1, data[i].size, f);
        std::fclose(f);
    }
    return true;
}
