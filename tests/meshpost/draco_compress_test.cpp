#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <memory>
#include <tuple>

#include <draco/compression/decode.h>
#include <draco/mesh/mesh.h>
#include <draco/metadata/geometry_metadata.h>

#include "meshpost/draco_compress.h"
#include "meshpost/meshpost.h"
#include "scene_builder.h"
#include "test_meshes.h"

namespace {

std::unique_ptr<draco::Mesh> Decode(const DracoPayload& payload) {
    draco::DecoderBuffer buffer;
    buffer.Init(reinterpret_cast<const char*>(payload.data.data()), payload.data.size());
    draco::Decoder decoder;
    auto result = decoder.DecodeMeshFromBuffer(&buffer);
    if (!result.ok()) return nullptr;
    return std::move(result).value();
}

// Values of point p of an attribute, as floats.
std::vector<float> PointValue(const draco::PointAttribute& att, uint32_t p) {
    std::vector<float> v(att.num_components());
    att.ConvertValue<float>(att.mapped_index(draco::PointIndex(p)), att.num_components(), v.data());
    return v;
}

struct Mesh {
    VertexData data;
    std::vector<uint32_t> indices;
};

// Positions and faces of a decoded mesh.
Mesh Decoded(const draco::Mesh& mesh) {
    Mesh m;
    const draco::PointAttribute* pos = mesh.GetNamedAttribute(draco::GeometryAttribute::POSITION);
    for (uint32_t p = 0; p < mesh.num_points(); ++p)
        for (float v : PointValue(*pos, p)) m.data.positions.push_back(v);
    for (uint32_t f = 0; f < mesh.num_faces(); ++f)
        for (int k = 0; k < 3; ++k) m.indices.push_back(mesh.face(draco::FaceIndex(f))[k].value());
    return m;
}

// Largest distance between a decoded triangle's corners and the best-matching original.
double MaxTriangleError(const Mesh& original, const draco::Mesh& mesh) {
    const Mesh decoded = Decoded(mesh);
    return TriangleMismatch(original.data, original.indices, decoded.data, decoded.indices, 1.0);
}

Mesh Grid(uint32_t n) {
    Mesh m;
    MakeGrid(m.data, m.indices, n);
    for (size_t v = 0; v < m.data.positions.size() / 3; ++v) {
        const float x = m.data.positions[3 * v], z = m.data.positions[3 * v + 2];
        m.data.texCoords[0].insert(m.data.texCoords[0].end(), {x, z});
        m.data.colors.insert(m.data.colors.end(), {x, z, 0.5f * x * z, 1.0f});
        m.data.weights.insert(m.data.weights.end(), {x * x, 1.0f - x * x, 0.0f, 0.0f});
        m.data.joints.insert(m.data.joints.end(), {uint16_t(v % 5), uint16_t(v % 3 + 10), 0, 0});
    }
    return m;
}

}  // namespace

TEST(Draco, MeshesDecodeToSameFacesWithinQuantisation) {
    Mesh cube, cylinder, grid = Grid(6);
    MakeCube(cube.data, cube.indices);
    MakeCylinder(cylinder.data, cylinder.indices, 32);
    for (const Mesh* m : {&cube, &cylinder, &grid}) {
        const DracoPayload p = CompressMesh(m->data, m->indices, DracoOptions());
        ASSERT_FALSE(p.data.empty());
        auto decoded = Decode(p);
        ASSERT_TRUE(decoded);
        EXPECT_EQ(decoded->num_faces() * 3, m->indices.size());
        EXPECT_EQ(p.indexCount, int32_t(m->indices.size()));
        EXPECT_EQ(p.vertexCount, int32_t(decoded->num_points()));
        // All three meshes span 1 unit: 11 bits give steps of 1/2047.
        EXPECT_LE(MaxTriangleError(*m, *decoded), 1.0f / 2047);
        if (m != &grid) continue;
        // Find each decoded point's source vertex by its x, z (a grid has unique ones) and
        // compare the skin data: joints exactly, weights within 8 bits.
        const draco::PointAttribute* pos = decoded->GetAttributeByUniqueId(uint32_t(p.attributes[0].attributeId));
        const draco::PointAttribute* joints = decoded->GetAttributeByUniqueId(uint32_t(p.attributes[3].attributeId));
        const draco::PointAttribute* weights = decoded->GetAttributeByUniqueId(uint32_t(p.attributes[4].attributeId));
        ASSERT_TRUE(pos && joints && weights);
        for (uint32_t i = 0; i < decoded->num_points(); ++i) {
            const auto xyz = PointValue(*pos, i);
            const uint32_t v = uint32_t(std::lround(xyz[2] * 6)) * 7 + uint32_t(std::lround(xyz[0] * 6));
            const auto j = PointValue(*joints, i);
            EXPECT_EQ(j[0], float(v % 5));
            EXPECT_EQ(j[1], float(v % 3 + 10));
            const auto w = PointValue(*weights, i);
            EXPECT_NEAR(w[0], m->data.weights[4 * v], 1.0 / 255);
            EXPECT_NEAR(w[1], m->data.weights[4 * v + 1], 1.0 / 255);
        }
    }
}

