// Material and texture mapping: gamma, alpha modes, unlit, PBR rows and extensions.
#include "file_contents.h"
#include "read_test_util.h"

using namespace gltftest;
using namespace glbfixture;

namespace {

// Imports the root members of data/<stem>.json, with one triangle per material so that
// every listed material is made.
std::unique_ptr<Scene> ImportMaterials(const std::string& stem) {
    ScratchFolder dir;
    const std::string members = testsupport::ReadFileText(std::string(VURL_GLTF_DATA_DIR) + "/" + stem + ".json");
    rapidjson::Document parsed;
    parsed.Parse(members.c_str());
    EXPECT_TRUE(parsed.IsObject() && parsed.HasMember("materials")) << stem;
    if (!parsed.IsObject() || !parsed.HasMember("materials")) return nullptr;
    GlbFixture glb;
    const int pos = glb.AddData(std::vector<float>(9, 0.0f), kFloat, "VEC3");
    std::string primitives;
    for (rapidjson::SizeType i = 0; i < parsed["materials"].Size(); ++i)
        primitives += (i ? "," : "") + std::string(R"({"attributes":{"POSITION":)") + std::to_string(pos) +
                      R"(},"material":)" + std::to_string(i) + "}";
    const size_t open = members.find('{'), close = members.rfind('}');
    return Import(dir, glb.Build(members.substr(open + 1, close - open - 1) + R"(,"meshes":[{"primitives":[)" +
                                 primitives + R"(]}],"nodes":[{"mesh":0}])"));
}

const Material* MaterialOf(const Scene& scene, uint64_t id) { return scene.materials.Find(id); }

}  // namespace

TEST(ImportMaterials, NameOnlyAndBaseColourGamma) {
    auto scene = ImportMaterials("materials_gamma");
    ASSERT_TRUE(scene);
    const Material* plain = MaterialOf(*scene, 0);
    ASSERT_TRUE(plain);
    EXPECT_EQ(plain->name, "plain");
    EXPECT_EQ(plain->diffuse, Vec3(1, 1, 1));
    EXPECT_EQ(plain->metalness, 1.0f);
    EXPECT_EQ(plain->shininess, 0.0f);
    EXPECT_EQ(plain->opacity, 1.0f);
    EXPECT_EQ(plain->cull, 1);
    EXPECT_EQ(plain->shadingModel, 1);
    EXPECT_TRUE(plain->useMetalness);
    EXPECT_TRUE(plain->glossInvert);
    EXPECT_EQ(plain->specular, Vec3(1, 1, 1));
    EXPECT_FALSE(plain->diffuseTint);

    const Material* tinted = MaterialOf(*scene, 1);
    EXPECT_TRUE(tinted->diffuseTint);
    EXPECT_NEAR(tinted->diffuse.x, 0.7297f, 1e-4f);
    EXPECT_EQ(tinted->opacity, 0.25f);
    EXPECT_EQ(tinted->metalness, 0.2f);
    EXPECT_EQ(tinted->shininess, 0.7f);  // roughness, read through glossInvert
    EXPECT_TRUE(tinted->emissiveTint);
    EXPECT_NEAR(tinted->emissive.y, 0.7297f, 1e-4f);
    EXPECT_EQ(tinted->emissive.z, 0.0f);
    EXPECT_TRUE(tinted->twoSidedLighting);
    EXPECT_EQ(tinted->cull, 0);

    const Material* odd = MaterialOf(*scene, 2);
    EXPECT_FALSE(odd->diffuseTint);
    EXPECT_EQ(odd->diffuse, Vec3(1, 1, 1));
    EXPECT_FALSE(odd->emissiveTint);
}

TEST(ImportMaterials, AlphaModesIorTransmissionAndVolume) {
    auto scene = ImportMaterials("materials_alpha_volume");
    ASSERT_TRUE(scene);
    EXPECT_EQ(MaterialOf(*scene, 0)->blendType, 0);
    EXPECT_EQ(MaterialOf(*scene, 0)->alphaTest, 0.3f);
    EXPECT_EQ(MaterialOf(*scene, 1)->blendType, 1);
    EXPECT_EQ(MaterialOf(*scene, 1)->alphaTest, 0.003921569f);
    const Material* glass = MaterialOf(*scene, 2);
    EXPECT_EQ(glass->refractionIndex, 0.6666667f);
    EXPECT_EQ(glass->blendType, 1);  // transmission blends even when opaque
    EXPECT_TRUE(glass->useDynamicRefraction);
    EXPECT_EQ(glass->refraction, 0.4f);
    EXPECT_EQ(glass->refractionMap.channel, "r");  // set although there is no texture
    EXPECT_EQ(glass->refractionMap.texture, nullptr);
    const Material* volume = MaterialOf(*scene, 3);
    EXPECT_EQ(volume->thickness, 2.0f);
    EXPECT_NEAR(volume->attenuation.x, 0.7297f, 1e-4f);
    EXPECT_EQ(volume->attenuationDistance, 3.0f);
    EXPECT_EQ(volume->thicknessMap.channel, "g");
    EXPECT_EQ(volume->emissiveIntensity, 5.0f);
}

