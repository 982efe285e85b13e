// Flat material record mirroring the runtime's parameters, and textures bound to it.
#pragma once

#include <cstdint>
#include <string>

#include "scene/base_object.h"
#include "scene/math.h"

struct Texture : BaseObject {
    std::string uri;
    uint32_t addressU = 0;  // 0 repeat, 2 clamp, 3 mirror_repeat
    uint32_t addressV = 0;
    uint32_t minFilter = 1;  // 0 nearest, 1 linear, 2..5 the mip variants
    uint32_t magFilter = 1;
};

struct TextureSlot {
    Texture* texture = nullptr;  // not owned
    std::string channel;         // "r", "g", "b", "a", "rgb"
    int32_t uv = 0;
    float tiling[2] = {1.0f, 1.0f};
    float offset[2] = {0.0f, 0.0f};
    float rotation = 0.0f;
};

struct Material : BaseObject {
    int32_t shadingModel = 0;  // 0 phong, 1 blinn
    int32_t blendType = 0;
    int32_t cull = 1;
    bool useLighting = true;
    bool twoSidedLighting = false;
    bool useMetalness = false;
    bool useMetalnessSpecularColor = false;
    bool depthWrite = true;
    bool emissiveTint = false;
    bool glossInvert = false;
    bool clearCoatGlossInvert = false;
    bool sheenGlossInvert = false;
    bool useDynamicRefraction = false;
    bool useSheen = false;
    bool diffuseTint = false;
    bool specularTint = false;
    bool sheenTint = false;
    bool useIridescence = false;
    float metalness = 1.0f;
    float shininess = 0.0f;
    float opacity = 1.0f;
    float bumpMapFactor = 1.0f;
    float reflectivity = 1.0f;
    float alphaTest = 0.0f;
    float clearCoat = 0.0f;
    float clearCoatGloss = 1.0f;
    float clearCoatBumpiness = 1.0f;
    float specularityFactor = 1.0f;
    float refractionIndex = 0.6666667f;  // bits 0x3F2AAAAB
    float refraction = 0.0f;
    float sheenGloss = 0.0f;
    float thickness = 0.0f;
    float attenuationDistance = 0.0f;
    float emissiveIntensity = 1.0f;
    float iridescence = 0.0f;
    float iridescenceRefractionIndex = 0.6666667f;
    float iridescenceThicknessMin = 0.0f;
    float iridescenceThicknessMax = 0.0f;
    Vec3 ambient{0.5f, 0.5f, 0.5f};
    Vec3 diffuse{0.5f, 0.5f, 0.5f};
    Vec3 emissive{0.0f, 0.0f, 0.0f};
    Vec3 specular{0.0f, 0.0f, 0.0f};
    Vec3 sheen{1.0f, 1.0f, 1.0f};
    Vec3 attenuation{1.0f, 1.0f, 1.0f};

    TextureSlot diffuseMap;
    TextureSlot specularMap;
    TextureSlot glossMap;
    TextureSlot emissiveMap;
    TextureSlot lightMap;
    TextureSlot heightMap;
    TextureSlot normalMap;
    TextureSlot opacityMap;
    TextureSlot cubeMap;
    TextureSlot sphereMap;
    TextureSlot metalnessMap;
    TextureSlot aoMap;
    TextureSlot clearCoatMap;
    TextureSlot clearCoatGlossMap;
    TextureSlot clearCoatNormalMap;
    TextureSlot specularityFactorMap;
    TextureSlot refractionMap;
    TextureSlot sheenMap;
    TextureSlot sheenGlossMap;
    TextureSlot thicknessMap;
    TextureSlot iridescenceMap;
    TextureSlot iridescenceThicknessMap;
};

// The 22 slots in their fixed order, with their names, for writers that walk them all.
struct MaterialSlotInfo {
    const char* name;
    TextureSlot Material::*slot;
};
inline constexpr int kMaterialSlotCount = 22;
extern const MaterialSlotInfo kMaterialSlots[kMaterialSlotCount];
