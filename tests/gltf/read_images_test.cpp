// Image file names and the saving of embedded images into "<input>.fbm".
#include <chrono>

#include "gltf/gltf_images.h"
#include "file_contents.h"
#include "read_test_util.h"

using namespace gltftest;
using namespace glbfixture;

namespace {

const std::vector<uint8_t> kPngHead = {137, 'P', 'N', 'G', 13, 10, 26, 10, 0, 0};
const std::vector<uint8_t> kJpegHead = {255, 216, 255, 224};

// Reads a GLB whose binary chunk holds `data` under view 0, with the given "images".
bool ReadWithImageData(const ScratchFolder& dir, const std::vector<uint8_t>& data, const std::string& images,
                       GltfContext& context) {
    GlbFixture glb;
    glb.AddView(glb.Append(data), data.size());
    return ReadBytes(dir, glb.Build("\"images\":" + images), context);
}

}  // namespace

TEST(ImageNames, SanitisingKeepsTheLength) {
    EXPECT_EQ(SanitizeFileName("a/b:c"), "a_b_c");
    EXPECT_EQ(SanitizeFileName("x?<>\\*|\" y\t"), "x________y_");
    EXPECT_EQ(SanitizeFileName("caf\xc3\xa9"), "caf\xc3\xa9");  // bytes from 128 on stay
}

TEST(ImageNames, ManyImagesOfOneNameTakeLinearTime) {
    // Trying every counter from 1 for each image would be 1.25e9 probes here.
    const size_t count = 50000;
    std::string images = "[";
    for (size_t i = 0; i < count; ++i) images += std::string(i ? "," : "") + R"({"name":"a","mimeType":"image/png"})";
    images += "]";
    ScratchFolder dir;
    GltfContext context;
    ASSERT_TRUE(ReadBytes(dir, GlbFixture().Build("\"images\":" + images), context));
    const auto start = std::chrono::steady_clock::now();
    const std::vector<std::string> names = MakeImageFileNames(context);
    const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    ASSERT_EQ(names.size(), count);
    EXPECT_EQ(names[0], "a.png");
    EXPECT_EQ(names[1], "a_1.png");
    EXPECT_EQ(names[count - 1], "a_" + std::to_string(count - 1) + ".png");
    EXPECT_LT(seconds, 20.0);
}

TEST(ExtractImages, WritesEmbeddedImagesAndReportsEach) {
    ScratchFolder dir;
    GltfContext context;
    ASSERT_TRUE(ReadWithImageData(dir, kPngHead, R"([{"name":"he said \"hi\"","bufferView":0},{"uri":"x.png"}])", context));
    ::testing::internal::CaptureStdout();
    EXPECT_TRUE(ExtractEmbeddedImages(context));
    const std::string out = ::testing::internal::GetCapturedStdout();
    const std::string file = dir.File("in.glb.fbm/he_said__hi_.png");
    EXPECT_EQ(out, "writing 10 bytes to \"" + file + "\"...\n");
    EXPECT_EQ(testsupport::ReadFileBytes(file), kPngHead);
    EXPECT_FALSE(std::filesystem::exists(dir.File("in.glb.fbm/x.png")));
}

TEST(ExtractImages, FolderOnlyWhenThereAreImages) {
    ScratchFolder dir;
    GltfContext withUri, without;
    ASSERT_TRUE(ReadBytes(dir, GlbFixture().Build(R"("images":[{"uri":"x.png"}])"), withUri, "a.glb"));
    ASSERT_TRUE(ReadBytes(dir, GlbFixture().Build(""), without, "b.glb"));
    ExtractEmbeddedImages(withUri);
    ExtractEmbeddedImages(without);
    EXPECT_TRUE(std::filesystem::is_directory(dir.File("a.glb.fbm")));
    EXPECT_FALSE(std::filesystem::exists(dir.File("b.glb.fbm")));
}

TEST(ExtractImages, UnwritableFileIsReportedAndSkipped) {
    ScratchFolder dir;
    GltfContext context;
    ASSERT_TRUE(ReadWithImageData(dir, kJpegHead, R"([{"name":"a","bufferView":0},{"name":"b","bufferView":0}])", context));
    std::filesystem::create_directories(dir.File("in.glb.fbm/a.jpg"));  // a folder where the file should go
    ::testing::internal::CaptureStdout();
    ::testing::internal::CaptureStderr();
    ExtractEmbeddedImages(context);
    const std::string err = ::testing::internal::GetCapturedStderr();
    ::testing::internal::GetCapturedStdout();
    EXPECT_EQ(err, "error: failed to open file='\"" + dir.File("in.glb.fbm/a.jpg") + "\"' for writing err=" +
                       std::strerror(EISDIR) + "\n");
    EXPECT_TRUE(std::filesystem::is_regular_file(dir.File("in.glb.fbm/b.jpg")));
}

TEST(ExtractImages, UnmakeableFolderIsRefused) {
    ScratchFolder dir;
    GltfContext context;
    ASSERT_TRUE(ReadBytes(dir, GlbFixture().Build(R"("images":[{"uri":"x.png"}])"), context));
    ASSERT_TRUE(WriteFile(dir.File("in.glb.fbm"), {1}));  // a file in the folder's place
    EXPECT_THROW(ExtractEmbeddedImages(context), GltfError);
}
