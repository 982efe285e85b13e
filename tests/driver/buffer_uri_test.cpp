// A text .gltf reads its buffer only from a file inside its own folder.
#include <gtest/gtest.h>

#include <unistd.h>

#include <filesystem>
#include <string>
#include <vector>

#include "glb_fixture.h"
#include "run_tool.h"
#include "scratch_folder.h"

namespace fs = std::filesystem;

TEST(BufferUri, OnlyFilesInsideTheInputsFolderAreRead) {
    testsupport::ScratchFolder folder("uri");
    const std::string dir = folder.Path().string();
    // dir/secret.bin lies beside the input's folder dir/in, which holds the input, its data
    // in two places and two links: one to a file inside, one to the secret.
    fs::create_directories(dir + "/in/sub");
    glbfixture::GlbFixture data;
    data.AddData(std::vector<float>{0, 0, 0, 1, 0, 0, 0, 1, 0}, glbfixture::kFloat, "VEC3");
    for (const char* file : {"/secret.bin", "/in/data.bin", "/in/sub/data.bin"})
        ASSERT_TRUE(glbfixture::WriteFile(dir + file, data.Binary()));
    ASSERT_EQ(symlink("../secret.bin", (dir + "/in/out.bin").c_str()), 0);
    ASSERT_EQ(symlink("sub/data.bin", (dir + "/in/near.bin").c_str()), 0);

    // Loads or refused, by URI.
    const std::pair<std::string, bool> cases[] = {
        {"data.bin", true}, {"sub/data.bin", true}, {"sub/../data.bin", true}, {"sub%2Fdata.bin", true},
        {"near.bin", true}, {"../secret.bin", false}, {"%2e%2e/secret.bin", false}, {"sub/../../secret.bin", false},
        {dir + "/secret.bin", false}, {"%2F" + dir.substr(1) + "/secret.bin", false},
        {"file://" + dir + "/secret.bin", false}, {"file:data.bin", false}, {"out.bin", false},
    };
    for (const auto& [uri, loads] : cases) {
        SCOPED_TRACE(uri);
        glbfixture::GlbFixture glb = data;
        glb.SetBufferUri(uri);
        const std::string json =
            glb.Json(R"("meshes":[{"primitives":[{"attributes":{"POSITION":0}}]}],"nodes":[{"mesh":0}])");
        ASSERT_TRUE(glbfixture::WriteFile(dir + "/in/scene.gltf", std::vector<uint8_t>(json.begin(), json.end())));
        fs::remove(dir + "/out.glb");

        const ToolRun run = RunTool({"-i", "in/scene.gltf", "-o", "out.glb"}, dir);
        EXPECT_EQ(run.exitCode, loads ? 0 : 1) << run.err;
        EXPECT_EQ(fs::exists(dir + "/out.glb"), loads);
        // A refusal is one line that names the input and the URI.
        EXPECT_EQ(run.err.empty(), loads);
        if (!loads) {
            EXPECT_EQ(run.out, "Loading scene...\nFailed to load scene.\n");
            EXPECT_TRUE(run.err.starts_with("ERROR: 'in/scene.gltf': ") && run.err.find('\n') == run.err.size() - 1)
                << run.err;
            EXPECT_NE(run.err.find("'" + uri + "'"), std::string::npos) << run.err;
        }
    }
}
