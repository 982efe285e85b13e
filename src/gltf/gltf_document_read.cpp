#include "gltf/gltf_document_read.h"

#include <cstring>

namespace {

using Value = GltfJsonValue;

const Value* Member(const Value& object, const char* name) {
    if (!object.IsObject()) return nullptr;
    auto it = object.FindMember(name);
    return it == object.MemberEnd() ? nullptr : &it->value;
}

// Low 32 bits of the number's storage: an integer keeps its value, a double its bit
// pattern (so 3.0 does not read as 3). Non-numbers read as 0.
uint32_t LowBits(const Value& v) {
    if (v.IsDouble()) {
        const double d = v.GetDouble();
        uint64_t bits;
        std::memcpy(&bits, &d, sizeof bits);
        return uint32_t(bits);
    }
    if (v.IsInt64()) return uint32_t(uint64_t(v.GetInt64()));
    if (v.IsUint64()) return uint32_t(v.GetUint64());
    return 0;
}

float ToFloat(const Value& v) {
    if (v.IsDouble()) return float(v.GetDouble());
    if (v.IsInt()) return float(v.GetInt());
    if (v.IsUint()) return float(v.GetUint());
    if (v.IsInt64()) return float(v.GetInt64());
    if (v.IsUint64()) return float(v.GetUint64());
    return 0.0f;
}

void Read(const Value& o, const char* name, int32_t& out) {
    if (const Value* v = Member(o, name)) out = int32_t(LowBits(*v));
}
void Read(const Value& o, const char* name, uint32_t& out) {
    if (const Value* v = Member(o, name)) out = LowBits(*v);
}
void Read(const Value& o, const char* name, float& out) {
    if (const Value* v = Member(o, name)) out = ToFloat(*v);
}
void Read(const Value& o, const char* name, bool& out) {
    if (const Value* v = Member(o, name)) out = v->IsTrue();
}
void ReadString(const Value& v, std::string& out) {
    // Bytes up to the first NUL.
    out = v.IsString() ? std::string(v.GetString()) : std::string();
}
void Read(const Value& o, const char* name, std::string& out) {
    if (const Value* v = Member(o, name)) ReadString(*v, out);
}
template <typename T, typename F>
void ReadArray(const Value& o, const char* name, std::vector<T>& out, F readRecord) {
    const Value* v = Member(o, name);
    if (!v || !v->IsArray()) return;
    out.resize(v->Size());
    for (rapidjson::SizeType i = 0; i < v->Size(); ++i) readRecord((*v)[i], out[i]);
}

void Read(const Value& o, const char* name, std::vector<float>& out) {
    ReadArray(o, name, out, [](const Value& e, float& x) { x = ToFloat(e); });
}
void Read(const Value& o, const char* name, std::vector<int32_t>& out) {
    ReadArray(o, name, out, [](const Value& e, int32_t& x) { x = int32_t(LowBits(e)); });
}
void Read(const Value& o, const char* name, std::vector<std::string>& out) { ReadArray(o, name, out, ReadString); }

// An optional sub-object is reset to fresh defaults before it is read.
template <typename T, typename F>
void ReadOptional(const Value& o, const char* name, std::optional<T>& out, F readRecord) {
    const Value* v = Member(o, name);
    if (!v) return;
    out.emplace();
    readRecord(*v, *out);
}

template <typename E, size_t N>
void ReadEnumText(const Value& o, const char* name, E& out, const char* const (&texts)[N]) {
    const Value* v = Member(o, name);
    if (!v || !v->IsString()) return;
    for (size_t i = 0; i < N; ++i)
        if (std::strcmp(v->GetString(), texts[i]) == 0) {
            out = E(i);
            return;
        }
}

void ReadComponentType(const Value& o, const char* name, ComponentType& out) {
    const Value* v = Member(o, name);
    if (!v) return;
    const uint32_t n = LowBits(*v);
    if (n >= 5120 && n <= 5126) out = ComponentType(n - 5120);
}

// The named extension's object; notes on the way whether the "extensions" object is there.
const Value* Extension(const Value& v, const char* name, bool& extensionsPresent) {
    const Value* ext = Member(v, "extensions");
    if (!ext) return nullptr;
    extensionsPresent = true;
    return Member(*ext, name);
}

void ReadAttributeMap(const Value& v, GltfAttributeMap& out) {
    if (!v.IsObject()) return;
    for (auto it = v.MemberBegin(); it != v.MemberEnd(); ++it) {
        std::string key;
        ReadString(it->name, key);
        out.emplace(std::move(key), int32_t(LowBits(it->value)));  // the first of a name wins
    }
}

constexpr const char* kElementTypes[] = {"SCALAR", "VEC2", "VEC3", "VEC4", "MAT2", "MAT3", "MAT4"};
constexpr const char* kInterpolations[] = {"LINEAR", "STEP", "CUBICSPLINE"};
constexpr const char* kAlphaModes[] = {"OPAQUE", "MASK", "BLEND"};
constexpr const char* kCameraTypes[] = {"perspective", "orthographic"};
constexpr const char* kLightTypes[] = {"directional", "point", "spot"};

void ReadAccessor(const Value& v, GltfAccessor& a) {
    Read(v, "bufferView", a.bufferView);
    Read(v, "byteOffset", a.byteOffset);
    ReadComponentType(v, "componentType", a.componentType);
    Read(v, "normalized", a.normalized);
    Read(v, "count", a.count);
    ReadEnumText(v, "type", a.type, kElementTypes);
    Read(v, "min", a.min);
    Read(v, "max", a.max);
    ReadOptional(v, "sparse", a.sparse, [](const Value& s, GltfSparse& sp) {
        Read(s, "count", sp.count);
        if (const Value* i = Member(s, "indices")) {
            Read(*i, "bufferView", sp.indices.bufferView);
            Read(*i, "byteOffset", sp.indices.byteOffset);
            ReadComponentType(*i, "componentType", sp.indices.componentType);
        }
        if (const Value* val = Member(s, "values")) {
            Read(*val, "bufferView", sp.values.bufferView);
            Read(*val, "byteOffset", sp.values.byteOffset);
        }
    });
    Read(v, "name", a.name);
}

void ReadAnimation(const Value& v, GltfAnimation& a) {
    ReadArray(v, "channels", a.channels, [](const Value& c, GltfChannel& ch) {
        Read(c, "sampler", ch.sampler);
        if (const Value* t = Member(c, "target")) {
            Read(*t, "node", ch.target.node);
            Read(*t, "path", ch.target.path);
        }
    });
    ReadArray(v, "samplers", a.samplers, [](const Value& s, GltfAnimationSampler& sa) {
        Read(s, "input", sa.input);
        ReadEnumText(s, "interpolation", sa.interpolation, kInterpolations);
        Read(s, "output", sa.output);
    });
    Read(v, "name", a.name);
}

void ReadTransform(const Value& v, GltfTransformSlot& slot) {
    const Value* t = Extension(v, "KHR_texture_transform", slot.extensionsPresent);
    if (!t) return;
    slot.transformPresent = true;
    slot.transform = GltfTextureTransform();
    Read(*t, "offset", slot.transform.offset);
    Read(*t, "rotation", slot.transform.rotation);
    Read(*t, "scale", slot.transform.scale);
    Read(*t, "texCoord", slot.transform.texCoord);
}

// The fields every kind of texture reference has.
template <typename TextureRef>
void ReadTextureRef(const Value& v, TextureRef& t) {
    Read(v, "index", t.index);
    Read(v, "texCoord", t.texCoord);
    ReadTransform(v, t.transform);
}

void ReadTextureInfo(const Value& v, GltfTextureInfo& t) { ReadTextureRef(v, t); }

void ReadNormalTextureInfo(const Value& v, GltfNormalTextureInfo& t) {
    ReadTextureRef(v, t);
    Read(v, "scale", t.scale);
}

void ReadOcclusionTextureInfo(const Value& v, GltfOcclusionTextureInfo& t) {
    ReadTextureRef(v, t);
    Read(v, "strength", t.strength);
}

void ReadMaterialExtensions(const Value& v, GltfMaterialExtensions& e) {
    e.unlit = Member(v, "KHR_materials_unlit") != nullptr;
    ReadOptional(v, "KHR_materials_clearcoat", e.clearcoat, [](const Value& x, GltfClearcoat& c) {
        Read(x, "clearcoatFactor", c.clearcoatFactor);
        ReadOptional(x, "clearcoatTexture", c.clearcoatTexture, ReadTextureInfo);
        Read(x, "clearcoatRoughnessFactor", c.clearcoatRoughnessFactor);
        ReadOptional(x, "clearcoatRoughnessTexture", c.clearcoatRoughnessTexture, ReadTextureInfo);
        ReadOptional(x, "clearcoatNormalTexture", c.clearcoatNormalTexture, ReadNormalTextureInfo);
    });
    ReadOptional(v, "KHR_materials_specular", e.specular, [](const Value& x, GltfSpecular& s) {
        Read(x, "specularFactor", s.specularFactor);
        ReadOptional(x, "specularTexture", s.specularTexture, ReadTextureInfo);
        Read(x, "specularColorFactor", s.specularColorFactor);
        ReadOptional(x, "specularColorTexture", s.specularColorTexture, ReadTextureInfo);
    });
    ReadOptional(v, "KHR_materials_ior", e.ior, [](const Value& x, GltfIor& i) { Read(x, "ior", i.ior); });
    ReadOptional(v, "KHR_materials_transmission", e.transmission, [](const Value& x, GltfTransmission& t) {
        Read(x, "transmissionFactor", t.transmissionFactor);
        ReadOptional(x, "transmissionTexture", t.transmissionTexture, ReadTextureInfo);
    });
    ReadOptional(v, "KHR_materials_sheen", e.sheen, [](const Value& x, GltfSheen& s) {
        Read(x, "sheenColorFactor", s.sheenColorFactor);
        ReadOptional(x, "sheenColorTexture", s.sheenColorTexture, ReadTextureInfo);
        Read(x, "sheenRoughnessFactor", s.sheenRoughnessFactor);
        ReadOptional(x, "sheenRoughnessTexture", s.sheenRoughnessTexture, ReadTextureInfo);
    });
    ReadOptional(v, "KHR_materials_volume", e.volume, [](const Value& x, GltfVolume& s) {
        Read(x, "thicknessFactor", s.thicknessFactor);
        ReadOptional(x, "thicknessTexture", s.thicknessTexture, ReadTextureInfo);
        Read(x, "attenuationDistance", s.attenuationDistance);
        Read(x, "attenuationColor", s.attenuationColor);
    });
    ReadOptional(v, "KHR_materials_emissive_strength", e.emissiveStrength,
                 [](const Value& x, GltfEmissiveStrength& s) { Read(x, "emissiveStrength", s.emissiveStrength); });
    ReadOptional(v, "KHR_materials_iridescence", e.iridescence, [](const Value& x, GltfIridescence& s) {
        Read(x, "iridescenceFactor", s.iridescenceFactor);
        ReadOptional(x, "iridescenceTexture", s.iridescenceTexture, ReadTextureInfo);
        Read(x, "iridescenceIor", s.iridescenceIor);
        Read(x, "iridescenceThicknessMinimum", s.iridescenceThicknessMinimum);
        Read(x, "iridescenceThicknessMaximum", s.iridescenceThicknessMaximum);
        ReadOptional(x, "iridescenceThicknessTexture", s.iridescenceThicknessTexture, ReadTextureInfo);
    });
}

void ReadMaterial(const Value& v, GltfMaterial& m) {
    Read(v, "name", m.name);
    ReadOptional(v, "extensions", m.extensions, ReadMaterialExtensions);
    ReadOptional(v, "pbrMetallicRoughness", m.pbrMetallicRoughness, [](const Value& x, GltfPbrMetallicRoughness& p) {
        Read(x, "baseColorFactor", p.baseColorFactor);
        ReadOptional(x, "baseColorTexture", p.baseColorTexture, ReadTextureInfo);
        Read(x, "metallicFactor", p.metallicFactor);
        Read(x, "roughnessFactor", p.roughnessFactor);
        ReadOptional(x, "metallicRoughnessTexture", p.metallicRoughnessTexture, ReadTextureInfo);
    });
    ReadOptional(v, "normalTexture", m.normalTexture, ReadNormalTextureInfo);
    ReadOptional(v, "occlusionTexture", m.occlusionTexture, ReadOcclusionTextureInfo);
    ReadOptional(v, "emissiveTexture", m.emissiveTexture, ReadTextureInfo);
    Read(v, "emissiveFactor", m.emissiveFactor);
    ReadEnumText(v, "alphaMode", m.alphaMode, kAlphaModes);
    Read(v, "alphaCutoff", m.alphaCutoff);
    Read(v, "doubleSided", m.doubleSided);
}

void ReadPrimitive(const Value& v, GltfPrimitive& p) {
    if (const Value* a = Member(v, "attributes")) ReadAttributeMap(*a, p.attributes);
    Read(v, "indices", p.indices);
    Read(v, "material", p.material);
    if (const Value* mode = Member(v, "mode")) {
        const uint32_t m = LowBits(*mode);
        if (m <= 6) p.mode = int32_t(m);
    }
    ReadArray(v, "targets", p.targets, ReadAttributeMap);
    if (const Value* d = Extension(v, "KHR_draco_mesh_compression", p.extensionsPresent)) {
        p.dracoPresent = true;
        p.draco = GltfDracoExtension();
        Read(*d, "bufferView", p.draco.bufferView);
        if (const Value* a = Member(*d, "attributes")) ReadAttributeMap(*a, p.draco.attributes);
    }
}

void ReadMesh(const Value& v, GltfMesh& m) {
    ReadArray(v, "primitives", m.primitives, ReadPrimitive);
    Read(v, "weights", m.weights);
    Read(v, "name", m.name);
    if (const Value* extras = Member(v, "extras")) {
        m.targetNames.emplace();
        Read(*extras, "targetNames", *m.targetNames);
    }
}

void ReadNode(const Value& v, GltfNode& n) {
    Read(v, "camera", n.camera);
    Read(v, "children", n.children);
    Read(v, "skin", n.skin);
    Read(v, "matrix", n.matrix);
    Read(v, "mesh", n.mesh);
    Read(v, "rotation", n.rotation);
    Read(v, "scale", n.scale);
    Read(v, "translation", n.translation);
    Read(v, "weights", n.weights);
    Read(v, "name", n.name);
    if (const Value* l = Extension(v, "KHR_lights_punctual", n.extensionsPresent)) {
        n.lightPresent = true;
        n.light = -1;
        Read(*l, "light", n.light);
    }
}

void ReadSampler(const Value& v, GltfTextureSampler& s) {
    if (const Value* f = Member(v, "magFilter")) {
        const uint32_t x = LowBits(*f);
        if (x == 9728 || x == 9729) s.magFilter = 1;  // the two published values are not told apart
    }
    if (const Value* f = Member(v, "minFilter")) {
        switch (LowBits(*f)) {
            case 9728: s.minFilter = 0; break;
            case 9729: s.minFilter = 1; break;
            case 9984: s.minFilter = 2; break;
            case 9985: s.minFilter = 3; break;
            case 9986: s.minFilter = 4; break;
            case 9987: s.minFilter = 5; break;
            default: break;
        }
    }
    auto wrap = [&](const char* name, int32_t& out) {
        const Value* w = Member(v, name);
        if (!w) return;
        switch (LowBits(*w)) {
            case 33071: out = 0; break;
            case 33648: out = 1; break;
            case 10497: out = 2; break;
            default: break;
        }
    };
    wrap("wrapS", s.wrapS);
    wrap("wrapT", s.wrapT);
    Read(v, "name", s.name);
}

void ReadCamera(const Value& v, GltfCamera& c) {
    ReadOptional(v, "orthographic", c.orthographic, [](const Value& x, GltfOrthographic& o) {
        Read(x, "xmag", o.xmag);
        Read(x, "ymag", o.ymag);
        Read(x, "zfar", o.zfar);
        Read(x, "znear", o.znear);
    });
    ReadOptional(v, "perspective", c.perspective, [](const Value& x, GltfPerspective& p) {
        Read(x, "aspectRatio", p.aspectRatio);
        Read(x, "yfov", p.yfov);
        Read(x, "zfar", p.zfar);
        Read(x, "znear", p.znear);
    });
    ReadEnumText(v, "type", c.type, kCameraTypes);
    Read(v, "name", c.name);
}

void ReadLight(const Value& v, GltfLight& l) {
    Read(v, "name", l.name);
    Read(v, "color", l.color);
    Read(v, "intensity", l.intensity);
    ReadEnumText(v, "type", l.type, kLightTypes);
    Read(v, "range", l.range);
    ReadOptional(v, "spot", l.spot, [](const Value& x, GltfSpot& s) {
        Read(x, "innerConeAngle", s.innerConeAngle);
        Read(x, "outerConeAngle", s.outerConeAngle);
    });
}

}  // namespace

