#include <gtest/gtest.h>

#include <cmath>
#include <cstddef>

#include "meshpost/meshpost.h"
#include "meshpost/unwrap.h"
#include "scene_builder.h"
#include "test_meshes.h"

namespace {

using testsupport::New;
using MeshData = std::pair<VertexData, std::vector<uint32_t>>;

// A scene whose dictionary holds the given geometries; the scene frees everything.
struct TestScene {
    Scene scene;
    TestScene() { scene.root = testsupport::NewNode("root", 0); }

    Geometry* AddGeometry(std::vector<MeshData> meshes) {
        Geometry* g = testsupport::NewGeometry(scene, "", scene.geometries.Size());
        for (auto& [data, indices] : meshes)
            testsupport::NewInstance(scene, *g, New<VertexData>(scene, std::move(data)), std::move(indices));
        return g;
    }
    GraphNode* AddNode(Geometry* g, const Mat4& world) {
        GraphNode* node = testsupport::NewNode("", 0, scene.root);
        node->geometry = g;
        node->worldMatrix = world;
        return node;
    }
};

MeshData Cube() {
    MeshData m;
    MakeCube(m.first, m.second);
    return m;
}

MeshData Cylinder() {
    MeshData m;
    MakeCylinder(m.first, m.second, 24);
    return m;
}

MeshData Quad(float w, float h, float y1 = 0) {
    VertexData d;
    d.positions = {0, 0, 0, w, y1, 0, w, h, 0, 0, h, 0};
    return {d, {0, 1, 2, 0, 2, 3}};
}

MeshData Grid(float width) {
    MeshData g;
    MakeGrid(g.first, g.second, 4);
    for (float& f : g.first.positions) f *= width;
    return g;
}

// Texels per world unit that the unwrapped set gives, from the summed areas.
double Density(const MeshInstance& mi, double atlasWidth, double atlasHeight) {
    return std::sqrt(UvArea(mi, 0) * atlasWidth * atlasHeight / WorldArea(mi));
}

void ExpectInUnitSquare(const std::vector<float>& uv) {
    ASSERT_FALSE(uv.empty());
    for (float f : uv) {
        EXPECT_GE(f, 0.0f);
        EXPECT_LE(f, 1.0f);
    }
}

}  // namespace

TEST(Unwrap, CubeAndCylinderShareOneAtlasWithoutOverlap) {
    TestScene ts;
    Geometry* g = ts.AddGeometry({Cube(), Cylinder()});
    ts.AddNode(g, Mat4());
    std::vector<size_t> triangles;
    for (const MeshInstance* mi : g->meshInstances) triangles.push_back(mi->indices->size() / 3);

    UnwrapScene(ts.scene, 64.0f);

    double covered = 0;
    for (size_t i = 0; i < 2; ++i) {
        const MeshInstance& mi = *g->meshInstances[i];
        const VertexData& vd = *mi.vertices;
        ExpectInUnitSquare(vd.texCoords[0]);
        EXPECT_TRUE(vd.texCoords[1].empty());
        const size_t n = vd.positions.size() / 3;
        EXPECT_EQ(vd.texCoords[0].size(), n * 2);
        EXPECT_EQ(vd.normals.size(), n * 3);
        for (uint32_t idx : *mi.indices) ASSERT_LT(idx, n);
        EXPECT_EQ(mi.indices->size() / 3, triangles[i]);
        covered += UvArea(mi, 0);
    }
    // Charts that share the unit square without overlap cover at most all of it; each mesh
    // alone packs into well over half of an atlas of its own.
    EXPECT_LE(covered, 1.0);
}

