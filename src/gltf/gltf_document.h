// Reading model of one glTF 2.0 file: plain records, indices as i32 with -1 for absent.
// Private to the glTF library.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

enum class ComponentType : int32_t { BYTE = 0, UNSIGNED_BYTE, SHORT, UNSIGNED_SHORT, INT, UNSIGNED_INT, FLOAT };
enum class ElementType : int32_t { SCALAR = 0, VEC2, VEC3, VEC4, MAT2, MAT3, MAT4 };
enum class GltfInterpolation : int32_t { LINEAR = 0, STEP = 1, CUBICSPLINE = 2 };
enum class GltfAlphaMode : int32_t { OPAQUE = 0, MASK = 1, BLEND = 2 };

// Bytes per component and components per element; 0 for values out of range.
uint32_t ComponentSize(ComponentType type);
uint32_t ElementComponents(ElementType type);

// Attribute name to accessor index (or Draco unique id), ordered byte-wise by name.
using GltfAttributeMap = std::map<std::string, int32_t>;

struct GltfSparseIndices {
    int32_t bufferView = -1;
    uint32_t byteOffset = 0;
    ComponentType componentType = ComponentType::BYTE;
};

struct GltfSparseValues {
    int32_t bufferView = -1;
    uint32_t byteOffset = 0;
};

struct GltfSparse {
    int32_t count = 0;
    GltfSparseIndices indices;
    GltfSparseValues values;
};

struct GltfAccessor {
    int32_t bufferView = -1;
    uint32_t byteOffset = 0;
    ComponentType componentType = ComponentType::BYTE;
    bool normalized = false;
    uint32_t count = 0;
    ElementType type = ElementType::SCALAR;
    std::vector<float> min;
    std::vector<float> max;
    std::optional<GltfSparse> sparse;
    std::string name;
};

struct GltfChannelTarget {
    int32_t node = -1;
    std::string path;
};

struct GltfChannel {
    int32_t sampler = -1;
    GltfChannelTarget target;
};

struct GltfAnimationSampler {
    int32_t input = -1;
    GltfInterpolation interpolation = GltfInterpolation::LINEAR;
    int32_t output = -1;
};

struct GltfAnimation {
    std::vector<GltfChannel> channels;
    std::vector<GltfAnimationSampler> samplers;
    std::string name;
};

struct GltfBuffer {
    std::string uri;
    uint32_t byteLength = 0;
    std::string name;
};

struct GltfBufferView {
    int32_t buffer = -1;
    uint32_t byteOffset = 0;
    uint32_t byteLength = 0;
    uint32_t byteStride = 0;
    uint32_t target = 0;
    std::string name;
};

struct GltfOrthographic {
    float xmag = 0.0f, ymag = 0.0f, zfar = 0.0f, znear = 0.0f;
};

struct GltfPerspective {
    float aspectRatio = 0.0f, yfov = 0.0f, zfar = 0.0f, znear = 0.0f;
};

struct GltfCamera {
    std::optional<GltfOrthographic> orthographic;
    std::optional<GltfPerspective> perspective;
    int32_t type = 0;  // 0 perspective, 1 orthographic
    std::string name;
};

struct GltfImage {
    std::string uri;
    std::string mimeType;
    int32_t bufferView = -1;
    std::string name;
};

struct GltfTextureTransform {
    std::vector<float> offset;
    float rotation = 0.0f;
    std::vector<float> scale;
    int32_t texCoord = -1;  // -1: the reference's own texCoord holds
};

// Two presence flags: the reference's "extensions" and, within it, "KHR_texture_transform".
struct GltfTransformSlot {
    bool extensionsPresent = false;
    bool transformPresent = false;
    GltfTextureTransform transform;
};

struct GltfTextureInfo {
    int32_t index = -1;
    int32_t texCoord = 0;
    GltfTransformSlot transform;
};

struct GltfNormalTextureInfo {
    int32_t index = -1;
    int32_t texCoord = 0;
    float scale = 1.0f;
    GltfTransformSlot transform;
};

struct GltfOcclusionTextureInfo {
    int32_t index = -1;
    int32_t texCoord = 0;
    float strength = 1.0f;
    GltfTransformSlot transform;
};

struct GltfPbrMetallicRoughness {
    std::vector<float> baseColorFactor;
    std::optional<GltfTextureInfo> baseColorTexture;
    float metallicFactor = 1.0f;
    float roughnessFactor = 1.0f;
    std::optional<GltfTextureInfo> metallicRoughnessTexture;
};

struct GltfClearcoat {
    float clearcoatFactor = 0.0f;
    std::optional<GltfTextureInfo> clearcoatTexture;
    float clearcoatRoughnessFactor = 0.0f;
    std::optional<GltfTextureInfo> clearcoatRoughnessTexture;
    std::optional<GltfNormalTextureInfo> clearcoatNormalTexture;
};

struct GltfSpecular {
    float specularFactor = 1.0f;
    std::optional<GltfTextureInfo> specularTexture;
    std::vector<float> specularColorFactor;
    std::optional<GltfTextureInfo> specularColorTexture;
};

