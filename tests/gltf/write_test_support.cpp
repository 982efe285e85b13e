#include "write_test_support.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <sstream>
#include <sys/wait.h>
#include <unistd.h>

#include "gltf/glb_buffer_estimate.h"
#include "gltf/glb_writer.h"
#include "json/json.h"

#include "file_contents.h"
#include "scratch_folder.h"

#ifndef VURL_SOURCE_DIR
#error "VURL_SOURCE_DIR must name the source tree"
#endif

namespace {
uint32_t U32At(const std::vector<uint8_t>& bytes, size_t offset) {
    uint32_t v = 0;
    std::memcpy(&v, bytes.data() + offset, 4);
    return v;
}

std::string ShellQuote(const std::string& text) {
    std::string out = "'";
    for (char c : text) out += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return out + "'";
}
}  // namespace

GlbParts ReadGlbParts(const std::string& path) {
    GlbParts p;
    const std::vector<uint8_t> bytes = testsupport::ReadFileBytes(path);
    size_t binHeader = bytes.size() < 20 ? 0 : 20 + size_t(U32At(bytes, 12));
    if (bytes.size() < 20 || binHeader + 8 > bytes.size()) {
        p.error = "header or JSON chunk runs past the end";
    } else if (U32At(bytes, 0) != 0x46546C67 || U32At(bytes, 4) != 2 || U32At(bytes, 8) != bytes.size()) {
        p.error = "bad magic, version or length field";
    } else if (U32At(bytes, 16) != 0x4E4F534A || U32At(bytes, binHeader + 4) != 0x004E4942) {
        p.error = "chunk types are not JSON then BIN";
    } else if (binHeader + 8 + U32At(bytes, binHeader) != bytes.size()) {
        p.error = "binary chunk does not end the file";
    } else {
        p.json.assign(bytes.begin() + 20, bytes.begin() + static_cast<std::ptrdiff_t>(binHeader));
        p.bin.assign(bytes.begin() + static_cast<std::ptrdiff_t>(binHeader + 8), bytes.end());
        p.ok = true;
    }
    return p;
}

std::string TrimmedJson(const GlbParts& parts) {
    std::string text = parts.json;
    while (!text.empty() && text.back() == ' ') text.pop_back();
    return text;
}

std::string TempGlbPath(const std::string& stem) { return testsupport::ProcessScratchFolder().File(stem + ".glb"); }

GlbParts WriteAndRead(const Scene& scene, const ExportOptions& options, const std::string& stem,
                      std::string* pathOut) {
    std::string path = TempGlbPath(stem);
    std::filesystem::remove(path);
    WriteGlb(path, scene, options);
    if (pathOut) *pathOut = path;
    ExpectValidatorClean(path);
    GlbParts parts = ReadGlbParts(path);
    // The reservation must cover the whole buffer, or it would grow by copying after all.
    EXPECT_GE(EstimateGlbBufferBytes(scene, options), parts.bin.size()) << stem;
    return parts;
}

ExportOptions ModelOptions() {
    ExportOptions o;
    o.exportModel = true;
    return o;
}

ExportOptions AnimationOptions(std::initializer_list<const char*> takes, bool model) {
    ExportOptions o;
    o.exportModel = model;
    for (const char* t : takes) o.animations.insert(t);
    return o;
}

namespace {
struct ValidatorResult {
    bool available = false;  // false when node is not installed
    int exitCode = -1;
    std::string output;
};

ValidatorResult RunValidator(const std::string& path, const std::string& arguments) {
    ValidatorResult r;
    if (std::system("command -v node >/dev/null 2>&1") != 0) return r;
    r.available = true;
    std::string command = "node " + ShellQuote(std::string(VURL_SOURCE_DIR) + "/tools/validator/validate.mjs") +
                          " " + ShellQuote(path) + arguments + " 2>&1";
    FILE* pipe = popen(command.c_str(), "r");
    if (!pipe) return r;
    char buffer[4096];
    size_t n;
    while ((n = fread(buffer, 1, sizeof buffer, pipe)) > 0) r.output.append(buffer, n);
    int status = pclose(pipe);
    r.exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    return r;
}
}  // namespace

std::vector<std::string> ValidatorErrorCodes(const std::string& path) {
    std::istringstream lines(RunValidator(path, " --error-codes").output);
    std::vector<std::string> codes;
    for (std::string line; std::getline(lines, line);)
        if (!line.empty()) codes.push_back(line);
    return codes;
}

bool IsDracoCompressed(const std::string& path) {
    return testsupport::ReadFileText(path).find("KHR_draco_mesh_compression") != std::string::npos;
}

VertexData* Triangle(Scene& scene) {
    VertexData* v = New<VertexData>(scene);
    v->positions = {0, 0, 0, 1, 0, 0, 0, 1, 0};
    return v;
}

namespace {
uint64_t NumberOf(const JsonValue& value) {
    std::string text(value.Text());
    return text.empty() || text[0] == '-' ? UINT64_MAX : std::stoull(text);
}
}  // namespace

void ExpectViewsInsideBuffer(const std::string& path) {
    GlbParts parts = ReadGlbParts(path);
    ASSERT_TRUE(parts.ok) << path << ": " << parts.error;
    JsonParser parser;
    JsonValue root = parser.ParseString(TrimmedJson(parts));
    ASSERT_FALSE(root.IsNullHandle()) << path << ": " << parser.error;
    uint64_t size = NumberOf(root.Get("buffers").Member(0).Get("byteLength"));
    EXPECT_EQ(size, parts.bin.size()) << path;
    JsonValue views = root.Get("bufferViews");
    for (size_t i = 0; i < views.Count(); ++i) {
        uint64_t offset = NumberOf(views.Member(i).Get("byteOffset"));
        uint64_t length = NumberOf(views.Member(i).Get("byteLength"));
        EXPECT_EQ(offset % 4, 0u) << path << ": view " << i;
        EXPECT_LE(offset, size) << path << ": view " << i;
        EXPECT_LE(length, size - std::min(offset, size)) << path << ": view " << i;
    }
}

void ExpectValidatorClean(const std::string& path, const std::vector<std::string>& alsoAllowed) {
    // Checked here whether node is present or not; it also bounds the one validator error
    // allowed on view offsets to views of length 0 at the buffer's end.
    ExpectViewsInsideBuffer(path);
    std::string arguments = " --allow-file " + ShellQuote(std::string(VURL_SOURCE_DIR) + "/tools/validator/prescribed.txt");
    for (const std::string& rule : alsoAllowed) arguments += " --allow " + ShellQuote(rule);
    ValidatorResult r = RunValidator(path, arguments);
    if (!r.available) GTEST_SKIP() << "node is not installed: the glTF validator did not run";
    EXPECT_EQ(r.exitCode, 0) << "validator on " << path << ":\n" << r.output;
}
