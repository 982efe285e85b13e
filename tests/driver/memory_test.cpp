// Runs that cannot have the memory they need (cases in data/memory.txt): the tool runs in a
// child process whose address space is capped, so its allocations really fail.
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
#include "text_table.h"

namespace {

namespace fs = std::filesystem;

constexpr uint64_t kMiB = uint64_t(1) << 20;

// The sanitizers reserve terabytes of address space, so a capped run cannot start there.
#if defined(__SANITIZE_ADDRESS__) || defined(VURL_SANITIZED)
constexpr bool kAddressSpaceCapWorks = false;
#else
constexpr bool kAddressSpaceCapWorks = true;
#endif

// A few megabytes of text, tens of megabytes parsed.
std::vector<uint8_t> ManyNumbers() {
    std::string numbers;
    for (int i = 0; i < 2000000; ++i) numbers += i ? ",0" : "0";
    return glbfixture::GlbFixture().Build("\"extras\":[" + numbers + "]");
}

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
    glbfixture::GlbFixture glb;  // accessors 0 and 1
    glb.AddData(positions, glbfixture::kFloat, "VEC3");
    glb.AddData(indices, glbfixture::kUInt, "SCALAR");
    return glb.Build(R"("meshes":[{"primitives":[{"attributes":{"POSITION":0},"indices":1}]}],"nodes":[{"mesh":0}])");
}

// `meshes` meshes that all name one accessor of `vertices` positions: each mesh decodes its
// own copy, and the GLB writer needs all of them again.
std::vector<uint8_t> SharedAccessor(int meshes, uint32_t vertices, const std::string& more = "") {
    glbfixture::GlbFixture glb;
    glb.AddData(std::vector<float>(size_t(vertices) * 3, 0.5f), glbfixture::kFloat, "VEC3");
    std::string meshList, nodeList;
    for (int m = 0; m < meshes; ++m) {
        meshList += std::string(m ? "," : "") + R"({"primitives":[{"attributes":{"POSITION":0})" + more + "}]}";
        nodeList += std::string(m ? "," : "") + R"({"mesh":)" + std::to_string(m) + "}";
    }
    return glb.Build("\"meshes\":[" + meshList + "],\"nodes\":[" + nodeList + "]");
}

// `targets` morph targets that all name the position accessor of one 30,000-vertex mesh.
std::vector<uint8_t> ManyTargets(int targets) {
    std::string list;
    for (int t = 0; t < targets; ++t) list += t ? R"(,{"POSITION":0})" : R"({"POSITION":0})";
    return SharedAccessor(1, 30000, R"(,"targets":[)" + list + "]");
}

class MemoryTest : public testing::TestWithParam<testsupport::TableRow> {};

TEST_P(MemoryTest, RunThatCannotHaveItsMemoryEndsWithOneLine) {
    if (!kAddressSpaceCapWorks) GTEST_SKIP() << "address space cannot be capped under the sanitizers";
    const testsupport::TableRow& row = GetParam();
    const std::string input = row.Text(1);
    testsupport::ScratchFolder folder("memory");
    const std::string dir = folder.Path().string();
    ASSERT_TRUE(glbfixture::WriteFile(dir + "/in.glb", input == "numbers" ? ManyNumbers()
                                                       : input == "grid"  ? Grid()
                                                       : input == "shared" ? SharedAccessor(250, 40000)
                                                                           : ManyTargets(8000)));
    // An earlier run's output that the failing run never reached keeps its content.
    ASSERT_TRUE(glbfixture::WriteFile(dir + "/out.glb", {'o', 'l', 'd'}));
    std::vector<std::string> args = {"-i", "in.glb", "-o", "out.glb"};
    for (const std::string& option : row.Items(2)) args.push_back(option);

    const ToolRun run = RunTool(args, dir, uint64_t(row.Int(3)) * kMiB);
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_EQ(run.err, row.Text(4));
    EXPECT_TRUE(run.out.ends_with(row.Text(5))) << run.out;
    EXPECT_EQ(testsupport::ReadFileText(dir + "/out.glb"), "old");
}

INSTANTIATE_TEST_SUITE_P(Memory, MemoryTest, testing::ValuesIn(testsupport::ReadTable(VURL_TEST_DATA "/memory.txt")),
                         testsupport::RowName);

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
