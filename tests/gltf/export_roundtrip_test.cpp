// Round trip through the tool: x.glb -> vurl -i x.glb -o y.glb -> our loader, compared with
// the Scene of x.glb node by node, vertex by vertex and key by key. Materials, cameras,
// lights and Euler channels do not travel through a GLB of ours and are not compared.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <map>
#include <memory>
#include <tuple>
#include <unordered_map>

#include "gltf/gltf_loader.h"
#include "write_test_support.h"

namespace fs = std::filesystem;

namespace {
struct Comparison {
    std::unordered_map<uint64_t, uint64_t> ids;  // x node id -> y node id; the later node wins
    std::unordered_map<const Geometry*, const Geometry*> geometries;
    std::vector<std::tuple<const MeshInstance*, const MeshInstance*, std::string>> instances;  // skins come last
};

bool Near(float a, float b) { return std::fabs(a - b) <= 1e-5f * std::max(1.0f, std::fabs(a)); }

// Transforms go out with six significant digits.
void ExpectNearVec(const Vec3& x, const Vec3& y, const std::string& what) {
    if (std::isnan(x.x) || std::isnan(x.y) || std::isnan(x.z)) return;
    EXPECT_TRUE(Near(x.x, y.x) && Near(x.y, y.y) && Near(x.z, y.z))
        << what << ": " << x.x << "," << x.y << "," << x.z << " vs " << y.x << "," << y.y << "," << y.z;
}

void ExpectSameRotation(const Vec3& x, const Vec3& y, const std::string& what) {
    Quat a = EulerToQuatPrecise(x), b = EulerToQuatPrecise(y);
    if (std::isnan(a.x) || std::isnan(a.y) || std::isnan(a.z) || std::isnan(a.w)) return;
    float dot = a.x * b.x + a.y * b.y + a.z * b.z + a.w * b.w;
    EXPECT_NEAR(std::fabs(dot), 1.0f, 2e-5f) << what;
}

uint8_t ExpectedColourByte(float value) {
    double v = value * 255.0;
    if (!(v > 0.0)) return 0;
    return v > 255.0 ? 255 : static_cast<uint8_t>(v);
}

void CompareVertices(const VertexData* xv, const VertexData* yv, const std::string& where) {
    static const VertexData kEmpty;
    const VertexData& x = xv ? *xv : kEmpty;
    const VertexData& y = yv ? *yv : kEmpty;
    EXPECT_EQ(x.positions, y.positions) << where;
    EXPECT_EQ(x.normals, y.normals) << where;
    EXPECT_EQ(x.joints, y.joints) << where;
    EXPECT_EQ(x.weights, y.weights) << where;
    for (int set = 0; set < 8; ++set) EXPECT_EQ(x.texCoords[set], y.texCoords[set]) << where << " set " << set;
    // Colours travel as bytes, four a vertex, in the order they were read.
    size_t vertices = x.positions.size() / 3;
    if (x.colors.empty()) {
        EXPECT_TRUE(y.colors.empty()) << where;
        return;
    }
    ASSERT_EQ(y.colors.size(), vertices * 4) << where;
    for (size_t i = 0; i < y.colors.size(); ++i) {
        uint8_t byte = i < x.colors.size() ? ExpectedColourByte(x.colors[i]) : 0;
        ASSERT_NEAR(y.colors[i], byte / 255.0f, 1e-6f) << where << " colour " << i;
    }
}

void CompareSkins(const Skin* x, const Skin* y, const Comparison& c, const std::string& where) {
    ASSERT_EQ(x == nullptr, y == nullptr) << where;
    if (!x) return;
    std::vector<int64_t> joints;
    std::vector<Mat4> matrices;
    for (size_t i = 0; i < x->joints.size(); ++i) {
        auto found = c.ids.find(static_cast<uint64_t>(x->joints[i]));
        if (found == c.ids.end()) continue;  // reported and left out by the writer
        joints.push_back(static_cast<int64_t>(found->second));
        matrices.push_back(i < x->inverseBindMatrices.size() ? x->inverseBindMatrices[i] : Mat4{});
    }
    EXPECT_EQ(joints, y->joints) << where;
    EXPECT_TRUE(matrices == y->inverseBindMatrices) << where;
}

// Our sparse targets have no top-level "bufferView", and our loader reads an accessor
// without one as empty, sparse data or not: the targets themselves do not come back,
// only the morph that held them. Their bytes are checked by the export tests instead.
void CompareMorphs(const Morph* x, const Morph* y, const std::string& where) {
    if (!x || x->targets.empty()) {
        EXPECT_TRUE(!y || y->targets.empty()) << where;
        return;
    }
    ASSERT_TRUE(y) << where << ": the morph itself must come back";
    EXPECT_TRUE(y->targets.empty()) << where;
}

void CompareGeometry(const Geometry* x, const Geometry* y, Comparison& c, const std::string& where) {
    ASSERT_EQ(x == nullptr, y == nullptr) << where;
    if (!x) return;
    auto known = c.geometries.find(x);
    if (known != c.geometries.end()) {
        EXPECT_EQ(known->second, y) << where << ": a shared geometry must stay shared";
        return;
    }
    c.geometries[x] = y;
    std::vector<const MeshInstance*> xs, ys;
    for (const MeshInstance* mi : x->meshInstances)
        if (mi) xs.push_back(mi);
    for (const MeshInstance* mi : y->meshInstances)
        if (mi) ys.push_back(mi);
    ASSERT_EQ(xs.size(), ys.size()) << where;
    for (size_t i = 0; i < xs.size(); ++i) {
        std::string at = where + " primitive " + std::to_string(i);
        const MeshInstance& a = *xs[i];
        const MeshInstance& b = *ys[i];
        // Only strips keep their mode; every other type goes out as triangles.
        EXPECT_EQ(b.primitiveType, a.primitiveType == 4 ? 4u : 3u) << at;
        ASSERT_EQ(a.indices == nullptr, b.indices == nullptr) << at;
        if (a.indices) {
            EXPECT_EQ(*a.indices, *b.indices) << at;
        }
        CompareVertices(a.vertices, b.vertices, at);
        CompareMorphs(a.morph, b.morph, at);
        c.instances.emplace_back(&a, &b, at);
    }
}

void CompareNodes(const GraphNode* x, const GraphNode* y, Comparison& c) {
    ASSERT_EQ(x == nullptr, y == nullptr);
    if (!x) return;
    EXPECT_EQ(x->name, y->name);
    ExpectNearVec(x->position, y->position, x->name + " position");
    ExpectNearVec(x->scale, y->scale, x->name + " scale");
    ExpectSameRotation(x->rotation, y->rotation, x->name + " rotation");
    c.ids[x->id] = y->id;
    CompareGeometry(x->geometry, y->geometry, c, "node " + x->name);
    ASSERT_EQ(x->children.size(), y->children.size()) << x->name;
    for (size_t i = 0; i < x->children.size(); ++i) CompareNodes(x->children[i], y->children[i], c);
}

template <typename Channel>
void CompareChannel(const Channel& x, const Channel& y, const std::string& where) {
    EXPECT_EQ(x.times, y.times) << where;
    if (x.times.empty()) return;
    EXPECT_EQ(x.interpolation, y.interpolation) << where;
    EXPECT_TRUE(x.values == y.values) << where << " values";
    if (x.interpolation == 2) {
        EXPECT_TRUE(x.inTangents == y.inTangents) << where << " in";
        EXPECT_TRUE(x.outTangents == y.outTangents) << where << " out";
    }
}

bool Exported(const AnimationTrack& t) {
    return !t.position.times.empty() || !t.rotationQuat.times.empty() || !t.scale.times.empty() ||
           !t.weights.times.empty();
}

void CompareAnimations(const Scene& x, const Scene& y, const Comparison& c) {
    ASSERT_EQ(x.animations.size(), y.animations.size());
    for (size_t i = 0; i < x.animations.size(); ++i) {
        const Animation& a = *x.animations[i];
        const Animation& b = *y.animations[i];
        EXPECT_EQ(a.name, b.name);
        std::map<uint64_t, const AnimationTrack*> expected, got;
        for (const AnimationTrack& t : a.tracks) {
            auto id = c.ids.find(t.nodeId);
            if (id != c.ids.end() && Exported(t)) expected[id->second] = &t;
        }
        for (const AnimationTrack& t : b.tracks) got[t.nodeId] = &t;
        ASSERT_EQ(expected.size(), got.size()) << a.name;
        for (const auto& [id, track] : expected) {
            ASSERT_TRUE(got.count(id)) << a.name << " node " << id;
            const AnimationTrack& t = *got[id];
            std::string at = a.name + " node " + std::to_string(id);
            CompareChannel(track->position, t.position, at + " translation");
            CompareChannel(track->rotationQuat, t.rotationQuat, at + " rotation");
            CompareChannel(track->scale, t.scale, at + " scale");
            CompareChannel(track->weights, t.weights, at + " weights");
        }
    }
}

std::unique_ptr<Scene> Load(const std::string& path) {
    testing::internal::CaptureStdout();  // image side files are announced
    std::unique_ptr<Scene> scene(LoadGltf(path, ConversionOptions()));
    testing::internal::GetCapturedStdout();
    return scene;
}

// Rules of tools/validator/input-derived.txt whose file pattern matches the name.
std::vector<std::string> InputDerivedRules(const std::string& fileName) {
    std::vector<std::string> rules;
    std::ifstream in(std::string(VURL_SOURCE_DIR) + "/tools/validator/input-derived.txt");
    for (std::string line; std::getline(in, line);) {
        if (line.empty() || line[0] == '#') continue;
        size_t blank = line.find(' ');
        if (blank == std::string::npos) continue;
        std::string pattern = line.substr(0, blank);
        bool prefix = !pattern.empty() && pattern.back() == '*';
        if (prefix) pattern.pop_back();
        if (prefix ? fileName.compare(0, pattern.size(), pattern) == 0 : fileName == pattern)
            rules.push_back(line.substr(blank + 1));
    }
    return rules;
}

void RoundTrip(const std::string& source, const std::string& stem) {
    fs::path dir = fs::path(TempGlbPath("roundtrip")).parent_path() / stem;
    fs::remove_all(dir);
    fs::create_directories(dir);
    fs::path x = dir / "x.glb", y = dir / "y.glb";
    fs::copy_file(source, x);  // the loader writes an image folder beside its input

    std::string command = std::string(VURL_EXECUTABLE) + " -i '" + x.string() + "' -o '" + y.string() + "' > '" +
                          (dir / "log.txt").string() + "' 2>&1";
    ASSERT_EQ(std::system(command.c_str()), 0) << command;
    // Errors of the input are allowed in the output; compressed input hides its decoded
    // data from the validator, whose weights may then not sum to 1.
    std::vector<std::string> inputErrors = ValidatorErrorCodes(x.string());
    if (IsDracoCompressed(x.string())) inputErrors.push_back("ACCESSOR_WEIGHTS_NON_NORMALIZED");
    for (const std::string& rules : InputDerivedRules(fs::path(source).filename().string()))
        inputErrors.push_back(rules);
    ExpectValidatorClean(y.string(), inputErrors);  // may skip without node; the comparison still runs

    std::unique_ptr<Scene> a = Load(x.string());
    std::unique_ptr<Scene> b = Load(y.string());
    ASSERT_TRUE(a && b);
    Comparison c;
    CompareNodes(a->root, b->root, c);
    // Skins need every node id first: joints may come later in the tree than their mesh.
    for (const auto& [mx, my, at] : c.instances) CompareSkins(mx->skin, my->skin, c, at);
    CompareAnimations(*a, *b, c);
}

std::vector<std::string> CorpusFiles() {
    std::vector<std::string> files;
    std::error_code ec;
    for (const auto& entry : fs::directory_iterator(VURL_CORPUS_GLB_DIR, ec))
        if (entry.path().extension() == ".glb") files.push_back(entry.path().string());
    std::sort(files.begin(), files.end());
    return files;
}

std::string TestName(const std::string& path) {
    std::string name = fs::path(path).stem().string();
    for (char& ch : name)
        if (!std::isalnum(static_cast<unsigned char>(ch))) ch = '_';
    return name;
}

class GlbRoundTrip : public testing::TestWithParam<std::string> {};

TEST_P(GlbRoundTrip, SceneSurvivesTheTool) { RoundTrip(GetParam(), TestName(GetParam())); }

INSTANTIATE_TEST_SUITE_P(Corpus, GlbRoundTrip, testing::ValuesIn(CorpusFiles()),
                         [](const testing::TestParamInfo<std::string>& row) { return TestName(row.param); });
GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(GlbRoundTrip);

TEST(GlbRoundTripSample, GeneratedSampleSurvivesTheTool) {
    std::string sample = TempGlbPath("generated_sample");
    ASSERT_EQ(std::system((std::string(VURL_SAMPLE_GENERATOR) + " '" + sample + "'").c_str()), 0);
    RoundTrip(sample, "generated_sample");
}
}  // namespace
