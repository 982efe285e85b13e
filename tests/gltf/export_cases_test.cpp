// Written GLB files of the scenes described in data/export_cases.json: each case is
//   {"case": name, "why": reasons, "scene": {...}, "options": {...}, "chunk": stem,
//    "bin": ["u16 0 1 2", "pad", "f32 ...", "t16 x y z" (a translation matrix)], "binAt": offset,
//    "stdout": text}
// The JSON chunk equals data/<chunk>.json when one is named, and holds the pieces that
// export_fragments.txt lists for the case; the bytes of "bin" are the binary chunk (from
// "binAt" when given, else all of it).
#include <gtest/gtest.h>

#include <cfloat>
#include <cmath>
#include <sstream>

#include "file_contents.h"
#include "gltf_case.h"
#include "text_table.h"
#include "gltf/glb_vertex_export.h"
#include "write_test_support.h"

namespace {
using Json = rapidjson::Value;

float Float(const Json& v) { return v.IsString() ? std::nanf("") : v.GetFloat(); }  // "nan"

template <typename T = float>
std::vector<T> List(const Json& object, const char* member) {
    std::vector<T> out;
    if (object.HasMember(member))
        for (const Json& v : object[member].GetArray()) out.push_back(static_cast<T>(Float(v)));
    return out;
}

Vec3 Vec(const Json& object, const char* member, Vec3 fallback) {
    if (!object.HasMember(member)) return fallback;
    const auto xyz = List(object, member);
    return Vec3(xyz[0], xyz[1], xyz[2]);
}

Mat4 Translation(const Vec3& t) {
    Mat4 m;
    m[12] = t.x, m[13] = t.y, m[14] = t.z;
    return m;
}

// A channel's keys: "times", "interpolation", "values", "in", "out" (lists of records).
template <typename Channel, typename Record>
void ReadChannel(const Json& track, const char* member, Channel& c, Record (*record)(const std::vector<float>&)) {
    if (!track.HasMember(member)) return;
    const Json& j = track[member];
    c.interpolation = j.HasMember("interpolation") ? j["interpolation"].GetInt() : 0;
    c.times = List(j, "times");
    using Keys = std::pair<const char*, decltype(&c.values)>;
    for (auto [name, list] : {Keys{"in", &c.inTangents}, Keys{"values", &c.values}, Keys{"out", &c.outTangents}})
        if (j.HasMember(name))
            for (const Json& r : j[name].GetArray()) {
                std::vector<float> numbers;
                for (const Json& v : r.GetArray()) numbers.push_back(Float(v));
                list->push_back(record(numbers));
            }
}
Vec3 AsVec3(const std::vector<float>& f) { return Vec3(f[0], f[1], f[2]); }
Quat AsQuat(const std::vector<float>& f) { return Quat(f[0], f[1], f[2], f[3]); }
std::vector<float> AsList(const std::vector<float>& f) { return f; }

Json::ConstArray Items(const Json& object, const char* member) {
    static const Json kNone(rapidjson::kArrayType);
    return (object.HasMember(member) ? object[member] : kNone).GetArray();
}

void ReadVertices(const Json& j, VertexData& v) {
    v.positions = List(j, "positions"), v.normals = List(j, "normals"), v.colors = List(j, "colors");
    v.joints = List<uint16_t>(j, "joints"), v.weights = List(j, "weights");
    for (int set = 0; set < 8; ++set) v.texCoords[set] = List(j, ("uv" + std::to_string(set)).c_str());
}

class SceneReader {
public:
    explicit SceneReader(Scene& scene) : scene_(scene) {}

    void Read(const Json& s) {
        for (const Json& j : Items(s, "vertices")) ReadVertices(j, *vertices_.emplace_back(New<VertexData>(scene_)));
        for (const Json& j : Items(s, "skins")) {
            Skin* skin = New<Skin>(scene_);
            skin->joints = List<int64_t>(j, "joints");
            for (const Json& t : j["translations"].GetArray())
                skin->inverseBindMatrices.push_back(Translation(Vec3(Float(t[0]), Float(t[1]), Float(t[2]))));
            skins_.push_back(skin);
        }
        for (const Json& j : Items(s, "geometries")) {
            Geometry* g = NewGeometry(scene_, j["name"].GetString(), j["id"].GetUint64());
            for (const Json& i : Items(j, "instances")) ReadInstance(i, *g);
            geometries_.push_back(g);
        }
        if (s.HasMember("root")) scene_.root = ReadNode(s["root"], nullptr);
        for (const Json& j : Items(s, "animations")) {
            Animation* a = new Animation;
            a->name = j["name"].GetString();
            scene_.AddAnimation(a);
            for (const Json& t : Items(j, "tracks")) {
                AnimationTrack& track = a->tracks.emplace_back();
                track.nodeId = t["node"].GetUint64();
                ReadChannel(t, "position", track.position, AsVec3), ReadChannel(t, "rotation", track.rotation, AsVec3);
                ReadChannel(t, "rotationQuat", track.rotationQuat, AsQuat), ReadChannel(t, "scale", track.scale, AsVec3);
                ReadChannel(t, "weights", track.weights, AsList);
            }
        }
    }

private:
    static int Index(const Json& object, const char* member) { return object.HasMember(member) ? object[member].GetInt() : -1; }