struct GltfIor {
    float ior = 1.5f;
};

struct GltfTransmission {
    float transmissionFactor = 0.0f;
    std::optional<GltfTextureInfo> transmissionTexture;
};

struct GltfSheen {
    std::vector<float> sheenColorFactor;
    std::optional<GltfTextureInfo> sheenColorTexture;
    float sheenRoughnessFactor = 0.0f;
    std::optional<GltfTextureInfo> sheenRoughnessTexture;
};

struct GltfVolume {
    float thicknessFactor = 0.0f;
    std::optional<GltfTextureInfo> thicknessTexture;
    float attenuationDistance = 0.0f;
    std::vector<float> attenuationColor;
};

struct GltfEmissiveStrength {
    float emissiveStrength = 1.0f;
};

struct GltfIridescence {
    float iridescenceFactor = 0.0f;
    std::optional<GltfTextureInfo> iridescenceTexture;
    float iridescenceIor = 1.3f;
    float iridescenceThicknessMinimum = 100.0f;
    float iridescenceThicknessMaximum = 400.0f;
    std::optional<GltfTextureInfo> iridescenceThicknessTexture;
};

struct GltfMaterialExtensions {
    bool unlit = false;
    std::optional<GltfClearcoat> clearcoat;
    std::optional<GltfSpecular> specular;
    std::optional<GltfIor> ior;
    std::optional<GltfTransmission> transmission;
    std::optional<GltfSheen> sheen;
    std::optional<GltfVolume> volume;
    std::optional<GltfEmissiveStrength> emissiveStrength;
    std::optional<GltfIridescence> iridescence;
};

struct GltfMaterial {
    std::string name;
    std::optional<GltfMaterialExtensions> extensions;
    std::optional<GltfPbrMetallicRoughness> pbrMetallicRoughness;
    std::optional<GltfNormalTextureInfo> normalTexture;
    std::optional<GltfOcclusionTextureInfo> occlusionTexture;
    std::optional<GltfTextureInfo> emissiveTexture;
    std::vector<float> emissiveFactor;
    GltfAlphaMode alphaMode = GltfAlphaMode::OPAQUE;
    float alphaCutoff = 0.5f;
    bool doubleSided = false;
};

struct GltfDracoExtension {
    int32_t bufferView = -1;
    GltfAttributeMap attributes;
};

struct GltfPrimitive {
    GltfAttributeMap attributes;
    int32_t indices = -1;
    int32_t material = -1;
    int32_t mode = 4;
    std::vector<GltfAttributeMap> targets;
    bool extensionsPresent = false;
    bool dracoPresent = false;
    GltfDracoExtension draco;
};

struct GltfMesh {
    std::vector<GltfPrimitive> primitives;
    std::vector<float> weights;
    std::string name;
    std::optional<std::vector<std::string>> targetNames;  // set when "extras" exists
};

struct GltfNode {
    int32_t camera = -1;
    std::vector<int32_t> children;
    int32_t skin = -1;
    std::vector<float> matrix;
    int32_t mesh = -1;
    std::vector<float> rotation;
    std::vector<float> scale;
    std::vector<float> translation;
    std::vector<float> weights;
    std::string name;
    bool extensionsPresent = false;
    bool lightPresent = false;
    int32_t light = -1;
};

struct GltfTextureSampler {
    int32_t magFilter = 1;
    int32_t minFilter = 5;
    int32_t wrapS = 2;
    int32_t wrapT = 2;
    std::string name;
};

struct GltfScene {
    std::vector<int32_t> nodes;
    std::string name;
};

struct GltfSkin {
    int32_t inverseBindMatrices = -1;
    int32_t skeleton = -1;
    std::vector<int32_t> joints;
    std::string name;
};

struct GltfTexture {
    int32_t sampler = -1;
    int32_t source = -1;
    std::string name;
};

struct GltfSpot {
    float innerConeAngle = 0.0f;
    float outerConeAngle = 0.7853982f;
};

struct GltfLight {
    std::string name;
    std::vector<float> color;
    float intensity = 1.0f;
    int32_t type = 0;  // 0 directional, 1 point, 2 spot
    float range = -1.0f;
    std::optional<GltfSpot> spot;
};

struct GltfDocument {
    std::vector<std::string> extensionsUsed;
    std::vector<std::string> extensionsRequired;
    std::vector<GltfAccessor> accessors;
    std::vector<GltfAnimation> animations;
    std::vector<GltfBuffer> buffers;
    std::vector<GltfBufferView> bufferViews;
    std::vector<GltfCamera> cameras;
    std::vector<GltfImage> images;
    std::vector<GltfMaterial> materials;
    std::vector<GltfMesh> meshes;
    std::vector<GltfNode> nodes;
    std::vector<GltfTextureSampler> samplers;
    int32_t scene = -1;
    std::vector<GltfScene> scenes;
    std::vector<GltfSkin> skins;
    std::vector<GltfTexture> textures;
    bool extensionsPresent = false;
    bool lightsPresent = false;
    std::vector<GltfLight> lights;
};