TEST(Unwrap, WorldScaleIsLargestSignedComponentOverAllNodes) {
    TestScene ts;
    Geometry* shared = ts.AddGeometry({Cube()});
    Geometry* stretched = ts.AddGeometry({Cube()});
    Geometry* mirrored = ts.AddGeometry({Cube()});
    ts.AddGeometry({Cube()});  // used by no node
    ts.AddNode(shared, ScaleMatrix(1, 1, 1));
    GraphNode* parent = ts.AddNode(shared, ScaleMatrix(3, 3, 3));
    auto* deep = new GraphNode;  // found below another node, past a null child
    deep->geometry = stretched;
    deep->worldMatrix = ScaleMatrix(1, 2, 0.5f);
    parent->AddChild(nullptr);
    parent->AddChild(deep);
    ts.AddNode(mirrored, ScaleMatrix(-2, 1, 1));

    const auto scales = GeometryWorldScales(ts.scene.root);
    EXPECT_FLOAT_EQ(scales.at(shared), 3.0f);
    EXPECT_FLOAT_EQ(scales.at(stretched), 2.0f);
    // A mirror turns all three scales negative, so the largest signed one is -1.
    EXPECT_FLOAT_EQ(scales.at(mirrored), -1.0f);
    EXPECT_EQ(scales.size(), 3u);
}

TEST(Unwrap, TexelDensityIsTexelsPerMeterTimesTheLargestNodeScale) {
    // A cube's faces are flat charts, so texels per metre come out exactly. A geometry that
    // no node uses unwraps at scale 1.
    const struct {
        std::vector<float> nodeScales;
        float q;
        double density;
    } rows[] = {{{1}, 16, 16}, {{1}, 40, 40}, {{1, 3}, 16, 48}, {{}, 16, 16}};
    for (const auto& row : rows) {
        TestScene ts;
        Geometry* g = ts.AddGeometry({Cube()});
        for (float s : row.nodeScales) ts.AddNode(g, ScaleMatrix(s, s, s));
        const MeshInstance& mi = *g->meshInstances[0];
        const AtlasSize size = UnwrapGeometry(ts.scene, g->meshInstances, float(row.density / row.q), row.q);
        ASSERT_GT(size.width, 0u);
        const std::vector<float> alone = mi.vertices->texCoords[0];
        EXPECT_NEAR(Density(mi, size.width, size.height), row.density, 0.02 * row.density) << row.density;
        // The scene's walk picks the same scale: its layout is the lone unwrap's.
        TestScene again;
        Geometry* h = again.AddGeometry({Cube()});
        for (float s : row.nodeScales) again.AddNode(h, ScaleMatrix(s, s, s));
        UnwrapScene(again.scene, row.q);
        EXPECT_EQ(h->meshInstances[0]->vertices->texCoords[0], alone) << row.density;
    }
}

