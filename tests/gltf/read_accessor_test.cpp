// Accessor reading: conversions per component type, strides, sparse data, bounds.
#include <cstring>
#include <fstream>

#include <sys/stat.h>

#include <draco/point_cloud/point_cloud.h>

#include "gltf/gltf_accessors.h"
#include "gltf/gltf_draco_attributes.h"
#include "gltf/gltf_convert.h"
#include "read_test_util.h"

using namespace gltftest;
using namespace glbfixture;

namespace {

struct Loaded {
    ScratchFolder dir;
    GltfContext context;
    explicit Loaded(const GlbFixture& glb, const std::string& members = "") {
        EXPECT_TRUE(ReadBytes(dir, glb.Build(members), context));
    }
    const GltfAccessor& operator[](size_t i) const { return context.document.accessors[i]; }
};

}  // namespace

TEST(ReadAccessor, NormalisedFloatsPerComponentType) {
    GlbFixture glb;
    glb.AddData(std::vector<int8_t>{-128, -127, 0, 127}, kByte, "SCALAR", true);
    glb.AddData(std::vector<uint8_t>{0, 51, 255, 0}, kUByte, "SCALAR", true);
    glb.AddData(std::vector<int16_t>{-32768, 32767}, kShort, "SCALAR", true);
    glb.AddData(std::vector<uint16_t>{65535, 13107}, kUShort, "SCALAR", true);
    glb.AddData(std::vector<int32_t>{INT32_MIN, INT32_MAX}, kInt, "SCALAR", true);
    glb.AddData(std::vector<uint32_t>{UINT32_MAX, 0}, kUInt, "SCALAR", true);
    glb.AddData(std::vector<float>{2.5f, -7.0f}, kFloat, "SCALAR", true);
    Loaded l(glb);
    // -128 / 127 clamps to -1, not -1.0079.
    EXPECT_EQ(ReadAccessorAsFloat(l[0], l.context), (std::vector<float>{-1.0f, -1.0f, 0.0f, 1.0f}));
    EXPECT_EQ(ReadAccessorAsFloat(l[1], l.context), (std::vector<float>{0.0f, 0.2f, 1.0f, 0.0f}));
    EXPECT_EQ(ReadAccessorAsFloat(l[2], l.context), (std::vector<float>{-1.0f, 1.0f}));
    EXPECT_EQ(ReadAccessorAsFloat(l[3], l.context), (std::vector<float>{1.0f, 0.2f}));
    EXPECT_EQ(ReadAccessorAsFloat(l[4], l.context), (std::vector<float>{-1.0f, 1.0f}));
    EXPECT_EQ(ReadAccessorAsFloat(l[5], l.context), (std::vector<float>{1.0f, 0.0f}));
    EXPECT_EQ(ReadAccessorAsFloat(l[6], l.context), (std::vector<float>{2.5f, -7.0f}));  // plain copy
}

TEST(ReadAccessor, IntegerTargetsCastPlainOrScaleAndClampWhenNormalised) {
    GlbFixture glb;
    glb.AddData(std::vector<int8_t>{-1, 5, 0, 0}, kByte, "SCALAR");
    glb.AddData(std::vector<uint16_t>{65535, 1}, kUShort, "VEC2");
    glb.AddData(std::vector<uint32_t>{65537, 3}, kUInt, "SCALAR");
    glb.AddData(std::vector<int8_t>{-100, 127, 0, 0}, kByte, "SCALAR", true);
    glb.AddData(std::vector<float>{0.5f, 2.0f, -1.0f, 0.25f}, kFloat, "SCALAR", true);
    glb.AddData(std::vector<uint8_t>{255, 0, 0, 0}, kUByte, "SCALAR", true);
    Loaded l(glb);
    EXPECT_EQ(ReadAccessorAsFloat(l[0], l.context), (std::vector<float>{-1, 5, 0, 0}));
    // A negative byte sign-extends into the index.
    EXPECT_EQ(ReadAccessorAsIndex(l[0], l.context), (std::vector<uint32_t>{0xFFFFFFFFu, 5, 0, 0}));
    EXPECT_EQ(ReadAccessorAsIndex(l[1], l.context), (std::vector<uint32_t>{65535, 1}));
    EXPECT_EQ(ReadAccessorAsJoint(l[2], l.context), (std::vector<uint16_t>{1, 3}));  // low bits
    EXPECT_EQ(ReadAccessorAsIndex(l[2], l.context), (std::vector<uint32_t>{65537, 3}));
    EXPECT_EQ(ReadAccessorAsJoint(l[3], l.context), (std::vector<uint16_t>{0, 65535, 0, 0}));
    // A float source honours the flag with divisor 1: 0.5 * 65535 truncates to 32767.
    EXPECT_EQ(ReadAccessorAsJoint(l[4], l.context), (std::vector<uint16_t>{32767, 65535, 0, 16383}));
    EXPECT_EQ(ReadAccessorAsIndex(l[5], l.context), (std::vector<uint32_t>{4294967295u, 0, 0, 0}));
}

