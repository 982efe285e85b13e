#include "gltf_case.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <memory>
#include <sstream>

#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include "file_contents.h"
#include "glb_fixture.h"
#include "gltf/gltf_accessors.h"
#include "gltf/gltf_decode_cost.h"
#include "gltf/gltf_images.h"
#include "gltf/gltf_import.h"

namespace gltftest {
namespace {

using Json = rapidjson::Value;

// The case's numbers as bytes of `componentType`, appended at a 4-aligned offset.
size_t AppendNumbers(std::vector<uint8_t>& bin, const Json& values, int componentType) {
    bin.resize((bin.size() + 3) & ~size_t(3), 0);
    const size_t offset = bin.size();
    auto put = [&bin](auto v) {
        const auto* bytes = reinterpret_cast<const uint8_t*>(&v);
        bin.insert(bin.end(), bytes, bytes + sizeof v);
    };
    using namespace glbfixture;
    for (const Json& value : values.GetArray()) {
        const double d = value.GetDouble();
        switch (componentType) {
            case kByte: put(static_cast<int8_t>(d)); break;
            case kUByte: put(static_cast<uint8_t>(d)); break;
            case kShort: put(static_cast<int16_t>(d)); break;
            case kUShort: put(static_cast<uint16_t>(d)); break;
            case kInt: put(static_cast<int32_t>(d)); break;
            case kUInt: put(static_cast<uint32_t>(d)); break;
            default: put(static_cast<float>(d));
        }
    }
    return offset;
}

class CaseBuilder {
public:
    explicit CaseBuilder(const Json& gltf) { doc_.CopyFrom(gltf, doc_.GetAllocator()); }

    std::vector<uint8_t> Build() {
        auto& a = doc_.GetAllocator();
        if (!doc_.HasMember("bufferViews")) doc_.AddMember("bufferViews", Json(rapidjson::kArrayType), a);
        for (Json& view : doc_["bufferViews"].GetArray()) {
            if (!view.HasMember("values")) continue;
            const size_t offset = AppendNumbers(bin_, view["values"], view["componentType"].GetInt());
            view.RemoveMember("values");
            view.RemoveMember("componentType");
            SetRange(view, offset);
        }
        if (doc_.HasMember("accessors")) {
            for (Json& accessor : doc_["accessors"].GetArray()) {
                const int type = accessor["componentType"].GetInt();
                const size_t n = ValuesToView(accessor, type);
                if (n && !accessor.HasMember("count"))
                    accessor.AddMember("count", uint64_t(n / glbfixture::GlbFixture::Components(accessor["type"].GetString())), a);
                if (!accessor.HasMember("sparse")) continue;
                ValuesToView(accessor["sparse"]["indices"], accessor["sparse"]["indices"]["componentType"].GetInt());
                ValuesToView(accessor["sparse"]["values"], type);
            }
        }
        if (!doc_.HasMember("buffers")) {
            Json buffer(rapidjson::kObjectType);
            buffer.AddMember("byteLength", uint64_t(bin_.size()), a);
            doc_.AddMember("buffers", Json(rapidjson::kArrayType).PushBack(buffer, a), a);
        }
        rapidjson::StringBuffer text;
        rapidjson::Writer<rapidjson::StringBuffer> writer(text);
        doc_.Accept(writer);
        return glbfixture::MakeGlb(text.GetString(), bin_);
    }

private:
    void SetRange(Json& view, size_t offset) {
        view.AddMember("buffer", 0, doc_.GetAllocator());
        view.AddMember("byteOffset", uint64_t(offset), doc_.GetAllocator());
        view.AddMember("byteLength", uint64_t(bin_.size() - offset), doc_.GetAllocator());
    }

    // Turns the object's "values" into a new view; returns how many numbers there were.
    size_t ValuesToView(Json& object, int componentType) {
        if (!object.HasMember("values")) return 0;
        const size_t n = object["values"].Size();
        const size_t offset = AppendNumbers(bin_, object["values"], componentType);
        object.RemoveMember("values");
        Json view(rapidjson::kObjectType);
        SetRange(view, offset);
        Json& views = doc_["bufferViews"];
        views.PushBack(view, doc_.GetAllocator());
        object.AddMember("bufferView", views.Size() - 1, doc_.GetAllocator());
        return n;
    }

