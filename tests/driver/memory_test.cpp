// Runs that cannot have the memory they need end with one line and exit code 1. The tool
// runs in a child process whose address space is capped, so its allocations really fail.
#include <gtest/gtest.h>

#include <filesystem>
#include <new>
#include <string>
#include <tuple>
#include <vector>

#include "driver/output_guard.h"
#include "glb_fixture.h"
#include "file_contents.h"
#include "run_tool.h"
#include "scratch_folder.h"

namespace {

namespace fs = std::filesystem;
using glbfixture::GlbFixture;

constexpr uint64_t kMiB = uint64_t(1) << 20;

// The sanitizers reserve terabytes of address space, so a capped run cannot start there.
#if defined(__SANITIZE_ADDRESS__) || defined(VURL_SANITIZED)
constexpr bool kAddressSpaceCapWorks = false;
#else
constexpr bool kAddressSpaceCapWorks = true;
#endif

// A JSON chunk of two million numbers: a few megabytes of text, tens of megabytes parsed.
std::vector<uint8_t> ManyNumbers() {
    std::string numbers;
    for (int i = 0; i < 2000000; ++i) numbers += i ? ",0" : "0";
    return GlbFixture().Build("\"extras\":[" + numbers + "]");
}

// A 500 x 500 quad grid: 9 MB to load, well over 100 MB inside xatlas.
std::vector<uint8_t> Grid() {
    const uint32_t n = 500;
    std::vector<float> positions;
    std::vector<uint32_t> indices;
    for (uint32_t y = 0; y <= n; ++y) {
        for (uint32_t x = 0; x <= n; ++x) {
            positions.insert(positions.end(), {float(x), float(y), float((x * y) % 7)});
            const uint32_t a = y * (n + 1) + x, c = a + n + 1;
            if (x < n && y < n) indices.insert(indices.end(), {a, a + 1, c + 1, a, c + 1, c});
        }
    }
    GlbFixture glb;  // accessors 0 and 1
    glb.AddData(positions, glbfixture::kFloat, "VEC3");
    glb.AddData(indices, glbfixture::kUInt, "SCALAR");
    return glb.Build(R"("meshes":[{"primitives":[{"attributes":{"POSITION":0},"indices":1}]}],"nodes":[{"mesh":0}])");
}

// `meshes` meshes that all name one accessor of `vertices` positions: each mesh decodes its
// own copy, and the GLB writer needs all of them again.
std::vector<uint8_t> SharedAccessor(int meshes, uint32_t vertices, const std::string& more = "") {
    GlbFixture glb;
    glb.AddData(std::vector<float>(size_t(vertices) * 3, 0.5f), glbfixture::kFloat, "VEC3");
    std::string meshList, nodeList;
    for (int m = 0; m < meshes; ++m) {
        meshList += std::string(m ? "," : "") + R"({"primitives":[{"attributes":{"POSITION":0})" + more + "}]}";
        nodeList += std::string(m ? "," : "") + R"({"mesh":)" + std::to_string(m) + "}";
    }
    return glb.Build("\"meshes\":[" + meshList + "],\"nodes\":[" + nodeList + "]");
}

// One 30,000-vertex mesh whose 8,000 morph targets all name its position accessor.
std::vector<uint8_t> ManyTargets() {
    std::string targets;
    for (int t = 0; t < 8000; ++t) targets += t ? R"(,{"POSITION":0})" : R"({"POSITION":0})";
    return SharedAccessor(1, 30000, R"(,"targets":[)" + targets + "]");
}

TEST(Memory, RunsThatCannotHaveTheirMemoryEndWithOneLine) {
    if (!kAddressSpaceCapWorks) GTEST_SKIP() << "address space cannot be capped under the sanitizers";
    const std::string noMemory = "ERROR: 'in.glb': not enough memory while ";
    // Each cap leaves room for the stages before: 250 meshes x 40,000 vertices x 12 bytes
    // decode to 120 MB, which loads under 180 MB and cannot be copied into a GLB buffer there.
    // Many targets: 30,000 x 12 bytes = 360,000 per read of the accessor, once for the mesh
    // and per target once read plus twice kept (position and normal deltas): 360,000 +
    // 8,000 x 1,080,000, refused before anything is decoded.
    const struct {
        std::vector<uint8_t> (*input)();
        std::vector<std::string> options;
        uint64_t addressSpace;
        std::string err;
        std::string lastProgress;  // the end of stdout: the failing stage's progress line
    } cases[] = {
        {ManyNumbers, {}, 40 * kMiB, noMemory + "loading the scene\n", "Loading scene...\n"},
        {Grid, {"-u", "true"}, 60 * kMiB, noMemory + "unwrapping UVs\n", "Unwrapping UVs...\n"},
        {[] { return SharedAccessor(250, 40000); }, {}, 180 * kMiB, noMemory + "writing out.glb\n",
         "Writing out.glb...\n"},
        {ManyTargets, {}, 1024 * kMiB,
         "ERROR: 'in.glb': decoding the file would take 8640360000 bytes of memory, more than the 1073741824 "
         "bytes available\n",
         "Loading scene...\nFailed to load scene.\n"},
    };
    testsupport::ScratchFolder folder("memory");
    const std::string dir = folder.Path().string();
    for (const auto& c : cases) {
        SCOPED_TRACE(c.err);
        ASSERT_TRUE(glbfixture::WriteFile(dir + "/in.glb", c.input()));
        // An earlier run's output that the failing run never reached keeps its content.
        ASSERT_TRUE(glbfixture::WriteFile(dir + "/out.glb", {'o', 'l', 'd'}));
        std::vector<std::string> args = {"-i", "in.glb", "-o", "out.glb"};
        args.insert(args.end(), c.options.begin(), c.options.end());

        const ToolRun run = RunTool(args, dir, c.addressSpace);
        EXPECT_EQ(run.exitCode, 1);
        EXPECT_EQ(run.err, c.err);
        EXPECT_TRUE(run.out.ends_with(c.lastProgress)) << run.out;
        EXPECT_EQ(testsupport::ReadFileText(dir + "/out.glb"), "old");
    }
}

TEST(Memory, InterruptedWriteLeavesNoHalfWrittenFile) {
    testsupport::ScratchFolder folder("guard");
    const std::string file = folder.Path().string() + "/out.json";
    // A new file the writer started is removed, an earlier one it never reached stays, an
    // earlier one it rewrote is removed.
    for (const auto& [before, touch, after] : {std::tuple{"", true, ""}, {"old", false, "old"}, {"old", true, ""}}) {
        ASSERT_TRUE(!*before || glbfixture::WriteFile(file, {'o', 'l', 'd'}));
        EXPECT_THROW(GuardOutput(file, [&, touch = touch] {
                         if (touch) glbfixture::WriteFile(file, {'h', 'a', 'l', 'f'});
                         throw std::bad_alloc();
                     }),
                     std::bad_alloc);
        EXPECT_EQ(fs::exists(file) ? testsupport::ReadFileText(file) : "", after);
    }
}

}  // namespace