TEST(ReadAccessor, StridesAndInterleavedViews) {
    // Eight floats per vertex (stride 32); the accessor starts 12 bytes into each element.
    std::vector<float> interleaved;
    for (int v = 0; v < 3; ++v)
        for (int k = 0; k < 8; ++k) interleaved.push_back(float(v * 10 + k));
    GlbFixture glb;
    const int view = glb.AddViewOf(interleaved, 32);
    glb.AddAccessor(view, 12, kFloat, 3, "VEC2");
    const int packed = glb.AddViewOf(std::vector<float>{1, 2, 3, 4});
    const int strided = glb.AddViewOf(std::vector<float>{1, 2, 3, 4}, 8);
    glb.AddAccessor(packed, 0, kFloat, 2, "VEC2");
    glb.AddAccessor(strided, 0, kFloat, 2, "VEC2");
    const int narrow = glb.AddViewOf(std::vector<float>{1, 2, 3, 4, 5}, 4);
    glb.AddAccessor(narrow, 0, kFloat, 3, "VEC3");
    glb.AddAccessor(narrow, 0, kFloat, 4, "VEC3");
    Loaded l(glb);
    EXPECT_EQ(ReadAccessorAsFloat(l[0], l.context), (std::vector<float>{3, 4, 13, 14, 23, 24}));
    EXPECT_EQ(ReadAccessorAsFloat(l[1], l.context), ReadAccessorAsFloat(l[2], l.context));
    // A stride narrower than the element: element i starts 4 i bytes in, so neighbours share two
    // floats; the third ends at byte 20 of the 20-byte view, a fourth would leave the buffer.
    EXPECT_EQ(ReadAccessorAsFloat(l[3], l.context), (std::vector<float>{1, 2, 3, 2, 3, 4, 3, 4, 5}));
    EXPECT_THROW(ReadAccessorAsFloat(l[4], l.context), GltfError);
}

TEST(ReadAccessor, ColourIsAlwaysNormalisedByName) {
    GlbFixture glb;
    const int colours = glb.AddData(std::vector<uint8_t>{255, 51, 0, 255}, kUByte, "VEC4");
    const int other = glb.AddData(std::vector<uint8_t>{255, 51, 0, 255}, kUByte, "VEC4");
    Loaded l(glb);
    const GltfAttributeMap map = {{"COLOR_0", colours}, {"COLOR_1", other}};
    EXPECT_EQ(ReadAttribute("COLOR_0", map, l.context), (std::vector<float>{1.0f, 0.2f, 0.0f, 1.0f}));
    EXPECT_EQ(ReadAttribute("COLOR_1", map, l.context), (std::vector<float>{255, 51, 0, 255}));
    EXPECT_TRUE(ReadAttribute("NORMAL", map, l.context).empty());
}

TEST(ReadAccessor, SparseValuesComeFromPositionCompsPlusIPlusC) {
    GlbFixture glb;
    const int base = glb.AddViewOf(std::vector<float>(12, 0.0f));
    const int indices = glb.AddViewOf(std::vector<uint16_t>{0, 2, 3, 0});
    std::vector<float> values(9);
    for (int i = 0; i < 9; ++i) values[size_t(i)] = float(100 + i);
    const int valueView = glb.AddViewOf(values);
    const std::string sparse = ",\"sparse\":{\"count\":3,\"indices\":{\"bufferView\":" + std::to_string(indices) +
                               ",\"componentType\":5123},\"values\":{\"bufferView\":" + std::to_string(valueView) + "}}";
    glb.AddAccessor(base, 0, kFloat, 4, "VEC3", false, sparse);
    glb.AddAccessor(-1, 0, kFloat, 4, "VEC3", false, sparse);
    Loaded l(glb);
    // Entry i takes values 3 + i + c: (103,104,105), (104,105,106), (105,106,107).
    EXPECT_EQ(ReadAccessorAsFloat(l[0], l.context),
              (std::vector<float>{103, 104, 105, 0, 0, 0, 104, 105, 106, 105, 106, 107}));
    // Sparse data without a base view gives nothing.
    EXPECT_TRUE(ReadAccessorAsFloat(l[1], l.context).empty());
}