    rapidjson::Document doc_;
    std::vector<uint8_t> bin_;
};

std::string Num(double v) {
    char text[32];
    std::snprintf(text, sizeof text, "%.9g", v);
    return text;
}

// Scalars as numbers, records joined by ',', lists of records by ' '.
std::string Text(const std::string& s) { return s; }
std::string Text(bool b) { return b ? "true" : "false"; }
template <typename T, typename = std::enable_if_t<std::is_arithmetic_v<T>>>
std::string Text(T v) {
    if constexpr (std::is_integral_v<T>) return std::to_string(v);
    return Num(double(v));
}
std::string Text(const Vec3& v);
std::string Text(const Quat& q);
std::string Text(const Mat4& m);
template <typename T>
std::string Text(const std::vector<T>& items);

template <typename T>
std::string Join(const T* items, size_t n, char separator) {
    std::string out;
    for (size_t i = 0; i < n; ++i) out += (i ? std::string(1, separator) : "") + Text(items[i]);
    return out;
}
std::string Text(const Vec3& v) { return Join(&v.x, 3, ','); }
std::string Text(const Quat& q) { return Num(q.x) + "," + Num(q.y) + "," + Num(q.z) + "," + Num(q.w); }
std::string Text(const Mat4& m) { return Join(m.m, 16, ','); }
template <typename T>
std::string Text(const std::vector<T>& items) { return Join(items.data(), items.size(), std::is_arithmetic_v<T> ? ',' : ' '); }
std::string Text(const Texture* t) { return t ? t->uri : "none"; }

// Field "<at> <member>" of a record: the member's own name is the field's.
#define VURL_PUT(record, member) f[at + " " #member] = Text((record).member)

template <typename Channel>
void AddChannel(Fields& f, const std::string& at, const Channel& c) {
    VURL_PUT(c, times), VURL_PUT(c, interpolation), VURL_PUT(c, values), VURL_PUT(c, inTangents), VURL_PUT(c, outTangents);
}

void AddAnimation(Fields& f, const std::string& at, const Animation& a) {
    VURL_PUT(a, name), VURL_PUT(a, duration), f[at + " tracks"] = Text(a.tracks.size());
    for (size_t t = 0; t < a.tracks.size(); ++t) {
        const AnimationTrack& track = a.tracks[t];
        const std::string tt = at + " track " + std::to_string(t);
        f[tt + " nodeId"] = Text(track.nodeId);
        AddChannel(f, tt + " position", track.position), AddChannel(f, tt + " rotation", track.rotation);
        AddChannel(f, tt + " rotationQuat", track.rotationQuat), AddChannel(f, tt + " scale", track.scale);
        AddChannel(f, tt + " weights", track.weights);
    }
}

void AddTarget(Fields& f, const std::string& at, const MorphTarget& t) {
    VURL_PUT(t, name), VURL_PUT(t, indices), VURL_PUT(t, deltaPositions), VURL_PUT(t, deltaNormals);
    VURL_PUT(t, sourceVertexCount), VURL_PUT(t, boundingBox.min), VURL_PUT(t, boundingBox.max);
}

void AddInstance(Fields& f, const std::string& at, const MeshInstance& mi) {
    VURL_PUT(mi, primitiveType), f[at + " compressed"] = Text(mi.compressed.has_value());
    f[at + " indices"] = mi.indices ? Text(*mi.indices) : "none";
    f[at + " vertices"] = mi.vertices ? "yes" : "none";
    if (const VertexData* v = mi.vertices) {
        VURL_PUT(*v, positions), VURL_PUT(*v, normals), VURL_PUT(*v, colors), VURL_PUT(*v, joints), VURL_PUT(*v, weights);
        for (int set = 0; set < 8; ++set) f[at + " texCoords" + std::to_string(set)] = Text(v->texCoords[set]);
    }
    f[at + " skin"] = mi.skin ? "yes" : "none";
    if (mi.skin) f[at + " skin joints"] = Text(mi.skin->joints), f[at + " skin matrices"] = Text(mi.skin->inverseBindMatrices);
    if (mi.morph) f[at + " targets"] = Text(mi.morph->targets.size());
    for (size_t k = 0; mi.morph && k < mi.morph->targets.size(); ++k)
        AddTarget(f, at + " target " + std::to_string(k), *mi.morph->targets[k]);
}

void AddNode(Fields& f, const Scene& scene, const GraphNode& n, const std::string& at) {
    VURL_PUT(n, name), VURL_PUT(n, id), VURL_PUT(n, position), VURL_PUT(n, rotation), VURL_PUT(n, scale);
    f[at + " children"] = Text(n.children.size());
    f[at + " geometry"] = n.geometry ? n.geometry->name : "none";
    if (n.geometry) f[at + " instances"] = Text(n.geometry->meshInstances.size());
    for (size_t i = 0; n.geometry && i < n.geometry->meshInstances.size(); ++i)
        AddInstance(f, at + " " + std::to_string(i), *n.geometry->meshInstances[i]);
    f[at + " camera"] = n.camera ? n.camera->name : "none";
    if (const Camera* c = n.camera)
        VURL_PUT(*c, projection), VURL_PUT(*c, fov), VURL_PUT(*c, nearClip), VURL_PUT(*c, farClip), VURL_PUT(*c, orthoHeight);
    f[at + " light"] = "none";
    for (size_t i = 0; i < scene.Owned<Light>().size(); ++i)
        if (scene.Owned<Light>()[i].get() == n.light) f[at + " light"] = Text(i);
    for (size_t i = 0; i < n.children.size(); ++i) AddNode(f, scene, *n.children[i], at + "/" + std::to_string(i));
}

void AddSlot(Fields& f, const std::string& at, const TextureSlot& s) {
    f[at] = Text(s.texture);
    VURL_PUT(s, channel), VURL_PUT(s, uv), VURL_PUT(s, rotation);
    f[at + " tiling"] = Join(s.tiling, 2, ','), f[at + " offset"] = Join(s.offset, 2, ',');
}

void AddMaterial(Fields& f, const std::string& at, const Material& m) {
    VURL_PUT(m, name), VURL_PUT(m, shadingModel), VURL_PUT(m, blendType), VURL_PUT(m, cull), VURL_PUT(m, useLighting);
    VURL_PUT(m, twoSidedLighting), VURL_PUT(m, useMetalness), VURL_PUT(m, useMetalnessSpecularColor);
    VURL_PUT(m, emissiveTint), VURL_PUT(m, glossInvert), VURL_PUT(m, clearCoatGlossInvert), VURL_PUT(m, useDynamicRefraction);
    VURL_PUT(m, useSheen), VURL_PUT(m, diffuseTint), VURL_PUT(m, specularTint), VURL_PUT(m, sheenTint);
    VURL_PUT(m, useIridescence), VURL_PUT(m, metalness), VURL_PUT(m, shininess), VURL_PUT(m, opacity);
    VURL_PUT(m, bumpMapFactor), VURL_PUT(m, alphaTest), VURL_PUT(m, clearCoat), VURL_PUT(m, clearCoatGloss);
    VURL_PUT(m, clearCoatBumpiness), VURL_PUT(m, specularityFactor), VURL_PUT(m, refractionIndex), VURL_PUT(m, refraction);
    VURL_PUT(m, sheenGloss), VURL_PUT(m, thickness), VURL_PUT(m, attenuationDistance), VURL_PUT(m, emissiveIntensity);
    VURL_PUT(m, iridescenceRefractionIndex), VURL_PUT(m, iridescenceThicknessMax), VURL_PUT(m, diffuse);
    VURL_PUT(m, emissive), VURL_PUT(m, specular), VURL_PUT(m, sheen), VURL_PUT(m, attenuation);
    for (const MaterialSlotInfo& slot : kMaterialSlots) AddSlot(f, at + " " + slot.name, m.*slot.slot);
}

void AddScene(Fields& f, const Scene& scene) {
    f["geometries"] = Text(scene.geometries.Size());
    f["root"] = scene.root ? scene.root->name : "none";
    if (scene.root) AddNode(f, scene, *scene.root, "root");
    const auto& lights = scene.Owned<Light>();
    f["lights"] = Text(lights.size());
    for (size_t i = 0; i < lights.size(); ++i) {
        const Light& l = *lights[i];
        const std::string at = "light " + std::to_string(i);
        VURL_PUT(l, name), VURL_PUT(l, type), VURL_PUT(l, color), VURL_PUT(l, intensity), VURL_PUT(l, range);
        VURL_PUT(l, falloffMode), VURL_PUT(l, innerConeAngle), VURL_PUT(l, outerConeAngle);
    }
    f["animations"] = Text(scene.GetAnimationCount());
    for (size_t i = 0; i < scene.animations.size(); ++i) AddAnimation(f, "animation " + std::to_string(i), *scene.animations[i]);
    f["textures"] = Text(scene.textures.Size());
    for (size_t i = 0; i < scene.textures.Size(); ++i) {
        const Texture& t = *scene.textures[i];
        const std::string at = "texture " + t.uri;
        VURL_PUT(t, name), VURL_PUT(t, id), VURL_PUT(t, addressU), VURL_PUT(t, addressV), VURL_PUT(t, minFilter), VURL_PUT(t, magFilter);
    }
    for (size_t i = 0; i < scene.materials.Size(); ++i)
        AddMaterial(f, "material " + std::to_string(scene.materials[i]->id), *scene.materials[i]);
}
#undef VURL_PUT

template <typename Read>
std::string ReadText(Read read) {
    try {
        return Text(read());
    } catch (const GltfError&) {
        return "refused";
    }
}

std::vector<std::string> Items(std::string text) {
    std::replace(text.begin(), text.end(), ',', ' ');
    std::istringstream in(text);
    std::vector<std::string> items;
    for (std::string item; in >> item;) items.push_back(item);
    return items;
}

}  // namespace

void PrintTo(const Case& c, std::ostream* out) { *out << c.name; }

std::vector<Case> CasesOf(std::initializer_list<const char*> files) {
    std::vector<Case> cases;
    for (const char* file : files) {
        rapidjson::Document list;
        list.Parse(testsupport::ReadFileText(std::string(VURL_GLTF_DATA_DIR) + "/" + file + ".json").c_str());
        if (!list.IsArray()) throw std::runtime_error(std::string(file) + ".json is not a list of cases");
        for (const rapidjson::Value& c : list.GetArray()) {
            rapidjson::StringBuffer text;
            rapidjson::Writer<rapidjson::StringBuffer> writer(text);
            c.Accept(writer);
            cases.push_back({c["case"].GetString(), text.GetString()});
        }
    }
    return cases;
}

std::string CaseName(const testing::TestParamInfo<Case>& row) { return row.param.name; }

std::vector<uint8_t> GlbFromCase(const rapidjson::Value& gltf) { return CaseBuilder(gltf).Build(); }

Fields CaseFields(GltfContext& context) {
    Fields f;
    for (size_t i = 0; i < context.document.accessors.size(); ++i) {
        const GltfAccessor& a = context.document.accessors[i];
        const std::string at = "accessor " + std::to_string(i);
        f[at + " float"] = ReadText([&] { return ReadAccessorAsFloat(a, context); });
        f[at + " index"] = ReadText([&] { return ReadAccessorAsIndex(a, context); });
        f[at + " joint"] = ReadText([&] { return ReadAccessorAsJoint(a, context); });
    }
    f["decoded bytes"] = Text(EstimateDecodedBytes(context));
    f["image names"] = ReadText([&] { return MakeImageFileNames(context); });
    try {
        std::unique_ptr<Scene> scene(ImportGltfScene(context));
        f["import"] = "ok";
        AddScene(f, *scene);
    } catch (const GltfError&) {
        f["import"] = "refused";
    }
    return f;
}

void ExpectField(const Fields& fields, const std::string& name, const std::string& expected) {
    const auto found = fields.find(name);
    ASSERT_NE(found, fields.end()) << "no field \"" << name << "\"";
    if (expected.empty() || expected[0] != '~') {
        EXPECT_EQ(found->second, expected) << name;
        return;
    }
    const std::vector<std::string> want = Items(expected.substr(1)), got = Items(found->second);
    ASSERT_EQ(want.size(), got.size()) << name << ": " << found->second;
    for (size_t i = 0; i < want.size(); ++i) {
        if (want[i] == "*") continue;
        const double w = std::stod(want[i]);
        EXPECT_NEAR(std::stod(got[i]), w, 1e-6 * std::max(1.0, std::fabs(w))) << name << ": " << found->second;
    }
}

}  // namespace gltftest
