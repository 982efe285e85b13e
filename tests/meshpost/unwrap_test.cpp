#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <sstream>

#include "meshpost/meshpost.h"
#include "meshpost/unwrap.h"
#include "scene_builder.h"
#include "test_meshes.h"
#include "text_table.h"

namespace {

using testsupport::New;

// A scene whose dictionary holds the given geometries; the scene frees everything.
struct TestScene {
    Scene scene;
    TestScene() { scene.root = testsupport::NewNode("root", 0); }

    Geometry* AddGeometry(const std::vector<TestMesh>& meshes) {
        Geometry* g = testsupport::NewGeometry(scene, "", scene.geometries.Size());
        for (const TestMesh& m : meshes)
            testsupport::NewInstance(scene, *g, New<VertexData>(scene, m.data), m.indices);
        return g;
    }
    void AddNode(Geometry* g) { testsupport::NewNode("", 0, scene.root)->geometry = g; }
};

// Summed area of the instance's triangles in world space (uvSet < 0) or in a UV set.
double Area(const MeshInstance& mi, int uvSet) {
    const size_t dims = uvSet < 0 ? 3 : 2;
    const std::vector<float>& p = uvSet < 0 ? mi.vertices->positions : mi.vertices->texCoords[uvSet];
    double area = 0;
    for (size_t t = 0; t + 2 < mi.indices->size(); t += 3) {
        double e[2][3] = {};
        for (size_t k = 0; k < 2; ++k)
            for (size_t c = 0; c < dims; ++c)
                e[k][c] = double(p[(*mi.indices)[t + k + 1] * dims + c]) - p[(*mi.indices)[t] * dims + c];
        const double x = e[0][1] * e[1][2] - e[0][2] * e[1][1], y = e[0][2] * e[1][0] - e[0][0] * e[1][2];
        const double z = e[0][0] * e[1][1] - e[0][1] * e[1][0];
        area += 0.5 * std::sqrt(x * x + y * y + z * z);
    }
    return area;
}

void ExpectInUnitSquare(const std::vector<float>& uv) {
    EXPECT_FALSE(uv.empty());
    EXPECT_TRUE(std::all_of(uv.begin(), uv.end(), [](float f) { return f >= 0 && f <= 1; }));
}

// A mesh named in data/unwrap_refusals.txt: cube, cylinder, grid WIDTH, or mesh with the
// numbers of its positions, then / and its indices.
TestMesh NamedMesh(const std::string& text) {
    if (text == "cube") return CubeMesh();
    if (text == "cylinder") return CylinderMesh(24);
    std::istringstream words(text.substr(text.find(' ') + 1));
    std::vector<double> n;
    for (std::string w; words >> w;) n.push_back(w == "/" ? -1 : testsupport::Number(w));
    TestMesh m;
    if (text.starts_with("grid")) {
        m = GridMesh(4);
        for (float& f : m.data.positions) f *= float(n[0]);
        return m;
    }
    const auto slash = std::find(n.begin(), n.end(), -1.0);
    for (auto it = n.begin(); it != slash; ++it) m.data.positions.push_back(float(*it));
    for (auto it = slash + 1; it < n.end(); ++it) m.indices.push_back(uint32_t(*it));
    return m;
}

void Spoil(MeshInstance& mi, const std::string& how) {
    VertexData& d = *mi.vertices;
    if (how == "strip") mi.primitiveType = 4;
    if (how == "set1") d.texCoords[1].assign(d.positions.size() / 3 * 2, 0);
    if (how == "nopositions") d.positions.clear();
    if (how == "emptyindices") mi.indices->clear();
    if (how == "badindex") (*mi.indices)[4] = uint32_t(d.positions.size() / 3);  // one past the last vertex
    if (how == "shortcolours") d.colors = {0.1f, 0.2f, 0.3f};
    if (how == "noindices") mi.indices = nullptr;
    if (how == "novertices") mi.vertices = nullptr;
}

}  // namespace

class TexelDensity : public testing::TestWithParam<testsupport::TableRow> {};