TEST(ImportMaterials, UnlitUsesTheEmissiveSlots) {
    auto scene = ImportMaterials("materials_unlit");
    ASSERT_TRUE(scene);
    const Material* unlit = MaterialOf(*scene, 0);
    EXPECT_FALSE(unlit->useLighting);
    EXPECT_EQ(unlit->diffuse, Vec3(0, 0, 0));
    EXPECT_TRUE(unlit->emissiveTint);
    EXPECT_NEAR(unlit->emissive.x, 0.7297f, 1e-4f);
    EXPECT_EQ(unlit->opacity, 0.5f);
    ASSERT_TRUE(unlit->emissiveMap.texture);
    EXPECT_EQ(unlit->emissiveMap.texture->uri, "0.png");  // a "uri" plays no part in the name
    EXPECT_EQ(unlit->emissiveMap.uv, 1);
    EXPECT_EQ(unlit->opacityMap.channel, "a");
    EXPECT_EQ(unlit->shadingModel, 0);  // the lit mapping does not run
    EXPECT_EQ(unlit->diffuseMap.texture, nullptr);
    const Material* bare = MaterialOf(*scene, 1);
    EXPECT_EQ(bare->emissive, Vec3(0, 0, 0));
    EXPECT_EQ(bare->refractionIndex, 0.6666667f);  // extension rows are skipped too
}

TEST(ImportMaterials, ExtensionRowsAndTextureTransforms) {
    auto scene = ImportMaterials("materials_extension_rows");
    ASSERT_TRUE(scene);
    const Material* m = MaterialOf(*scene, 0);
    EXPECT_EQ(m->metalnessMap.channel, "b");
    EXPECT_EQ(m->glossMap.channel, "g");
    EXPECT_NE(m->glossMap.texture, nullptr);
    EXPECT_EQ(m->bumpMapFactor, 0.5f);
    EXPECT_EQ(m->aoMap.channel, "r");
    EXPECT_EQ(m->clearCoat, 0.25f);
    EXPECT_EQ(m->clearCoatGloss, 0.3f);
    EXPECT_TRUE(m->clearCoatGlossInvert);
    EXPECT_EQ(m->clearCoatBumpiness, 2.0f);
    EXPECT_EQ(m->clearCoatMap.channel, "r");
    EXPECT_EQ(m->clearCoatMap.texture, nullptr);
    EXPECT_TRUE(m->useMetalnessSpecularColor);
    EXPECT_EQ(m->specularityFactor, 0.6f);
    EXPECT_FALSE(m->specularTint);
    EXPECT_EQ(m->specular, Vec3(1, 1, 1));
    EXPECT_EQ(m->specularMap.channel, "rgb");
    EXPECT_TRUE(m->useSheen);
    EXPECT_TRUE(m->sheenTint);
    EXPECT_EQ(m->sheenGloss, 0.2f);
    EXPECT_EQ(m->sheenGlossMap.channel, "a");
    EXPECT_TRUE(m->useIridescence);
    EXPECT_EQ(m->iridescenceRefractionIndex, 1.3f);
    EXPECT_EQ(m->iridescenceThicknessMax, 400.0f);
    const TextureSlot& slot = m->iridescenceMap;
    EXPECT_EQ(slot.offset[0], 0.5f);
    EXPECT_EQ(slot.offset[1], 0.25f);
    EXPECT_EQ(slot.rotation, 1.5f);
    EXPECT_EQ(slot.tiling[0], 1.0f);  // a scale of three numbers is skipped
    EXPECT_EQ(slot.uv, 2);
}