// A geometry that cannot be unwrapped keeps every instance as it was, says why on stderr
// when it is the mesh's fault (an exact line, or ~ and a part of it), and the next geometry
// still gets its set (unless the density is not a number for all of them). Geometries that unwrap get finite coordinates in the unit square.
TEST(Unwrap, GeometryThatCannotBeUnwrappedIsLeftWhole) {
    using Spoil = void (*)(MeshInstance&);
    const Spoil none = [](MeshInstance&) {};
    auto badIndex = Cube();
    badIndex.second[4] = 24;  // one past the last vertex
    VertexData degenerate;
    degenerate.positions = {0, 0, 0, 0, 0, 0, 0, 0, 0, 1, 1, 1};
    const std::string tooLarge = "UV unwrapping skipped for a mesh of 4 vertices at 16 texels per unit: it spans more "
                                 "texels than an atlas can hold\n";
    const struct {
        std::vector<MeshData> meshes;
        Spoil spoil;  // applied to the last instance
        float q;
        bool untouched;
        std::string err;
    } rows[] = {
        {{Cube(), Cylinder()}, [](MeshInstance& mi) { mi.primitiveType = 4; }, 16, true, ""},
        {{Cube(), Cylinder()},
         [](MeshInstance& mi) { mi.vertices->texCoords[1].assign(mi.vertices->positions.size() / 3 * 2, 0); }, 16,
         true, ""},
        {{Cube(), Cylinder()}, [](MeshInstance& mi) { mi.indices = nullptr; }, 16, true, ""},
        {{Cube(), Cylinder()}, [](MeshInstance& mi) { mi.vertices = nullptr; }, 16, true, ""},
        // Accessors without a buffer view decode as empty lists: such an instance never
        // reaches xatlas, whichever of the two is empty.
        {{Cube(), Cylinder()}, [](MeshInstance& mi) { mi.vertices->positions.clear(), mi.indices->clear(); }, 16,
         true, ""},
        {{Cube(), Cylinder()}, [](MeshInstance& mi) { mi.vertices->positions.clear(); }, 16, true, ""},
        {{Cube(), Cylinder()}, [](MeshInstance& mi) { mi.indices->clear(); }, 16, true, ""},
        {{Cube(), badIndex}, none, 16, true, "failed to add the xatlas mesh err=2\n"},
        // A quad 2^31 units wide needs billions of texels (xatlas's packer crashed on it). At
        // 0 texels per metre xatlas picks a density for the area: a square fits however
        // large, a needle 2^31 by 1 does not, nor a curved grid 3e10 wide whose areas square
        // past the float range (it packed for ever); one 1e9 wide still unwraps. A density
        // that is not a number (a nan option, or a world matrix decomposing into one) also
        // packed for ever.
        {{Quad(2147483648.0f, 1)}, none, 16, true, tooLarge},
        {{Quad(1, 1, std::nanf(""))}, none, 16, true, "~not all finite"},
        {{Quad(1e9f, 1e9f)}, none, 0, false, ""},
        {{Quad(2147483648.0f, 1)}, none, 0, true, "~spans more texels"},
        {{Quad(1, 1)}, none, std::nanf(""), true,
         "UV unwrapping skipped for a mesh of 4 vertices at nan texels per unit: its texel density is not a number\n"},
        {{Grid(3e10f)}, none, 0, true,
         "UV unwrapping skipped for a mesh of 25 vertices at 0 texels per unit: its coordinates span too far for "
         "single-precision unwrapping\n"},
        {{Grid(1e9f)}, none, 0, false, ""},
        // Faces of zero area get no chart; their vertices still get usable numbers.
        {{{degenerate, {0, 1, 2, 3, 3, 3}}}, none, 16, false, ""},
        // Colours shorter than four per vertex are padded with zeros, never read past.
        {{Cube()}, [](MeshInstance& mi) { mi.vertices->colors = {0.1f, 0.2f, 0.3f}; }, 16, false, ""},
    };
    for (size_t i = 0; i < std::size(rows); ++i) {
        SCOPED_TRACE(i);
        TestScene ts;
        Geometry* g = ts.AddGeometry(rows[i].meshes);
        Geometry* fine = std::isnan(rows[i].q) ? nullptr : ts.AddGeometry({Cube()});
        ts.AddNode(g, Mat4());
        rows[i].spoil(*g->meshInstances.back());
        std::vector<VertexData*> before;
        for (MeshInstance* mi : g->meshInstances) before.push_back(mi->vertices);
        testing::internal::CaptureStderr();
        UnwrapScene(ts.scene, rows[i].q);
        const std::string err = testing::internal::GetCapturedStderr();
        for (size_t m = 0; m < before.size(); ++m)
            EXPECT_EQ(g->meshInstances[m]->vertices == before[m], rows[i].untouched);
        if (rows[i].err.starts_with('~')) EXPECT_NE(err.find(rows[i].err.substr(1)), std::string::npos) << err;
        else EXPECT_EQ(err, rows[i].err);
        if (!rows[i].untouched) {
            const VertexData& vd = *g->meshInstances.back()->vertices;
            ExpectInUnitSquare(vd.texCoords[0]);
            EXPECT_TRUE(vd.colors.empty() || vd.colors.size() == vd.positions.size() / 3 * 4);
        }
        if (fine) ExpectInUnitSquare(fine->meshInstances[0]->vertices->texCoords[0]);
    }
}