TEST(ReadAccessor, SparseDropsNormalisationAndScalarListsAreRefused) {
    GlbFixture glb;
    const int base = glb.AddViewOf(std::vector<uint8_t>{1, 2, 3, 4, 5, 6, 7, 8});
    const int indices = glb.AddViewOf(std::vector<uint8_t>{0, 1, 3, 0});
    const int valueView = glb.AddViewOf(std::vector<uint8_t>{10, 20, 30, 40, 50, 60, 0, 0});
    auto sparse = [&](int count) {
        return ",\"sparse\":{\"count\":" + std::to_string(count) + ",\"indices\":{\"bufferView\":" +
               std::to_string(indices) + ",\"componentType\":5121},\"values\":{\"bufferView\":" +
               std::to_string(valueView) + "}}";
    };
    glb.AddAccessor(base, 0, kUByte, 4, "VEC2", true, sparse(3));
    glb.AddAccessor(base, 0, kUByte, 8, "SCALAR", false, sparse(2));
    glb.AddAccessor(base, 0, kUByte, 4, "VEC2", false, sparse(2));
    Loaded l(glb);
    // Entry i of a VEC2 list takes values 2 + i + c; neither base nor values are normalised.
    EXPECT_EQ(ReadAccessorAsFloat(l[0], l.context), (std::vector<float>{30, 40, 40, 50, 5, 6, 50, 60}));
    // n scalars need value position n of n values; two VEC2 entries need position 4 of 4.
    EXPECT_THROW(ReadAccessorAsFloat(l[1], l.context), GltfError);
    EXPECT_THROW(ReadAccessorAsFloat(l[2], l.context), GltfError);
}

TEST(ReadAccessor, ReadsOutsideTheBufferAreRefused) {
    GlbFixture glb;
    const int view = glb.AddViewOf(std::vector<float>{1, 2, 3, 4, 5, 6});  // last in the buffer
    glb.AddAccessor(view, 0, kFloat, 2, "VEC3");  // exactly fits
    glb.AddAccessor(view, 4, kFloat, 2, "VEC3");  // one float too far
    glb.AddAccessor(7, 0, kFloat, 1, "SCALAR");   // no such view
    glb.AddAccessor(view, 0, kFloat, 0, "VEC3");  // nothing to read
    Loaded l(glb);
    EXPECT_EQ(ReadAccessorAsFloat(l[0], l.context).size(), 6u);
    EXPECT_THROW(ReadAccessorAsFloat(l[1], l.context), GltfError);
    EXPECT_THROW(ReadAccessorAsFloat(l[2], l.context), GltfError);
    EXPECT_TRUE(ReadAccessorAsFloat(l[3], l.context).empty());
    EXPECT_THROW(AccessorAt(l.context, 4), GltfError);
    EXPECT_THROW(AccessorAt(l.context, -1), GltfError);
}

TEST(ReadAccessor, TextGltfReadsExternalAndDataUriBuffers) {
    ScratchFolder dir;
    const float external[3] = {4.0f, 5.0f, 6.0f};
    {
        std::ofstream out(dir.File("ext data.bin"), std::ios::binary);
        out.write(reinterpret_cast<const char*>(external), sizeof external);
    }
    // base64 of the floats 1, 2, 3 (little-endian).
    const std::string json = R"({"buffers":[{"uri":"data:application/octet-stream;base64,AACAPwAAAEAAAEBA","byteLength":12},
        {"uri":"ext%20data.bin","byteLength":12}],
        "bufferViews":[{"buffer":0,"byteLength":12},{"buffer":1,"byteLength":12}],
        "accessors":[{"bufferView":0,"componentType":5126,"count":3,"type":"SCALAR"},
                     {"bufferView":1,"componentType":5126,"count":1,"type":"VEC3"}],
        "meshes":[{"primitives":[{"attributes":{"POSITION":1,"TEXCOORD_0":0}}]}],
        "nodes":[{"mesh":0}]})";
    GltfContext context;
    ASSERT_TRUE(ReadBytes(dir, Text(json), context, "scene.gltf"));
    EXPECT_EQ(ReadAccessorAsFloat(context.document.accessors[0], context), (std::vector<float>{1, 2, 3}));
    EXPECT_EQ(ReadAccessorAsFloat(context.document.accessors[1], context), (std::vector<float>{4, 5, 6}));

    // A missing external file is refused, not a crash; only a plain file is read as a buffer:
    // a folder or a pipe is refused before it is opened.
    std::filesystem::create_directories(dir.File("folder.bin"));
    ASSERT_EQ(mkfifo(dir.File("pipe.bin").c_str(), 0600), 0);
    for (const char* uri : {"nope.bin", "folder.bin", "pipe.bin"}) {
        const std::string special = R"({"buffers":[{"uri":")" + std::string(uri) + R"("}],
            "bufferViews":[{"buffer":0,"byteLength":4}],
            "accessors":[{"bufferView":0,"componentType":5126,"count":1,"type":"SCALAR"}]})";
        GltfContext context;
        ASSERT_TRUE(ReadBytes(dir, Text(special), context, "special.gltf"));
        EXPECT_THROW(ReadAccessorAsFloat(context.document.accessors[0], context), GltfError) << uri;
    }
}

