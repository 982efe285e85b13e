// Container reading: refusals with their exact texts, the bare JSON fallback, chunk walking.
#include "read_test_util.h"
#include "text_table.h"

using namespace gltftest;

namespace {

void PutWord(std::vector<uint8_t>& out, uint32_t v) {
    for (int i = 0; i < 4; ++i) out.push_back(uint8_t(v >> (8 * i)));
}

void FixLength(std::vector<uint8_t>& bytes) {
    const uint32_t n = uint32_t(bytes.size());
    for (int i = 0; i < 4; ++i) bytes[8 + i] = uint8_t(n >> (8 * i));
}

std::string Refusal(const ScratchFolder& dir, const std::vector<uint8_t>& bytes) {
    GltfContext context;
    ::testing::internal::CaptureStderr();
    EXPECT_FALSE(ReadBytes(dir, bytes, context));
    return ::testing::internal::GetCapturedStderr();
}

}  // namespace

class RefusedContainer : public testing::TestWithParam<testsupport::TableRow> {};

TEST_P(RefusedContainer, PrintsItsExactMessage) {
    ScratchFolder dir;
    const std::string bytes = GetParam().Text(1);
    EXPECT_EQ(Refusal(dir, std::vector<uint8_t>(bytes.begin(), bytes.end())), GetParam().Text(2));
}

INSTANTIATE_TEST_SUITE_P(Data, RefusedContainer,
                         testing::ValuesIn(testsupport::ReadTable(std::string(VURL_GLTF_DATA_DIR) + "/refused_containers.txt")),
                         testsupport::RowName);

class ReadableContainer : public testing::TestWithParam<testsupport::TableRow> {};

TEST_P(ReadableContainer, GivesItsDocumentAndBinaryChunk) {
    ScratchFolder dir;
    const std::string bytes = GetParam().Text(1);
    GltfContext context;
    ASSERT_TRUE(ReadBytes(dir, std::vector<uint8_t>(bytes.begin(), bytes.end()), context));
    std::string got = "scene " + std::to_string(context.document.scene) + " nodes";
    for (const GltfNode& node : context.document.nodes) got += " '" + node.name + "'";
    got += " bin";
    for (uint8_t b : context.binaryChunk) got += " " + std::to_string(b);
    EXPECT_EQ(got, GetParam().Text(2));
}

INSTANTIATE_TEST_SUITE_P(Data, ReadableContainer,
                         testing::ValuesIn(testsupport::ReadTable(std::string(VURL_GLTF_DATA_DIR) + "/read_containers.txt")),
                         testsupport::RowName);

TEST(ReadContainer, MissingFileOrFolderHasNoLineEnd) {
    ScratchFolder dir;
    std::filesystem::create_directories(dir.File("folder.glb"));
    for (const std::string& path : {dir.File("none.glb"), dir.File("folder.glb")}) {
        GltfContext context;
        ::testing::internal::CaptureStderr();
        EXPECT_FALSE(ReadGlbContainer(path, context));
        EXPECT_EQ(::testing::internal::GetCapturedStderr(), "error: unable to open file '" + path + "' for reading");
    }
}

TEST(ReadContainer, JsonLongerThanTheWindowParsesWhole) {
    // Names that straddle several 64 KiB windows.
    ScratchFolder dir;
    const std::string longName(150000, 'n');
    const std::string json = R"({"nodes":[{"name":")" + longName + R"("},{"name":"tail"}]})";
    GltfContext context;
    ASSERT_TRUE(ReadBytes(dir, glbfixture::MakeGlb(json, {1, 2, 3, 4}), context));
    ASSERT_EQ(context.document.nodes.size(), 2u);
    EXPECT_EQ(context.document.nodes[0].name, longName);
    EXPECT_EQ(context.document.nodes[1].name, "tail");
    EXPECT_EQ(context.binaryChunk.size(), 4u);
}

TEST(ReadContainer, BinaryChunkBeyondTheFileIsRefused) {
    ScratchFolder dir;
    std::vector<uint8_t> bytes = glbfixture::MakeGlb("{}", {1, 2, 3, 4});
    bytes[bytes.size() - 12] = 0xFF;  // binary chunk length low byte: 255 bytes claimed, 4 present
    const std::string err = Refusal(dir, bytes);
    EXPECT_EQ(err.rfind("ERROR: ", 0), 0u) << err;
    EXPECT_NE(err.find("in.glb"), std::string::npos);
}

TEST(ReadContainer, DeeplyNestedJsonDoesNotExhaustTheStack) {
    // Far deeper than any call stack holds at one frame per level.
    ScratchFolder dir;
    const size_t depth = 1000000;
    GltfContext unclosed;
    ASSERT_TRUE(ReadBytes(dir, Text(std::string(depth, '[')), unclosed, "unclosed.gltf"));
    EXPECT_TRUE(unclosed.document.nodes.empty());

    // Balanced nesting is valid JSON: the members beside it are still read.
    const std::string json = R"({"extras":)" + std::string(depth, '[') + std::string(depth, ']') +
                             R"(,"nodes":[{"name":"kept"}]})";
    GltfContext balanced;
    ASSERT_TRUE(ReadBytes(dir, Text(json), balanced, "balanced.gltf"));
    ASSERT_EQ(balanced.document.nodes.size(), 1u);
    EXPECT_EQ(balanced.document.nodes[0].name, "kept");
}

TEST(ReadContainer, ChunksAfterTheSecondAreIgnored) {
    ScratchFolder dir;
    std::vector<uint8_t> bytes = glbfixture::MakeGlb(R"({"scene":1})", {5, 6, 7, 8});
    for (int i = 0; i < 1000; ++i) {  // unknown types, empty and not
        PutWord(bytes, i % 2 ? 4 : 0);
        bytes.insert(bytes.end(), {'X', 'T', 'R', 'A'});
        if (i % 2) bytes.insert(bytes.end(), {1, 2, 3, 4});
    }
    FixLength(bytes);
    GltfContext context;
    ASSERT_TRUE(ReadBytes(dir, bytes, context));
    EXPECT_EQ(context.document.scene, 1);
    EXPECT_EQ(context.binaryChunk, (std::vector<uint8_t>{5, 6, 7, 8}));
}