TEST(Draco, AttributeRecordsFollowFixedOrderAndOffsets) {
    Mesh m = Grid(4);
    m.data.normals.clear();  // a missing attribute leaves no record and no gap
    m.data.texCoords[2] = m.data.texCoords[0];
    const DracoPayload p = CompressMesh(m.data, m.indices, DracoOptions());

    // semantic, component type, components, normalized, byte offset
    using Record = std::tuple<int32_t, int32_t, int32_t, uint8_t, uint32_t>;
    const Record expected[] = {{0, 0, 3, 0, 0},  {4, 0, 4, 1, 12}, {5, 5, 4, 0, 28},
                               {6, 0, 4, 0, 36}, {7, 0, 2, 0, 52}, {9, 0, 2, 0, 60}};
    ASSERT_EQ(p.attributes.size(), std::size(expected));
    auto decoded = Decode(p);
    ASSERT_TRUE(decoded);
    for (size_t i = 0; i < p.attributes.size(); ++i) {
        const DracoAttributeInfo& a = p.attributes[i];
        SCOPED_TRACE(i);
        EXPECT_EQ(Record(a.semantic, a.componentType, a.components, a.normalized, a.byteOffset), expected[i]);
        // The id is what a reader looks the decoded attribute up by.
        const draco::PointAttribute* att = decoded->GetAttributeByUniqueId(uint32_t(a.attributeId));
        ASSERT_TRUE(att);
        EXPECT_EQ(att->num_components(), a.components);
    }
    EXPECT_EQ(decoded->GetAttributeByUniqueId(uint32_t(p.attributes[2].attributeId))->data_type(), draco::DT_UINT16);
    // Bounds from the plain data: positions over the grid, joints v % 5 and v % 3 + 10.
    float lo[3] = {INFINITY, INFINITY, INFINITY}, hi[3] = {-INFINITY, -INFINITY, -INFINITY};
    for (size_t i = 0; i < m.data.positions.size(); ++i) {
        lo[i % 3] = std::min(lo[i % 3], m.data.positions[i]);
        hi[i % 3] = std::max(hi[i % 3], m.data.positions[i]);
    }
    EXPECT_EQ(p.attributes[0].min, (std::vector<float>{lo[0], lo[1], lo[2]}));
    EXPECT_EQ(p.attributes[0].max, (std::vector<float>{hi[0], hi[1], hi[2]}));
    EXPECT_EQ(p.attributes[2].min, (std::vector<float>{0, 10, 0, 0}));
    EXPECT_EQ(p.attributes[2].max, (std::vector<float>{4, 12, 0, 0}));
}

TEST(Draco, DataShorterThanOneVertexGivesNoBounds) {
    // Data shorter than one vertex gives no bounds, yet the attribute is there.
    Mesh tri;
    tri.data.positions = {0, 0, 0, 1, 0, 0, 0, 1, 0};
    tri.data.texCoords[0] = {0.5f};
    tri.indices = {0, 1, 2};
    const DracoPayload q = CompressMesh(tri.data, tri.indices, DracoOptions());
    ASSERT_EQ(q.attributes.size(), 2u);
    EXPECT_EQ(q.attributes[1].semantic, 7);
    EXPECT_TRUE(q.attributes[1].min.empty());
    EXPECT_TRUE(q.attributes[1].max.empty());
}

