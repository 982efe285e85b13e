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
#include "text_table.h"

namespace {

std::unique_ptr<draco::Mesh> Decode(const DracoPayload& payload) {
    draco::DecoderBuffer buffer;
    buffer.Init(reinterpret_cast<const char*>(payload.data.data()), payload.data.size());
    auto result = draco::Decoder().DecodeMeshFromBuffer(&buffer);
    return result.ok() ? std::move(result).value() : nullptr;
}

// Values of point p of an attribute, as floats.
std::vector<float> PointValue(const draco::PointAttribute& att, uint32_t p) {
    std::vector<float> v(att.num_components());
    att.ConvertValue<float>(att.mapped_index(draco::PointIndex(p)), att.num_components(), v.data());
    return v;
}

// Largest distance between a decoded triangle's corners and the best-matching original.
double MaxTriangleError(const TestMesh& original, const DracoPayload& payload) {
    const auto mesh = Decode(payload);
    if (!mesh) return INFINITY;
    TestMesh decoded;
    const draco::PointAttribute* pos = mesh->GetNamedAttribute(draco::GeometryAttribute::POSITION);
    for (uint32_t p = 0; p < mesh->num_points(); ++p)
        for (float v : PointValue(*pos, p)) decoded.data.positions.push_back(v);
    for (uint32_t f = 0; f < mesh->num_faces(); ++f)
        for (int k = 0; k < 3; ++k) decoded.indices.push_back(mesh->face(draco::FaceIndex(f))[k].value());
    return TriangleMismatch(original.data, original.indices, decoded.data, decoded.indices, 1.0);
}

// A grid with every attribute: UVs and colours from x and z, weights x^2 and 1 - x^2,
// joints v % 5 and v % 3 + 10.
TestMesh Grid(uint32_t n) {
    TestMesh m = GridMesh(n);
    for (size_t v = 0; v < m.data.positions.size() / 3; ++v) {
        const float x = m.data.positions[3 * v], z = m.data.positions[3 * v + 2];
        m.data.texCoords[0].insert(m.data.texCoords[0].end(), {x, z});
        m.data.colors.insert(m.data.colors.end(), {x, z, 0.5f * x * z, 1.0f});
        m.data.weights.insert(m.data.weights.end(), {x * x, 1.0f - x * x, 0.0f, 0.0f});
        m.data.joints.insert(m.data.joints.end(), {uint16_t(v % 5), uint16_t(v % 3 + 10), 0, 0});
    }
    return m;
}

DracoPayload Compress(const TestMesh& m, const DracoOptions& options = DracoOptions()) {
    return CompressMesh(m.data, m.indices, options);
}

}  // namespace

TEST(Draco, MeshesDecodeToSameFacesWithinQuantisation) {
    // Each mesh spans 1 unit: b position bits give steps of 1/(2^b - 1), 11 by default. The
    // cube repeats positions with other normals, the cylinder's seam repeats whole vertices.
    const struct {
        TestMesh mesh;
        int bits;
        double most, least;
    } rows[] = {{CubeMesh(), 11, 1.0 / 2047, -1}, {CylinderMesh(32), 11, 1.0 / 2047, -1}, {Grid(6), 11, 1.0 / 2047, -1},
                {Grid(24), 6, 1.0 / 63, 1.0 / 2047}, {Grid(24), 14, 1.0 / 16383, -1}};
    for (const auto& [m, bits, most, least] : rows) {
        DracoOptions o;
        o.positionBits = bits;
        const DracoPayload p = Compress(m, o);
        const double error = MaxTriangleError(m, p);  // infinite unless as many faces
        EXPECT_LE(error, most) << bits;
        EXPECT_GT(error, least) << bits;
        EXPECT_EQ(p.indexCount, int32_t(m.indices.size()));
        const auto decoded = Decode(p);
        EXPECT_EQ(p.vertexCount, decoded ? int32_t(decoded->num_points()) : -1);
    }
}