TEST_P(TexelDensity, IsTexelsPerMeterTimesTheLargestSignedNodeScale) {
    const testsupport::TableRow& row = GetParam();
    const float q = row.Float(2), scale = row.Float(3);
    TestScene ts[2];
    Geometry* g[2];
    for (int i = 0; i < 2; ++i) {
        g[i] = ts[i].AddGeometry({CubeMesh()});
        GraphNode* parent = ts[i].scene.root;
        for (const std::string& node : row.Items(1)) {
            std::istringstream xyz(node);
            Mat4 m;
            xyz >> m(0, 0) >> m(1, 1) >> m(2, 2);
            parent->AddChild(nullptr);
            parent = testsupport::NewNode("", 0, parent);
            parent->geometry = g[i];
            parent->worldMatrix = m;
        }
    }
    const AtlasSize size = UnwrapGeometry(ts[0].scene, g[0]->meshInstances, scale, q);
    UnwrapScene(ts[1].scene, q);
    // Texels per world unit from the summed areas.
    const MeshInstance& mi = *g[0]->meshInstances[0];
    const double density = q * scale;
    if (density > 0) {
        EXPECT_NEAR(std::sqrt(Area(mi, 0) * size.width * size.height / Area(mi, -1)), density, 0.02 * density);
    }
    // The scene's walk picks the same scale: its layout is the lone unwrap's.
    EXPECT_EQ(g[1]->meshInstances[0]->vertices->texCoords[0], mi.vertices->texCoords[0]);
}

INSTANTIATE_TEST_SUITE_P(Unwrap, TexelDensity,
                         testing::ValuesIn(testsupport::ReadTable(VURL_SOURCE_DIR "/tests/meshpost/data/texel_density.txt")),
                         testsupport::RowName);

class UnwrapRefusal : public testing::TestWithParam<testsupport::TableRow> {};

TEST_P(UnwrapRefusal, LeavesTheGeometryWholeAndSaysWhy) {
    const testsupport::TableRow& row = GetParam();
    const float q = row.Float(3);
    const bool leftWhole = row.Text(4) == "true";
    std::vector<TestMesh> meshes;
    for (const std::string& name : row.Items(1)) meshes.push_back(NamedMesh(name));
    TestScene ts;
    Geometry* g = ts.AddGeometry(meshes);
    Geometry* fine = std::isnan(q) ? nullptr : ts.AddGeometry({CubeMesh()});
    ts.AddNode(g);
    for (const std::string& how : row.Items(2)) Spoil(*g->meshInstances.back(), how);
    std::vector<VertexData*> before;
    for (MeshInstance* mi : g->meshInstances) before.push_back(mi->vertices);
    testing::internal::CaptureStderr();
    UnwrapScene(ts.scene, q);
    const std::string err = testing::internal::GetCapturedStderr(), expected = row.Size() > 5 ? row.Text(5) : "";
    for (size_t m = 0; m < before.size(); ++m) EXPECT_EQ(g->meshInstances[m]->vertices == before[m], leftWhole);
    if (expected.starts_with('~')) EXPECT_NE(err.find(expected.substr(1)), std::string::npos) << err;
    else EXPECT_EQ(err, expected);
    if (!leftWhole) {
        const VertexData& vd = *g->meshInstances.back()->vertices;
        ExpectInUnitSquare(vd.texCoords[0]);
        EXPECT_TRUE(vd.colors.empty() || vd.colors.size() == vd.positions.size() / 3 * 4);
    }
    if (fine) ExpectInUnitSquare(fine->meshInstances[0]->vertices->texCoords[0]);
}

INSTANTIATE_TEST_SUITE_P(Unwrap, UnwrapRefusal,
                         testing::ValuesIn(testsupport::ReadTable(VURL_SOURCE_DIR "/tests/meshpost/data/unwrap_refusals.txt")),
                         testsupport::RowName);