TEST(Draco, QuantisationBitsAndSpeedsReachTheEncoder) {
    Mesh m = Grid(24);
    auto maxError = [&](int bits) {
        DracoOptions o;
        o.positionBits = bits;
        const DracoPayload p = CompressMesh(m.data, m.indices, o);
        auto decoded = Decode(p);
        return decoded ? MaxTriangleError(m, *decoded) : INFINITY;
    };
    const double e6 = maxError(6), e14 = maxError(14);
    EXPECT_LE(e6, 1.0f / 63);
    EXPECT_GT(e6, 1.0f / 2047);
    EXPECT_LE(e14, 1.0f / 16383);

    // More bits for one kind of attribute make a longer stream.
    for (int32_t DracoOptions::*bits :
         {&DracoOptions::normalBits, &DracoOptions::colorBits, &DracoOptions::texcoordBits, &DracoOptions::genericBits}) {
        DracoOptions coarse, fine;
        coarse.*bits = 4;
        fine.*bits = 14;
        EXPECT_LT(CompressMesh(m.data, m.indices, coarse).data.size(), CompressMesh(m.data, m.indices, fine).data.size());
    }

    // Fast speeds pick the sequential method; the defaults pick edgebreaker. The method is
    // the byte after "DRACO", the version and the geometry type.
    DracoOptions fast;
    fast.encodeSpeed = 10;
    fast.decodeSpeed = 10;
    const DracoPayload quick = CompressMesh(m.data, m.indices, fast);
    const DracoPayload best = CompressMesh(m.data, m.indices, DracoOptions());
    ASSERT_GT(quick.data.size(), 9u);
    ASSERT_GT(best.data.size(), 9u);
    EXPECT_EQ(quick.data[8], draco::MESH_SEQUENTIAL_ENCODING);
    EXPECT_EQ(best.data[8], draco::MESH_EDGEBREAKER_ENCODING);
}

TEST(Draco, AddedEdgesAttributeIsNotPredicted) {
    // A mesh from elsewhere with an attribute named "added_edges" in its metadata: that
    // attribute gets no prediction, which costs bits on smooth data.
    auto build = [](bool withMetadata) {
        Mesh m = Grid(16);
        auto mesh = std::make_unique<draco::Mesh>();
        mesh->SetNumFaces(m.indices.size() / 3);
        for (size_t f = 0; f < m.indices.size() / 3; ++f)
            mesh->SetFace(draco::FaceIndex(uint32_t(f)),
                          {draco::PointIndex(m.indices[3 * f]), draco::PointIndex(m.indices[3 * f + 1]),
                           draco::PointIndex(m.indices[3 * f + 2])});
        const uint32_t n = uint32_t(m.data.positions.size() / 3);
        mesh->set_num_points(n);
        draco::GeometryAttribute ga;
        ga.Init(draco::GeometryAttribute::GENERIC, nullptr, 3, draco::DT_FLOAT32, false, 12, 0);
        const int id = mesh->AddAttribute(ga, true, n);
        mesh->attribute(id)->buffer()->Write(0, m.data.positions.data(), m.data.positions.size() * 4);
        ga.Init(draco::GeometryAttribute::POSITION, nullptr, 3, draco::DT_FLOAT32, false, 12, 0);
        const int pos = mesh->AddAttribute(ga, true, n);
        mesh->attribute(pos)->buffer()->Write(0, m.data.positions.data(), m.data.positions.size() * 4);
        auto meta = std::make_unique<draco::AttributeMetadata>();
        meta->AddEntryString("name", withMetadata ? "added_edges" : "something_else");
        mesh->AddAttributeMetadata(id, std::move(meta));
        return mesh;
    };
    DracoPayload plain, marked;
    EncodeDracoMesh(*build(false), DracoOptions(), plain);
    EncodeDracoMesh(*build(true), DracoOptions(), marked);
    ASSERT_FALSE(plain.data.empty());
    ASSERT_FALSE(marked.data.empty());
    EXPECT_GT(marked.data.size(), plain.data.size());
}