    void ReadInstance(const Json& j, Geometry& g) {
        const int v = Index(j, "vertices");
        MeshInstance* mi = NewInstance(scene_, g, v < 0 ? nullptr : vertices_[size_t(v)]);
        if (j.HasMember("indices")) mi->indices = New<std::vector<uint32_t>>(scene_, List<uint32_t>(j, "indices"));
        if (j.HasMember("type")) mi->primitiveType = j["type"].GetUint();
        if (Index(j, "skin") >= 0) mi->skin = skins_[size_t(j["skin"].GetInt())];
        if (j.HasMember("targets")) mi->morph = New<Morph>(scene_);
        for (const Json& t : Items(j, "targets")) {
            const std::vector<float> deltas = List(t, "positions");
            MorphTarget* target = New<MorphTarget>(scene_, uint32_t(deltas.size() / 3));
            target->deltaPositions = deltas;
            if (t.HasMember("name")) target->name = t["name"].GetString();
            if (t.HasMember("weight")) target->defaultWeight = t["weight"].GetFloat();
            Compact(*target, FLT_EPSILON);
            mi->morph->targets.push_back(target);
        }
        if (!j.HasMember("draco")) return;
        const Json& d = j["draco"];
        DracoPayload& payload = mi->compressed.emplace();
        payload.vertexCount = d["vertexCount"].GetInt(), payload.indexCount = d["indexCount"].GetInt();
        payload.data = List<uint8_t>(d, "data");
        // semantic, componentType, components, normalized, byteOffset, attributeId, min, max
        for (const Json& a : d["attributes"].GetArray())
            payload.attributes.push_back({a[0].GetInt(), a[1].GetInt(), a[2].GetInt(), uint8_t(a[3].GetInt()), a[4].GetUint(),
                                          a[5].GetInt(), List(a[6], "min"), List(a[6], "max")});
    }

    GraphNode* ReadNode(const Json& j, GraphNode* parent) {
        GraphNode* node = NewNode(j["name"].GetString(), j["id"].GetUint64(), parent);
        node->position = Vec(j, "position", node->position);
        node->rotation = Vec(j, "rotation", node->rotation);
        node->scale = Vec(j, "scale", node->scale);
        if (Index(j, "geometry") >= 0) node->geometry = geometries_[size_t(j["geometry"].GetInt())];
        for (const Json& child : Items(j, "children")) ReadNode(child, node);
        return node;
    }

