// The GLB container as written: header, padded chunks and back-patched lengths.
#include <gtest/gtest.h>

#include <filesystem>

#include "gltf/glb_container_write.h"
#include "file_contents.h"
#include "write_test_support.h"

namespace {
using testsupport::ReadFileBytes;

void PutText(std::vector<uint8_t>& out, const std::string& text) { out.insert(out.end(), text.begin(), text.end()); }

TEST(GlbContainer, ChunksArePaddedAndLengthsPatched) {
    // Written scenes come with their data already padded: only here does the container pad it.
    // {"a":1} gets one blank, the 5 data bytes three zeros: 12 + 8 + 8 + 8 + 8 = 44 bytes.
    JsonValue json = JsonValue::Object();
    json.Add("a", JsonValue(int32_t(1)));
    GlbBuilder builder;
    builder.data = {1, 2, 3, 4, 5};
    const std::string path = TempGlbPath("container");
    WriteGlbFile(path, json, builder);
    std::vector<uint8_t> expected;
    PutText(expected, "glTF");
    PutBytes<uint32_t>(expected, {2, 44, 8});
    PutText(expected, "JSON{\"a\":1} ");
    PutBytes<uint32_t>(expected, {8});
    PutText(expected, std::string("BIN\0", 4));
    PutBytes<uint8_t>(expected, {1, 2, 3, 4, 5, 0, 0, 0});
    EXPECT_EQ(ReadFileBytes(path), expected);
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
}  // namespace
