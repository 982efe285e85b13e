// Mapping of glTF metallic-roughness materials and their KHR extensions onto Material.
#include <cmath>

#include "gltf/gltf_images.h"
#include "gltf/gltf_import.h"

namespace {

float Gamma(float c) { return std::pow(c, 0.45454544f); }

Vec3 GammaRgb(const std::vector<float>& c) { return Vec3(Gamma(c[0]), Gamma(c[1]), Gamma(c[2])); }

uint32_t AddressOf(int32_t wrap) {
    switch (wrap) {
        case 0: return 2;  // clamp
        case 1: return 3;  // mirrored
        default: return 0;  // repeat
    }
}

uint32_t MinFilterOf(int32_t filter) {
    switch (filter) {
        case 3: return 4;
        case 4: return 3;
        default: return uint32_t(filter);
    }
}

}  // namespace

Texture* GltfImporter::ImportTexture(int32_t index) {
    const auto& textures = context_.document.textures;
    if (index < 0 || size_t(index) >= textures.size())
        throw GltfError("texture " + std::to_string(index) + " does not exist");
    const GltfTexture& record = textures[size_t(index)];
    const uint64_t key = uint64_t(int64_t(record.source));
    if (Texture* known = scene_.textures.Find(key)) return known;

    GltfTextureSampler sampler;
    if (record.sampler >= 0) {
        if (size_t(record.sampler) >= context_.document.samplers.size())
            throw GltfError("texture " + std::to_string(index) + " refers to missing sampler " +
                            std::to_string(record.sampler));
        sampler = context_.document.samplers[size_t(record.sampler)];
    }
    if (!imageNames_) imageNames_ = MakeImageFileNames(context_);
    std::string uri = "unknown";
    if (record.source >= 0) {
        if (size_t(record.source) >= imageNames_->size())
            throw GltfError("texture " + std::to_string(index) + " refers to missing image " +
                            std::to_string(record.source));
        uri = (*imageNames_)[size_t(record.source)];
    }

    Texture* texture = new Texture();
    texture->name = record.name;
    texture->id = key;
    texture->uri = uri;
    texture->addressU = AddressOf(sampler.wrapS);
    texture->addressV = AddressOf(sampler.wrapT);
    texture->minFilter = MinFilterOf(sampler.minFilter);
    texture->magFilter = uint32_t(sampler.magFilter);
    scene_.textures.Add(texture);
    return texture;
}

void GltfImporter::SetSlot(TextureSlot& slot, int32_t index, int32_t texCoord, const GltfTransformSlot& transform) {
    if (index >= 0) slot.texture = ImportTexture(index);
    slot.uv = texCoord;
    if (!transform.transformPresent) return;
    const GltfTextureTransform& t = transform.transform;
    if (t.offset.size() == 2) {
        slot.offset[0] = t.offset[0];
        slot.offset[1] = t.offset[1];
    }
    slot.rotation = t.rotation;
    if (t.scale.size() == 2) {
        slot.tiling[0] = t.scale[0];
        slot.tiling[1] = t.scale[1];
    }
    if (t.texCoord >= 0) slot.uv = t.texCoord;
}