bool ReadGltfDocument(GltfDocument& d, const GltfJsonValue& root) {
    Read(root, "extensionsUsed", d.extensionsUsed);
    Read(root, "extensionsRequired", d.extensionsRequired);
    ReadArray(root, "accessors", d.accessors, ReadAccessor);
    ReadArray(root, "animations", d.animations, ReadAnimation);
    ReadArray(root, "buffers", d.buffers, [](const Value& v, GltfBuffer& b) {
        Read(v, "uri", b.uri);
        Read(v, "byteLength", b.byteLength);
        Read(v, "name", b.name);
    });
    ReadArray(root, "bufferViews", d.bufferViews, [](const Value& v, GltfBufferView& b) {
        Read(v, "buffer", b.buffer);
        Read(v, "byteOffset", b.byteOffset);
        Read(v, "byteLength", b.byteLength);
        Read(v, "byteStride", b.byteStride);
        Read(v, "target", b.target);
        Read(v, "name", b.name);
    });
    ReadArray(root, "cameras", d.cameras, ReadCamera);
    ReadArray(root, "images", d.images, [](const Value& v, GltfImage& i) {
        Read(v, "uri", i.uri);
        Read(v, "mimeType", i.mimeType);
        Read(v, "bufferView", i.bufferView);
        Read(v, "name", i.name);
    });
    ReadArray(root, "materials", d.materials, ReadMaterial);
    ReadArray(root, "meshes", d.meshes, ReadMesh);
    ReadArray(root, "nodes", d.nodes, ReadNode);
    ReadArray(root, "samplers", d.samplers, ReadSampler);
    Read(root, "scene", d.scene);
    ReadArray(root, "scenes", d.scenes, [](const Value& v, GltfScene& s) {
        Read(v, "nodes", s.nodes);
        Read(v, "name", s.name);
    });
    ReadArray(root, "skins", d.skins, [](const Value& v, GltfSkin& s) {
        Read(v, "inverseBindMatrices", s.inverseBindMatrices);
        Read(v, "skeleton", s.skeleton);
        Read(v, "joints", s.joints);
        Read(v, "name", s.name);
    });
    ReadArray(root, "textures", d.textures, [](const Value& v, GltfTexture& t) {
        Read(v, "sampler", t.sampler);
        Read(v, "source", t.source);
        Read(v, "name", t.name);
    });
    if (const Value* lp = Extension(root, "KHR_lights_punctual", d.extensionsPresent)) {
        d.lightsPresent = true;
        ReadArray(*lp, "lights", d.lights, ReadLight);
    }
    return true;
}