TEST(ReadAccessor, SixtyFourBitDracoSourcesUseTheirFactors) {
    // Draco's 64-bit types scale by 2^-63 and 2^-64 rather than dividing.
    EXPECT_EQ((gltfconvert::Convert<float, int64_t>(INT64_MIN, true)), -1.0f);
    EXPECT_EQ((gltfconvert::Convert<float, int64_t>(int64_t(1) << 62, true)), 0.5f);
    EXPECT_EQ((gltfconvert::Convert<float, uint64_t>(uint64_t(1) << 63, true)), 0.5f);
    EXPECT_EQ((gltfconvert::Convert<uint16_t, uint64_t>(uint64_t(1) << 63, true)), 32767);
    EXPECT_EQ((gltfconvert::Convert<uint16_t, double>(70000.5, false)), uint16_t(70000));
    EXPECT_EQ((gltfconvert::Convert<uint16_t, float>(std::nanf(""), true)), 0);
}

TEST(ReadAccessor, GlbViewsAlwaysAddressTheBinaryChunk) {
    // Neither the view's buffer index nor that buffer's "uri" moves a view off the chunk.
    ScratchFolder dir;
    const float data[2] = {1.5f, -2.0f};
    std::vector<uint8_t> chunk(sizeof data);
    std::memcpy(chunk.data(), data, sizeof data);
    const std::string json = R"({"buffers":[{"byteLength":8},{"uri":"missing.bin","byteLength":8}],
        "bufferViews":[{"buffer":1,"byteLength":8},{"byteLength":8},{"buffer":9,"byteLength":8}],
        "accessors":[{"bufferView":0,"componentType":5126,"count":2,"type":"SCALAR"},
                     {"bufferView":1,"componentType":5126,"count":2,"type":"SCALAR"},
                     {"bufferView":2,"componentType":5126,"count":1,"type":"VEC2"}]})";
    GltfContext context;
    ASSERT_TRUE(ReadBytes(dir, MakeGlb(json, chunk), context));
    for (const GltfAccessor& accessor : context.document.accessors)
        EXPECT_EQ(ReadAccessorAsFloat(accessor, context), (std::vector<float>{1.5f, -2.0f}));
}

TEST(ReadDracoAttribute, ExplicitMapPicksTheValueOfEachPoint) {
    // Two stored values shared by four points through an explicit map.
    draco::PointCloud cloud;
    cloud.set_num_points(4);
    draco::GeometryAttribute position;
    position.Init(draco::GeometryAttribute::POSITION, nullptr, 2, draco::DT_INT16, false, 4, 0);
    const int id = cloud.AddAttribute(position, false, 2);
    draco::PointAttribute* attribute = cloud.attribute(id);
    const int16_t values[4] = {-32768, 7, 100, -1};
    attribute->buffer()->Write(0, values, sizeof values);
    const uint32_t map[4] = {1, 0, 0, 1};
    for (uint32_t p = 0; p < 4; ++p) attribute->SetPointMapEntry(draco::PointIndex(p), draco::AttributeValueIndex(map[p]));
    const GltfAttributeMap names = {{"POSITION", int32_t(attribute->unique_id())}};
    EXPECT_EQ(ReadDracoAttributeAsFloat("POSITION", names, cloud),
              (std::vector<float>{100, -1, -32768, 7, -32768, 7, 100, -1}));
    EXPECT_EQ(ReadDracoAttributeAsJoint("POSITION", names, cloud),
              (std::vector<uint16_t>{100, 65535, 32768, 7, 32768, 7, 100, 65535}));
    EXPECT_TRUE(ReadDracoAttributeAsFloat("NORMAL", names, cloud).empty());

    // More points than the map holds entries for is refused, not read past the map.
    cloud.set_num_points(5);
    EXPECT_THROW(ReadDracoAttributeAsFloat("POSITION", names, cloud), GltfError);
}