Material* GltfImporter::ImportMaterial(int32_t index) {
    const auto& materials = context_.document.materials;
    if (index < 0 || size_t(index) >= materials.size())
        throw GltfError("material " + std::to_string(index) + " does not exist");
    if (Material* known = scene_.materials.Find(uint64_t(index))) return known;
    const GltfMaterial& record = materials[size_t(index)];

    auto material = std::make_unique<Material>();
    Material& m = *material;
    m.name = record.name;
    m.id = uint64_t(index);

    switch (record.alphaMode) {
        case GltfAlphaMode::OPAQUE: m.blendType = 0; break;
        case GltfAlphaMode::MASK:
            m.blendType = 0;
            m.alphaTest = record.alphaCutoff;
            break;
        case GltfAlphaMode::BLEND:
            m.blendType = 1;
            m.alphaTest = 0.003921569f;
            break;
    }
    m.twoSidedLighting = record.doubleSided;
    m.cull = record.doubleSided ? 0 : 1;

    if (record.extensions && record.extensions->unlit) {
        ImportUnlit(m, record);
    } else {
        ImportMetallicRoughness(m, record);
        // The extensions of a lit material, each over what the ones before it set.
        if (record.extensions) {
            const GltfMaterialExtensions& e = *record.extensions;
            if (e.clearcoat) ImportClearcoat(m, *e.clearcoat);
            if (e.specular) ImportSpecular(m, *e.specular);
            if (e.ior) m.refractionIndex = 1.0f / e.ior->ior;
            if (e.transmission) ImportTransmission(m, *e.transmission);
            if (e.sheen) ImportSheen(m, *e.sheen);
            if (e.volume) ImportVolume(m, *e.volume);
            if (e.emissiveStrength) m.emissiveIntensity = e.emissiveStrength->emissiveStrength;
            if (e.iridescence) ImportIridescence(m, *e.iridescence);
        }
    }

    Material* raw = material.release();
    scene_.materials.Add(raw);
    return raw;
}

// KHR_materials_unlit: the base colour is shown as emission, without lighting.
void GltfImporter::ImportUnlit(Material& m, const GltfMaterial& record) {
    const auto& pbr = record.pbrMetallicRoughness;
    m.useLighting = false;
    m.diffuse = Vec3(0.0f, 0.0f, 0.0f);
    if (!pbr) {
        m.emissive = Vec3(0.0f, 0.0f, 0.0f);
        m.opacity = 1.0f;
        return;
    }
    if (pbr->baseColorFactor.size() == 4) {
        m.emissiveTint = true;
        m.emissive = GammaRgb(pbr->baseColorFactor);
        m.opacity = pbr->baseColorFactor[3];
    }
    if (pbr->baseColorTexture) {
        Slot(m.emissiveMap, *pbr->baseColorTexture);
        Slot(m.opacityMap, *pbr->baseColorTexture);
        m.opacityMap.channel = "a";
    }
}

// The core model: base colour, metalness and roughness, normal, occlusion and emission.
void GltfImporter::ImportMetallicRoughness(Material& m, const GltfMaterial& record) {
    const auto& pbr = record.pbrMetallicRoughness;
    m.shadingModel = 1;
    m.useMetalness = true;
    m.specular = Vec3(1.0f, 1.0f, 1.0f);
    m.glossInvert = true;
    if (!pbr) {
        m.diffuse = Vec3(1.0f, 1.0f, 1.0f);
        m.opacity = 1.0f;
        m.metalness = 1.0f;
        m.shininess = 0.0f;
    } else {
        if (pbr->baseColorFactor.size() == 4) {
            m.diffuseTint = true;
            m.diffuse = GammaRgb(pbr->baseColorFactor);
            m.opacity = pbr->baseColorFactor[3];
        } else {
            m.diffuse = Vec3(1.0f, 1.0f, 1.0f);
            m.opacity = 1.0f;
        }
        if (pbr->baseColorTexture) {
            Slot(m.diffuseMap, *pbr->baseColorTexture);
            Slot(m.opacityMap, *pbr->baseColorTexture);
            m.opacityMap.channel = "a";
        }
        // With glossInvert set, shininess carries the roughness.
        m.metalness = pbr->metallicFactor;
        m.shininess = pbr->roughnessFactor;
        if (pbr->metallicRoughnessTexture) {
            Slot(m.metalnessMap, *pbr->metallicRoughnessTexture);
            m.metalnessMap.channel = "b";
            Slot(m.glossMap, *pbr->metallicRoughnessTexture);
            m.glossMap.channel = "g";
        }
    }
    if (record.normalTexture) {
        Slot(m.normalMap, *record.normalTexture);
        m.bumpMapFactor = record.normalTexture->scale;
    }
    if (record.occlusionTexture) {
        Slot(m.aoMap, *record.occlusionTexture);
        m.aoMap.channel = "r";
    }
    if (record.emissiveTexture) Slot(m.emissiveMap, *record.emissiveTexture);
    if (record.emissiveFactor.size() == 3) {
        m.emissiveTint = true;
        m.emissive = GammaRgb(record.emissiveFactor);
    } else {
        m.emissiveTint = false;
        m.emissive = Vec3(0.0f, 0.0f, 0.0f);
    }
}

