// Runs that cannot have the memory they need end with one line and exit code 1. The tool runs
// in a child process with a capped address space, so that its allocations really fail; the
// sanitizers reserve terabytes of address space, so there the capped runs are skipped.
#include <gtest/gtest.h>

#include <filesystem>
#include <new>
#include <tuple>

#include "driver/output_guard.h"
#include "glb_fixture.h"
#include "run_tool.h"

namespace {

namespace fs = std::filesystem;
constexpr uint64_t kMiB = uint64_t(1) << 20;

// `meshes` meshes, each on a node of its own, all naming one position accessor (and one index
// accessor when there are indices); `more` ends each primitive.
std::vector<uint8_t> MeshFile(const std::vector<float>& positions, const std::vector<uint32_t>& indices, int meshes,
                              const std::string& more = "") {
    glbfixture::GlbFixture glb;
    glb.AddData(positions, glbfixture::kFloat, "VEC3");
    std::string primitive = R"({"attributes":{"POSITION":0})";
    if (!indices.empty())
        primitive += R"(,"indices":)" + std::to_string(glb.AddData(indices, glbfixture::kUInt, "SCALAR"));
    std::string meshList, nodeList;
    for (int m = 0; m < meshes; ++m) {
        meshList += std::string(m ? "," : "") + R"({"primitives":[)" + primitive + more + "}]}";
        nodeList += std::string(m ? "," : "") + R"({"mesh":)" + std::to_string(m) + "}";
    }
    return glb.Build("\"meshes\":[" + meshList + "],\"nodes\":[" + nodeList + "]");
}

// A 500 x 500 quad grid: 9 MB to load, well over 100 MB inside xatlas.
std::vector<uint8_t> Grid() {
    const uint32_t n = 500, row = n + 1;
    std::vector<float> positions;
    std::vector<uint32_t> indices;
    for (uint32_t v = 0; v < row * row; ++v) positions.insert(positions.end(), {float(v % row), float(v / row), float(v % 7)});
    for (uint32_t a = 0; a + row + 1 < row * row; ++a)
        if (a % row != n) indices.insert(indices.end(), {a, a + 1, a + row + 1, a, a + row + 1, a + row});
    return MeshFile(positions, indices, 1);
}

TEST(Memory, RunsThatCannotHaveTheMemoryEndWithOneLine) {
#if defined(__SANITIZE_ADDRESS__)
    GTEST_SKIP();
#endif
    std::string numbers = "0";
    for (int i = 1; i < 2000000; ++i) numbers += ",0";
    // One 30,000-vertex mesh whose 8,000 morph targets all name its position accessor.
    std::string targets = R"(,"targets":[{"POSITION":0})";
    for (int t = 1; t < 8000; ++t) targets += R"(,{"POSITION":0})";
    const std::string noMemory = "ERROR: 'in.glb': not enough memory while ";
    // Each cap leaves room for the stages before. Two million numbers are 4 MB of JSON text and
    // tens of MB parsed; 250 meshes x 40,000 vertices x 12 bytes decode to 120 MB, which load
    // under 180 MB but cannot be copied into a GLB buffer there. The morph targets read their
    // 360,000 bytes each and keep twice that as deltas: 360,000 + 8,000 x 1,080,000 in all.
    const std::tuple<std::vector<uint8_t>, std::vector<std::string>, uint64_t, std::string, std::string> cases[] = {
        {glbfixture::GlbFixture().Build("\"extras\":[" + numbers + "]"), {}, 40 * kMiB,
         noMemory + "loading the scene\n", "Loading scene...\n"},
        {Grid(), {"-u", "true"}, 60 * kMiB, noMemory + "unwrapping UVs\n", "Unwrapping UVs...\n"},
        {MeshFile(std::vector<float>(120000, 0.5f), {}, 250), {}, 180 * kMiB, noMemory + "writing out.glb\n",
         "Writing out.glb...\n"},
        {MeshFile(std::vector<float>(90000, 0.5f), {}, 1, targets + "]"), {}, 1024 * kMiB,
         "ERROR: 'in.glb': decoding the file would take 8640360000 bytes of memory, more than the 1073741824 bytes "
         "available\n",
         "Loading scene...\nFailed to load scene.\n"},
    };
    const std::string dir = MakeScratchDir("memory");
    for (const auto& [input, options, cap, report, progress] : cases) {
        SCOPED_TRACE(report);
        ASSERT_TRUE(glbfixture::WriteFile(dir + "/in.glb", input));
        // An earlier output that the failing run never reached keeps its content.
        ASSERT_TRUE(glbfixture::WriteFile(dir + "/out.glb", {'o', 'l', 'd'}));
        std::vector<std::string> args = {"-i", "in.glb", "-o", "out.glb"};
        args.insert(args.end(), options.begin(), options.end());

        const ToolRun run = RunTool(args, dir, cap);
        EXPECT_EQ(run.exitCode, 1);
        EXPECT_EQ(run.err, report);
        EXPECT_TRUE(run.out.size() >= progress.size() && run.out.substr(run.out.size() - progress.size()) == progress)
            << run.out;
        EXPECT_EQ(ReadFileText(dir + "/out.glb"), "old");
    }
    fs::remove_all(dir);
}

TEST(Memory, InterruptedWriteLeavesNoHalfWrittenFile) {
    const std::string dir = MakeScratchDir("guard"), file = dir + "/out.json";
    // A file the writer started, new or rewritten, goes; an earlier one it never reached stays.
    for (const auto& [earlier, touched, stays] :
         std::vector<std::tuple<bool, bool, bool>>{{false, true, false}, {true, false, true}, {true, true, false}}) {
        if (earlier) glbfixture::WriteFile(file, {'o', 'l', 'd'});
        auto write = [&, touched = touched] {
            if (touched) glbfixture::WriteFile(file, {'h', 'a', 'l', 'f'});
            throw std::bad_alloc();
        };
        EXPECT_THROW(GuardOutput(file, write), std::bad_alloc);
        EXPECT_EQ(fs::exists(file), stays);
    }
    fs::remove_all(dir);
}

}  // namespace