    Scene& scene_;
    std::vector<VertexData*> vertices_;
    std::vector<Skin*> skins_;
    std::vector<Geometry*> geometries_;
};

// Little-endian bytes of items "u8|u16|u32|f32 numbers...", "t16 x y z" and "pad".
std::vector<uint8_t> Bytes(const Json& items) {
    std::vector<uint8_t> out;
    for (const Json& item : items.GetArray()) {
        std::istringstream in(item.GetString());
        std::string type;
        in >> type;
        if (type == "pad") PadTo4(out);
        for (double v; in >> v;) {
            if (type == "u8") PutBytes<uint8_t>(out, {uint8_t(v)});
            if (type == "u16") PutBytes<uint16_t>(out, {uint16_t(v)});
            if (type == "u32") PutBytes<uint32_t>(out, {uint32_t(v)});
            if (type == "f32") PutBytes<float>(out, {float(v)});
        }
        if (type == "t16") {
            float x, y, z;
            std::istringstream(item.GetString() + 4) >> x >> y >> z;
            for (float f : Translation(Vec3(x, y, z)).m) PutBytes<float>(out, {f});
        }
    }
    return out;
}

class ExportCase : public testing::TestWithParam<gltftest::Case> {};

TEST_P(ExportCase, WritesTheCheckedChunks) {
    rapidjson::Document c;
    c.Parse(GetParam().json.c_str());
    Scene scene;
    SceneReader(scene).Read(c["scene"]);
    ExportOptions options;
    options.exportModel = !c.HasMember("options") || !c["options"].HasMember("animations");
    if (c.HasMember("options")) {
        const Json& o = c["options"];
        if (o.HasMember("model")) options.exportModel = o["model"].GetBool();
        if (o.HasMember("version")) options.version = o["version"].GetString();
        for (const Json& take : Items(o, "animations")) options.animations.insert(take.GetString());
    }
    testing::internal::CaptureStdout();
    const GlbParts glb = WriteAndRead(scene, options, GetParam().name);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), c.HasMember("stdout") ? c["stdout"].GetString() : "");
    ASSERT_TRUE(glb.ok) << glb.error;
    const std::string data = std::string(VURL_GLTF_DATA_DIR) + "/";
    if (c.HasMember("chunk")) {
        std::string expected = testsupport::ReadFileText(data + c["chunk"].GetString() + ".json");
        EXPECT_EQ(TrimmedJson(glb) + "\n", expected);
    }
    int pieces = 0;
    for (const testsupport::TableRow& row : testsupport::ReadTable(data + "export_fragments.txt")) {
        if (row.Text(0) != GetParam().name) continue;
        ++pieces;
        EXPECT_NE(glb.json.find(row.Text(1)), std::string::npos) << "export_fragments.txt:" << row.line << "\n" << glb.json;
    }
    EXPECT_TRUE(pieces > 0 || c.HasMember("chunk")) << "nothing to compare";
    if (!c.HasMember("bin")) return;
    const std::vector<uint8_t> expected = Bytes(c["bin"]);
    const size_t at = c.HasMember("binAt") ? c["binAt"].GetUint() : 0;
    ASSERT_LE(at + expected.size(), glb.bin.size());
    if (!c.HasMember("binAt")) {
        EXPECT_EQ(glb.bin.size(), expected.size());
    }
    EXPECT_EQ(std::vector<uint8_t>(glb.bin.begin() + std::ptrdiff_t(at), glb.bin.begin() + std::ptrdiff_t(at + expected.size())), expected);
}

// The vertex block of data/vertex_blocks.json's "vertices" written after "skip" bytes: its
// view as "offset stride length target", each attribute as "NAME accessor at offset
// componentType x components [normalized] count n [min .. max ..]", and the bytes.
class VertexBlock : public testing::TestWithParam<gltftest::Case> {};

std::string Numbers(const std::vector<float>& values) {
    std::string out;
    for (float v : values) out += (out.empty() ? "" : ",") + testing::PrintToString(v);
    return out;
}

TEST_P(VertexBlock, IsInterleavedAsExpected) {
    rapidjson::Document c;
    c.Parse(GetParam().json.c_str());
    VertexData v;
    ReadVertices(c["vertices"], v);
    GlbBuilder b;
    b.data.resize(c["skip"].GetUint());
    std::string layout;
    for (const auto& [name, index] : ExportVertexData(b, v)) {
        const GlbAccessor& a = b.accessors[size_t(index)];
        layout += name + " " + std::to_string(index) + " at " + std::to_string(a.byteOffset) + " " +
                  std::to_string(a.format.componentType) + "x" + std::to_string(a.format.components) +
                  (a.normalized ? " normalized" : "") + " count " + std::to_string(a.count) +
                  (a.min.empty() ? "" : " min " + Numbers(a.min) + " max " + Numbers(a.max)) + "\n";
    }
    std::string expected;
    for (const Json& line : c["layout"].GetArray()) expected += std::string(line.GetString()) + "\n";
    EXPECT_EQ(layout, expected);
    ASSERT_EQ(b.bufferViews.size(), 1u);
    const GlbBufferView& view = b.bufferViews[0];
    EXPECT_EQ(std::to_string(view.byteOffset) + " " + std::to_string(view.byteStride) + " " + std::to_string(view.byteLength) +
                  " " + std::to_string(view.target), c["view"].GetString());
    EXPECT_EQ(b.data, Bytes(c["bin"]));
}

INSTANTIATE_TEST_SUITE_P(Data, VertexBlock, testing::ValuesIn(gltftest::CasesOf({"vertex_blocks"})), gltftest::CaseName);

INSTANTIATE_TEST_SUITE_P(Data, ExportCase, testing::ValuesIn(gltftest::CasesOf({"export_cases"})), gltftest::CaseName);
}  // namespace