void GltfImporter::ImportClearcoat(Material& m, const GltfClearcoat& clearcoat) {
    m.clearCoat = clearcoat.clearcoatFactor * 0.25f;
    Slot(m.clearCoatMap, clearcoat.clearcoatTexture, "r");
    m.clearCoatGloss = clearcoat.clearcoatRoughnessFactor;
    Slot(m.clearCoatGlossMap, clearcoat.clearcoatRoughnessTexture, "g");
    m.clearCoatGlossInvert = true;
    if (clearcoat.clearcoatNormalTexture) {
        Slot(m.clearCoatNormalMap, *clearcoat.clearcoatNormalTexture);
        m.clearCoatBumpiness = clearcoat.clearcoatNormalTexture->scale;
    }
}

void GltfImporter::ImportSpecular(Material& m, const GltfSpecular& specular) {
    m.useMetalnessSpecularColor = true;
    m.specularityFactor = specular.specularFactor;
    Slot(m.specularityFactorMap, specular.specularTexture, "a");
    if (specular.specularColorFactor.size() == 3) {
        m.specularTint = true;
        m.specular = GammaRgb(specular.specularColorFactor);
    } else {
        m.specular = Vec3(1.0f, 1.0f, 1.0f);
    }
    Slot(m.specularMap, specular.specularColorTexture, "rgb");
}

void GltfImporter::ImportTransmission(Material& m, const GltfTransmission& transmission) {
    m.blendType = 1;
    m.useDynamicRefraction = true;
    m.refraction = transmission.transmissionFactor;
    Slot(m.refractionMap, transmission.transmissionTexture, "r");
}

void GltfImporter::ImportSheen(Material& m, const GltfSheen& sheen) {
    m.useSheen = true;
    m.sheenGlossInvert = true;
    if (sheen.sheenColorFactor.size() == 3) {
        m.sheenTint = true;
        m.sheen = GammaRgb(sheen.sheenColorFactor);
    }
    if (sheen.sheenColorTexture) Slot(m.sheenMap, *sheen.sheenColorTexture);
    m.sheenGloss = sheen.sheenRoughnessFactor;
    Slot(m.sheenGlossMap, sheen.sheenRoughnessTexture, "a");
}

void GltfImporter::ImportVolume(Material& m, const GltfVolume& volume) {
    m.blendType = 1;
    m.useDynamicRefraction = true;
    m.thickness = volume.thicknessFactor;
    Slot(m.thicknessMap, volume.thicknessTexture, "g");
    m.attenuationDistance = volume.attenuationDistance;
    if (volume.attenuationColor.size() == 3) m.attenuation = GammaRgb(volume.attenuationColor);
}

void GltfImporter::ImportIridescence(Material& m, const GltfIridescence& iridescence) {
    m.useIridescence = true;
    m.iridescence = iridescence.iridescenceFactor;
    Slot(m.iridescenceMap, iridescence.iridescenceTexture, "r");
    m.iridescenceRefractionIndex = iridescence.iridescenceIor;
    m.iridescenceThicknessMin = iridescence.iridescenceThicknessMinimum;
    m.iridescenceThicknessMax = iridescence.iridescenceThicknessMaximum;
    Slot(m.iridescenceThicknessMap, iridescence.iridescenceThicknessTexture, "g");
}
