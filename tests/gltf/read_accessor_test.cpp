// Accessor reading beyond the cases of data/read_accessor.json: colour by name, missing
// accessors, buffers of a text .gltf, Draco sources.
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

TEST(ReadAccessor, ColourIsAlwaysNormalisedByNameAndMissingAccessorsAreRefused) {
    GlbFixture glb;
    const int colours = glb.AddData(std::vector<uint8_t>{255, 51, 0, 255}, kUByte, "VEC4");
    const int other = glb.AddData(std::vector<uint8_t>{255, 51, 0, 255}, kUByte, "VEC4");
    ScratchFolder dir;
    GltfContext context;
    ASSERT_TRUE(ReadBytes(dir, glb.Build(""), context));
    const GltfAttributeMap map = {{"COLOR_0", colours}, {"COLOR_1", other}};
    EXPECT_EQ(ReadAttribute("COLOR_0", map, context), (std::vector<float>{1.0f, 0.2f, 0.0f, 1.0f}));
    EXPECT_EQ(ReadAttribute("COLOR_1", map, context), (std::vector<float>{255, 51, 0, 255}));
    EXPECT_TRUE(ReadAttribute("NORMAL", map, context).empty());
    EXPECT_THROW(AccessorAt(context, 2), GltfError);
    EXPECT_THROW(AccessorAt(context, -1), GltfError);
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
        GltfContext specialContext;
        ASSERT_TRUE(ReadBytes(dir, Text(special), specialContext, "special.gltf"));
        EXPECT_THROW(ReadAccessorAsFloat(specialContext.document.accessors[0], specialContext), GltfError) << uri;
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