TEST(Draco, FailedEncodesGiveAnEmptyPayloadWithoutACrash) {
    // The encoder refuses more than 30 bits and indices past the vertices. It crashed on a
    // NaN in any quantised float attribute, on an infinite normal and on a spread beyond the
    // float range; such a mesh now fails like a refused encode: no stream, zero counts,
    // records kept (positions, normals, colours, joints, weights, set 0 and any set 1).
    struct Case {
        void (*spoil)(Mesh&, DracoOptions&);
        size_t records;  // 0: not checked
    };
    const Case cases[] = {
        {[](Mesh&, DracoOptions& o) { o.positionBits = 40; }, 0},
        {[](Mesh& m, DracoOptions&) { m.indices[5] = 9; }, 0},  // one past the last vertex
        {[](Mesh& m, DracoOptions&) { m.data.positions[4] = NAN; }, 6},
        {[](Mesh& m, DracoOptions&) { m.data.normals[7] = INFINITY; }, 6},
        {[](Mesh& m, DracoOptions&) { m.data.colors[2] = NAN; }, 6},
        {[](Mesh& m, DracoOptions&) { m.data.weights[9] = NAN; }, 6},
        {[](Mesh& m, DracoOptions&) { m.data.texCoords[0][3] = NAN; }, 6},
        {[](Mesh& m, DracoOptions&) { m.data.texCoords[1] = m.data.texCoords[0], m.data.texCoords[1][0] = -INFINITY; }, 7},
        // Finite, but largest minus smallest overflows: the quantiser's range is infinite.
        {[](Mesh& m, DracoOptions&) { m.data.positions[0] = -3e38f, m.data.positions[3] = 3e38f; }, 6},
        {[](Mesh& m, DracoOptions&) { m.data.weights[1] = -3e38f, m.data.weights[5] = 3e38f; }, 6},
    };
    for (size_t i = 0; i < std::size(cases); ++i) {
        Mesh m = Grid(2);
        DracoOptions o;
        cases[i].spoil(m, o);
        const DracoPayload p = CompressMesh(m.data, m.indices, o);
        SCOPED_TRACE(i);
        EXPECT_TRUE(p.data.empty());
        EXPECT_EQ(p.vertexCount, 0);
        EXPECT_EQ(p.indexCount, 0);
        if (cases[i].records) {
            EXPECT_EQ(p.attributes.size(), cases[i].records);
        }
    }
}

TEST(Draco, SceneCompressesOnlySuitableInstancesOnce) {
    Scene scene;
    auto* g = new Geometry;
    auto add = [&](auto setup) {
        Mesh m = Grid(2);
        MeshInstance* mi = MakeInstance(scene, m.data, m.indices);
        setup(*mi);
        g->meshInstances.push_back(mi);
        return mi;
    };
    MeshInstance* plain = add([](MeshInstance&) {});
    MeshInstance* morphed = add([&](MeshInstance& mi) { mi.morph = testsupport::New<Morph>(scene); });
    MeshInstance* strip = add([](MeshInstance& mi) { mi.primitiveType = 4; });
    MeshInstance* unindexed = add([](MeshInstance& mi) { mi.indices = nullptr; });
    MeshInstance* done = add([](MeshInstance& mi) { mi.compressed = DracoPayload{1, 2, {7}, {}}; });
    g->meshInstances.push_back(nullptr);
    scene.geometries.Add(g);
    auto* second = new Geometry;
    second->id = 1;
    MeshInstance* other = add([](MeshInstance&) {});
    g->meshInstances.pop_back();
    second->meshInstances.push_back(other);
    scene.geometries.Add(second);

    CompressScene(scene, DracoOptions());
    ASSERT_TRUE(plain->compressed);
    ASSERT_TRUE(other->compressed);
    EXPECT_FALSE(plain->compressed->data.empty());
    EXPECT_TRUE(plain->vertices && plain->indices);  // plain data stays for the other writers
    EXPECT_FALSE(morphed->compressed);
    EXPECT_FALSE(strip->compressed);
    EXPECT_FALSE(unindexed->compressed);
    EXPECT_EQ(done->compressed->data, std::vector<uint8_t>{7});

    const std::vector<uint8_t> first = plain->compressed->data;
    DracoOptions coarse;
    coarse.positionBits = 4;
    CompressScene(scene, coarse);  // a second run leaves every payload as it was
    EXPECT_EQ(plain->compressed->data, first);
}
