// The reading cases of data/read_accessor.json, decode_cost.json, image_names.json,
// import_scene.json and import_materials.json, and the import refusals those cannot spell out.
#include "gltf_case.h"
#include "read_test_util.h"

using namespace gltftest;

namespace {

class GltfCase : public testing::TestWithParam<Case> {};

TEST_P(GltfCase, ReadsAsExpected) {
    rapidjson::Document c;
    c.Parse(GetParam().json.c_str());
    ScratchFolder dir;
    GltfContext context;
    ASSERT_TRUE(ReadBytes(dir, GlbFromCase(c["gltf"]), context));
    const Fields fields = CaseFields(context);
    for (const auto& expected : c["expect"].GetObject())
        ExpectField(fields, expected.name.GetString(), expected.value.GetString());
}

INSTANTIATE_TEST_SUITE_P(Data, GltfCase, testing::ValuesIn(CasesOf({"read_accessor", "decode_cost", "image_names", "import_scene", "import_materials"})),
                         CaseName);

TEST(ImportNodes, ChainsDeeperThan4096LevelsAreRefused) {
    // They would overflow the recursive walks of the writers.
    ScratchFolder dir;
    for (int depth : {4096, 4097}) {
        std::string chain = R"("nodes":[)";
        for (int i = 0; i + 1 < depth; ++i) chain += R"({"children":[)" + std::to_string(i + 1) + "]},";
        chain += "{}]";
        EXPECT_EQ(ImportRefused(dir, glbfixture::GlbFixture().Build(chain)), depth > 4096) << depth;
    }
}

TEST(LoadGltf, RefusalIsOneErrorLineAndNoScene) {
    ScratchFolder dir;
    const std::string path = dir.File("bad.glb");
    ASSERT_TRUE(glbfixture::WriteFile(path, glbfixture::GlbFixture().Build(R"("images":[{"bufferView":0}],"nodes":[{"mesh":0}])")));
    ::testing::internal::CaptureStderr();
    ::testing::internal::CaptureStdout();
    Scene* scene = LoadGltf(path, ConversionOptions());
    const std::string out = ::testing::internal::GetCapturedStdout();
    const std::string err = ::testing::internal::GetCapturedStderr();
    EXPECT_EQ(scene, nullptr);
    EXPECT_EQ(err.rfind("ERROR: '" + path + "': ", 0), 0u) << err;
    EXPECT_EQ(std::count(err.begin(), err.end(), '\n'), 1);
    EXPECT_EQ(out, "");
    EXPECT_FALSE(std::filesystem::exists(path + ".fbm"));  // nothing written for a refused file
}

}  // namespace