TEST(Unwrap, AttributesAndMorphDeltasFollowTheirVertices) {
    // Joints name each vertex's source; an existing set 0 stays (the new set goes to 1) and
    // sets above 1 are dropped. Two instances share one morph with a sparse and a dense
    // target; each gets a morph of its own, with deltas on the new vertices that came from
    // moved old ones. A skipped geometry sharing the vertex data keeps a valid record (the
    // sanitizer build checks the frees). The cylinder and the cube share one atlas.
    TestScene ts;
    TestMesh cyl = CylinderMesh(24);
    VertexData& c = cyl.data;
    const uint32_t n = uint32_t(c.positions.size() / 3);
    for (uint32_t v = 0; v < n; ++v) {
        const float f = float(v);
        c.joints.insert(c.joints.end(), {uint16_t(v), uint16_t(v + 1), 7, 0});
        c.weights.insert(c.weights.end(), {0.25f * f, 0.5f, 0.125f, 0.0f});
        c.colors.insert(c.colors.end(), {f, 1.0f, 0.0f, 1.0f});
        c.texCoords[0].insert(c.texCoords[0].end(), {f, -f});
    }
    c.texCoords[3] = std::vector<float>(n * 2, 0.5f);
    Geometry* g = ts.AddGeometry({cyl, CubeMesh()});
    ts.AddNode(g);
    Geometry* skipped = ts.AddGeometry({});
    MeshInstance* strip = testsupport::NewInstance(ts.scene, *skipped, g->meshInstances[0]->vertices, {0, 1, 2});
    strip->primitiveType = 4;
    ts.AddNode(skipped);

    auto* sparse = New<MorphTarget>(ts.scene, n);
    sparse->name = "sparse";
    sparse->defaultWeight = 0.5f;
    for (uint32_t v = 0; v < n; v += 3) sparse->deltaPositions[3 * v + 1] = 1.0f + float(v);
    Compact(*sparse, 1e-6f);
    // A stored index past the vertices names no vertex: it is dropped, and costs no table
    // of its size.
    sparse->indices.push_back(0xFFFFFFF0u);
    sparse->count += 1;
    sparse->deltaPositions.insert(sparse->deltaPositions.end(), {5, 5, 5});
    sparse->deltaNormals.insert(sparse->deltaNormals.end(), {0, 0, 0});
    auto* dense = New<MorphTarget>(ts.scene, n);
    for (uint32_t v = 0; v < n; ++v) dense->deltaNormals[3 * v] = float(v);
    auto* shared = New<Morph>(ts.scene);
    shared->targets = {sparse, dense};
    g->meshInstances[0]->morph = shared;
    g->meshInstances[1]->morph = shared;  // nonsense for the cube's vertices, but legal

    UnwrapScene(ts.scene, 16.0f);
    EXPECT_EQ(strip->vertices->positions.size(), size_t(n) * 3);
    const MeshInstance& mi = *g->meshInstances[0];
    const MeshInstance& cube = *g->meshInstances[1];
    ExpectInUnitSquare(cube.vertices->texCoords[0]);
    EXPECT_TRUE(cube.vertices->texCoords[1].empty());
    EXPECT_EQ(cube.vertices->normals.size(), cube.vertices->positions.size());
    for (const MeshInstance* instance : {&mi, &cube})
        for (uint32_t idx : *instance->indices) ASSERT_LT(idx, instance->vertices->positions.size() / 3);
    EXPECT_EQ(mi.indices->size(), cyl.indices.size());
    EXPECT_EQ(cube.indices->size(), 36u);
    // Charts that share the unit square without overlap cover at most all of it; each mesh
    // alone packs into well over half of an atlas of its own.
    EXPECT_LE(Area(mi, 1) + Area(cube, 0), 1.0);

    const VertexData& vd = *mi.vertices;
    const uint32_t m = uint32_t(vd.positions.size() / 3);
    ASSERT_GT(m, n);  // seams split vertices, so the copy by xref is really exercised
    ExpectInUnitSquare(vd.texCoords[1]);
    EXPECT_TRUE(vd.texCoords[3].empty());
    for (size_t size : {vd.joints.size(), vd.weights.size(), vd.colors.size(), vd.texCoords[0].size() * 2})
        ASSERT_EQ(size, m * 4);
    ASSERT_NE(mi.morph, cube.morph);
    ASSERT_EQ(mi.morph->targets.size(), 2u);
    const MorphTarget& s = *mi.morph->targets[0];
    const MorphTarget& d = *mi.morph->targets[1];
    EXPECT_EQ(s.name, "sparse");
    EXPECT_EQ(s.defaultWeight, 0.5f);
    EXPECT_EQ(s.sourceVertexCount, m);
    ASSERT_EQ(s.indices.size(), s.count);
    size_t entry = 0;
    for (uint32_t v = 0; v < m; ++v) {
        const uint32_t x = vd.joints[4 * v];
        ASSERT_LT(x, n);
        const float f = float(x);
        EXPECT_EQ(vd.joints[4 * v + 1], x + 1);
        EXPECT_EQ((std::vector<float>{vd.weights[4 * v], vd.colors[4 * v], vd.texCoords[0][2 * v], vd.texCoords[0][2 * v + 1]}),
                  (std::vector<float>{0.25f * f, f, f, -f}));
        for (int k = 0; k < 3; ++k) {
            EXPECT_EQ(vd.positions[3 * v + k], c.positions[3 * x + k]);
            EXPECT_EQ(vd.normals[3 * v + k], c.normals[3 * x + k]);
        }
        if (x % 3 == 0) {
            ASSERT_LT(entry, s.count);
            EXPECT_EQ(s.indices[entry], v);
            EXPECT_EQ(s.deltaPositions[3 * entry + 1], 1.0f + f);
            ++entry;
        }
        EXPECT_EQ(d.deltaNormals[3 * v], f);
    }
    EXPECT_EQ(entry, s.count);
    EXPECT_EQ(d.count, m);
    EXPECT_TRUE(d.indices.empty());
    EXPECT_EQ(s.boundingBox.max.y, 1.0f + float((n - 1) / 3 * 3));
    EXPECT_EQ(s.boundingBox.min.y, 0.0f);
}