TEST(ImportMaterials, ExtensionTexturesGetTheirChannels) {
    auto scene = ImportMaterials("materials_extension_textures");
    ASSERT_TRUE(scene);
    const Material* m = MaterialOf(*scene, 0);
    ASSERT_TRUE(m);
    // The transform keeps the reference's texCoord and skips the offset of three numbers.
    EXPECT_EQ(m->diffuseMap.uv, 3);
    EXPECT_EQ(m->diffuseMap.offset[0], 0.0f);
    EXPECT_EQ(m->diffuseMap.rotation, 0.5f);
    EXPECT_EQ(m->diffuseMap.tiling[1], 4.0f);
    EXPECT_EQ(m->opacityMap.tiling[0], 2.0f);
    EXPECT_EQ(m->diffuseMap.channel, "");

    auto uriOf = [](const TextureSlot& slot) { return slot.texture ? slot.texture->uri : std::string("none"); };
    EXPECT_EQ(uriOf(m->clearCoatMap), "a.png");
    EXPECT_EQ(uriOf(m->clearCoatGlossMap), "b.png");
    EXPECT_EQ(m->clearCoatGlossMap.channel, "g");
    EXPECT_EQ(uriOf(m->clearCoatNormalMap), "none");
    EXPECT_EQ(uriOf(m->specularityFactorMap), "a.png");
    EXPECT_EQ(m->specularityFactorMap.channel, "a");
    EXPECT_EQ(uriOf(m->specularMap), "b.png");
    EXPECT_TRUE(m->specularTint);
    EXPECT_NEAR(m->specular.y, 0.7297f, 1e-4f);
    EXPECT_EQ(uriOf(m->refractionMap), "b.png");
    EXPECT_EQ(uriOf(m->sheenMap), "b.png");
    EXPECT_EQ(m->sheenMap.channel, "");  // the sheen colour map names no channel
    EXPECT_FALSE(m->sheenTint);
    EXPECT_EQ(m->sheen, Vec3(1, 1, 1));
    EXPECT_EQ(uriOf(m->sheenGlossMap), "a.png");
    EXPECT_EQ(uriOf(m->thicknessMap), "a.png");
    EXPECT_EQ(m->blendType, 1);
    EXPECT_EQ(uriOf(m->iridescenceThicknessMap), "b.png");
    EXPECT_EQ(m->iridescenceThicknessMap.channel, "g");
    EXPECT_EQ(uriOf(m->iridescenceMap), "none");
    EXPECT_EQ(m->iridescenceMap.channel, "r");

    ASSERT_EQ(scene->textures.Size(), 2u);
    const Texture* a = m->clearCoatMap.texture;
    const Texture* b = m->clearCoatGlossMap.texture;
    EXPECT_EQ(a->minFilter, 3u);  // 9986, nearest-mipmap-linear, which the runtime numbers 3
    EXPECT_EQ(a->magFilter, 1u);
    EXPECT_EQ(a->addressU, 0u);
    EXPECT_EQ(b->minFilter, 0u);
    EXPECT_EQ(b->addressU, 0u);
    EXPECT_EQ(b->addressV, 2u);
}

TEST(ImportTextures, KeyedByImageWithSamplerMappings) {
    auto scene = ImportMaterials("textures_by_image");
    ASSERT_TRUE(scene);
    const Material* m = MaterialOf(*scene, 0);
    ASSERT_TRUE(m->diffuseMap.texture);
    EXPECT_EQ(m->diffuseMap.texture, m->emissiveMap.texture);  // one image, one Texture
    const Texture* t = m->diffuseMap.texture;
    EXPECT_EQ(t->name, "first");
    EXPECT_EQ(t->uri, "pic.jpg");
    EXPECT_EQ(t->id, 0u);
    EXPECT_EQ(t->addressU, 2u);
    EXPECT_EQ(t->addressV, 3u);
    EXPECT_EQ(t->minFilter, 4u);  // the middle pair swaps
    EXPECT_EQ(t->magFilter, 1u);
    const Texture* loose = m->normalMap.texture;
    ASSERT_TRUE(loose);
    EXPECT_EQ(loose->uri, "unknown");
    EXPECT_EQ(loose->name, "loose");
    EXPECT_EQ(loose->addressU, 0u);
    EXPECT_EQ(loose->minFilter, 5u);
    EXPECT_EQ(scene->textures.Size(), 2u);
}

TEST(ImportTextures, MissingRecordsAreRefused) {
    ScratchFolder dir;
    for (const char* more : {R"(,"textures":[{"source":3}],"images":[{"uri":"a"}])",
                             R"(,"textures":[{"source":0,"sampler":2}],"images":[{"uri":"a"}])", ""}) {
        GlbFixture glb;
        const int pos = glb.AddData(std::vector<float>(9, 0.0f), kFloat, "VEC3");
        EXPECT_TRUE(ImportRefused(dir, glb.Build(R"("materials":[{"emissiveTexture":{"index":0}}],"meshes":[{"primitives":[{"attributes":{"POSITION":)" +
                                                 std::to_string(pos) + R"(},"material":0}]}],"nodes":[{"mesh":0}])" + more)))
            << more;
    }
}
