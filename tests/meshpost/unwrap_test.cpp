#include <gtest/gtest.h>

#include <cmath>
#include <cstddef>
#include <xatlas.h>

#include "meshpost/meshpost.h"
#include "meshpost/unwrap.h"
#include "scene_builder.h"
#include "test_meshes.h"

namespace {

using testsupport::New;
using testsupport::NewGeometry;
using testsupport::NewInstance;
using testsupport::NewNode;
using MeshData = std::pair<VertexData, std::vector<uint32_t>>;

// A scene whose dictionary holds the given geometries; the scene frees everything.
struct TestScene {
    Scene scene;
    TestScene() { scene.root = NewNode("root", 0); }

    Geometry* AddGeometry(std::vector<MeshData> meshes) {
        Geometry* g = NewGeometry(scene, "", scene.geometries.Size());
        for (auto& [data, indices] : meshes)
            NewInstance(scene, *g, New<VertexData>(scene, std::move(data)), std::move(indices));
        return g;
    }
    GraphNode* AddNode(Geometry* g, const Mat4& world) {
        GraphNode* node = NewNode("", 0, scene.root);
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

// Texels per world unit that the unwrapped set gives, from the summed areas.
double Density(const MeshInstance& mi, int set, double atlasWidth, double atlasHeight) {
    double world = 0, texels = 0;
    for (size_t t = 0; t < mi.indices->size() / 3; ++t) {
        world += TriangleArea3(mi.vertices->positions, *mi.indices, t);
        texels += std::fabs(TriangleAreaUv(mi.vertices->texCoords[set], *mi.indices, t, atlasWidth, atlasHeight));
    }
    return std::sqrt(texels / world);
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

    std::vector<const std::vector<float>*> uvs;
    std::vector<const std::vector<uint32_t>*> lists;
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
        uvs.push_back(&vd.texCoords[0]);
        lists.push_back(mi.indices);
    }
    // Fine raster: at 64 texels a metre a chart is tens of texels wide.
    EXPECT_EQ(OverlappingTexels(uvs, lists, 512, 512), 0u);
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

TEST(Unwrap, TexelDensityFollowsTexelsPerMeterTimesWorldScale) {
    // A cube's faces are flat charts, so texels per metre come out exactly.
    for (auto [worldScale, q] : {std::pair{1.0f, 16.0f}, {1.0f, 40.0f}, {3.0f, 16.0f}}) {
        Scene owner;
        MeshInstance* mi = MakeInstance(owner, Cube().first, Cube().second);
        const AtlasSize size = UnwrapGeometry(owner, {mi}, worldScale, q);
        ASSERT_GT(size.width, 0u);
        EXPECT_NEAR(Density(*mi, 0, size.width, size.height), worldScale * q, 0.02 * worldScale * q)
            << "scale " << worldScale << " q " << q;
    }
}

TEST(Unwrap, SceneUsesTheLargerScaleOfTwoNodes) {
    // Same geometry under nodes of scale 1 and 3 lays out as a lone unwrap at scale 3 does.
    TestScene ts;
    Geometry* g = ts.AddGeometry({Cylinder()});
    ts.AddNode(g, ScaleMatrix(1, 1, 1));
    ts.AddNode(g, ScaleMatrix(3, 3, 3));
    UnwrapScene(ts.scene, 16.0f);

    for (float worldScale : {3.0f, 1.0f}) {
        Scene owner;
        MeshInstance* mi = MakeInstance(owner, Cylinder().first, Cylinder().second);
        UnwrapGeometry(owner, {mi}, worldScale, 16.0f);
        const bool same = mi->vertices->texCoords[0] == g->meshInstances[0]->vertices->texCoords[0];
        EXPECT_EQ(same, worldScale == 3.0f) << worldScale;
    }
}

TEST(Unwrap, GeometryWithAnUnsuitableInstanceIsLeftWhole) {
    auto expectUntouched = [](auto mutate) {
        TestScene ts;
        Geometry* g = ts.AddGeometry({Cube(), Cylinder()});
        ts.AddNode(g, Mat4());
        mutate(*g->meshInstances[1]);
        std::vector<std::pair<VertexData*, std::vector<uint32_t>*>> before;
        for (MeshInstance* mi : g->meshInstances) before.push_back({mi->vertices, mi->indices});
        const size_t firstSize = g->meshInstances[0]->vertices->positions.size();
        UnwrapScene(ts.scene, 16.0f);
        for (size_t i = 0; i < 2; ++i) {
            EXPECT_EQ(g->meshInstances[i]->vertices, before[i].first);
            EXPECT_EQ(g->meshInstances[i]->indices, before[i].second);
        }
        // The instance before the unsuitable one passed its checks and is untouched too.
        EXPECT_EQ(g->meshInstances[0]->vertices->positions.size(), firstSize);
        EXPECT_TRUE(g->meshInstances[0]->vertices->texCoords[0].empty());
    };
    expectUntouched([](MeshInstance& mi) { mi.primitiveType = 4; });
    expectUntouched([](MeshInstance& mi) { mi.vertices->texCoords[1].assign(mi.vertices->positions.size() / 3 * 2, 0); });
    expectUntouched([](MeshInstance& mi) { mi.indices = nullptr; });
    expectUntouched([](MeshInstance& mi) { mi.vertices = nullptr; });
    // Accessors without a buffer view decode as empty lists: such an instance never reaches
    // xatlas, whichever of the two is empty.
    expectUntouched([](MeshInstance& mi) {
        mi.vertices->positions.clear();
        mi.indices->clear();
    });
    expectUntouched([](MeshInstance& mi) { mi.vertices->positions.clear(); });
    expectUntouched([](MeshInstance& mi) { mi.indices->clear(); });
}

TEST(Unwrap, AddMeshFailureIsReportedAndLeavesGeometry) {
    TestScene ts;
    auto bad = Cube();
    bad.second[4] = 24;  // one past the last vertex
    Geometry* g = ts.AddGeometry({Cube(), bad});
    Geometry* fine = ts.AddGeometry({Cube()});
    ts.AddNode(g, Mat4());
    ts.AddNode(fine, Mat4());
    VertexData* before = g->meshInstances[0]->vertices;
    testing::internal::CaptureStderr();
    UnwrapScene(ts.scene, 16.0f);
    const std::string err = testing::internal::GetCapturedStderr();
    EXPECT_EQ(err, "failed to add the xatlas mesh err=2\n");
    EXPECT_EQ(g->meshInstances[0]->vertices, before);
    EXPECT_TRUE(before->texCoords[0].empty());
    // Other geometries still get their set.
    EXPECT_FALSE(fine->meshInstances[0]->vertices->texCoords[0].empty());
}

TEST(Unwrap, VertexAttributesFollowTheirVerticesAndSetZeroStays) {
    // Joints name each vertex's source; an existing set 0 stays (the new set goes to 1) and
    // sets above 1 are dropped.
    TestScene ts;
    auto cyl = Cylinder();
    const size_t n = cyl.first.positions.size() / 3;
    for (size_t v = 0; v < n; ++v) {
        cyl.first.joints.insert(cyl.first.joints.end(), {uint16_t(v), uint16_t(v + 1), 7, 0});
        cyl.first.weights.insert(cyl.first.weights.end(), {0.25f * float(v), 0.5f, 0.125f, 0.0f});
        cyl.first.colors.insert(cyl.first.colors.end(), {float(v), 1.0f, 0.0f, 1.0f});
        cyl.first.texCoords[0].insert(cyl.first.texCoords[0].end(), {float(v), -float(v)});
    }
    cyl.first.texCoords[3] = std::vector<float>(n * 2, 0.5f);
    const VertexData before = cyl.first;
    Geometry* g = ts.AddGeometry({cyl});
    ts.AddNode(g, Mat4());
    UnwrapScene(ts.scene, 16.0f);

    const VertexData& vd = *g->meshInstances[0]->vertices;
    const size_t m = vd.positions.size() / 3;
    ASSERT_GT(m, n);  // seams split vertices, so the copy by xref is really exercised
    ExpectInUnitSquare(vd.texCoords[1]);
    EXPECT_TRUE(vd.texCoords[3].empty());
    ASSERT_EQ(vd.texCoords[0].size(), m * 2);
    ASSERT_EQ(vd.joints.size(), m * 4);
    ASSERT_EQ(vd.weights.size(), m * 4);
    ASSERT_EQ(vd.colors.size(), m * 4);
    for (size_t v = 0; v < m; ++v) {
        const size_t x = vd.joints[4 * v];
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
    }
}

TEST(Unwrap, ApplyCopiesByXrefAndScalesUvs) {
    Scene owner;
    VertexData data;
    data.positions = {0, 0, 0, 1, 0, 0, 0, 1, 0};
    data.joints = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12};
    data.weights = {1, 0, 0, 0, 0.5f, 0.5f, 0, 0, 0.25f, 0.25f, 0.25f, 0.25f};
    data.colors = {0.1f, 0.2f, 0.3f};  // shorter than four per vertex: padded, never read past
    data.texCoords[2] = {9, 9, 9, 9, 9, 9};
    MeshInstance* mi = MakeInstance(owner, data, {0, 1, 2});
    VertexData* old = mi->vertices;

    xatlas::Vertex verts[4] = {};
    const uint32_t xrefs[4] = {2, 0, 2, 1};
    for (int i = 0; i < 4; ++i) {
        verts[i].xref = xrefs[i];
        verts[i].uv[0] = float(i) * 10.0f;
        verts[i].uv[1] = 64.0f - float(i);
    }
    uint32_t idx[6] = {0, 1, 3, 3, 1, 2};
    xatlas::Mesh out = {};
    out.vertexArray = verts;
    out.vertexCount = 4;
    out.indexArray = idx;
    out.indexCount = 6;

    ApplyUnwrap(owner, *mi, out, 40.0f, 64.0f);
    ASSERT_NE(mi->vertices, old);
    const VertexData& vd = *mi->vertices;
    EXPECT_EQ(*mi->indices, (std::vector<uint32_t>{0, 1, 3, 3, 1, 2}));
    EXPECT_EQ(vd.positions, (std::vector<float>{0, 1, 0, 0, 0, 0, 0, 1, 0, 1, 0, 0}));
    EXPECT_EQ(vd.joints, (std::vector<uint16_t>{9, 10, 11, 12, 1, 2, 3, 4, 9, 10, 11, 12, 5, 6, 7, 8}));
    EXPECT_EQ(vd.weights[4], 1.0f);
    EXPECT_EQ(vd.weights[12], 0.5f);
    EXPECT_EQ(vd.colors.size(), 16u);
    EXPECT_EQ(vd.colors[4], 0.1f);
    EXPECT_EQ(vd.colors[7], 0.0f);
    EXPECT_TRUE(vd.normals.empty());
    EXPECT_TRUE(vd.texCoords[2].empty());
    EXPECT_TRUE(vd.texCoords[1].empty());
    EXPECT_EQ(vd.texCoords[0], (std::vector<float>{0, 1, 0.25f, 63.0f / 64, 0.5f, 62.0f / 64, 0.75f, 61.0f / 64}));
    // The old records stay for whoever else holds them.
    EXPECT_EQ(old->positions.size(), 9u);
}

TEST(Unwrap, SharedVertexDataSurvivesForGeometryLeftAlone) {
    // One vertex data used by an unwrapped geometry and by a skipped one: the skipped one
    // keeps a valid record (the sanitizer build checks the frees).
    TestScene ts;
    Geometry* unwrapped = ts.AddGeometry({Cube()});
    Geometry* skipped = ts.AddGeometry({});
    auto* strip = New<MeshInstance>(ts.scene);
    strip->primitiveType = 4;
    strip->vertices = unwrapped->meshInstances[0]->vertices;
    strip->indices = New<std::vector<uint32_t>>(ts.scene, std::vector<uint32_t>{0, 1, 2});
    skipped->meshInstances.push_back(strip);
    ts.AddNode(unwrapped, Mat4());
    ts.AddNode(skipped, Mat4());
    UnwrapScene(ts.scene, 16.0f);
    EXPECT_NE(unwrapped->meshInstances[0]->vertices, strip->vertices);
    EXPECT_EQ(strip->vertices->positions.size(), 72u);
}

TEST(Unwrap, MorphDeltasFollowTheirVertices) {
    // Two instances share one morph with a sparse and a dense target; each instance gets
    // a morph of its own, with deltas on the new vertices that came from moved old ones.
    TestScene ts;
    auto cyl = Cylinder();
    const uint32_t n = uint32_t(cyl.first.positions.size() / 3);
    for (uint32_t v = 0; v < n; ++v) cyl.first.joints.insert(cyl.first.joints.end(), {uint16_t(v), 0, 0, 0});
    Geometry* g = ts.AddGeometry({cyl, Cube()});
    ts.AddNode(g, Mat4());
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
    const MeshInstance& mi = *g->meshInstances[0];
    ASSERT_NE(mi.morph, g->meshInstances[1]->morph);
    ASSERT_EQ(mi.morph->targets.size(), 2u);
    const MorphTarget& s = *mi.morph->targets[0];
    const MorphTarget& d = *mi.morph->targets[1];
    const VertexData& vd = *mi.vertices;
    const uint32_t m = uint32_t(vd.positions.size() / 3);
    EXPECT_EQ(s.name, "sparse");
    EXPECT_EQ(s.defaultWeight, 0.5f);
    EXPECT_EQ(s.sourceVertexCount, m);
    ASSERT_EQ(s.indices.size(), s.count);
    size_t entry = 0;
    for (uint32_t v = 0; v < m; ++v) {
        const uint32_t x = vd.joints[4 * v];
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

TEST(Unwrap, DegenerateTrianglesGiveFiniteCoordinates) {
    // Faces of zero area get no chart; their vertices must still get usable numbers.
    Scene owner;
    VertexData data;
    data.positions = {0, 0, 0, 0, 0, 0, 0, 0, 0, 1, 1, 1};
    MeshInstance* mi = MakeInstance(owner, data, {0, 1, 2, 3, 3, 3});
    UnwrapGeometry(owner, {mi}, 1.0f, 16.0f);
    for (float f : mi->vertices->texCoords[0]) EXPECT_TRUE(std::isfinite(f)) << f;
}

TEST(Unwrap, MeshesNoAtlasCanHoldAreSkippedWithAMessage) {
    // A quad 2^31 units wide needs billions of texels (xatlas's packer crashed on it). At 0
    // texels per metre xatlas picks a density for the area: a square fits however large, a
    // needle 2^31 by 1 does not, nor a curved grid 3e10 wide whose areas square past the
    // float range (it packed for ever); one 1e9 wide still unwraps. A density that is not
    // a number (a nan option, or a world matrix decomposing into one) also packed for ever.
    auto quad = [](float w, float h, float y1 = 0) {
        VertexData d;
        d.positions = {0, 0, 0, w, y1, 0, w, h, 0, 0, h, 0};
        return MeshData{d, {0, 1, 2, 0, 2, 3}};
    };
    auto grid = [](float width) {
        MeshData g;
        MakeGrid(g.first, g.second, 4);
        for (float& f : g.first.positions) f *= width;
        return g;
    };
    const std::string tooLarge = "UV unwrapping skipped for a mesh of 4 vertices at 16 texels per unit: it spans more "
                                 "texels than an atlas can hold\n";
    struct Case {
        MeshData mesh;
        float q;
        bool untouched;
        std::string err;
        bool exact;  // else err need only appear in the message
    } cases[] = {
        {quad(2147483648.0f, 1), 16.0f, true, tooLarge, true},
        {quad(1, 1, std::nanf("")), 16.0f, true, "not all finite", false},
        {quad(1e9f, 1e9f), 0.0f, false, "", true},
        {quad(2147483648.0f, 1), 0.0f, true, "spans more texels", false},
        {quad(1, 1), std::nanf(""), true,
         "UV unwrapping skipped for a mesh of 4 vertices at nan texels per unit: its texel density is not a number\n",
         true},
        {grid(3e10f), 0.0f, true,
         "UV unwrapping skipped for a mesh of 25 vertices at 0 texels per unit: its coordinates span too far for "
         "single-precision unwrapping\n",
         true},
        {grid(1e9f), 0.0f, false, "", true},
    };
    for (size_t i = 0; i < std::size(cases); ++i) {
        SCOPED_TRACE(i);
        TestScene ts;
        Geometry* g = ts.AddGeometry({cases[i].mesh});
        ts.AddNode(g, Mat4());
        VertexData* before = g->meshInstances[0]->vertices;
        testing::internal::CaptureStderr();
        UnwrapScene(ts.scene, cases[i].q);
        const std::string err = testing::internal::GetCapturedStderr();
        EXPECT_EQ(g->meshInstances[0]->vertices == before, cases[i].untouched);
        if (cases[i].exact) EXPECT_EQ(err, cases[i].err);
        else EXPECT_NE(err.find(cases[i].err), std::string::npos) << err;
    }
}