TEST(Draco, AttributeRecordsFollowFixedOrderAndOffsetsAndTheSkinDecodes) {
    TestMesh m = Grid(6);
    m.data.normals.clear();  // a missing attribute leaves no record and no gap
    m.data.texCoords[2] = m.data.texCoords[0];
    m.data.texCoords[3] = {0.5f};  // shorter than one vertex: a record without bounds
    const DracoPayload p = Compress(m);
    const auto decoded = Decode(p);
    ASSERT_TRUE(decoded);

    // semantic, component type, components, normalized, byte offset
    using Record = std::tuple<int32_t, int32_t, int32_t, uint8_t, uint32_t>;
    const Record expected[] = {{0, 0, 3, 0, 0},  {4, 0, 4, 1, 12}, {5, 5, 4, 0, 28}, {6, 0, 4, 0, 36},
                               {7, 0, 2, 0, 52}, {9, 0, 2, 0, 60}, {10, 0, 2, 0, 68}};
    ASSERT_EQ(p.attributes.size(), std::size(expected));
    for (size_t i = 0; i < p.attributes.size(); ++i) {
        const DracoAttributeInfo& a = p.attributes[i];
        SCOPED_TRACE(i);
        EXPECT_EQ(Record(a.semantic, a.componentType, a.components, a.normalized, a.byteOffset), expected[i]);
        // The id is what a reader looks the decoded attribute up by.
        const draco::PointAttribute* att = decoded->GetAttributeByUniqueId(uint32_t(a.attributeId));
        ASSERT_TRUE(att);
        EXPECT_EQ(att->num_components(), a.components);
    }
    EXPECT_TRUE(p.attributes[6].min.empty() && p.attributes[6].max.empty());
    // Bounds from the plain data. Positions: x and z over 0..1; y = 0.1 sin(3x) cos(2z) with
    // x, z in sixths, where sin(3x) >= 0 peaks at x = 1/2 and cos(2z) runs from 1 (z = 0)
    // down to cos 2 (z = 1). Joints: v % 5 and v % 3 + 10.
    EXPECT_EQ(p.attributes[0].min, (std::vector<float>{0, 0.1f * std::sin(1.5f) * std::cos(2.0f), 0}));
    EXPECT_EQ(p.attributes[0].max, (std::vector<float>{1, 0.1f * std::sin(1.5f) * std::cos(0.0f), 1}));
    EXPECT_EQ(p.attributes[2].min, (std::vector<float>{0, 10, 0, 0}));
    EXPECT_EQ(p.attributes[2].max, (std::vector<float>{4, 12, 0, 0}));

    // Find each decoded point's source vertex by its x, z (a grid has unique ones) and
    // compare the skin data: joints exactly (as 16-bit integers), weights within 8 bits.
    const draco::PointAttribute* pos = decoded->GetAttributeByUniqueId(uint32_t(p.attributes[0].attributeId));
    const draco::PointAttribute* joints = decoded->GetAttributeByUniqueId(uint32_t(p.attributes[2].attributeId));
    const draco::PointAttribute* weights = decoded->GetAttributeByUniqueId(uint32_t(p.attributes[3].attributeId));
    EXPECT_EQ(joints->data_type(), draco::DT_UINT16);
    for (uint32_t i = 0; i < decoded->num_points(); ++i) {
        const auto xyz = PointValue(*pos, i);
        const uint32_t v = uint32_t(std::lround(xyz[2] * 6)) * 7 + uint32_t(std::lround(xyz[0] * 6));
        EXPECT_EQ(PointValue(*joints, i), (std::vector<float>{float(v % 5), float(v % 3 + 10), 0, 0}));
        const auto w = PointValue(*weights, i);
        EXPECT_NEAR(w[0], m.data.weights[4 * v], 1.0 / 255);
        EXPECT_NEAR(w[1], m.data.weights[4 * v + 1], 1.0 / 255);
    }
}

TEST(Draco, AttributeBitsAndSpeedsReachTheEncoder) {
    const TestMesh m = Grid(24);
    // More bits for one kind of attribute make a longer stream.
    for (int32_t DracoOptions::*bits :
         {&DracoOptions::normalBits, &DracoOptions::colorBits, &DracoOptions::texcoordBits, &DracoOptions::genericBits}) {
        DracoOptions coarse, fine;
        coarse.*bits = 4;
        fine.*bits = 14;
        EXPECT_LT(Compress(m, coarse).data.size(), Compress(m, fine).data.size());
    }

    // Fast speeds pick the sequential method; the defaults pick edgebreaker. The method is
    // the byte after "DRACO", the version and the geometry type.
    DracoOptions fast;
    fast.encodeSpeed = 10;
    fast.decodeSpeed = 10;
    const DracoPayload quick = Compress(m, fast), best = Compress(m);
    ASSERT_TRUE(quick.data.size() > 9 && best.data.size() > 9);
    EXPECT_EQ(quick.data[8], draco::MESH_SEQUENTIAL_ENCODING);
    EXPECT_EQ(best.data[8], draco::MESH_EDGEBREAKER_ENCODING);
}

