// The GLB container as written: header, padded chunks and back-patched lengths.
#include <gtest/gtest-spi.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "gltf/glb_container_write.h"
#include "file_contents.h"
#include "write_test_support.h"

namespace {
using testsupport::ReadFileBytes;

void PutText(std::vector<uint8_t>& out, const std::string& text) { out.insert(out.end(), text.begin(), text.end()); }

TEST(GlbContainer, ChunksArePaddedAndLengthsPatched) {
    JsonValue one = JsonValue::Object();
    one.Add("a", JsonValue(int32_t(1)));
    // {"a":1} gets one blank and 5 data bytes three zeros; {} gets two blanks, and an empty
    // buffer still writes its binary chunk.
    const struct {
        JsonValue json;
        std::vector<uint8_t> data;
        std::string jsonChunk;
        uint32_t total, binLength;
    } cases[] = {{one, {1, 2, 3, 4, 5}, "{\"a\":1} ", 44, 8}, {JsonValue::Object(), {}, "{}  ", 32, 0}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.jsonChunk);
        GlbBuilder builder;
        builder.data = c.data;
        std::string path = TempGlbPath("container");
        WriteGlbFile(path, c.json, builder);
        std::vector<uint8_t> expected;
        PutText(expected, "glTF");
        PutBytes<uint32_t>(expected, {2, c.total, uint32_t(c.jsonChunk.size())});
        PutText(expected, "JSON" + c.jsonChunk);
        PutBytes<uint32_t>(expected, {c.binLength});
        PutText(expected, std::string("BIN\0", 4));
        expected.insert(expected.end(), c.data.begin(), c.data.end());
        PadTo4(expected);
        EXPECT_EQ(ReadFileBytes(path), expected);
    }
}

TEST(GlbContainer, LengthsMustFitThirtyTwoBits) {
    // The file is 12 + 8 + JSON + 8 + binary bytes, each chunk padded to 4; at most 2^32 - 1.
    const uint64_t max = 4294967295u;
    const struct {
        uint64_t json, binary;
        bool fits;
    } cases[] = {
        {4, max - 35, true},    // 28 + 4 + 4294967260 = 4294967292
        {4, max - 32, false},   // 4294967263 pads to 4294967264: 4294967296
        {0, max - 27, false},   // 28 + 4294967268: the binary data alone is too long
        {max - 27, 0, false},   // and so is the JSON text
        {1, max - 38, true},    // 28 + 4 + 4294967260 (4294967257 padded)
        {0, uint64_t(1) << 40, false},
    };
    for (const auto& c : cases) EXPECT_EQ(GlbLengthsFit(c.json, c.binary), c.fits) << c.json << " " << c.binary;
}

TEST(GlbContainer, UnwritablePathIsLeftAloneQuietly) {
    std::string dir = TempGlbPath("a_directory");
    std::filesystem::remove_all(dir);
    std::filesystem::create_directories(dir);
    testing::internal::CaptureStderr();
    WriteGlbFile(dir, JsonValue::Object(), GlbBuilder{});
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    EXPECT_TRUE(std::filesystem::is_directory(dir));
}

std::string g_layoutPath;  // a global: the failure checks below cannot see locals

void WriteViews(const std::string& stem, std::initializer_list<std::pair<uint32_t, uint32_t>> views) {
    JsonValue buffer = JsonValue::Object();
    buffer.Add("byteLength", JsonValue(uint32_t(8)));
    JsonValue buffers = JsonValue::Array();
    buffers.Add(buffer);
    JsonValue list = JsonValue::Array();
    for (auto [offset, length] : views) {
        JsonValue view = JsonValue::Object();
        view.Add("buffer", JsonValue(int32_t(0)));
        view.Add("byteLength", JsonValue(length));
        view.Add("byteOffset", JsonValue(offset));
        list.Add(view);
    }
    JsonValue json = JsonValue::Object();
    json.Add("buffers", buffers);
    json.Add("bufferViews", list);
    GlbBuilder builder;
    builder.data.resize(8);
    g_layoutPath = TempGlbPath(stem);
    WriteGlbFile(g_layoutPath, json, builder);
}

TEST(GlbValidatorRules, LayoutCheckAllowsOnlyEmptyViewsAtTheEnd) {
    WriteViews("layout_ok", {{0, 8}, {8, 0}});
    ExpectViewsInsideBuffer(g_layoutPath);
    // Past the end, too long, unaligned.
    for (std::pair<uint32_t, uint32_t> bad : {std::pair{12u, 0u}, {4u, 8u}, {2u, 4u}}) {
        WriteViews("layout_bad", {bad});
        EXPECT_NONFATAL_FAILURE(ExpectViewsInsideBuffer(g_layoutPath), "view 0");
    }
}

}  // namespace