TEST(Unwrap, AttributesAndMorphDeltasFollowTheirVertices) {
    // Joints name each vertex's source; an existing set 0 stays (the new set goes to 1) and
    // sets above 1 are dropped. Two instances share one morph with a sparse and a dense
    // target; each gets a morph of its own, with deltas on the new vertices that came from
    // moved old ones. A skipped geometry sharing the vertex data keeps a valid record (the
    // sanitizer build checks the frees).
    TestScene ts;
    auto cyl = Cylinder();
    const uint32_t n = uint32_t(cyl.first.positions.size() / 3);
    for (uint32_t v = 0; v < n; ++v) {
        cyl.first.joints.insert(cyl.first.joints.end(), {uint16_t(v), uint16_t(v + 1), 7, 0});
        cyl.first.weights.insert(cyl.first.weights.end(), {0.25f * float(v), 0.5f, 0.125f, 0.0f});
        cyl.first.colors.insert(cyl.first.colors.end(), {float(v), 1.0f, 0.0f, 1.0f});
        cyl.first.texCoords[0].insert(cyl.first.texCoords[0].end(), {float(v), -float(v)});
    }
    cyl.first.texCoords[3] = std::vector<float>(n * 2, 0.5f);
    const VertexData before = cyl.first;
    Geometry* g = ts.AddGeometry({cyl, Cube()});
    ts.AddNode(g, Mat4());
    Geometry* skipped = ts.AddGeometry({});
    auto* strip = New<MeshInstance>(ts.scene);
    strip->primitiveType = 4;
    strip->vertices = g->meshInstances[0]->vertices;
    strip->indices = New<std::vector<uint32_t>>(ts.scene, std::vector<uint32_t>{0, 1, 2});
    skipped->meshInstances.push_back(strip);
    ts.AddNode(skipped, Mat4());

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
    const VertexData& vd = *mi.vertices;
    const uint32_t m = uint32_t(vd.positions.size() / 3);
    ASSERT_GT(m, n);  // seams split vertices, so the copy by xref is really exercised
    ExpectInUnitSquare(vd.texCoords[1]);
    EXPECT_TRUE(vd.texCoords[3].empty());
    ASSERT_EQ(vd.texCoords[0].size(), m * 2);
    ASSERT_EQ(vd.joints.size(), m * 4);
    ASSERT_EQ(vd.weights.size(), m * 4);
    ASSERT_EQ(vd.colors.size(), m * 4);
    ASSERT_NE(mi.morph, g->meshInstances[1]->morph);
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
        EXPECT_EQ(vd.joints[4 * v + 1], x + 1);
        EXPECT_EQ(vd.weights[4 * v], 0.25f * float(x));
        EXPECT_EQ(vd.colors[4 * v], float(x));
        EXPECT_EQ(vd.texCoords[0][2 * v], float(x));
        EXPECT_EQ(vd.texCoords[0][2 * v + 1], -float(x));
        for (int k = 0; k < 3; ++k) {
            EXPECT_EQ(vd.positions[3 * v + k], before.positions[3 * x + k]);
            EXPECT_EQ(vd.normals[3 * v + k], before.normals[3 * x + k]);
        }
        if (x % 3 == 0) {
            ASSERT_LT(entry, s.count);
            EXPECT_EQ(s.indices[entry], v);
            EXPECT_EQ(s.deltaPositions[3 * entry + 1], 1.0f + float(x));
            ++entry;
        }
        EXPECT_EQ(d.deltaNormals[3 * v], float(x));
    }
    EXPECT_EQ(entry, s.count);
    EXPECT_EQ(d.count, m);
    EXPECT_TRUE(d.indices.empty());
    EXPECT_EQ(s.boundingBox.max.y, 1.0f + float((n - 1) / 3 * 3));
    EXPECT_EQ(s.boundingBox.min.y, 0.0f);
}