TEST(Draco, AddedEdgesAttributeIsNotPredicted) {
    // A mesh from elsewhere with an attribute named "added_edges" in its metadata: that
    // attribute gets no prediction, which costs bits on smooth data (the grid's weights).
    auto encoded = [](const char* name) {
        const DracoPayload source = Compress(Grid(16));
        const auto mesh = Decode(source);
        auto meta = std::make_unique<draco::AttributeMetadata>();
        meta->AddEntryString("name", name);
        mesh->AddAttributeMetadata(mesh->GetAttributeIdByUniqueId(uint32_t(source.attributes[4].attributeId)),
                                   std::move(meta));
        DracoPayload p;
        EncodeDracoMesh(*mesh, DracoOptions(), p);
        return p.data.size();
    };
    const size_t plain = encoded("something_else");
    EXPECT_GT(plain, 0u);
    EXPECT_GT(encoded("added_edges"), plain);
}

class DracoRefusal : public testing::TestWithParam<testsupport::TableRow> {};

TEST_P(DracoRefusal, GivesAnEmptyPayloadWithoutACrash) {
    const testsupport::TableRow& row = GetParam();
    TestMesh m = Grid(2);
    DracoOptions o;
    const std::string field = row.Text(1);
    const std::vector<std::string> places = row.Items(2), values = row.Items(3);
    for (size_t i = 0; i < places.size(); ++i) {
        const size_t at = size_t(std::stoul(places[i]));
        const double value = testsupport::Number(values[i]);
        if (field == "positionBits") o.positionBits = int32_t(value);
        if (field == "indices") m.indices[at] = uint32_t(value);
        if (field == "texCoords1") m.data.texCoords[1] = m.data.texCoords[0];
        VertexData& d = m.data;
        for (auto [name, list] : {std::pair{"positions", &d.positions}, {"normals", &d.normals}, {"colors", &d.colors},
                                  {"weights", &d.weights}, {"texCoords0", &d.texCoords[0]}, {"texCoords1", &d.texCoords[1]}})
            if (field == name) (*list)[at] = float(value);
    }
    const DracoPayload p = Compress(m, o);
    EXPECT_TRUE(p.data.empty() && p.vertexCount == 0 && p.indexCount == 0);
    EXPECT_TRUE(!row.Int(4) || p.attributes.size() == size_t(row.Int(4))) << p.attributes.size();
}

INSTANTIATE_TEST_SUITE_P(Draco, DracoRefusal,
                         testing::ValuesIn(testsupport::ReadTable(VURL_SOURCE_DIR "/tests/meshpost/data/draco_refusals.txt")),
                         testsupport::RowName);

TEST(Draco, SceneCompressesOnlySuitableInstancesOnce) {
    // Instances 0-4 (and a null one) in one geometry, 5 in another: only the plain ones get
    // a payload; a morphed, strip, unindexed or already compressed instance does not.
    Scene scene;
    Geometry* geometries[2] = {testsupport::NewGeometry(scene, "", 0), testsupport::NewGeometry(scene, "", 1)};
    const TestMesh m = Grid(2);
    std::vector<MeshInstance*> mis;
    for (int i = 0; i < 6; ++i)
        mis.push_back(testsupport::NewInstance(scene, *geometries[i / 5], testsupport::New<VertexData>(scene, m.data), m.indices));
    geometries[0]->meshInstances.push_back(nullptr);
    mis[1]->morph = testsupport::New<Morph>(scene);
    mis[2]->primitiveType = 4;
    mis[3]->indices = nullptr;
    mis[4]->compressed = DracoPayload{1, 2, {7}, {}};

    CompressScene(scene, DracoOptions());
    for (int i = 0; i < 6; ++i) EXPECT_EQ(bool(mis[i]->compressed), i == 0 || i >= 4) << i;
    EXPECT_FALSE(mis[0]->compressed->data.empty());
    EXPECT_FALSE(mis[5]->compressed->data.empty());
    EXPECT_TRUE(mis[0]->vertices && mis[0]->indices);  // plain data stays for the other writers
    EXPECT_EQ(mis[4]->compressed->data, std::vector<uint8_t>{7});

    const std::vector<uint8_t> first = mis[0]->compressed->data;
    DracoOptions coarse;
    coarse.positionBits = 4;
    CompressScene(scene, coarse);  // a second run leaves every payload as it was
    EXPECT_EQ(mis[0]->compressed->data, first);
}
